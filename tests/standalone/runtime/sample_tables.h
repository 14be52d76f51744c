// A small class as a plug-in would register it, in the records of both table versions, and calls of host entries by
// name as a plug-in makes them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "abi/host_layouts.h"
#include "standalone/runtime/bytes.h"
#include "standalone/runtime/host.h"
#include "standalone/runtime/instances.h"

namespace sample {

// The function behind an entry, nil if the host denies it.
template <class Signature>
Signature *Entry(const char *name) {
  return reinterpret_cast<Signature *>(standalone::Host::Resolve(name));
}

struct Record {
  int32_t count;
  uint8_t flag;
  REALobject held;  // written by the host's standard setter
  REALobject kept;  // read-only to the host
  REALstring label;
  int32_t constructed;
};

inline int destroyed = 0;
inline size_t dataOffset = 0;  // as a plug-in keeps it, from the definition's forSystemUse

inline Record &RecordOf(REALobject instance) {
  return *reinterpret_cast<Record *>(reinterpret_cast<std::byte *>(instance) + dataOffset);
}

inline void Construct(REALobject instance) {
  if (dataOffset != 0) RecordOf(instance).constructed = 1;
}
inline void Destruct(REALobject) { ++destroyed; }

inline int32_t Twice(REALobject, int32_t value) { return 2 * value; }
inline int32_t GetItem(REALobject instance, int32_t index) { return RecordOf(instance).count + index; }
inline void SetItem(REALobject instance, int32_t index, int32_t value) { RecordOf(instance).count = value - index; }
inline int32_t Answer() { return 42; }

inline int32_t GetDoubled(REALobject instance, int32_t param) { return 2 * RecordOf(instance).count + param; }
inline void SetDoubled(REALobject instance, int32_t param, int32_t value) {
  RecordOf(instance).count = (value - param) / 2;
}
inline uint8_t GetIsOdd(REALobject instance, int32_t) { return RecordOf(instance).count & 1; }
inline REALstring GetTitle(REALobject, int32_t) {
  return Entry<REALstring(const void *, int32_t)>("REALBuildString")("title", 5);
}
inline void SetTitle(REALobject instance, int32_t, REALstring value) { RecordOf(instance).count = value != nullptr; }

template <class Function>
void *Address(Function *function) {
  return reinterpret_cast<void *>(function);
}

// Tables of the class "Sample"; `Property` and so on are the records of one version.
template <class Property, class Method, class Event, class Constant>
struct Tables {
  Property properties[8] = {
      MakeProperty("Count", "Integer", REALstandardAccessor, REALstandardAccessor, offsetof(Record, count)),
      MakeProperty("Flag", "Boolean", REALstandardAccessor, nullptr, offsetof(Record, flag)),
      MakeProperty("Held", "Sample", REALstandardAccessor, REALstandardAccessor, offsetof(Record, held)),
      MakeProperty("Kept", "MemoryBlock", REALstandardAccessor, nullptr, offsetof(Record, kept)),
      MakeProperty("Label", "String", REALstandardAccessor, REALstandardAccessor, offsetof(Record, label)),
      MakeProperty("Doubled", "Integer", Address(GetDoubled), Address(SetDoubled), 1),
      MakeProperty("IsOdd", "Boolean", Address(GetIsOdd), nullptr, 0),
      MakeProperty("Title", "String", Address(GetTitle), Address(SetTitle), 0)};
  Method methods[2] = {MakeMethod("Twice(value as integer) as integer", Address(Twice), nullptr, 4),
                       MakeMethod("Item(index as integer) as integer", Address(GetItem), Address(SetItem), 0x40000)};
  Method sharedMethods[1] = {MakeMethod("Answer as integer", Address(Answer), nullptr, 4)};
  Event events[2] = {MakeEvent("Closed()"), MakeEvent("Asked(a as integer, b as integer, c as integer) as Sample")};
  Constant constants[2] = {MakeConstant("One = 1", 0), MakeConstant("Big = &h0000000B", 4)};

  static Property MakeProperty(const char *name, const char *type, void *getter, void *setter, size_t param) {
    Property record{};
    record.group = "";
    record.name = name;
    record.type = type;
    record.flags = 6;
    record.getter = getter;
    record.setter = setter;
    record.param = static_cast<int32_t>(param);
    return record;
  }
  static Method MakeMethod(const char *declaration, void *function, void *setter, uint32_t flags) {
    Method record{};
    record.function = function;
    record.setterFunction = setter;
    record.declaration = declaration;
    record.flags = flags;
    return record;
  }
  static Event MakeEvent(const char *declaration) {
    Event record{};
    record.declaration = declaration;
    return record;
  }
  static Constant MakeConstant(const char *declaration, uint32_t flags) {
    Constant record{};
    record.declaration = declaration;
    record.flags = flags;
    return record;
  }

  REALclassDefinition Definition(uint32_t version) {
    REALclassDefinition definition{};
    definition.version = version;
    definition.name = "Sample";
    definition.dataSize = sizeof(Record);
    definition.constructor = Address(Construct);
    definition.destructor = Address(Destruct);
    definition.properties = reinterpret_cast<REALproperty *>(properties);
    definition.propertyCount = std::size(properties);
    definition.methods = reinterpret_cast<REALmethodDefinition *>(methods);
    definition.methodCount = std::size(methods);
    definition.events = reinterpret_cast<REALevent *>(events);
    definition.eventCount = std::size(events);
    definition.interfaces = "Readable";
    definition.constants = reinterpret_cast<REALconstant *>(constants);
    definition.constantCount = std::size(constants);
    definition.flags = 4;
    definition.sharedMethods = reinterpret_cast<REALmethodDefinition *>(sharedMethods);
    definition.sharedMethodCount = std::size(sharedMethods);
    return definition;
  }
};

using Tables12 = Tables<REALproperty, REALmethodDefinition, REALevent, REALconstant>;
using Tables9 = Tables<REALproperty9, REALmethodDefinition9, REALevent9, REALconstant9>;

// A version 9 definition with nothing readable behind sharedMethodCount.
class Definition9 {
 public:
  explicit Definition9(Tables9 &tables) : bytes_(offsetof(REALclassDefinition, delegates), true) {
    const REALclassDefinition whole = tables.Definition(9);
    std::memcpy(bytes_.Data(), &whole, bytes_.Size());
  }
  REALclassDefinition *Get() const { return static_cast<REALclassDefinition *>(bytes_.Data()); }

 private:
  standalone::Bytes bytes_;
};

// A host with the class "Sample" registered from version 12 tables.
class SampleHost : public standalone::Host {
 public:
  explicit SampleHost(standalone::HostOptions options = {}) : Host(std::move(options)) {
    destroyed = 0;
    dataOffset = 0;
    definition = tables.Definition(12);
    Classes().Register(&definition);
    dataOffset = definition.forSystemUse;
  }

  standalone::Owned<standalone::Object> New(const char *name = "Sample") {
    return standalone::Owned<standalone::Object>::Adopt(Classes().NewInstance(name));
  }

  Tables12 tables;
  REALclassDefinition definition;
};

}  // namespace sample
