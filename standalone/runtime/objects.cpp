#include "standalone/runtime/objects.h"

#include "standalone/runtime/entries.h"
#include "standalone/runtime/host_state.h"
#include "standalone/runtime/live_set.h"

namespace standalone {
namespace {

// Never destroyed: objects may outlive every static.
LiveSet<Object> &Live() {
  static auto &live = *new LiveSet<Object>;
  return live;
}

void LockObject(REALobject handle) {
  if (Object *const object = LiveObject(handle); object != nullptr) object->Lock();
}

void UnlockObject(REALobject handle) {
  if (Object *const object = LiveObject(handle); object != nullptr) object->Unlock();
}

}  // namespace

// Plug-ins may keep words of their own from byte 24 of an object on.
static_assert(sizeof(Object) <= 24);

Object::Object(const Class &type) : class_(&type) { Live().Add(this); }

Object::~Object() { Live().Remove(this); }

void Object::Lock() { ++references_; }

void Object::Unlock() {
  if (--references_ > 0 || ending_) return;
  // What runs at the end may take and drop references of its own, without ending the object again.
  ending_ = true;
  Ending();
  delete this;
}

bool Object::GetInteger(std::string_view, int32_t *) { return false; }
bool Object::GetBoolean(std::string_view, bool *) { return false; }
bool Object::GetText(std::string_view, String **) { return false; }
bool Object::SetInteger(std::string_view, int32_t) { return false; }
bool Object::SetText(std::string_view, String *) { return false; }

Object *LiveObject(REALobject handle) {
  if (handle == nullptr) return nullptr;
  if (IsLive(handle)) return Object::From(handle);
  if (HostState::IsRunning()) HostState::Current().AddMisdeed("an object was used that has ended or never was one");
  return nullptr;
}

bool IsLive(REALobject handle) { return Live().Has(handle); }

uint64_t ObjectsMade() { return Live().Made(); }

std::vector<Object *> LiveObjects(uint64_t made) { return Live().MadeAfter(made); }

std::vector<Entry> ObjectEntries() {
  return {MakeEntry<"REALLockObject", LockObject>(), MakeEntry<"REALUnlockObject", UnlockObject>()};
}

}  // namespace standalone
