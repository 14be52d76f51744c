// The command line of the program: all its commands, their arguments and options, and what is told of them.
#pragma once

#include <memory>

namespace CLI {
class App;
}

namespace standalone {

// The whole command line. Parsing one runs the command that it names.
std::shared_ptr<CLI::App> MakeProgram();

}  // namespace standalone
