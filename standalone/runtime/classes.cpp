#include "standalone/runtime/classes.h"

#include "standalone/runtime/names.h"

namespace standalone {
namespace {

std::string TextOr(const char *text) { return text == nullptr ? "" : text; }

// Walks a table of records of the kind that its version has. The definition's fields are typed for the newest.
template <class Older, class Newer, class Copied, class Copy>
std::vector<Copied> ReadTable(const Newer *table, size_t count, bool older, Copy copy) {
  std::vector<Copied> result;
  if (table == nullptr) return result;
  result.reserve(count);
  const auto *const olderTable = reinterpret_cast<const Older *>(table);
  for (size_t i = 0; i < count; ++i) result.push_back(older ? copy(olderTable[i]) : copy(table[i]));
  return result;
}

std::vector<RegisteredProperty> ReadProperties(const REALproperty *table, size_t count, bool older) {
  return ReadTable<REALproperty9, REALproperty, RegisteredProperty>(table, count, older, [](const auto &record) {
    return RegisteredProperty{TextOr(record.group), TextOr(record.name), TextOr(record.type), record.flags,
                              record.getter,        record.setter,       record.param};
  });
}

std::vector<RegisteredMethod> ReadMethods(const REALmethodDefinition *table, size_t count, bool older) {
  return ReadTable<REALmethodDefinition9, REALmethodDefinition, RegisteredMethod>(
      table, count, older, [](const auto &record) {
        return RegisteredMethod{record.function, record.setterFunction, TextOr(record.declaration), record.flags};
      });
}

std::vector<RegisteredEvent> ReadEvents(const REALevent *table, size_t count, bool older) {
  return ReadTable<REALevent9, REALevent, RegisteredEvent>(
      table, count, older, [](const auto &record) { return RegisteredEvent{TextOr(record.declaration)}; });
}

std::vector<RegisteredConstant> ReadConstants(const REALconstant *table, size_t count, bool older) {
  return ReadTable<REALconstant9, REALconstant, RegisteredConstant>(table, count, older, [](const auto &record) {
    return RegisteredConstant{TextOr(record.declaration), record.flags};
  });
}

}  // namespace

RegisteredClass ReadDefinition(const REALclassDefinition &definition) {
  if (definition.version < 9 || definition.version > 12) {
    throw ClassError("a class has tables of the unknown version " + std::to_string(definition.version));
  }
  if (definition.name == nullptr || *definition.name == '\0') throw ClassError("a class has no name");
  const bool older = definition.version == 9;

  RegisteredClass result;
  result.version = definition.version;
  result.name = definition.name;
  result.superName = TextOr(definition.superName);
  result.interfaces = TextOr(definition.interfaces);
  result.flags = definition.flags;
  result.dataSize = definition.dataSize;
  result.constructor = definition.constructor;
  result.destructor = definition.destructor;
  result.properties = ReadProperties(definition.properties, definition.propertyCount, older);
  result.methods = ReadMethods(definition.methods, definition.methodCount, older);
  result.events = ReadEvents(definition.events, definition.eventCount, older);
  for (size_t i = 0; definition.eventInstances != nullptr && i < definition.eventInstanceCount; ++i) {
    result.eventInstances.push_back(
        {TextOr(definition.eventInstances[i].name), definition.eventInstances[i].implementation});
  }
  result.constants = ReadConstants(definition.constants, definition.constantCount, older);
  result.sharedProperties = ReadProperties(definition.sharedProperties, definition.sharedPropertyCount, older);
  result.sharedMethods = ReadMethods(definition.sharedMethods, definition.sharedMethodCount, older);
  return result;
}

bool Class::IsA(const Class &other) const {
  for (const Class *type = this; type != nullptr; type = type->super_) {
    if (type == &other) return true;
  }
  return false;
}

bool Class::IsA(std::string_view name) const {
  for (const Class *type = this; type != nullptr; type = type->super_) {
    if (NamesEqual(type->name_, name)) return true;
  }
  return false;
}

}  // namespace standalone
