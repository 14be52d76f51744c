#include "standalone/zvk/session/messages.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

namespace standalone {

namespace {

void PrintLine(const char *start, const std::string &line) {
  std::fprintf(stderr, "%s%s\n", start, OneLine(line).c_str());
}

}  // namespace

std::string OneLine(std::string text) {
  const auto isControl = [](unsigned char letter) { return letter < ' ' || letter == 0x7F; };
  std::replace_if(text.begin(), text.end(), isControl, ' ');
  return text;
}

void AddToList(std::string &list, std::string_view separator, std::string_view more) {
  if (!list.empty()) list += separator;
  list += more;
}

void PrintMessage(const std::string &message) { PrintLine("zvk: ", message); }

void PrintMessageWithList(const std::string &message) {
  std::istringstream lines(message);
  const char *start = "zvk: ";
  for (std::string line; std::getline(lines, line); start = "") PrintLine(start, line);
}

}  // namespace standalone
