// `zvk scale`: one image file into another of a different size.
#pragma once

namespace CLI {
class App;
}

namespace standalone {

// Adds the command to the program. It runs when the program's command line names it, and throws as told in messages.h.
void AddScaleCommand(CLI::App &program);

}  // namespace standalone
