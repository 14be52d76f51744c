// The declarations that class tables are written in ("Name(arg as type, arg as type = default) as returntype"),
// read into plain records. Knows no class and calls nothing; what a declaration means for a call is the caller's.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace standalone {

// A declaration that cannot be read. The message says what was expected, where, and repeats the declaration.
class DeclarationError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The types of the host language, by the shape they have in a call.
enum class TypeKind : uint8_t { None, Integer, Int64, Double, Boolean, Color, String, Object };

// The type of a parameter, result or property. `className` is the class of an Object, as it was written; "variant"
// and the host's own classes are classes like any other. An array has the kind of its elements.
struct Type {
  TypeKind kind = TypeKind::None;
  bool isArray = false;
  std::string className = {};

  // The type as the host language writes it ("Integer", "PictureZVK"; an array with "()"); empty for None.
  std::string Text() const;
};

// A colour of the host language.
struct Color {
  uint32_t rgb;  // 0xRRGGBB

  bool operator==(const Color &) const = default;
};

// A literal value in a declaration; monostate is nil. Integers wider than 32 bits stay whole.
using Literal = std::variant<std::monostate, int64_t, double, bool, Color, std::string>;

struct Parameter {
  std::string name;
  Type type;
  std::optional<Literal> defaultValue = std::nullopt;
};

// A method or an event. `result` is of kind None if nothing is returned.
struct MethodDeclaration {
  std::string name;
  std::vector<Parameter> parameters = {};
  Type result = {};
};

struct ConstantDeclaration {
  std::string name;
  Literal value;
};

// Reads "Name", "Name as type", "Name(arguments)" or "Name(arguments) as type". An argument is "name as type",
// "name() as type" (an array) or either followed by "= literal"; once one has a default, all behind it need one.
// Words of the language and type names are taken in any case, spaces anywhere. Throws DeclarationError.
MethodDeclaration ParseMethod(std::string_view text);

// Reads "NAME = literal"; a type between ("NAME as type = literal") is allowed. Throws DeclarationError.
ConstantDeclaration ParseConstant(std::string_view text);

// Reads a value as declarations write it: nil, true, false, a decimal number, a "text", or digits behind &h, &o, &b or
// &c (a colour). Throws DeclarationError.
Literal ParseLiteral(std::string_view text);

// Reads the type of a property: one word, or a dotted class name. Throws DeclarationError.
Type ParseType(std::string_view text);

}  // namespace standalone
