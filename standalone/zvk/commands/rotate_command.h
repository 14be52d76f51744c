// `zvk rotate`: turns an image by any angle.
#pragma once

namespace CLI {
class App;
}

namespace standalone {

// Adds the command to the program. It runs when the program's command line names it, and throws as told in messages.h.
void AddRotateCommand(CLI::App &program);

}  // namespace standalone
