#include "standalone/runtime/properties.h"

#include "standalone/runtime/entries.h"
#include "standalone/runtime/instances.h"
#include "standalone/runtime/names.h"
#include "standalone/runtime/standard_input.h"

namespace standalone {
namespace {

// A table's property, read by its getter or straight from the field.
template <class Value>
Value ReadValue(Object &object, const FoundProperty &found) {
  if (found.property->getter == REALstandardAccessor) return *static_cast<Value *>(PropertyField(object, found));
  const auto getter = reinterpret_cast<Value (*)(REALobject, int32_t)>(found.property->getter);
  const PluginCall call;
  return getter(object.Handle(), found.property->param);
}

template <class Value>
void CallSetter(Object &object, const FoundProperty &found, Value value) {
  const auto setter = reinterpret_cast<void (*)(REALobject, int32_t, Value)>(found.property->setter);
  const PluginCall call;
  setter(object.Handle(), found.property->param, value);
}

bool CanRead(Object &object, const FoundProperty &found, FieldKind kind) {
  return found.property->getter != nullptr && KindOfField(found.property->type) == kind &&
         (found.property->getter != REALstandardAccessor || PropertyField(object, found) != nullptr);
}

bool CanWrite(Object &object, const FoundProperty &found, FieldKind kind) {
  return found.property->setter != nullptr && KindOfField(found.property->type) == kind &&
         (found.property->setter != REALstandardAccessor || PropertyField(object, found) != nullptr);
}

}  // namespace

FoundProperty FindProperty(const Class &type, std::string_view name) {
  for (const Class *one = &type; one != nullptr; one = one->Super()) {
    if (one->Definition() == nullptr) continue;
    for (const RegisteredProperty &property : one->Definition()->properties) {
      if (NamesEqual(property.name, name)) return {one, &property};
    }
  }
  return {};
}

void *PropertyField(Object &object, const FoundProperty &found) {
  auto *const instance = dynamic_cast<Instance *>(&object);
  return instance == nullptr ? nullptr : instance->Field(*found.owner, *found.property);
}

bool GetIntegerProperty(Object &object, std::string_view name, int32_t *value) {
  const FoundProperty found = FindProperty(object.Type(), name);
  if (!found) return object.GetInteger(name, value);
  if (!CanRead(object, found, FieldKind::Integer)) return false;
  *value = ReadValue<int32_t>(object, found);
  return true;
}

bool GetBooleanProperty(Object &object, std::string_view name, bool *value) {
  const FoundProperty found = FindProperty(object.Type(), name);
  if (!found) return object.GetBoolean(name, value);
  if (!CanRead(object, found, FieldKind::Boolean)) return false;
  *value = ReadValue<uint8_t>(object, found) != 0;
  return true;
}

bool GetTextProperty(Object &object, std::string_view name, Owned<String> *value) {
  const FoundProperty found = FindProperty(object.Type(), name);
  if (!found) {
    String *borrowed = nullptr;
    if (!object.GetText(name, &borrowed)) return false;
    *value = Owned<String>::Share(borrowed);
    return true;
  }
  if (!CanRead(object, found, FieldKind::String)) return false;
  String *const read = String::From(ReadValue<REALstring>(object, found));
  // A getter hands over a reference; a field only shows what it holds.
  const bool isField = found.property->getter == REALstandardAccessor;
  *value = isField ? Owned<String>::Share(read) : Owned<String>::Adopt(read);
  return true;
}

bool SetIntegerProperty(Object &object, std::string_view name, int32_t value) {
  const FoundProperty found = FindProperty(object.Type(), name);
  if (!found) return object.SetInteger(name, value);
  if (!CanWrite(object, found, FieldKind::Integer)) return false;
  if (found.property->setter == REALstandardAccessor) {
    *static_cast<int32_t *>(PropertyField(object, found)) = value;
  } else {
    CallSetter(object, found, value);
  }
  return true;
}

bool SetTextProperty(Object &object, std::string_view name, String *value) {
  const REALstring handle = value == nullptr ? nullptr : value->Handle();
  const FoundProperty found = FindProperty(object.Type(), name);
  if (!found) return object.SetText(name, value);
  if (!CanWrite(object, found, FieldKind::String)) return false;
  if (found.property->setter == REALstandardAccessor) {
    AssignStringField(static_cast<REALstring *>(PropertyField(object, found)), handle);
  } else {
    CallSetter(object, found, handle);
  }
  return true;
}

namespace {

uint8_t SetPropValueString(REALobject handle, const char *name, REALstring value) {
  Object *const object = LiveObject(handle);
  return object != nullptr && name != nullptr && SetTextProperty(*object, name, String::From(value)) ? 1 : 0;
}

uint8_t SetPropValueInt(REALobject handle, const char *name, int32_t value) {
  Object *const object = LiveObject(handle);
  return object != nullptr && name != nullptr && SetIntegerProperty(*object, name, value) ? 1 : 0;
}

uint8_t GetPropValueInt(REALobject handle, const char *name, int32_t *value) {
  Object *const object = LiveObject(handle);
  return object != nullptr && name != nullptr && GetIntegerProperty(*object, name, value) ? 1 : 0;
}

uint8_t GetPropValueBool(REALobject handle, const char *name, uint8_t *value) {
  Object *const object = LiveObject(handle);
  bool read = false;
  if (object == nullptr || name == nullptr || !GetBooleanProperty(*object, name, &read)) return 0;
  *value = read ? 1 : 0;
  return 1;
}

}  // namespace

std::vector<Entry> PropertyEntries() {
  return {MakeEntry<"REALSetPropValueString", SetPropValueString>(),
          MakeEntry<"REALSetPropValueInt", SetPropValueInt>(), MakeEntry<"REALGetPropValueInt", GetPropValueInt>(),
          MakeEntry<"REALGetPropValueBool", GetPropValueBool>()};
}

}  // namespace standalone
