// A value of the host language on the C++ side: what goes into a call and what comes out. References to objects and
// strings are owned, and given back by themselves.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "standalone/binding/caller.h"
#include "standalone/binding/declaration.h"
#include "standalone/runtime/arrays.h"
#include "standalone/runtime/objects.h"
#include "standalone/runtime/owned.h"
#include "standalone/runtime/strings.h"

namespace standalone {

// A use of a class or a value that does not fit: no such name, no such call, a read-only property. The message says
// what there is instead; it may have more than one line.
class BindingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Value;
using Arguments = std::vector<Value>;

class Value {
 public:
  enum class Kind : uint8_t { Nil, Integer, Int64, Double, Boolean, Color, String, Object, Array };

  // Values are made where they are needed, so that a call reads image.Call("Scale", {source, nullptr, 3, 400, 300}).
  // NOLINTBEGIN(google-explicit-constructor)
  Value() = default;
  Value(std::nullptr_t) {}
  Value(int32_t value) : held_(value) {}
  Value(int64_t value) : held_(value) {}
  Value(double value) : held_(value) {}
  Value(bool value) : held_(value) {}
  Value(Color value) : held_(value) {}
  // A new string in UTF-8.
  Value(std::string_view text) : Value(Owned<String>::Adopt(String::Make(text))) {}
  Value(const std::string &text) : Value(std::string_view(text)) {}
  Value(const char *text) : Value(std::string_view(text)) {}
  Value(Owned<String> string) : held_(std::move(string)) {}
  // A new integer array.
  Value(std::vector<int32_t> values) : Value(Owned<IntegerArray>::Adopt(IntegerArray::Make(std::move(values)))) {}
  // An object (or an array); nil if empty.
  template <std::derived_from<Object> T>
  Value(Owned<T> object) : Value(FromObject(Owned<Object>::Adopt(static_cast<Object *>(object.Release())))) {}
  // NOLINTEND(google-explicit-constructor)
  // An address is no value: it does not say who owns it.
  Value(const void *) = delete;

  Kind GetKind() const { return static_cast<Kind>(held_.index()); }
  bool IsNil() const { return GetKind() == Kind::Nil; }
  // The kind for people: "nil", "Integer", ...; for an object its class.
  std::string KindText() const;

  // The value as a C++ one. Numbers are converted as calls do: no other than whole ones in range become integers.
  // Throws BindingError on a value of another kind.
  int32_t AsInteger() const;
  int64_t AsInt64() const;
  double AsDouble() const;
  bool AsBoolean() const;
  Color AsColor() const;
  std::string AsText() const;               // in UTF-8
  std::string_view AsBytes() const;         // of a string, as they are; good for as long as the value lives
  REALstring AsString() const;              // borrowed; nil for an empty one without bytes
  std::vector<int32_t> AsIntegers() const;  // of an array
  // The object, borrowed; nil for nil. As<Picture>() also wants an object of that C++ class.
  Object *AsObject() const;
  template <std::derived_from<Object> T>
  T *As() const {
    Object *const object = AsObject();
    T *const wanted = dynamic_cast<T *>(object);
    if (object != nullptr && wanted == nullptr) throw BindingError("a " + KindText() + " is another kind of object");
    return wanted;
  }

  // What the object behind the value offers, by name in any case; the class's own calls, see ClassBinding.
  Value Call(std::string_view name, const Arguments &arguments = {}) const;
  Value Get(std::string_view property) const;
  void Set(std::string_view property, const Value &value) const;
  void Assign(std::string_view method, const Arguments &arguments, const Value &value) const;

 private:
  static Value FromObject(Owned<Object> object);

  std::variant<std::monostate, int32_t, int64_t, double, bool, Color, Owned<String>, Owned<Object>, Owned<IntegerArray>>
      held_;
};

// How far a value is from a type: 0 is exact, more is worse, negative does not fit. Numbers fit each other where
// nothing is lost, an object fits its class and those above, "variant" takes every object, nil fits objects and arrays.
int ConversionCost(const Value &value, const Type &type);

// The value as a call hands it over, for a type that it fits. References stay the value's own.
RawValue ToRaw(const Value &value, const Type &type);

// Whether a reference that came from the other side is ours to give back, or is only lent to us.
enum class Reference : uint8_t { Given, Lent };

// The value of a result (given) or of an argument or a field (lent).
Value FromRaw(RawValue raw, const Type &type, Reference reference);

// The value of a literal in a declaration; integers that need no more have 32 bits.
Value FromLiteral(const Literal &literal);

}  // namespace standalone
