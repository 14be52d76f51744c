// `zvk mirror`: exchanges the sides of an image.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace standalone {

// Adds the command to the program. It runs when the program's command line names it, and throws as told in messages.h.
void AddMirrorCommand(CLI::App &program);

// The directions that it takes.
std::vector<std::string> MirrorDirections();

}  // namespace standalone
