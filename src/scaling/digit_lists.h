// Lists of taps for sums of bytes in whole numbers, four columns at once: each weight is a whole number of 2^-22 in
// three digits of base 256, so that the machine's sums of products of bytes can be used. As with floats the bound of
// each list tells which values may differ from the told ones.
#pragma once

#include <cstdint>
#include <span>

#include "scaling/formed_lists.h"
#include "scaling/scale_taps.h"

namespace zvk::scaling {

inline constexpr int32_t kDigitBits = 22;     // a value has so many bits behind the point
inline constexpr int32_t kDigits = 3;         // of a weight, the lowest first
inline constexpr int32_t kColumnsOfQuad = 4;  // side by side in 32 bits

struct DigitList {
  int64_t firstWeight;  // of its `quads` times three groups of four digits, one for each column
  int32_t quads;
  int32_t quad;   // the first column is in this group of four
  int32_t start;  // what a sum begins with
  // A value nearer than this to a whole number, in 2^-22, is not sure. 0: each is. Above a half: none is.
  int32_t edge;
};

// The lists of a pass of bytes.
class DigitLists : public FormedLists<DigitList, int32_t> {
 public:
  // `lists` are those of a ScaleTapTable, and outlive this. `rounding` is what is added before a value is cut.
  DigitLists(std::span<const ScaleTapList> lists, double rounding);
};

}  // namespace zvk::scaling
