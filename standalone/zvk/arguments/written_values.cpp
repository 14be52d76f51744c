#include "standalone/zvk/arguments/written_values.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>
#include <variant>

#include "standalone/runtime/names.h"
#include "standalone/zvk/arguments/colour_argument.h"
#include "standalone/zvk/session/messages.h"

namespace standalone {
namespace {

using Constants = std::vector<ConstantDeclaration>;

struct Writing {
  TypeKind kind;
  const char *placeholder;
  const char *meaning;
};

constexpr std::array<Writing, 7> kWritings = {{
    {TypeKind::Integer, "INTEGER", "a whole number of 32 bits or the name of a constant"},
    {TypeKind::Int64, "INTEGER", "a whole number of 64 bits or the name of a constant"},
    {TypeKind::Double, "NUMBER", "a number, such as 2 or 0.75"},
    {TypeKind::Boolean, "BOOLEAN", "true or false"},
    {TypeKind::Color, "#RRGGBB", "a colour as #RRGGBB, such as #FF8000"},
    {TypeKind::String, "TEXT", "any text"},
    {TypeKind::Object, "FILE", "the name of an image file"},
}};

const Writing &WritingOf(TypeKind kind) {
  return *std::find_if(kWritings.begin(), kWritings.end(), [kind](const Writing &one) { return one.kind == kind; });
}

std::optional<Value> ReadOpaqueColour(const std::string &text) {
  const std::optional<ColourArgument> colour = ReadColour(text);
  if (!colour || colour->alpha) return std::nullopt;
  return Color{colour->rgb};
}

// The value of a constant or a literal; empty if the text is neither.
std::optional<Value> ReadLiteral(const std::string &text, const Constants &constants) {
  for (const ConstantDeclaration &constant : constants) {
    if (NamesEqual(constant.name, text)) return FromLiteral(constant.value);
  }
  try {
    return FromLiteral(ParseLiteral(text));
  } catch (const DeclarationError &) {
    return std::nullopt;
  }
}

// The kind decides between overloads, so a number becomes one of the kind asked for.
std::optional<Value> ReadElement(const std::string &text, TypeKind kind, const Constants &constants) {
  if (kind == TypeKind::String) return text;
  if (kind == TypeKind::Color) return ReadOpaqueColour(text);
  const std::optional<Value> value = ReadLiteral(text, constants);
  if (!value || ConversionCost(*value, {kind}) < 0) return std::nullopt;
  switch (kind) {
    case TypeKind::Integer:
      return value->AsInteger();
    case TypeKind::Int64:
      return value->AsInt64();
    case TypeKind::Double:
      return value->AsDouble();
    default:
      return value;
  }
}

// The constants whose names begin with the text, for whoever does not know how they go on.
std::string NamesBeginningWith(const std::string &text, const Constants &constants) {
  std::string names;
  for (const ConstantDeclaration &constant : constants) {
    const std::string_view start = std::string_view(constant.name).substr(0, text.size());
    if (!text.empty() && NamesEqual(start, text)) AddToList(names, ", ", constant.name);
  }
  return names;
}

[[noreturn]] void Fail(const Parameter &parameter, const std::string &text, const Constants &constants) {
  const bool isInteger = parameter.type.kind == TypeKind::Integer || parameter.type.kind == TypeKind::Int64;
  const std::string names = isInteger ? NamesBeginningWith(text, constants) : "";
  throw UsageError(parameter.name + ": '" + text + "' is not understood; write " +
                   WritingOf(parameter.type.kind).meaning + (names.empty() ? "" : ", such as " + names));
}

}  // namespace

bool IsWritable(const Type &type) {
  if (type.isArray) return type.kind == TypeKind::Integer;
  return type.kind != TypeKind::Object && type.kind != TypeKind::None;
}

std::string Placeholder(const Type &type) {
  const std::string element = WritingOf(type.kind).placeholder;
  return type.isArray ? element + "," + element + ",..." : element;
}

std::string Written(const Literal &literal) {
  struct Visitor {
    std::string operator()(std::monostate) const { return WritingOf(TypeKind::Object).placeholder; }
    std::string operator()(int64_t number) const { return std::to_string(number); }
    std::string operator()(double number) const {
      std::array<char, 32> digits = {};  // the shortest that give the number again
      std::to_chars(digits.data(), digits.data() + digits.size(), number);
      return digits.data();
    }
    std::string operator()(bool value) const { return value ? "true" : "false"; }
    std::string operator()(Color color) const { return ColourText(color.rgb); }
    std::string operator()(const std::string &text) const { return text; }
  };
  return std::visit(Visitor(), literal);
}

Value ReadValue(const Parameter &parameter, const std::string &text, const Constants &constants) {
  const auto readElement = [&](const std::string &element) {
    std::optional<Value> value = ReadElement(element, parameter.type.kind, constants);
    if (!value) Fail(parameter, element, constants);
    return *std::move(value);
  };
  if (!parameter.type.isArray) return readElement(text);
  std::vector<int32_t> numbers;
  for (size_t start = 0; start <= text.size() && !text.empty();) {
    const size_t comma = std::min(text.find(',', start), text.size());
    numbers.push_back(readElement(text.substr(start, comma - start)).AsInteger());
    start = comma + 1;
  }
  return numbers;
}

}  // namespace standalone
