#include "scaling/word_lists.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>

#include "scaling/short_lists.h"

namespace zvk::scaling {

namespace {

constexpr double kOne = 1 << kWordPointBits;
constexpr double kLess = 32768.0;  // what samples are less, and their largest magnitude then
constexpr int32_t kMostShift = 15;
constexpr int32_t kLeastShift = 6;

std::span<const ScaleTap> TapsOf(const ScaleTapList &list) { return {list.Taps, static_cast<size_t>(list.TapCount)}; }

int32_t Pairs(const ScaleTapList &list) {
  return list.TapCount == 0 ? 0 : (EndIndex(list) + 1) / 2 - FirstIndex(list) / 2;
}

// The two digits of a weight.
struct Digits {
  Digits(double weight, int32_t shift) {
    const double scaled = weight * static_cast<double>(1 << (kWordPointBits + shift));
    const auto whole = static_cast<int64_t>(scaled + (scaled < 0.0 ? -0.5 : 0.5));
    off = std::abs(scaled - static_cast<double>(whole));
    const int64_t half = int64_t{1} << (shift - 1);
    lower = static_cast<int32_t>(((whole + half) & (2 * half - 1)) - half);
    upper = static_cast<int32_t>((whole - lower) >> shift);
  }
  int32_t upper;
  int32_t lower;
  double off;  // that the digits are away, in units of the lower one
};

// What is known of a list's digits.
struct DigitSums {
  DigitSums(const ScaleTapList &list, int32_t shift) {
    const double part = 1.0 / double{list.WeightSum};
    for (const ScaleTap &tap : TapsOf(list)) {
      const Digits digits(tap.Weight * part, shift);
      upper += std::abs(digits.upper);
      lower += std::abs(digits.lower);
      off += digits.off;
    }
  }
  // True if no sum of products can be beyond 32 bits, whatever the samples and in whatever order.
  bool Fit(double start) const {
    constexpr double kEnd = 0x1p31;
    return kLess * static_cast<double>(lower) < kEnd &&
           kLess * static_cast<double>(upper) + std::abs(start) + kEnd / (1 << kLeastShift) < kEnd;
  }
  int64_t upper = 0;
  int64_t lower = 0;
  double off = 0.0;
};

// Writes the weights of the list's pairs, which are 0 before.
WordList Made(const ScaleTapList &list, double rounding, int64_t firstWeight, WordWeights *weights) {
  WordList made{firstWeight, Pairs(list), 0, kLeastShift, 0, EdgeOf(kOne, 0.0, kWordPointBits)};
  if (made.pairs == 0) return made;
  made.pair = FirstIndex(list) / 2;
  double whole = 0.0, magnitude = 0.0;
  const double part = 1.0 / double{list.WeightSum};
  for (const ScaleTap &tap : TapsOf(list)) {
    const double weight = tap.Weight * part;
    whole += weight;
    magnitude += std::abs(weight);
  }
  // Beyond these an upper digit, or a sum, may not fit. Also where the weights are no numbers.
  if (!(magnitude < 1.9)) return made;
  // The finest digits whose sums fit. Finer than these they do so only by chance.
  int32_t shift = std::min(kMostShift, 18 - static_cast<int32_t>(std::bit_width(static_cast<uint32_t>(list.TapCount))));
  shift = std::max(shift, kLeastShift);
  while (shift > kLeastShift && !DigitSums(list, shift).Fit(0.0)) --shift;
  const DigitSums sums(list, shift);
  const double halfStep = HalfStepOf(list) * kOne;
  // What the digits leave out of the weights; 2 for the cut of the lower sum and the rounding of the start; and the
  // told sum's own roundings.
  const double bound = kLess * sums.off / (1 << shift) + 2.0 + 1e-4 * magnitude;
  const bool isMoved = bound < halfStep;
  const double start = (rounding + kLess * whole) * kOne + (isMoved ? halfStep : 0.0);
  if (!sums.Fit(start)) return made;
  made.shift = shift;
  made.edge = EdgeOf(bound, halfStep, kWordPointBits);
  made.start = static_cast<int32_t>(std::nearbyint(start));
  for (const ScaleTap &tap : TapsOf(list)) {
    const Digits digits(tap.Weight * part, shift);
    const int32_t position = tap.SourceIndex - 2 * made.pair;
    const auto placed = [&](int32_t digit) {
      return static_cast<int32_t>(uint32_t{static_cast<uint16_t>(digit)} << 16 * (position % 2));
    };
    weights[position / 2].upper |= placed(digits.upper);
    weights[position / 2].lower |= placed(digits.lower);
  }
  return made;
}

}  // namespace

WordLists::WordLists(std::span<const ScaleTapList> lists, double rounding)
    : FormedLists(
          lists, [](const ScaleTapList &list) { return int64_t{Pairs(list)}; },
          [&](const ScaleTapList &list, int64_t firstWeight, WordWeights *weights) {
            return Made(list, rounding, firstWeight, weights);
          }) {}

}  // namespace zvk::scaling
