// `zvk batch`: a script over many files, a process for each.
#pragma once

namespace CLI {
class App;
}

namespace standalone {

// Adds the command to the program. It runs when the program's command line names it, and throws as told in messages.h.
void AddBatchCommand(CLI::App &program);

}  // namespace standalone
