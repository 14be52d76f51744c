#include "standalone/runtime/exceptions.h"

#include "standalone/runtime/classes.h"
#include "standalone/runtime/entries.h"
#include "standalone/runtime/host_state.h"
#include "standalone/runtime/names.h"

namespace standalone {

bool ExceptionObject::GetInteger(std::string_view name, int32_t *value) {
  if (!NamesEqual(name, "ErrorNumber")) return false;
  *value = errorNumber_;
  return true;
}

bool ExceptionObject::GetText(std::string_view name, String **value) {
  if (!NamesEqual(name, "Message")) return false;
  *value = message_.Get();
  return true;
}

bool ExceptionObject::SetInteger(std::string_view name, int32_t value) {
  if (!NamesEqual(name, "ErrorNumber")) return false;
  errorNumber_ = value;
  return true;
}

bool ExceptionObject::SetText(std::string_view name, String *value) {
  if (!NamesEqual(name, "Message")) return false;
  message_ = Owned<String>::Share(value);
  return true;
}

void RaiseException(Object *exception) {
  auto *const raised = dynamic_cast<ExceptionObject *>(exception);
  HostState &host = HostState::Current();
  if (raised == nullptr) {
    host.AddMisdeed("something was raised that is no exception");
    return;
  }
  raised->Lock();
  host.SetPending({raised, [](ExceptionObject *dropped) { dropped->Unlock(); }});
}

std::optional<RaisedException> TakeRaisedException() {
  const HostState::PendingException taken = HostState::Current().TakePending();
  if (!taken) return std::nullopt;
  return RaisedException{taken->Type().Name(), taken->Message() == nullptr ? "" : taken->Message()->Text(),
                         taken->ErrorNumber()};
}

namespace {

void RuntimeRaiseException(REALobject handle) { RaiseException(LiveObject(handle)); }

}  // namespace

std::vector<Entry> ExceptionEntries() { return {MakeEntry<"RuntimeRaiseException", RuntimeRaiseException>()}; }

}  // namespace standalone
