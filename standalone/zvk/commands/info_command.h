// `zvk info`: what an image file holds, and what its pixels take in each kind of storage.
#pragma once

namespace CLI {
class App;
}

namespace standalone {

// Adds the command to the program. It runs when the program's command line names it, and throws as told in messages.h.
void AddInfoCommand(CLI::App &program);

}  // namespace standalone
