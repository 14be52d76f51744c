#include "standalone/runtime/class_registry.h"

#include <algorithm>
#include <utility>

#include "standalone/runtime/entries.h"
#include "standalone/runtime/host_state.h"
#include "standalone/runtime/instances.h"

namespace standalone {
namespace {

uintptr_t HandleOf(const RegisteredEvent &event) { return reinterpret_cast<uintptr_t>(&event); }

// The event of a class, or of one above it, by declaration or name; nil if there is none.
const RegisteredEvent *FindEvent(const Class *type, std::string_view text) {
  for (; type != nullptr; type = type->Super()) {
    if (type->Definition() == nullptr) continue;
    for (const RegisteredEvent &event : type->Definition()->events) {
      if (DeclarationsEqual(text, event.declaration) || NamesEqual(text, DeclaredName(event.declaration))) {
        return &event;
      }
    }
  }
  return nullptr;
}

void WriteEventHandles(REALclassDefinition *definition, const std::vector<RegisteredEvent> &events) {
  for (size_t i = 0; i < events.size(); ++i) {
    if (definition->version == 9) {
      reinterpret_cast<REALevent9 *>(definition->events)[i].forSystemUse = HandleOf(events[i]);
    } else {
      definition->events[i].forSystemUse = HandleOf(events[i]);
    }
  }
}

constexpr size_t AlignedTo16(size_t size) { return (size + 15) & ~size_t{15}; }

}  // namespace

ClassRegistry::~ClassRegistry() {
  static auto &retired = *new std::vector<decltype(classes_)>;
  retired.push_back(std::move(classes_));
}

Class &ClassRegistry::Add(std::string name, const Class *super, Class::Maker maker) {
  if (Find(name) != nullptr) throw ClassError("there is a class " + name + " already");
  auto added = std::make_unique<Class>();
  added->name_ = name;
  added->super_ = super;
  added->maker_ = std::move(maker);
  added->dataOffset_ = added->dataEnd_ = super == nullptr ? kFirstDataOffset : super->dataEnd_;
  return *(classes_[std::move(name)] = std::move(added));
}

const Class *ClassRegistry::Find(std::string_view name) const {
  const auto found = classes_.find(name);
  return found == classes_.end() ? nullptr : found->second.get();
}

const Class &ClassRegistry::Get(std::string_view name) const {
  const Class *const found = Find(name);
  if (found == nullptr) throw ClassError("there is no class " + std::string(name));
  return *found;
}

std::vector<const Class *> ClassRegistry::Registered() const { return registered_; }

const Class &ClassRegistry::Define(std::string name, const Class *super, Class::Maker maker) {
  return Add(std::move(name), super, std::move(maker));
}

void ClassRegistry::Describe(std::string_view name, RegisteredClass members) {
  const auto found = classes_.find(name);
  if (found == classes_.end()) throw ClassError("there is no class " + std::string(name));
  found->second->definition_ = std::make_unique<RegisteredClass>(std::move(members));
}

const Class &ClassRegistry::Register(REALclassDefinition *definition) {
  auto read = std::make_unique<RegisteredClass>(ReadDefinition(*definition));
  const Class *const super = read->superName.empty() ? nullptr : &Get(read->superName);
  if (super != nullptr && super->Definition() == nullptr) {
    throw ClassError("class " + read->name + " is made a subclass of " + super->Name() + ", which is the host's own");
  }
  std::map<uintptr_t, void *> handlers;
  for (const RegisteredEventInstance &instance : read->eventInstances) {
    const RegisteredEvent *const event = FindEvent(super, instance.name);
    if (event == nullptr) throw ClassError("class " + read->name + " handles the unknown event " + instance.name);
    handlers[HandleOf(*event)] = instance.implementation;
  }

  Class &added = Add(read->name, super, Instance::Make);
  added.dataOffset_ = AlignedTo16(added.dataOffset_);
  added.dataEnd_ = added.dataOffset_ + read->dataSize;
  added.handlers_ = std::move(handlers);
  added.definition_ = std::move(read);
  definition->forSystemUse = added.dataOffset_;
  WriteEventHandles(definition, added.definition_->events);
  registered_.push_back(&added);
  return added;
}

const Class &ClassRegistry::DefineSubclass(std::string name, std::string_view superName, EventHandlers handlers) {
  const Class &super = Get(superName);
  std::map<uintptr_t, void *> byEvent;
  for (const auto &[text, function] : handlers) {
    const RegisteredEvent *const event = FindEvent(&super, text);
    if (event == nullptr) throw ClassError("class " + super.Name() + " has no event " + text);
    byEvent[HandleOf(*event)] = function;
  }
  Class &added = Add(std::move(name), &super, super.maker_);
  added.handlers_ = std::move(byEvent);
  return added;
}

Object *ClassRegistry::NewInstance(std::string_view name) const {
  const Class *const type = Find(name);
  return type == nullptr || !type->maker_ ? nullptr : type->maker_(*type);
}

void *ClassRegistry::FindHandler(const Object &object, uintptr_t eventHandle) const {
  for (const Class *type = &object.Type(); type != nullptr; type = type->Super()) {
    const auto found = type->handlers_.find(eventHandle);
    if (found != type->handlers_.end()) return found->second;
  }
  return nullptr;
}

namespace {

void PluginRegisterClass(REALclassDefinition *definition) {
  try {
    HostState::Current().Classes().Register(definition);
  } catch (const ClassError &error) {
    HostState::Current().AddMisdeed(error.what());
  }
}

REALobject PluginNewInstance(const char *className) {
  Object *const made = className == nullptr ? nullptr : HostState::Current().Classes().NewInstance(className);
  return made == nullptr ? nullptr : made->Handle();
}

// A class reference is the address of the Class.
void *PluginObjectType(const char *className) {
  return className == nullptr ? nullptr : const_cast<Class *>(HostState::Current().Classes().Find(className));
}

void *GetEventInstance(REALobject handle, uintptr_t event) {
  const Object *const object = LiveObject(handle);
  return object == nullptr ? nullptr : HostState::Current().Classes().FindHandler(*object, event);
}

}  // namespace

std::vector<Entry> ClassEntries() {
  return {MakeEntry<"PluginRegisterClass", PluginRegisterClass>(), MakeEntry<"PluginNewInstance", PluginNewInstance>(),
          MakeEntry<"pluginObjectType", PluginObjectType>(), MakeEntry<"GetEventInstance", GetEventInstance>()};
}

}  // namespace standalone
