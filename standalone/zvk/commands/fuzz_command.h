// 'zvk fuzz': random calls of everything that the plug-in offers.
#pragma once

namespace CLI {
class App;
}

namespace standalone {

void AddFuzzCommand(CLI::App &program);

}  // namespace standalone
