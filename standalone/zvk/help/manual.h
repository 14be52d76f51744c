// The manual page, in the language of man(7).
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace standalone {

std::string Manual(CLI::App &program);

}  // namespace standalone
