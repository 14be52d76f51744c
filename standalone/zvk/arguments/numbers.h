// Numbers as a command line writes them: with a point before fractions, whatever the language of the machine.
#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>

namespace standalone {

// The number that the whole text is; empty if it is none, or beyond the type. Neither spaces nor a plus sign are taken.
// The base counts for whole numbers.
template <class Number>
std::optional<Number> ReadNumber(std::string_view text, int base = 10) {
  Number number = {};
  const char *const end = text.data() + text.size();
  std::from_chars_result read;
  if constexpr (std::is_integral_v<Number>) {
    read = std::from_chars(text.data(), end, number, base);
  } else {
    read = std::from_chars(text.data(), end, number);
  }
  if (read.ec != std::errc() || read.ptr != end) return std::nullopt;
  return number;
}

// A whole number from `least` to `most`. Throws UsageError for any other text; `what` it is for and the kind of
// `number` it should be are words of the message.
int32_t ParseNumber(const std::string &text, const std::string &what, const std::string &number, int32_t least,
                    int32_t most);

}  // namespace standalone
