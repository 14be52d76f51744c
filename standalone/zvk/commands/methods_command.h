// `zvk methods`: the classes as they are registered.
#pragma once

namespace CLI {
class App;
}

namespace standalone {

// Adds the command to the program. It runs when the program's command line names it, and throws as told in messages.h.
void AddMethodsCommand(CLI::App &program);

}  // namespace standalone
