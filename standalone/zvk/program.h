// The command line of the program: all its commands, their arguments and options, and what is told of them.
#pragma once

#include <memory>

#include "standalone/zvk/session/progress.h"

namespace CLI {
class App;
}

namespace standalone {

// The whole command line. Parsing one runs the command that it names. Progress lines go by the clock.
std::shared_ptr<CLI::App> MakeProgram(const ProgressLine::Clock &clock);

}  // namespace standalone
