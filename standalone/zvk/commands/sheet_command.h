// `zvk sheet`: lays pictures out in rows and columns of one picture, with their names under them.
#pragma once

namespace CLI {
class App;
}

namespace standalone {

// Adds the command to the program. It runs when the program's command line names it, and throws as told in messages.h.
void AddSheetCommand(CLI::App &program);

}  // namespace standalone
