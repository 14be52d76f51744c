#include "standalone/zvk/arguments/numbers.h"

#include "standalone/zvk/session/messages.h"

namespace standalone {

int32_t ParseNumber(const std::string &text, const std::string &what, const std::string &number, int32_t least,
                    int32_t most) {
  const std::optional<int32_t> value = ReadNumber<int32_t>(text);
  if (!value || *value < least || *value > most) {
    throw UsageError(what + " '" + text + "' is not understood; write a " + number + " from " + std::to_string(least) +
                     " to " + std::to_string(most));
  }
  return *value;
}

}  // namespace standalone
