// Lists of taps for short arithmetic. A weighted sum of bytes ends in a byte, so only a floor of it must be right: it
// may be taken in floats, if it is known how far these can be from the told sum in double, and sums nearer to a whole
// number than that are taken again as told. Here is how far that is.
#pragma once

#include <cstdint>
#include <span>

#include "scaling/formed_lists.h"
#include "scaling/scale_taps.h"

namespace zvk::scaling {

// One list with weights that add up to 1, for samples less 128. Their sum plus `start` is the lowest that the value can
// be before it is cut to a whole number, and `spread` more the highest: where these are cut to the same number, it is
// sure.
struct ShortList {
  int64_t firstWeight;  // of its `count` weights among those of all lists
  int32_t count;        // positions up to the last tap; a position without a tap has the weight 0
  int32_t source;       // the first of these positions: that of the first tap, or an aligned one in front of it
  float start;
  float spread;  // 0: all values are sure. Above 1: none is, as of a list without taps; it weighs nothing
};

// What the sums of a pass are like, on which the bound depends.
struct ShortSums {
  double rounding;  // what is added before a value is cut
  int32_t chains;   // partial sums of a value, 1 or more; the weights of each list are padded to a multiple of it
  // Roundings of a sample before it is weighed: 0 for bytes, kRoundingsOfGray for gray that is mixed of three.
  int32_t roundingsOfSample = 0;
  int32_t alignment = 1;  // the lists begin at multiples of this
};

// float(0.3) x red + float(0.59) x green + float(0.11) x blue: a constant, a product and two sums.
inline constexpr int32_t kRoundingsOfGray = 4;

// The lists of a pass in short form.
class ShortLists : public FormedLists<ShortList, float> {
 public:
  // `lists` are those of a ScaleTapTable, and outlive this.
  ShortLists(std::span<const ScaleTapList> lists, const ShortSums &sums);
};

// How far a value summed in floats can be from the told one, in levels; infinite where the list gives none. With
// u = 2^-24, half a unit in the last place of 1: a weight is rounded once, a product and each of the sums in its way
// once more, and all of that by no more than u of what the magnitudes come to; the start and what is added to it round
// four times at the most in the range of the result.
double BoundOfShortSum(const ScaleTapList &list, const ShortSums &sums);

// Where all weights and their sum are multiples of a power of two down to 2^-12, every value that can occur is a
// multiple of 1 / (2 x WeightSum / that power), and ties are common. Returned is half of that distance, by which values
// can be moved away from the whole numbers; 0 for other lists.
double HalfStepOf(const ScaleTapList &list);

}  // namespace zvk::scaling
