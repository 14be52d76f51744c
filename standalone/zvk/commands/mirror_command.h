// `zvk mirror`: exchanges the sides of an image.
#pragma once

namespace CLI {
class App;
}

namespace standalone {

// Adds the command to the program. It runs when the program's command line names it, and throws as told in messages.h.
void AddMirrorCommand(CLI::App &program);

}  // namespace standalone
