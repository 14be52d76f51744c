#include "standalone/runtime/names.h"

#include <algorithm>

namespace standalone {
namespace {

char Lower(char letter) { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter; }

std::string Squeezed(std::string_view text) {
  std::string squeezed;
  for (const char letter : text) {
    if (letter != ' ' && letter != '\t') squeezed += Lower(letter);
  }
  return squeezed;
}

}  // namespace

bool NamesEqual(std::string_view first, std::string_view second) {
  return std::equal(first.begin(), first.end(), second.begin(), second.end(),
                    [](char one, char other) { return Lower(one) == Lower(other); });
}

bool NameOrder::operator()(std::string_view first, std::string_view second) const {
  return std::lexicographical_compare(first.begin(), first.end(), second.begin(), second.end(),
                                      [](char one, char other) { return Lower(one) < Lower(other); });
}

bool DeclarationsEqual(std::string_view first, std::string_view second) { return Squeezed(first) == Squeezed(second); }

std::string DeclaredName(std::string_view declaration) {
  const size_t start = std::min(declaration.find_first_not_of(" \t"), declaration.size());
  return std::string(declaration.substr(start, declaration.find_first_of(" \t(=", start) - start));
}

}  // namespace standalone
