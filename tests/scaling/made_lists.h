// Lists of taps that no table made, and samples that are hard on them.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "scaling/scale_filters.h"
#include "scaling/scale_taps.h"

namespace zvk::scaling {

// A list with taps at the given positions.
struct MadeList {
  MadeList(std::vector<ScaleTap> made, float weightSum) : taps(std::move(made)) {
    list = {taps.data(), static_cast<int32_t>(taps.size()), weightSum};
  }
  std::vector<ScaleTap> taps;
  ScaleTapList list{};
};

// Calls visit(list, random) with lists of all filters, at ratios and phases as a scale has them, of up to some hundred
// taps from position 0 on.
template <class Visitor>
void ForEachFilterList(const Visitor &visit) {
  std::mt19937 random(11);
  for (int32_t mode = ScaleTriangle; mode <= ScaleCubic; ++mode) {
    const ScaleFilter &filter = *FindScaleFilter(mode);
    for (int32_t round = 0; round < 200; ++round) {
      const double window = filter.FilterWindow * (1.0 + static_cast<double>(random() % 1000) / 50.0);
      const double phase = static_cast<double>(random() % 100000) / 100000.0;
      std::vector<ScaleTap> taps;
      double sum = 0.0;
      for (double at = -window + phase; at < window; at += 1.0) {
        const double weight = filter.FilterKernel(std::abs(at * filter.FilterWindow / window));
        taps.push_back({static_cast<float>(weight), static_cast<int32_t>(taps.size())});
        sum += weight;
      }
      const MadeList made(taps, static_cast<float>(sum));
      visit(made.list, random);
    }
  }
}

// Samples that drive all products of a list from position 0 on the same way, and others.
template <class Sample>
std::vector<std::vector<Sample>> Adversaries(const ScaleTapList &list, std::mt19937 &random) {
  constexpr Sample kMost = std::numeric_limits<Sample>::max();
  const auto count = static_cast<size_t>(list.TapCount);
  std::vector<std::vector<Sample>> all(6, std::vector<Sample>(count));
  for (size_t t = 0; t < count; ++t) {
    const bool positive = list.Taps[t].Weight > 0.0F;
    all[0][t] = positive ? kMost : 0;
    all[1][t] = positive ? 0 : kMost;
    all[2][t] = random() % 2 == 0 ? kMost : 0;
    all[3][t] = static_cast<Sample>(random());
    all[4][t] = kMost;
    all[5][t] = t < count / 2 ? kMost : 0;
  }
  return all;
}

// The told value of samples from position 0 on, before it is cut.
template <class Sample>
double ToldValue(const ScaleTapList &list, const std::vector<Sample> &samples, double rounding) {
  double sum = 0.0;
  for (int32_t t = 0; t < list.TapCount; ++t) {
    sum += samples[static_cast<size_t>(list.Taps[t].SourceIndex)] * double{list.Taps[t].Weight};
  }
  return sum / double{list.WeightSum} + rounding;
}

}  // namespace zvk::scaling
