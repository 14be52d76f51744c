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

  static size_t TableSize(int32_t lists, size_t taps) {
    return static_cast<size_t>(lists) * (sizeof(ScaleTapList) + taps * sizeof(ScaleTap));
  }

  // Which calls of calloc, counted from 1, asked for so many bytes.
  static std::vector<int> CallsFor(const faults::Heap &heap, size_t size) {
    std::vector<int> calls;
    int nth = 0;
    for (const auto &call : heap.Allocations()) {
      nth += call.zeroed;
      if (call.zeroed && call.count * call.size == size) calls.push_back(nth);
    }
    return calls;
  }

  const int32_t width_ = GetParam().first, height_ = GetParam().second;
  // To half the width: 2 * (6 + 1) taps at most. To 4 of 6 columns: windows of 4.5. Of 5 rows likewise.
  const size_t columnTaps_ = width_ == 3 ? 14 : 10;
  const size_t rowTaps_ = height_ == 4 ? 9 : 12;
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
  EXPECT_EQ(CallsFor(heap, TableSize(width_, columnTaps_)).size(), 1u);
  EXPECT_EQ(CallsFor(heap, TableSize(height_, rowTaps_)).size(), 1u);
}

TEST_P(ScaleMemory, WithoutTheFirstTableNothingIsWritten) {
  faults::Heap heap;
  heap.FailCallocAt(1);
  EXPECT_TRUE(Scaled(&temp_) == (Outcome{false, dest_.Storage(), temp_.Storage()}));
}

TEST_P(ScaleMemory, WithoutTheSecondTableTheDestinationStays) {
  const Outcome expected = NaiveOutcome(dest_, source_, temp_, kLanczos3, width_, height_);
  std::vector<int> calls;
  {
    const faults::Heap whole;
    ASSERT_TRUE(Scaled(&temp_).result);
    calls = CallsFor(whole, TableSize(height_, rowTaps_));
    ASSERT_EQ(calls.size(), 1u);
  }
  faults::Heap heap;
  heap.FailCallocAt(calls[0]);
  EXPECT_TRUE(Scaled(&temp_) == (Outcome{false, dest_.Storage(), expected.temp}));
}

}  // namespace
}  // namespace zvk::scaling
