// Instances of classes that plug-ins have registered, or of subclasses of these: an object with room for the data of
// each class, zero-filled, which the plug-in's handlers find at instance address + class data offset.
#pragma once

#include <cstddef>

#include "standalone/runtime/classes.h"
#include "standalone/runtime/objects.h"

namespace standalone {

// Where the data of the topmost class starts. The bytes from 24 on up to here are left to plug-ins that keep words of
// their own at fixed places.
inline constexpr size_t kFirstDataOffset = 48;

// At its end an instance runs the destructors of its classes from the bottom up, then gives back what property fields
// with the standard accessors still hold.
class Instance : public Object {
 public:
  // Makes an instance with one reference, and runs the constructors of its classes from the top down.
  static Instance *Make(const Class &type);

  // The data of one of the instance's classes, 16-byte aligned.
  std::byte *Data(const Class &type);
  // The field of a property of that class with a standard accessor.
  void *Field(const Class &type, const RegisteredProperty &property) { return Data(type) + property.param; }

  static void operator delete(void *memory);

 private:
  explicit Instance(const Class &type) : Object(type) {}
  static void *operator new(size_t, void *memory) { return memory; }

  void Ending() override;
};

}  // namespace standalone
