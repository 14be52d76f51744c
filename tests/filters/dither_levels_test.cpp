#include "filters/dither_levels.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/fence.h"

namespace zvk::filters {
namespace {

constexpr int32_t kSizes[] = {2, 4, 6, 8, 16};

// As it is defined, for a matrix of size x size.
int Expected(int sample, int threshold, int levels, int size) {
  const int level = sample * (levels - 1) / 256;
  const int fraction = sample * (size * size + 1) / 256;
  return (fraction <= threshold ? level + 1 : level) * 255 / (levels - 1);
}

TEST(DitherLevels, EverySampleOnEveryNumberOfLevels) {
  for (int32_t levels = 2; levels <= 256; ++levels) {
    for (const int32_t size : kSizes) {
      const DitherLevels dither(levels, size);
      for (const int threshold : {0, 1, 2, 15, 36, 63, 127, 251}) {
        for (int sample = 0; sample < 256; ++sample) {
          ASSERT_EQ(dither(static_cast<uint8_t>(sample), threshold), Expected(sample, threshold, levels, size))
              << "sample " << sample << ", threshold " << threshold << ", levels " << levels << ", size " << size;
        }
      }
    }
  }
}

TEST(DitherLevels, ManySamplesAtOnceAreTheSame) {
  std::vector<uint8_t> samples, thresholds;
  for (const int threshold : {0, 1, 2, 15, 36, 63, 127, 251}) {
    for (int sample = 0; sample < 256; ++sample) {
      samples.push_back(static_cast<uint8_t>(sample));
      thresholds.push_back(static_cast<uint8_t>(threshold));
    }
  }
  std::vector<uint8_t> results(samples.size());
  for (int32_t levels = 2; levels <= 256; ++levels) {
    for (const int32_t size : kSizes) {
      const DitherLevels dither(levels, size);
      dither.DitherBytes(samples.data(), thresholds.data(), results.data(), static_cast<int32_t>(samples.size()));
      for (size_t i = 0; i < samples.size(); ++i) {
        ASSERT_EQ(results[i], Expected(samples[i], thresholds[i], levels, size))
            << "sample " << int{samples[i]} << ", threshold " << int{thresholds[i]} << ", levels " << levels
            << ", size " << size;
      }
    }
  }
}

TEST(DitherLevels, EveryCountIsServedWithinItsBytesAndInPlace) {
  const DitherLevels dither(5, 6);
  for (const fence::Side side : {fence::Side::kBefore, fence::Side::kAfter}) {
    for (size_t count = 1; count < 600; ++count) {
      const fence::Block source(count, side), thresholds(count, side), dest(count, side);
      for (size_t i = 0; i < count; ++i) {
        source.Data()[i] = static_cast<uint8_t>(i * 7);
        thresholds.Data()[i] = static_cast<uint8_t>(i % 37);
      }
      dither.DitherBytes(source.Data(), thresholds.Data(), dest.Data(), static_cast<int32_t>(count));
      for (size_t i = 0; i < count; ++i) {
        ASSERT_EQ(dest.Data()[i], Expected(source.Data()[i], thresholds.Data()[i], 5, 6)) << count << ", " << i;
      }
      dither.DitherBytes(source.Data(), thresholds.Data(), source.Data(), static_cast<int32_t>(count));
      ASSERT_EQ(std::vector<uint8_t>(source.Data(), source.Data() + count),
                std::vector<uint8_t>(dest.Data(), dest.Data() + count));
    }
  }
}

}  // namespace
}  // namespace zvk::filters
