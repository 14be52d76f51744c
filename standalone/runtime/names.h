// Names of the host language, which does not tell upper from lower case.
#pragma once

#include <string>
#include <string_view>

namespace standalone {

// True if both are the same name (ASCII letters in any case).
bool NamesEqual(std::string_view first, std::string_view second);

// Orders names so that equal ones meet; for maps.
struct NameOrder {
  using is_transparent = void;
  bool operator()(std::string_view first, std::string_view second) const;
};

// True if two declarations are the same apart from spaces and the case of their letters.
bool DeclarationsEqual(std::string_view first, std::string_view second);

// The name that a declaration starts with: what stands before the first space, bracket or equals sign.
std::string DeclaredName(std::string_view declaration);

}  // namespace standalone
