#include "standalone/zvk/arguments/size_argument.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "standalone/zvk/arguments/numbers.h"
#include "standalone/zvk/session/messages.h"

namespace standalone {
namespace {

[[noreturn]] void Fail(std::string_view text, const std::string &problem) {
  throw UsageError("size '" + std::string(text) + "' " + problem);
}

// One side of digits; empty for none. `text` is the whole argument, for messages.
std::optional<int32_t> ParseSide(std::string_view digits, std::string_view text, int32_t largestSide) {
  if (digits.empty()) return std::nullopt;
  const std::optional<int32_t> side = ReadNumber<int32_t>(digits);
  if (!side) {
    Fail(text, "is too large; a picture has at most " + std::to_string(largestSide) + " pixels each way");
  }
  if (side == 0) Fail(text, "has a side of 0; width and height start at 1");
  return side;
}

// Rounds to the nearest. Sides of 31 bits keep every product within 64.
int64_t InProportion(int64_t side, int64_t sourceSide, int64_t sourceOther) {
  return std::max<int64_t>(1, (side * sourceOther * 2 + sourceSide) / (sourceSide * 2));
}

}  // namespace

std::string Text(Size size) { return std::to_string(size.width) + " x " + std::to_string(size.height); }

SizeArgument ParseSize(std::string_view text, int32_t largestSide) {
  const size_t cross = text.find('x');
  const bool isForm = cross != std::string_view::npos && text.size() > 1 &&
                      text.find_first_not_of("0123456789") == cross &&
                      text.find_first_not_of("0123456789", cross + 1) == std::string_view::npos;
  if (!isForm) {
    Fail(text, "is not understood; write WIDTHxHEIGHT, WIDTHx or xHEIGHT, as in 640x480");
  }
  return {ParseSide(text.substr(0, cross), text, largestSide), ParseSide(text.substr(cross + 1), text, largestSide)};
}

Size CompleteSize(const SizeArgument &wanted, Size source, int32_t largestSide) {
  const int64_t width = wanted.width ? *wanted.width : InProportion(*wanted.height, source.height, source.width);
  const int64_t height = wanted.height ? *wanted.height : InProportion(*wanted.width, source.width, source.height);
  if (std::max(width, height) > largestSide) {
    throw std::runtime_error("a result of " + std::to_string(width) + " x " + std::to_string(height) +
                             " pixels is too large; a picture has at most " + std::to_string(largestSide) +
                             " pixels each way");
  }
  return {static_cast<int32_t>(width), static_cast<int32_t>(height)};
}

}  // namespace standalone
