// Properties of any object, found by name: those of the host's own classes and those that a plug-in's table tells,
// through its accessors or straight in the field.
#pragma once

#include <cstdint>
#include <string_view>

#include "standalone/runtime/class_registry.h"
#include "standalone/runtime/objects.h"
#include "standalone/runtime/strings.h"

namespace standalone {

// A property together with the class that has it.
struct FoundProperty {
  const Class *owner = nullptr;
  const RegisteredProperty *property = nullptr;

  explicit operator bool() const { return property != nullptr; }
};

// The property of that name in the object's class or the nearest class above; empty if a plug-in's table has none.
FoundProperty FindProperty(const Class &type, std::string_view name);

// What lies in a field of a declared type, by its shape.
enum class FieldKind : uint8_t { Integer, Boolean, String, Object, Other };

// The kind of a declared type (any case): "integer" and its 32-bit kin with "color", "boolean", "string"; other numbers
// and addresses are Other; all else names a class.
FieldKind KindOfField(std::string_view type);

// The field of a property with a standard accessor; nil if the object is no instance.
void *PropertyField(Object &object, const FoundProperty &found);

// What the standard setter does with an object field: takes a reference to the value and gives back the one before.
void AssignObjectField(REALobject *field, REALobject value);
void AssignStringField(REALstring *field, REALstring value);

// Read and write by name. False, and nothing happens, if there is no such property of a fitting type, or if it cannot
// be written. GetText hands one reference to the caller.
bool GetIntegerProperty(Object &object, std::string_view name, int32_t *value);
bool GetBooleanProperty(Object &object, std::string_view name, bool *value);
bool GetTextProperty(Object &object, std::string_view name, Owned<String> *value);
bool SetIntegerProperty(Object &object, std::string_view name, int32_t value);
bool SetTextProperty(Object &object, std::string_view name, String *value);

}  // namespace standalone
