// `zvk filter`: applies a filter of the image class, whichever there are, to an image file.
#pragma once

namespace CLI {
class App;
}

namespace standalone {

// Adds the command to the program. It runs when the program's command line names it, and throws as told in messages.h.
void AddFilterCommand(CLI::App &program);

}  // namespace standalone
