// What Unicode says about canonical decomposition, as plain tables; tools/make-decomposition-table makes their rows.
#pragma once

#include <cstdint>
#include <span>

#include "host/layers.h"

namespace zvk::host::paths {

// Characters that the longest decomposition of one character has.
inline constexpr int32_t kLongestDecomposition = 4;

// A character and what it decomposes into in the end; 0 fills up. Hangul syllables go by a rule and are not listed.
struct Decomposition {
  char32_t code;
  char32_t parts[kLongestDecomposition];
};

// Characters from first to last of one combining class above 0. All others are of class 0.
struct CombiningRange {
  char32_t first;
  char32_t last;
  uint8_t combiningClass;
};

// Both in ascending order.
extern const std::span<const Decomposition> kDecompositions;
extern const std::span<const CombiningRange> kCombiningRanges;

}  // namespace zvk::host::paths
