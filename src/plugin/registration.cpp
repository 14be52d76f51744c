#include "plugin/registration.h"

#include <cstdio>
#include <cstring>

#include "host/host_services.h"
#include "host/resources.h"

namespace zvk::plugin {

void RewriteConstants(REALconstant *constants, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    REALconstant &constant = constants[i];
    const size_t size = std::strlen(constant.declaration) + 15;
    ZeroedBuffer<char> text(static_cast<int64_t>(size));
    if (!text) continue;
    const auto number = static_cast<unsigned>(constant.reserved);
    std::snprintf(text.Get(), size, number <= 9 ? "%s = %u" : "%s = &h%08X", constant.declaration, number);
    constant.declaration = text.Release();
    constant.reserved = 0;
  }
}

namespace {

void FixFlags(uint32_t &flags) {
  if (rbversion >= 2010.029) {
    if (flags & kFlagNewConsole) flags |= kFlagConsole;
    if (flags & kFlagNewCounterpart) flags |= kFlagConsoleCounterpart;
  }
  flags &= ~(kFlagNewConsole | kFlagNewCounterpart | kFlagInternal);
}

template <class Record>
void FixTable(Record *records, size_t count) {
  for (size_t i = 0; i < count; ++i) FixFlags(records[i].flags);
}

}  // namespace

void FixConsoleFlags(REALclassDefinition *definition) {
  FixFlags(definition->flags);
  FixTable(definition->methods, definition->methodCount);
  FixTable(definition->sharedMethods, definition->sharedMethodCount);
  FixTable(definition->properties, definition->propertyCount);
  FixTable(definition->sharedProperties, definition->sharedPropertyCount);
}

namespace {

// A copy of a table in the older records, each the newer one without its last two fields. Stays allocated.
template <class Record9, class Record>
Record9 *Older(const Record *records, size_t count) {
  static_assert(sizeof(Record9) == offsetof(Record, attributeCount));
  if (records == nullptr || count == 0) return nullptr;
  ZeroedBuffer<Record9> older(static_cast<int64_t>(count));
  if (!older) return nullptr;
  for (size_t i = 0; i < count; ++i) std::memcpy(&older[static_cast<ptrdiff_t>(i)], &records[i], sizeof(Record9));
  return older.Release();
}

// The definition's fields are typed for the newest records; a version 9 host knows what it reads.
template <class Record, class Record9>
Record *AsNewer(Record9 *older) {
  return reinterpret_cast<Record *>(older);
}

REALmethodDefinition *OlderMethods(const REALmethodDefinition *methods, size_t count) {
  return AsNewer<REALmethodDefinition>(Older<REALmethodDefinition9>(methods, count));
}

REALproperty *OlderProperties(const REALproperty *properties, size_t count) {
  return AsNewer<REALproperty>(FixProperties(properties, count));
}

REALevent *OlderEvents(REALevent *events, size_t count) {
  auto *older = Older<REALevent9>(events, count);
  // A later look at the newer record finds the one that the host knows.
  for (size_t i = 0; older != nullptr && i < count; ++i)
    events[i].forSystemUse = reinterpret_cast<uintptr_t>(&older[i]);
  return AsNewer<REALevent>(older);
}

REALclassDefinition Older(const REALclassDefinition &definition) {
  REALclassDefinition older{};
  older.version = static_cast<uint32_t>(CurrentREALControlVersion);
  older.name = definition.name;
  older.superName = definition.superName;
  older.dataSize = definition.dataSize;
  older.forSystemUse = definition.forSystemUse;
  older.constructor = definition.constructor;
  older.destructor = definition.destructor;
  older.properties = OlderProperties(definition.properties, definition.propertyCount);
  older.propertyCount = definition.propertyCount;
  older.methods = OlderMethods(definition.methods, definition.methodCount);
  older.methodCount = definition.methodCount;
  older.events = OlderEvents(definition.events, definition.eventCount);
  older.eventCount = definition.eventCount;
  older.eventInstances = definition.eventInstances;
  older.eventInstanceCount = definition.eventInstanceCount;
  older.interfaces = definition.interfaces;
  older.constants = AsNewer<REALconstant>(Older<REALconstant9>(definition.constants, definition.constantCount));
  older.constantCount = definition.constantCount;
  older.flags = definition.flags;
  older.sharedProperties = OlderProperties(definition.sharedProperties, definition.sharedPropertyCount);
  older.sharedPropertyCount = definition.sharedPropertyCount;
  older.sharedMethods = OlderMethods(definition.sharedMethods, definition.sharedMethodCount);
  older.sharedMethodCount = definition.sharedMethodCount;
  return older;
}

}  // namespace

REALproperty9 *FixProperties(const REALproperty *properties, size_t count) {
  return Older<REALproperty9>(properties, count);
}

void MyREALRegisterClass(REALclassDefinition *definition) {
  definition->dataSize = (definition->dataSize + 15) & ~size_t{15};
  if (CurrentREALControlVersion > 9) {
    definition->version = static_cast<uint32_t>(CurrentREALControlVersion);
  } else {
    *definition = Older(*definition);
  }
  REALRegisterClass(definition);
}

}  // namespace zvk::plugin
