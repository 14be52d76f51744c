// Lists of taps for wide samples, as whole numbers: floats are too short for these. Samples less 32768 and weights of
// two digits fit the machine's sums of products of pairs of 16-bit numbers. As with floats the bound of each list tells
// which values may differ from the told ones.
#pragma once

#include <cstdint>
#include <span>

#include "scaling/formed_lists.h"
#include "scaling/scale_taps.h"

namespace zvk::scaling {

inline constexpr int32_t kWordPointBits = 14;  // a value has so many bits behind the point

// Positions 2p and 2p + 1 are pair p.
struct WordList {
  int64_t firstWeight;  // of its `pairs` among those of all lists
  int32_t pairs;
  int32_t pair;   // the first of these
  int32_t shift;  // bits of the lower digit: the sum of those is cut by as many
  int32_t start;  // what a sum begins with
  // A value nearer than this to a whole number, in 2^-14, is not sure. 0: each is. Above a half: none is.
  int32_t edge;
};

// The weights of a pair of positions, the even one in the lower half of each number.
struct WordWeights {
  int32_t upper;
  int32_t lower;
};

// The lists of a pass of wide samples.
class WordLists : public FormedLists<WordList, WordWeights> {
 public:
  // `lists` are those of a ScaleTapTable, and outlive this. `rounding` is what is added before a value is cut.
  WordLists(std::span<const ScaleTapList> lists, double rounding);
};

}  // namespace zvk::scaling
