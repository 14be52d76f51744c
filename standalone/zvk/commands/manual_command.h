// `zvk manual`: the manual page.
#pragma once

namespace CLI {
class App;
}

namespace standalone {

// Adds the command to the program, whose whole command line it tells.
void AddManualCommand(CLI::App &program);

}  // namespace standalone
