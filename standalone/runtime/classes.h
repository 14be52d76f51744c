// What a class is to the host: its name, the class above it, and what a plug-in has told of it, copied from the tables,
// of whichever version, into one plain form.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "abi/host_layouts.h"

namespace standalone {

class Object;

// A class that cannot be defined; the message says why in one line.
class ClassError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct RegisteredProperty {
  std::string group;
  std::string name;
  std::string type;
  uint32_t flags;
  void *getter;   // REALstandardAccessor: the field at record + param
  void *setter;   // nil: read-only
  int32_t param;  // third word of the accessors, or the field's position in the record
};

struct RegisteredMethod {
  void *function;
  void *setter;  // of an assignable method, else nil
  std::string declaration;
  uint32_t flags;
};

struct RegisteredEvent {
  std::string declaration;
};

// Handler that a registered class itself has for an event of its superclass.
struct RegisteredEventInstance {
  std::string name;
  void *implementation;
};

struct RegisteredConstant {
  std::string declaration;  // "NAME = literal"
  uint32_t flags;
};

// What one definition said. Flags are kept to be shown; this host enforces none.
struct RegisteredClass {
  uint32_t version = 0;
  std::string name;
  std::string superName;
  std::string interfaces;
  uint32_t flags = 0;
  size_t dataSize = 0;
  void *constructor = nullptr;  // void (obj), run on the new instance
  void *destructor = nullptr;   // void (obj), run on the dying instance
  std::vector<RegisteredProperty> properties;
  std::vector<RegisteredMethod> methods;
  std::vector<RegisteredEvent> events;
  std::vector<RegisteredEventInstance> eventInstances;
  std::vector<RegisteredConstant> constants;
  std::vector<RegisteredProperty> sharedProperties;
  std::vector<RegisteredMethod> sharedMethods;
};

// Copies a definition by its version: 10, 11 and 12 have the newer records; 9 has the older ones and ends with the
// count of the shared methods. Throws ClassError on any other version or a missing name.
RegisteredClass ReadDefinition(const REALclassDefinition &definition);

class Class {
 public:
  // Makes an instance with one reference; empty for a class that cannot be made by name alone.
  using Maker = std::function<Object *(const Class &)>;

  const std::string &Name() const { return name_; }
  // Nil at the top.
  const Class *Super() const { return super_; }
  // What a plug-in registered under this name; nil for other classes.
  const RegisteredClass *Definition() const { return definition_.get(); }
  // Where the data of this very class lies in an instance of it or of a subclass, in bytes, and where it ends.
  size_t DataOffset() const { return dataOffset_; }
  size_t DataEnd() const { return dataEnd_; }
  // True for a class that is `other` or comes from it.
  bool IsA(const Class &other) const;
  bool IsA(std::string_view name) const;

 private:
  friend class ClassRegistry;

  std::string name_;
  const Class *super_ = nullptr;
  std::unique_ptr<RegisteredClass> definition_;
  size_t dataOffset_ = 0;
  size_t dataEnd_ = 0;
  Maker maker_;
  std::map<uintptr_t, void *> handlers_;  // by event handle
};

}  // namespace standalone
