#include "standalone/zvk/messages.h"

#include <algorithm>
#include <cstdio>

namespace standalone {

void PrintMessage(std::string message) {
  const auto isControl = [](unsigned char letter) { return letter < ' ' || letter == 0x7F; };
  std::replace_if(message.begin(), message.end(), isControl, ' ');
  std::fprintf(stderr, "zvk: %s\n", message.c_str());
}

}  // namespace standalone
