// 'zvk methods': the classes as they are registered.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace standalone {

void AddMethodsCommand(CLI::App &program);

// The names that the command knows: of classes, and of their members. To be called while a plug-in is loaded.
std::vector<std::string> MemberNames();

}  // namespace standalone
