#include "standalone/binding/declaration.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <system_error>
#include <utility>

#include "standalone/runtime/names.h"

namespace standalone {
namespace {

char Lower(char letter) { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter; }

bool IsLetter(char letter) { return (Lower(letter) >= 'a' && Lower(letter) <= 'z') || letter == '_'; }

bool IsDigit(char letter) { return letter >= '0' && letter <= '9'; }

bool IsSpace(char letter) { return letter == ' ' || letter == '\t' || letter == '\r' || letter == '\n'; }

struct NamedKind {
  std::string_view name;
  TypeKind kind;
};

// The first name of a kind is the one that Type::Text writes.
constexpr std::array<NamedKind, 8> kKinds = {{{"Integer", TypeKind::Integer},
                                              {"Int32", TypeKind::Integer},
                                              {"Int64", TypeKind::Int64},
                                              {"Double", TypeKind::Double},
                                              {"Boolean", TypeKind::Boolean},
                                              {"Color", TypeKind::Color},
                                              {"Colour", TypeKind::Color},
                                              {"String", TypeKind::String}}};

// Reads one declaration from left to right.
class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  [[noreturn]] void Fail(const std::string &expectation) const {
    throw DeclarationError("expected " + expectation + " at column " + std::to_string(position_ + 1) + " of \"" +
                           std::string(text_) + "\"");
  }

  void SkipSpace() {
    while (position_ < text_.size() && IsSpace(text_[position_])) ++position_;
  }

  bool AtEnd() {
    SkipSpace();
    return position_ == text_.size();
  }

  // Steps over the character if it comes next.
  bool Take(char wanted) {
    SkipSpace();
    if (position_ == text_.size() || text_[position_] != wanted) return false;
    ++position_;
    return true;
  }

  void Expect(char wanted) {
    if (!Take(wanted)) Fail(std::string("'") + wanted + "'");
  }

  void ExpectEnd() {
    if (!AtEnd()) Fail("the end");
  }

  // Steps over the word of the language if it comes next as a whole word.
  bool TakeWord(std::string_view wanted) {
    SkipSpace();
    if (!NamesEqual(PeekName(), wanted)) return false;
    position_ += wanted.size();
    return true;
  }

  std::string Name(const char *what) {
    SkipSpace();
    const std::string_view name = PeekName();
    if (name.empty() || NamesEqual(name, "as")) Fail(what);
    position_ += name.size();
    return std::string(name);
  }

  Type ReadType() {
    std::string name = Name("a type");
    while (Take('.')) name += "." + Name("a class name");
    for (const NamedKind &named : kKinds) {
      if (NamesEqual(name, named.name)) return {named.kind};
    }
    return {TypeKind::Object, false, std::move(name)};
  }

  Literal ReadLiteral() {
    SkipSpace();
    if (TakeWord("nil")) return std::monostate();
    if (TakeWord("true")) return true;
    if (TakeWord("false")) return false;
    if (position_ < text_.size() && text_[position_] == '"') return ReadText();
    if (position_ < text_.size() && text_[position_] == '&') return ReadBased();
    return ReadNumber();
  }

 private:
  std::string_view PeekName() const {
    size_t end = position_;
    if (end < text_.size() && IsLetter(text_[end])) {
      while (end < text_.size() && (IsLetter(text_[end]) || IsDigit(text_[end]))) ++end;
    }
    return text_.substr(position_, end - position_);
  }

  // A quote inside the text is written twice.
  Literal ReadText() {
    std::string value;
    ++position_;
    while (true) {
      if (position_ == text_.size()) Fail("a closing quote");
      if (text_[position_] == '"') {
        ++position_;
        if (position_ == text_.size() || text_[position_] != '"') return value;
      }
      value += text_[position_++];
    }
  }

  // "&h", "&o" and "&b" are integers, "&c" is a colour.
  Literal ReadBased() {
    const char letter = position_ + 1 < text_.size() ? Lower(text_[position_ + 1]) : '\0';
    const int base = letter == 'h' || letter == 'c' ? 16 : letter == 'o' ? 8 : letter == 'b' ? 2 : 0;
    if (base == 0) Fail("a literal (&h, &o, &b or &c)");
    const char *const first = text_.data() + position_ + 2;
    uint64_t value = 0;
    const auto [end, error] = std::from_chars(first, text_.data() + text_.size(), value, base);
    if (error != std::errc() || (letter == 'c' && value > 0xFFFFFF)) Fail("a literal with digits in range");
    position_ = static_cast<size_t>(end - text_.data());
    if (letter == 'c') return Color{static_cast<uint32_t>(value)};
    return static_cast<int64_t>(value);
  }

  Literal ReadNumber() {
    const char *const first = text_.data() + position_;
    const char *const last = text_.data() + text_.size();
    const char *const digits = first != last && *first == '-' ? first + 1 : first;
    if (digits == last || !(IsDigit(*digits) || *digits == '.')) Fail("a value");
    int64_t whole = 0;
    const auto [wholeEnd, wholeError] = std::from_chars(first, last, whole);
    double real = 0;
    const auto [realEnd, realError] = std::from_chars(first, last, real);
    if (realError != std::errc()) Fail("a number in range");
    position_ = static_cast<size_t>(realEnd - text_.data());
    if (wholeEnd == realEnd) {
      if (wholeError != std::errc()) Fail("an integer of 64 bits");
      return whole;
    }
    return real;
  }

  std::string_view text_;
  size_t position_ = 0;
};

Parameter ReadParameter(Reader &reader) {
  Parameter parameter = {reader.Name("the name of an argument"), {}};
  const bool isArray = reader.Take('(');
  if (isArray) reader.Expect(')');
  if (!reader.TakeWord("as")) reader.Fail("\"as\" and a type");
  parameter.type = reader.ReadType();
  parameter.type.isArray = isArray;
  if (reader.Take('=')) parameter.defaultValue = reader.ReadLiteral();
  return parameter;
}

}  // namespace

std::string Type::Text() const {
  std::string name = className;
  if (kind != TypeKind::Object && kind != TypeKind::None) {
    name =
        std::find_if(kKinds.begin(), kKinds.end(), [this](const NamedKind &named) { return named.kind == kind; })->name;
  }
  return isArray ? name + "()" : name;
}

MethodDeclaration ParseMethod(std::string_view text) {
  Reader reader(text);
  MethodDeclaration method = {reader.Name("the name of a method")};
  if (reader.Take('(') && !reader.Take(')')) {
    do {
      method.parameters.push_back(ReadParameter(reader));
      const size_t count = method.parameters.size();
      if (count > 1 && method.parameters[count - 2].defaultValue && !method.parameters[count - 1].defaultValue) {
        reader.Fail("'=' (the argument before has a default)");
      }
    } while (reader.Take(','));
    reader.Expect(')');
  }
  if (reader.TakeWord("as")) method.result = reader.ReadType();
  reader.ExpectEnd();
  return method;
}

ConstantDeclaration ParseConstant(std::string_view text) {
  Reader reader(text);
  ConstantDeclaration constant = {reader.Name("the name of a constant"), {}};
  if (reader.TakeWord("as")) reader.ReadType();
  reader.Expect('=');
  constant.value = reader.ReadLiteral();
  reader.ExpectEnd();
  return constant;
}

Literal ParseLiteral(std::string_view text) {
  Reader reader(text);
  Literal literal = reader.ReadLiteral();
  reader.ExpectEnd();
  return literal;
}

Type ParseType(std::string_view text) {
  Reader reader(text);
  Type type = reader.ReadType();
  reader.ExpectEnd();
  return type;
}

}  // namespace standalone
