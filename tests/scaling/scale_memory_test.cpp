// A scale for which some of the memory is not to be had.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "scaling/scale_engine.h"
#include "scaling/scale_taps.h"
#include "tests/scaling/scale_host.h"
#include "tests/scaling/scale_testing.h"
#include "tests/support/faults.h"

namespace zvk::scaling {
namespace {

constexpr int32_t kLanczos3 = 3;

// Scales of an image to 3 x 4 and to 4 x 3 pixels, with allocations that fail.
class ScaleMemory : public ScaleHost, public testing::WithParamInterface<std::pair<int32_t, int32_t>> {
 protected:
  ScaleMemory() { source_.FillNoise(1); }

  Outcome Scaled(const TestImage *temp) {
    const REALobject given = temp != nullptr ? temp->Object() : nullptr;
    return OutcomeOf(dest_, source_, temp_, [&] {
      return PictureScaleZVK(dest_.Object(), source_.Object(), given, kLanczos3, width_, height_) != 0;
    });
  }

  static int Failed(const faults::Heap &heap) {
    int failed = 0;
    for (const auto &allocation : heap.Allocations()) failed += allocation.address == nullptr;
    return failed;
  }

  const int32_t width_ = GetParam().first, height_ = GetParam().second;
  TestImage source_{6, 5, ImageFormatG};
  TestImage dest_{width_, height_, ImageFormatG};
  TestImage temp_{width_, 5, ImageFormatScaling1};
};
INSTANTIATE_TEST_SUITE_P(Sizes, ScaleMemory, testing::Values(std::pair{3, 4}, std::pair{4, 3}));

TEST_P(ScaleMemory, WhicheverAllocationFailsItIsFalseOrAllBytesAreRight) {
  const Outcome expected = NaiveOutcome(dest_, source_, temp_, kLanczos3, width_, height_);
  int refused = 0;
  for (const TestImage *temp : {static_cast<const TestImage *>(nullptr), static_cast<const TestImage *>(&temp_)}) {
    for (int nth = 1;; ++nth) {
      faults::Heap heap;
      heap.FailCallocAt(nth);
      const Outcome outcome = Scaled(temp);
      if (outcome.result) {
        EXPECT_EQ(outcome.dest, expected.dest) << nth;
      } else {
        ++refused;
        EXPECT_EQ(outcome.dest, dest_.Storage()) << nth;
      }
      EXPECT_TRUE(temp == nullptr || heap.Outstanding() == 0) << nth;
      host_.TakeException();  // the constructor's own, where the temp cannot be made
      if (Failed(heap) == 0) break;
      ASSERT_LT(nth, 1000);
    }
  }
  // The two tables, with a temp of the caller's and without one, and the temp.
  EXPECT_EQ(refused, 5);
}

TEST_P(ScaleMemory, ATableAndItsListsAreOneAllocationForEachPass) {
  faults::Heap heap;
  ASSERT_TRUE(Scaled(&temp_).result);
  // To half the width: 2 * (6 + 1) taps at most. To 4 of 6 columns: windows of 4.5. Of 5 rows likewise.
  const size_t columnTaps = width_ == 3 ? 14 : 10;
  const size_t rowTaps = height_ == 4 ? 9 : 12;
  const auto tableSize = [](int32_t lists, size_t taps) {
    return static_cast<size_t>(lists) * (sizeof(ScaleTapList) + taps * sizeof(ScaleTap));
  };
  const std::vector<faults::Allocation> allocations = heap.Allocations();
  const auto asked = [&](size_t size) {
    return std::ranges::count_if(allocations, [&](const auto &call) { return call.count * call.size == size; });
  };
  EXPECT_EQ(asked(tableSize(width_, columnTaps)), 1);
  EXPECT_EQ(asked(tableSize(height_, rowTaps)), 1);
  EXPECT_EQ(allocations.size(), 2u + 2 + 3);  // and what the passes work in
}

TEST_P(ScaleMemory, WithoutTheFirstTableNothingIsWritten) {
  faults::Heap heap;
  heap.FailCallocAt(1);
  EXPECT_TRUE(Scaled(&temp_) == (Outcome{false, dest_.Storage(), temp_.Storage()}));
}

TEST_P(ScaleMemory, WithoutTheSecondTableTheDestinationStays) {
  const Outcome expected = NaiveOutcome(dest_, source_, temp_, kLanczos3, width_, height_);
  faults::Heap heap;
  heap.FailCallocAt(4);  // after the first table and the two buffers of the horizontal pass
  EXPECT_TRUE(Scaled(&temp_) == (Outcome{false, dest_.Storage(), expected.temp}));
}

}  // namespace
}  // namespace zvk::scaling
