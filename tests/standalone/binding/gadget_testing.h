// A small plug-in made by hand, linked into the tests: plain functions over a plain record, and tables that name them.
// Its class "Gadget" has something of every type and kind of member, "Maker" has events.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

#include "abi/host_layouts.h"
#include "standalone/runtime/memory_block.h"
#include "standalone/runtime/objects.h"
#include "standalone/runtime/strings.h"

namespace standalone::gadgets {

// The data of a Gadget.
struct GadgetData {
  int32_t number;
  uint8_t flag;
  uint8_t neighbour;  // belongs to no property
  int64_t wide;
  double real;
  uint32_t tint;
  REALobject partner;
  REALstring label;
};

extern REALclassDefinition gadgetDefinition;  // below, as it names the handlers

// What the handlers saw last.
inline std::string constructorRun;  // "plain" or "number"
inline int32_t gotParam;            // third word of the accessors of the property "Double"

inline GadgetData &DataOf(REALobject gadget) {
  return *reinterpret_cast<GadgetData *>(reinterpret_cast<char *>(gadget) + gadgetDefinition.forSystemUse);
}

inline REALresolver resolver;

template <class Signature>
Signature *HostFunction(const char *name) {
  return reinterpret_cast<Signature *>(resolver(name));
}

inline REALstring NewString(const std::string &text) {
  return HostFunction<REALstring(const void *, int32_t)>("REALBuildString")(text.data(),
                                                                            static_cast<int32_t>(text.size()));
}

inline void LockObject(REALobject object) { HostFunction<void(REALobject)>("REALLockObject")(object); }

inline void Raise(const char *className, const char *message) {
  REALobject exception = HostFunction<REALobject(const char *)>("PluginNewInstance")(className);
  REALstring text = NewString(message);
  HostFunction<uint8_t(REALobject, const char *, REALstring)>("REALSetPropValueString")(exception, "Message", text);
  HostFunction<uint8_t(REALobject, const char *, int32_t)>("REALSetPropValueInt")(exception, "ErrorNumber", 42);
  HostFunction<void(REALobject)>("RuntimeRaiseException")(exception);
  HostFunction<void(REALobject)>("REALUnlockObject")(exception);
  HostFunction<void(REALstring)>("REALUnlockString")(text);
}

inline void ConstructPlain(REALobject instance) {
  constructorRun = "plain";
  DataOf(instance).number = -1;
}

inline void ConstructNumber(REALobject instance, int32_t number) {
  constructorRun = "number";
  DataOf(instance).number = number;
}

inline void ConstructText(REALobject, REALstring) { Raise("OutOfBoundsException", "no gadget is made of text"); }

inline int32_t Number(REALobject instance) { return DataOf(instance).number; }
inline int64_t Twice(REALobject, int64_t value) { return 2 * value; }
inline double Half(REALobject, double value) { return value / 2; }
inline uint8_t Negate(REALobject, uint8_t value) { return value == 0; }
inline uint32_t Mix(REALobject, uint32_t color) { return color ^ 0xFFFFFF; }
inline REALstring Shout(REALobject, REALstring text) { return NewString(TextOf(text) + "!"); }
inline REALstring NoText(REALobject) { return nullptr; }
inline int32_t Sum(REALobject, REALarray values) {
  int32_t sum = 0;
  const int32_t last = HostFunction<int32_t(REALarray)>("RuntimeUBound")(values);
  for (int32_t i = 0; i <= last; ++i) {
    sum += HostFunction<int32_t(REALarray, int32_t)>("RuntimeDirectReadIntArray")(values, i);
  }
  return sum;
}
inline REALobject Self(REALobject instance) {
  LockObject(instance);
  return instance;
}
inline REALobject Nothing(REALobject) { return nullptr; }
inline int32_t SizeOf(REALobject, REALobject block) {
  return block == nullptr ? -1 : ObjectAs<MemoryBlock>(block)->Size();
}
inline void Fail(REALobject) { Raise("OutOfBoundsException", "it fails"); }
inline REALobject FailWithResult(REALobject instance) {
  Raise("NilObjectException", "it fails late");
  LockObject(instance);
  return instance;
}

inline int32_t PickInteger(REALobject, int32_t) { return 1; }
inline int32_t PickDouble(REALobject, double) { return 2; }
inline int32_t PickColor(REALobject, uint32_t) { return 3; }
inline int32_t PickBlock(REALobject, REALobject) { return 4; }
inline int32_t PickTwo(REALobject, int32_t, int32_t) { return 5; }
inline int32_t PickText(REALobject, REALstring) { return 6; }
inline int32_t PickBlockAndFlag(REALobject, REALobject, uint8_t) { return 7; }
inline int32_t PickAny(REALobject, REALobject) { return 8; }

inline REALstring Describe(REALobject, int32_t a, uint8_t b, double c, REALobject d, REALstring e, uint32_t f) {
  return NewString(std::to_string(a) + "," + (b != 0 ? "true" : "false") + "," + std::to_string(c) + "," +
                   (d == nullptr ? "nil" : "object") + "," + TextOf(e) + "," + std::to_string(f));
}

inline int32_t GetSlot(REALobject instance, int32_t index) { return DataOf(instance).number + index; }
inline void SetSlot(REALobject instance, int32_t index, int32_t value) { DataOf(instance).number = value - index; }

inline int32_t GetDouble(REALobject instance, int32_t param) {
  gotParam = param;
  return 2 * DataOf(instance).number;
}
inline void SetDouble(REALobject instance, int32_t param, int32_t value) {
  gotParam = param;
  if (value % 2 != 0) {
    Raise("OutOfBoundsException", "odd");
    return;
  }
  DataOf(instance).number = value / 2;
}
inline REALstring GetTitle(REALobject instance, int32_t) {
  return NewString("gadget " + std::to_string(Number(instance)));
}

inline int32_t AddShared(int32_t a, int32_t b) { return a + b; }
inline uint8_t IsShared() { return 1; }
inline int32_t AddInstance(REALobject, int32_t, int32_t) { return -1; }

inline REALevent makerEvents[] = {
    {"Make(Size as integer, Name as string, Ratio as double, Base as Gadget) as Gadget", 0, 0, nullptr},
    {"Count as Int64", 0, 0, nullptr}};

// Asks the subclass; gives what it gets.
inline REALobject AskMake(REALobject maker, int32_t size, REALstring name, double ratio, REALobject base) {
  using Handler = REALobject(REALobject, int32_t, REALstring, double, REALobject);
  auto *const handler = reinterpret_cast<Handler *>(
      HostFunction<void *(REALobject, uintptr_t)>("GetEventInstance")(maker, makerEvents[0].forSystemUse));
  return handler == nullptr ? nullptr : handler(maker, size, name, ratio, base);
}
inline int64_t AskCount(REALobject maker) {
  using Handler = int64_t(REALobject);
  auto *const handler = reinterpret_cast<Handler *>(
      HostFunction<void *(REALobject, uintptr_t)>("GetEventInstance")(maker, makerEvents[1].forSystemUse));
  return handler == nullptr ? -1 : handler(maker);
}

template <class Result, class... Parameters>
inline void *Address(Result (*function)(Parameters...)) {
  return reinterpret_cast<void *>(function);
}

template <class Result, class... Parameters>
inline REALmethodDefinition Method(Result (*function)(Parameters...), const char *declaration, void *setter = nullptr) {
  return {Address(function), setter, declaration, 4, 0, nullptr};
}

inline REALproperty Property(const char *name, const char *type, void *getter, void *setter, size_t param) {
  return {"", name, type, 6, getter, setter, static_cast<int32_t>(param), nullptr, 0, nullptr, 0, nullptr};
}

inline REALproperty Field(const char *name, const char *type, size_t position) {
  return Property(name, type, REALstandardAccessor, REALstandardAccessor, position);
}

inline REALmethodDefinition gadgetMethods[] = {
    Method(ConstructPlain, "Constructor"),
    Method(ConstructNumber, "Constructor(number as integer)"),
    Method(ConstructText, "Constructor(text as string)"),
    Method(Number, "Number as integer"),
    Method(Twice, "Twice(value as Int64) as Int64"),
    Method(Half, "Half(value as double) as double"),
    Method(Negate, "Negate(value as boolean) as boolean"),
    Method(Mix, "Mix(value as color) as color"),
    Method(Shout, "Shout(text as string) as string"),
    Method(NoText, "NoText as string"),
    Method(Sum, "Sum(values() as integer) as integer"),
    Method(Self, "Self() as Gadget"),
    Method(Nothing, "Nothing as Gadget"),
    Method(SizeOf, "SizeOf(block as memoryblock) as integer"),
    Method(Fail, "Fail"),
    Method(FailWithResult, "FailWithResult as Gadget"),
    Method(PickInteger, "Pick(a as integer) as integer"),
    Method(PickDouble, "Pick(a as double) as integer"),
    Method(PickColor, "Pick(a as color) as integer"),
    Method(PickBlockAndFlag, "Pick(a as memoryblock, b as boolean = true) as integer"),
    Method(PickBlock, "Pick(a as memoryblock) as integer"),
    Method(PickTwo, "Pick(a as integer, b as integer) as integer"),
    Method(PickText, "Pick(a as string) as integer"),
    Method(PickAny, "Pick(a as variant) as integer"),
    Method(Describe,
           "Describe(a as integer = -10000, b as boolean = True, c as double = 0.5, d as Gadget = nil, e as string = "
           "\"none\", f as color = &c000010) as string"),
    Method(GetSlot, "Slot(index as integer) as integer", Address(SetSlot)),
    Method(AddInstance, "Add(a as integer, b as integer) as integer"),
};

inline REALproperty gadgetProperties[] = {
    Field("Number", "Integer", offsetof(GadgetData, number)),
    Field("Flag", "Boolean", offsetof(GadgetData, flag)),
    Field("Wide", "Int64", offsetof(GadgetData, wide)),
    Field("Real", "Double", offsetof(GadgetData, real)),
    Field("Tint", "Color", offsetof(GadgetData, tint)),
    Field("Partner", "Gadget", offsetof(GadgetData, partner)),
    Field("Label", "String", offsetof(GadgetData, label)),
    Property("Fixed", "Integer", REALstandardAccessor, nullptr, offsetof(GadgetData, number)),
    Property("Double", "Integer", Address(GetDouble), Address(SetDouble), 77),
    Property("Title", "String", Address(GetTitle), nullptr, 0),
};

inline REALconstant gadgetConstants[] = {
    {"Seven = 7", 0, 0, 0, nullptr},
    {"Eleven = &h0000000B", 0, 0, 0, nullptr},
};

inline REALmethodDefinition gadgetSharedMethods[] = {
    Method(AddShared, "Add(a as integer, b as integer) as integer"),
    Method(IsShared, "IsShared as boolean"),
};

inline REALmethodDefinition makerMethods[] = {
    Method(AskMake, "AskMake(size as integer, name as string, ratio as double, base as Gadget) as Gadget"),
    Method(AskCount, "AskCount as Int64"),
};

inline REALclassDefinition makerDefinition = [] {
  REALclassDefinition definition = {};
  definition.version = 12;
  definition.name = "Maker";
  definition.methods = makerMethods;
  definition.methodCount = std::size(makerMethods);
  definition.events = makerEvents;
  definition.eventCount = std::size(makerEvents);
  return definition;
}();

inline REALclassDefinition gadgetDefinition = [] {
  REALclassDefinition definition = {};
  definition.version = 12;
  definition.name = "Gadget";
  definition.dataSize = sizeof(GadgetData);
  definition.methods = gadgetMethods;
  definition.methodCount = std::size(gadgetMethods);
  definition.properties = gadgetProperties;
  definition.propertyCount = std::size(gadgetProperties);
  definition.constants = gadgetConstants;
  definition.constantCount = std::size(gadgetConstants);
  definition.sharedMethods = gadgetSharedMethods;
  definition.sharedMethodCount = std::size(gadgetSharedMethods);
  return definition;
}();

// The plug-in's entry.
inline void GadgetMain(REALresolver given) {
  resolver = given;
  HostFunction<void(int32_t)>("RegisterPluginVersion")(12);
  const auto registerClass = HostFunction<void(REALclassDefinition *)>("PluginRegisterClass");
  registerClass(&gadgetDefinition);
  registerClass(&makerDefinition);
}

}  // namespace standalone::gadgets
