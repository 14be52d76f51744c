// Objects of the host: counted, of a class, with properties by name. The opaque address that plug-ins hold is the
// address of the Object.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "abi/host_layouts.h"
#include "standalone/runtime/owned.h"

namespace standalone {

class Class;
class String;

// Base of everything that the host counts. Starts with one reference, which belongs to the maker; ends at the last
// Unlock. Made with new only.
class Object {
 public:
  using HandleType = REALobject;

  explicit Object(const Class &type);
  Object(const Object &) = delete;
  Object &operator=(const Object &) = delete;

  // The object behind a plug-in's address; nil for nil. No test whether it is still alive (see LiveObject).
  static Object *From(REALobject handle) { return reinterpret_cast<Object *>(handle); }
  REALobject Handle() { return reinterpret_cast<REALobject>(this); }

  void Lock();
  void Unlock();
  int32_t References() const { return references_; }

  const Class &Type() const { return *class_; }

  // Properties of the host's own classes. False, and nothing happens, if there is none of that name and type.
  virtual bool GetInteger(std::string_view name, int32_t *value);
  virtual bool GetBoolean(std::string_view name, bool *value);
  virtual bool GetText(std::string_view name, String **value);  // borrowed
  virtual bool SetInteger(std::string_view name, int32_t value);
  virtual bool SetText(std::string_view name, String *value);

 protected:
  virtual ~Object();

 private:
  // Runs before the C++ destructors, while the object is still whole.
  virtual void Ending() {}

  int32_t references_ = 1;
  bool ending_ = false;
  const Class *class_;
};

// The object behind a plug-in's address, or nil. An address that is no living object's gives nil and is noted as a
// misdeed.
Object *LiveObject(REALobject handle);

// A T behind a plug-in's address; nil if there is none or the object is of another kind.
template <class T>
T *ObjectAs(REALobject handle) {
  return dynamic_cast<T *>(LiveObject(handle));
}

// True if the address is that of an object that has not ended.
bool IsLive(REALobject handle);

// How many objects have been made so far, and those alive that were made after the first `made`, in order.
uint64_t ObjectsMade();
std::vector<Object *> LiveObjects(uint64_t made = 0);

}  // namespace standalone
