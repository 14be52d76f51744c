#include "standalone/binding/value.h"

#include <cmath>
#include <limits>
#include <optional>

#include "standalone/runtime/class_registry.h"
#include "standalone/runtime/names.h"

namespace standalone {
namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr int kDoesNotFit = -1;
constexpr int kCostOfVariant = 100;

// The number as an integer of 64 bits, if it is a whole one in range.
std::optional<int64_t> Whole(const Value &value) {
  switch (value.GetKind()) {
    case Value::Kind::Integer:
      return value.AsInteger();
    case Value::Kind::Int64:
      return value.AsInt64();
    case Value::Kind::Double: {
      const double number = value.AsDouble();
      if (number >= -kTwoTo63 && number < kTwoTo63 && std::trunc(number) == number) return static_cast<int64_t>(number);
      return std::nullopt;
    }
    default:
      return std::nullopt;
  }
}

bool FitsInteger(int64_t number) {
  return number >= std::numeric_limits<int32_t>::min() && number <= std::numeric_limits<int32_t>::max();
}

// An integer of 64 bits that a double can hold.
bool FitsDouble(int64_t number) {
  const double real = static_cast<double>(number);
  return real < kTwoTo63 && static_cast<int64_t>(real) == number;
}

int CostOfNumber(const Value &value, TypeKind wanted) {
  const Value::Kind kind = value.GetKind();
  const std::optional<int64_t> whole = Whole(value);
  switch (wanted) {
    case TypeKind::Integer:
      if (!whole || !FitsInteger(*whole)) return kDoesNotFit;
      return kind == Value::Kind::Integer ? 0 : kind == Value::Kind::Int64 ? 1 : 3;
    case TypeKind::Int64:
      if (!whole) return kDoesNotFit;
      return kind == Value::Kind::Int64 ? 0 : kind == Value::Kind::Integer ? 1 : 3;
    default:
      if (kind == Value::Kind::Double) return 0;
      return whole && FitsDouble(*whole) ? 2 : kDoesNotFit;
  }
}

int CostOfObject(const Object &object, const std::string &className) {
  int cost = 0;
  for (const Class *type = &object.Type(); type != nullptr; type = type->Super()) {
    if (NamesEqual(type->Name(), className)) return cost;
    ++cost;
  }
  return NamesEqual(className, "variant") ? kCostOfVariant : kDoesNotFit;
}

}  // namespace

Value Value::FromObject(Owned<Object> object) {
  Value value;
  if (auto *const array = dynamic_cast<IntegerArray *>(object.Get())) {
    value.held_ = Owned<IntegerArray>::Share(array);
  } else if (object) {
    value.held_ = std::move(object);
  }
  return value;
}

std::string Value::KindText() const {
  switch (GetKind()) {
    case Kind::Nil:
      return "nil";
    case Kind::Integer:
      return "Integer";
    case Kind::Int64:
      return "Int64";
    case Kind::Double:
      return "Double";
    case Kind::Boolean:
      return "Boolean";
    case Kind::Color:
      return "Color";
    case Kind::String:
      return "String";
    case Kind::Object:
      return AsObject()->Type().Name();
    case Kind::Array:
      break;
  }
  return "Integer()";
}

int32_t Value::AsInteger() const {
  if (const int32_t *const integer = std::get_if<int32_t>(&held_)) return *integer;
  const std::optional<int64_t> whole = Whole(*this);
  if (!whole || !FitsInteger(*whole)) throw BindingError("this " + KindText() + " is no Integer");
  return static_cast<int32_t>(*whole);
}

int64_t Value::AsInt64() const {
  if (const int64_t *const integer = std::get_if<int64_t>(&held_)) return *integer;
  const std::optional<int64_t> whole = Whole(*this);
  if (!whole) throw BindingError("this " + KindText() + " is no Int64");
  return *whole;
}

double Value::AsDouble() const {
  if (const double *const real = std::get_if<double>(&held_)) return *real;
  if (CostOfNumber(*this, TypeKind::Double) < 0) throw BindingError("this " + KindText() + " is no Double");
  return static_cast<double>(AsInt64());
}

bool Value::AsBoolean() const {
  if (const bool *const boolean = std::get_if<bool>(&held_)) return *boolean;
  throw BindingError("this " + KindText() + " is no Boolean");
}

