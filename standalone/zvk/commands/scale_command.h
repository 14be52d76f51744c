// `zvk scale`: one image file into another of a different size.
#pragma once

#include "standalone/zvk/session/progress.h"

namespace CLI {
class App;
}

namespace standalone {

// Adds the command to the program. It runs when the program's command line names it, and throws as told in messages.h.
// The clock is that of its progress line.
void AddScaleCommand(CLI::App &program, const ProgressLine::Clock &clock);

}  // namespace standalone
