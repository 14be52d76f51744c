// 'zvk methods': the classes as they are registered.
#pragma once

namespace CLI {
class App;
}

namespace standalone {

void AddMethodsCommand(CLI::App &program);

}  // namespace standalone
