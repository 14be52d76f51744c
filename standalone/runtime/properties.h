// Properties of any object, found by name: those of the host's own classes and those that a plug-in's table tells,
// through its accessors or straight in the field.
#pragma once

#include <cstdint>
#include <string_view>

#include "standalone/runtime/classes.h"
#include "standalone/runtime/fields.h"
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

// The field of a property with a standard accessor; nil if the object is no instance.
void *PropertyField(Object &object, const FoundProperty &found);

// Read and write by name. False, and nothing happens, if there is no such property of a fitting type, or if it cannot
// be written. GetText hands one reference to the caller.
bool GetIntegerProperty(Object &object, std::string_view name, int32_t *value);
bool GetBooleanProperty(Object &object, std::string_view name, bool *value);
bool GetTextProperty(Object &object, std::string_view name, Owned<String> *value);
bool SetIntegerProperty(Object &object, std::string_view name, int32_t value);
bool SetTextProperty(Object &object, std::string_view name, String *value);

}  // namespace standalone
