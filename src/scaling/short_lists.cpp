#include "scaling/short_lists.h"

#include <cmath>
#include <limits>

namespace zvk::scaling {

namespace {

constexpr double kUnit = 0x1p-24;
constexpr float kNeverSure = 4.0F;

int32_t FirstPosition(const ScaleTapList &list, int32_t alignment) { return FirstIndex(list) / alignment * alignment; }

int32_t Positions(const ScaleTapList &list, int32_t alignment) {
  return list.TapCount == 0 ? 0 : EndIndex(list) - FirstPosition(list, alignment);
}

std::span<const ScaleTap> TapsOf(const ScaleTapList &list) { return {list.Taps, static_cast<size_t>(list.TapCount)}; }

}  // namespace

double BoundOfShortSum(const ScaleTapList &list, const ShortSums &sums) {
  if (list.TapCount == 0) return std::numeric_limits<double>::infinity();
  double magnitude = 0.0;
  for (const ScaleTap &tap : TapsOf(list)) magnitude += std::abs(double{tap.Weight} / double{list.WeightSum});
  const double samples = 128.0 * magnitude;
  // Products of one partial sum, the sums of the partial ones, and one for the weight.
  const int32_t chain = (Positions(list, sums.alignment) + sums.chains - 1) / sums.chains + sums.chains + 1;
  // The start, its sum, and the spread upon that.
  const double roundings = (chain + sums.roundingsOfSample) * samples + 4.0 * (samples + 256.0);
  // A thirty-second more for products of roundings and for the double arithmetic, here and in the told sum.
  const double bound = 1.03125 * kUnit * roundings;
  return std::isfinite(bound) ? bound : std::numeric_limits<double>::infinity();
}

double HalfStepOf(const ScaleTapList &list) {
  constexpr double kFinest = 4096.0;
  // The smallest power of two that makes a number a whole one, or the one so far if that is larger; 0 if kFinest does
  // not.
  const auto whole = [](double number, double steps) {
    if (number * kFinest != std::floor(number * kFinest)) return 0.0;
    while (number * steps != std::floor(number * steps)) steps *= 2.0;
    return steps;
  };
  double steps = list.TapCount > 0 ? whole(list.WeightSum, 1.0) : 0.0;
  for (int32_t t = 0; t < list.TapCount && steps > 0.0; ++t) steps = whole(list.Taps[t].Weight, steps);
  return steps > 0.0 ? 0.25 / std::abs(list.WeightSum * steps) : 0.0;
}

namespace {

// Writes the weights of the list's positions, which are 0 before.
ShortList Shortened(const ScaleTapList &list, const ShortSums &sums, int64_t firstWeight, float *weights) {
  ShortList made{firstWeight, Positions(list, sums.alignment), 0, 0.0F, kNeverSure};
  if (made.count == 0) return made;
  made.source = FirstPosition(list, sums.alignment);
  const double bound = BoundOfShortSum(list, sums);
  const double halfStep = sums.roundingsOfSample == 0 ? HalfStepOf(list) : 0.0;
  const bool isMoved = bound < halfStep;
  if (!isMoved && !(bound < 0.25)) return made;
  double whole = 0.0;
  for (const ScaleTap &tap : TapsOf(list)) {
    const double weight = double{tap.Weight} / double{list.WeightSum};
    weights[tap.SourceIndex - made.source] = static_cast<float>(weight);
    whole += weight;
  }
  const double value = sums.rounding + 128.0 * whole;
  made.start = static_cast<float>(isMoved ? value + halfStep : value - bound);
  made.spread = isMoved ? 0.0F : static_cast<float>(2.0 * bound);
  return made;
}

}  // namespace

ShortLists::ShortLists(std::span<const ScaleTapList> lists, const ShortSums &sums)
    : FormedLists(
          lists,
          [&](const ScaleTapList &list) {
            return (int64_t{Positions(list, sums.alignment)} + sums.chains - 1) / sums.chains * sums.chains;
          },
          [&](const ScaleTapList &list, int64_t firstWeight, float *weights) {
            return Shortened(list, sums, firstWeight, weights);
          }) {}

}  // namespace zvk::scaling
