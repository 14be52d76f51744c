#include "standalone/zvk/messages.h"

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <utility>

namespace standalone {

namespace {

void PrintLine(const char *start, std::string line) {
  const auto isControl = [](unsigned char letter) { return letter < ' ' || letter == 0x7F; };
  std::replace_if(line.begin(), line.end(), isControl, ' ');
  std::fprintf(stderr, "%s%s\n", start, line.c_str());
}

}  // namespace

void PrintMessage(std::string message) { PrintLine("zvk: ", std::move(message)); }

void PrintMessageWithList(const std::string &message) {
  std::istringstream lines(message);
  const char *start = "zvk: ";
  for (std::string line; std::getline(lines, line); start = "") PrintLine(start, line);
}

}  // namespace standalone
