#include "filters/box_blur_kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/support/cpu_levels.h"
#include "tests/support/fence.h"

namespace zvk::filters {
namespace {

uint8_t Byte(size_t i, size_t seed) { return static_cast<uint8_t>((i * 7 + seed * 101) ^ (i >> 2)); }

TEST(Window, IsNarrowAsLongAs16BitsHoldItsSums) {
  EXPECT_TRUE(Window(0).IsNarrow());
  EXPECT_TRUE(Window(127).IsNarrow());
  EXPECT_EQ(Window(127).divisor * 255, 65025);
  EXPECT_FALSE(Window(128).IsNarrow());
}

template <class Sum>
void CheckSums(const Kernel<AddFunction<Sum>> &add, const Kernel<ReplaceFunction<Sum>> &replace) {
  for (ptrdiff_t count = 0; count < 150; ++count) {
    const auto size = static_cast<size_t>(count);
    const fence::Block first(size), second(size), block(size * sizeof(Sum));
    auto *sums = reinterpret_cast<Sum *>(block.Data());
    for (size_t i = 0; i < size; ++i) {
      first.Data()[i] = Byte(i, 1);
      second.Data()[i] = Byte(i, 2);
    }
    const auto fill = [&] {
      for (size_t i = 0; i < size; ++i) sums[i] = static_cast<Sum>(1000 + i);
    };
    ForEachForm(add, [&](const auto form) {
      fill();
      form(first.Data(), 128, count, sums);
      for (size_t i = 0; i < size; ++i) ASSERT_EQ(sums[i], 1000 + i + 128 * Byte(i, 1)) << count << ", " << i;
    });
    ForEachForm(replace, [&](const auto form) {
      fill();
      form(first.Data(), second.Data(), count, sums);
      for (size_t i = 0; i < size; ++i) ASSERT_EQ(sums[i], 1000 + i + Byte(i, 2) - Byte(i, 1)) << count << ", " << i;
    });
  }
}

TEST(BoxBlurKernels, SamplesAreAddedAndReplacedInEveryForm) {
  CheckSums(AddToNarrowSums, ReplaceInNarrowSums);
  CheckSums(AddToSums, ReplaceInSums);
}

template <class Sum>
void CheckWindows(const Kernel<WindowFunction<Sum>> &kernel, int32_t channels, int32_t width, int32_t radius,
                  uint32_t brightest) {
  const auto size = static_cast<size_t>(width * channels);
  const fence::Block samples(size), block(size * sizeof(Sum));
  auto *sums = reinterpret_cast<Sum *>(block.Data());
  for (size_t i = 0; i < size; ++i) samples.Data()[i] = std::max(Byte(i, 3), static_cast<uint8_t>(brightest));
  std::vector<uint32_t> expected(size);
  for (int32_t x = 0; x < width; ++x) {
    for (int32_t c = 0; c < channels; ++c) {
      for (int32_t j = x - radius; j <= x + radius; ++j) {
        expected[static_cast<size_t>(x * channels + c)] += samples.Data()[std::clamp(j, 0, width - 1) * channels + c];
      }
    }
  }
  ForEachForm(kernel, [&](const auto form) {
    form(samples.Data(), width, radius, sums);
    for (size_t i = 0; i < size; ++i) {
      ASSERT_EQ(sums[i], expected[i]) << channels << " x " << width << ", " << radius << ", " << i;
    }
  });
}

TEST(BoxBlurKernels, WindowsAlongALineAreSummedInEveryForm) {
  for (int32_t channels = 1; channels <= 5; ++channels) {
    const auto &narrow = SumNarrowWindows(static_cast<size_t>(channels));
    const auto &wide = SumWindows(static_cast<size_t>(channels));
    for (const int32_t radius : {0, 1, 2, 7, 60, 127}) {
      for (int32_t width = 1; width <= 70; ++width) {
        CheckWindows(narrow, channels, width, radius, 0);
        CheckWindows(wide, channels, width, radius, 0);
      }
      CheckWindows(narrow, channels, 300, radius, 0);
      CheckWindows(narrow, channels, 300, radius, 255);
      CheckWindows(wide, channels, 300, radius, 255);
    }
    CheckWindows(wide, channels, 600, 128, 250);
    CheckWindows(wide, channels, 600, 299, 0);
    CheckWindows(wide, channels, 40, 5000, 255);
  }
}

// Every sum of samples of every narrow window.
TEST(BoxBlurKernels, NarrowSumsAreDividedExactlyInEveryForm) {
  for (int32_t radius = 0; radius <= 127; ++radius) {
    const Window window(radius);
    std::vector<uint16_t> sums;
    for (int32_t sum = 0; sum <= 255 * (2 * radius + 1); ++sum) sums.push_back(static_cast<uint16_t>(sum));
    std::vector<uint8_t> means(sums.size());
    ForEachForm(DivideNarrowSums, [&](const auto form) {
      form(sums.data(), static_cast<ptrdiff_t>(sums.size()), window, means.data());
      for (size_t i = 0; i < sums.size(); ++i) {
        ASSERT_EQ(means[i], i / static_cast<size_t>(window.divisor)) << radius << ", " << i;
      }
    });
  }
}

// Both sides of each step of the mean, and sums of what no samples add up to.
TEST(BoxBlurKernels, SumsAreDividedExactlyInEveryForm) {
  for (const int32_t radius : {0, 1, 127, 128, 500, 4999, 8191, 8192, 100000, 4194302}) {
    const Window window(radius);
    const auto divisor = static_cast<uint32_t>(window.divisor);
    std::vector<uint32_t> sums = {window.SumEnd(), window.SumEnd() + 1, 0x80000000, 0xFFFFFFFF};
    for (uint32_t mean = 0; mean < 256; ++mean) {
      sums.push_back(mean * divisor);
      sums.push_back(mean * divisor + divisor - 1);
    }
    std::vector<uint8_t> means(sums.size());
    ForEachForm(DivideSums(window), [&](const auto form) {
      form(sums.data(), static_cast<ptrdiff_t>(sums.size()), window, means.data());
      for (size_t i = 0; i < sums.size(); ++i) {
        ASSERT_EQ(means[i], sums[i] < window.SumEnd() ? sums[i] / divisor : 0) << radius << ", " << sums[i];
      }
    });
  }
}

}  // namespace
}  // namespace zvk::filters
