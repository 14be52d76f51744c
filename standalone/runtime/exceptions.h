// Exceptions of the host language: raised by marking an object as pending, taken by whoever called the handler.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "standalone/runtime/objects.h"
#include "standalone/runtime/strings.h"

namespace standalone {

// An exception object, with the properties "Message" and "ErrorNumber".
class ExceptionObject : public Object {
 public:
  explicit ExceptionObject(const Class &type) : Object(type) {}

  String *Message() const { return message_.Get(); }
  int32_t ErrorNumber() const { return errorNumber_; }

  bool GetInteger(std::string_view name, int32_t *value) override;
  bool GetText(std::string_view name, String **value) override;
  bool SetInteger(std::string_view name, int32_t value) override;
  bool SetText(std::string_view name, String *value) override;

 private:
  Owned<String> message_;
  int32_t errorNumber_ = 0;
};

// What a pending exception said.
struct RaisedException {
  std::string className;
  std::string message;  // UTF-8
  int32_t errorNumber = 0;

  bool operator==(const RaisedException &) const = default;
};

// Marks an exception as pending in the running host, in place of one that is; takes a reference. Another object is
// noted as a misdeed.
void RaiseException(Object *exception);

// What the running host's pending exception said; it is pending no longer. Empty if there is none.
std::optional<RaisedException> TakeRaisedException();

}  // namespace standalone
