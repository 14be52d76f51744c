// The size that a command line asks for: both sides, or one side and the other by the proportions of the source.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace standalone {

struct Size {
  int32_t width;   // pixels
  int32_t height;  // pixels

  bool operator==(const Size &) const = default;
};

constexpr int32_t kLargestPictureSide = 32767;  // pixels of a host picture in one direction

// "640 x 480", for people.
std::string Text(Size size);

// At least one side is given; each given one is 1 or more.
struct SizeArgument {
  std::optional<int32_t> width;
  std::optional<int32_t> height;

  bool operator==(const SizeArgument &) const = default;
};

// Reads "WIDTHxHEIGHT", "WIDTHx" or "xHEIGHT" in decimal digits. Throws UsageError for anything else, for a side of 0
// and for a number beyond 32 bits. `largestSide` is told to who gives such a number.
SizeArgument ParseSize(std::string_view text, int32_t largestSide = kLargestPictureSide);

// The whole size. A side that was not given keeps the proportions of the source (1 or more each way), rounded to the
// nearest, 1 at least. Throws std::runtime_error if a side is beyond the largest one.
Size CompleteSize(const SizeArgument &wanted, Size source, int32_t largestSide = kLargestPictureSide);

}  // namespace standalone