Color Value::AsColor() const {
  if (const Color *const color = std::get_if<Color>(&held_)) return *color;
  throw BindingError("this " + KindText() + " is no Color");
}

REALstring Value::AsString() const {
  if (const Owned<String> *const string = std::get_if<Owned<String>>(&held_)) return string->Handle();
  throw BindingError("this " + KindText() + " is no String");
}

std::string Value::AsText() const { return TextOf(AsString()); }

std::string_view Value::AsBytes() const { return BytesOf(AsString()); }

std::vector<int32_t> Value::AsIntegers() const {
  if (const auto *const array = std::get_if<Owned<IntegerArray>>(&held_)) return (*array)->Values();
  throw BindingError("this " + KindText() + " is no Integer()");
}

Object *Value::AsObject() const {
  if (const Owned<Object> *const object = std::get_if<Owned<Object>>(&held_)) return object->Get();
  if (const auto *const array = std::get_if<Owned<IntegerArray>>(&held_)) return array->Get();
  if (IsNil()) return nullptr;
  throw BindingError("this " + KindText() + " is no object");
}

int ConversionCost(const Value &value, const Type &type) {
  const Value::Kind kind = value.GetKind();
  if (type.isArray) {
    return kind == Value::Kind::Nil || (kind == Value::Kind::Array && type.kind == TypeKind::Integer) ? 0 : kDoesNotFit;
  }
  switch (type.kind) {
    case TypeKind::None:
      return kDoesNotFit;
    case TypeKind::Integer:
    case TypeKind::Int64:
    case TypeKind::Double:
      return CostOfNumber(value, type.kind);
    case TypeKind::Boolean:
      return kind == Value::Kind::Boolean ? 0 : kDoesNotFit;
    case TypeKind::Color:
      return kind == Value::Kind::Color ? 0 : kDoesNotFit;
    case TypeKind::String:
      return kind == Value::Kind::String ? 0 : kDoesNotFit;
    case TypeKind::Object:
      break;
  }
  if (kind == Value::Kind::Nil) return 0;
  return kind == Value::Kind::Object ? CostOfObject(*value.AsObject(), type.className) : kDoesNotFit;
}

RawValue ToRaw(const Value &value, const Type &type) {
  RawValue raw;
  if (type.isArray || type.kind == TypeKind::Object) {
    Object *const object = value.AsObject();
    if (object != nullptr) raw.address = object->Handle();
    return raw;
  }
  switch (type.kind) {
    case TypeKind::Integer:
      raw.integer = value.AsInteger();
      break;
    case TypeKind::Int64:
      raw.int64 = value.AsInt64();
      break;
    case TypeKind::Double:
      raw.real = value.AsDouble();
      break;
    case TypeKind::Boolean:
      raw.boolean = value.AsBoolean();
      break;
    case TypeKind::Color:
      raw.color = value.AsColor().rgb;
      break;
    case TypeKind::String:
      raw.address = value.AsString();
      break;
    default:
      break;
  }
  return raw;
}

Value FromRaw(RawValue raw, const Type &type, Reference reference) {
  const bool isLent = reference == Reference::Lent;
  if (type.isArray || type.kind == TypeKind::Object) {
    Object *const object = Object::From(static_cast<REALobject>(raw.address));
    return isLent ? Owned<Object>::Share(object) : Owned<Object>::Adopt(object);
  }
  switch (type.kind) {
    case TypeKind::Integer:
      return raw.integer;
    case TypeKind::Int64:
      return raw.int64;
    case TypeKind::Double:
      return raw.real;
    case TypeKind::Boolean:
      return raw.boolean != 0;
    case TypeKind::Color:
      return Color{raw.color};
    case TypeKind::String: {
      String *const string = String::From(static_cast<REALstring>(raw.address));
      return isLent ? Owned<String>::Share(string) : Owned<String>::Adopt(string);
    }
    default:
      return nullptr;
  }
}

Value FromLiteral(const Literal &literal) {
  struct Visitor {
    Value operator()(std::monostate) const { return nullptr; }
    Value operator()(int64_t number) const {
      return FitsInteger(number) ? Value(static_cast<int32_t>(number)) : Value(number);
    }
    Value operator()(double number) const { return number; }
    Value operator()(bool value) const { return value; }
    Value operator()(Color color) const { return color; }
    Value operator()(const std::string &text) const { return text; }
  };
  return std::visit(Visitor(), literal);
}

}  // namespace standalone
