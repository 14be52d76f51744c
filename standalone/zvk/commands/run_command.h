// 'zvk run': a program in Lua that uses the plug-in's classes.
#pragma once

namespace CLI {
class App;
}

namespace standalone {

void AddRunCommand(CLI::App &program);

}  // namespace standalone
