// `zvk combine`: lays one image on another, through a mask or with a colour.
#pragma once

namespace CLI {
class App;
}

namespace standalone {

// Adds the command to the program. It runs when the program's command line names it, and throws as told in messages.h.
void AddCombineCommand(CLI::App &program);

}  // namespace standalone
