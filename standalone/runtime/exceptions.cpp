#include "standalone/runtime/exceptions.h"

#include "standalone/runtime/entries.h"
#include "standalone/runtime/host.h"
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

namespace {

void RaiseException(REALobject handle) { Host::Current().Raise(LiveObject(handle)); }

}  // namespace

std::vector<Entry> ExceptionEntries() { return {MakeEntry<"RuntimeRaiseException", RaiseException>()}; }

}  // namespace standalone
