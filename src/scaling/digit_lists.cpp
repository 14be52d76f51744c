#include "scaling/digit_lists.h"

#include <algorithm>
#include <cmath>

#include "scaling/short_lists.h"

namespace zvk::scaling {

namespace {

constexpr double kOne = 1 << kDigitBits;

// Groups of four columns that a list reaches into.
int32_t Quads(const ScaleTapList &list) {
  if (list.TapCount == 0) return 0;
  return (EndIndex(list) + kColumnsOfQuad - 1) / kColumnsOfQuad - FirstIndex(list) / kColumnsOfQuad;
}

// Writes the digits of a weight, each from -128 to 127. False if three are too few.
bool PutDigits(int32_t weight, int32_t column, int32_t *groups) {
  for (int32_t digit = 0; digit < kDigits; ++digit) {
    const auto low = static_cast<int8_t>(weight);
    groups[digit] |= static_cast<int32_t>(uint32_t{static_cast<uint8_t>(low)} << 8 * column);
    weight = (weight - low) >> 8;
  }
  return weight == 0;
}

DigitList Made(const ScaleTapList &list, double rounding, int64_t firstWeight, int32_t *digits) {
  DigitList made{firstWeight, Quads(list), 0, 0, EdgeOf(kOne, 0.0, kDigitBits)};
  if (made.quads == 0) return made;
  made.quad = FirstIndex(list) / kColumnsOfQuad;
  // What the rounded weights are too small by, and too large, and how much all weigh.
  double below = 0.0, above = 0.0, magnitude = 0.0;
  bool fits = true;
  for (int32_t t = 0; t < list.TapCount; ++t) {
    const double weight = double{list.Taps[t].Weight} / double{list.WeightSum};
    magnitude += std::abs(weight);
    // Beyond these a sum of bytes may not fit 32 bits.
    if (!(magnitude < 1.9)) return made;
    const double whole = std::nearbyint(weight * kOne);
    const double off = weight * kOne - whole;
    (off > 0.0 ? below : above) += std::abs(off);
    const int32_t column = list.Taps[t].SourceIndex - made.quad * kColumnsOfQuad;
    fits = PutDigits(static_cast<int32_t>(whole), column % kColumnsOfQuad,
                     digits + ptrdiff_t{column / kColumnsOfQuad} * kDigits) &&
           fits;
  }
  if (!fits) return made;
  // The exact sum lies between the whole one less 255 x above and that plus 255 x below; 2 for the rounding of the
  // start, and the told sum's own roundings.
  const double middle = 255.0 * (below - above) / 2.0;
  const double bound = 255.0 * (below + above) / 2.0 + 2.0 + 1e-6 * magnitude;
  const double halfStep = HalfStepOf(list) * kOne;
  const bool isMoved = bound < halfStep;
  made.start = static_cast<int32_t>(std::nearbyint(rounding * kOne + middle + (isMoved ? halfStep : 0.0)));
  made.edge = EdgeOf(bound, halfStep, kDigitBits);
  return made;
}

}  // namespace

DigitLists::DigitLists(std::span<const ScaleTapList> lists, double rounding)
    : FormedLists(
          lists, [](const ScaleTapList &list) { return int64_t{Quads(list)} * kDigits; },
          [&](const ScaleTapList &list, int64_t firstWeight, int32_t *digits) {
            return Made(list, rounding, firstWeight, digits);
          }) {}

}  // namespace zvk::scaling
