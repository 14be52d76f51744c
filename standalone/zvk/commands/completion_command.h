// `zvk completion`: completion of the command line in a shell.
#pragma once

namespace CLI {
class App;
}

namespace standalone {

// Adds the command to the program, whose whole command line it tells.
void AddCompletionCommand(CLI::App &program);

}  // namespace standalone
