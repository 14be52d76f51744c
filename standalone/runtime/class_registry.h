// The classes of a host by name: its own, those that plug-ins have registered, and subclasses that a program defines.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "abi/host_layouts.h"
#include "standalone/runtime/classes.h"
#include "standalone/runtime/names.h"
#include "standalone/runtime/objects.h"

namespace standalone {

// Handlers for events, by the event's declaration or name.
using EventHandlers = std::map<std::string, void *, NameOrder>;

class ClassRegistry {
 public:
  ClassRegistry() = default;
  ClassRegistry(const ClassRegistry &) = delete;
  ClassRegistry &operator=(const ClassRegistry &) = delete;
  // The classes stay, since objects may outlive their host.
  ~ClassRegistry();

  // The class of that name (any case), or nil.
  const Class *Find(std::string_view name) const;
  // As Find, but throws ClassError if there is no such class.
  const Class &Get(std::string_view name) const;
  // The classes that plug-ins have registered, in order.
  std::vector<const Class *> Registered() const;

  // Adds a class of the host's own.
  const Class &Define(std::string name, const Class *super, Class::Maker maker);
  // Tells the members of a class of the host's own, in the form of a plug-in's table; there is no data in its
  // instances. Throws ClassError for an unknown class.
  void Describe(std::string_view name, RegisteredClass members);
  // Adds a class from a plug-in's table, and writes what the table has room for: the class data offset and the events'
  // handles. Throws ClassError.
  const Class &Register(REALclassDefinition *definition);
  // Adds a subclass of a registered class with handlers for its events: functions that take the instance, then the
  // event's arguments. A handler for an event that no class above has is a ClassError, and so is an unknown superclass.
  const Class &DefineSubclass(std::string name, std::string_view superName, EventHandlers handlers);

  // A new instance with one reference, or nil if there is no such class or it cannot be made by name alone.
  Object *NewInstance(std::string_view name) const;

  // The handler that the object's class, or one above it, has for an event; nil if none.
  void *FindHandler(const Object &object, uintptr_t eventHandle) const;

 private:
  Class &Add(std::string name, const Class *super, Class::Maker maker);

  std::map<std::string, std::unique_ptr<Class>, NameOrder> classes_;
  std::vector<const Class *> registered_;
};

}  // namespace standalone
