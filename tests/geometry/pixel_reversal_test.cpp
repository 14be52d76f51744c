#include "geometry/pixel_reversal.h"

#include <gtest/gtest.h>

#include "tests/geometry/turn_testing.h"
#include "tests/support/cpu_levels.h"
#include "tests/support/fence.h"

namespace zvk::geometry {
namespace {

using namespace turn_testing;

// All numbers of pixels that a run of vectors may end in, between bytes that fault.
TEST(PixelReversal, WritesPixelsInReverseOrderAndTouchesNothingElse) {
  for (int32_t pixelSize = 1; pixelSize <= kLargestPixel; ++pixelSize) {
    for (int32_t count = 0; count <= 70; ++count) {
      const size_t size = static_cast<size_t>(count) * pixelSize;
      const Bytes pixels = Noise(size, static_cast<uint32_t>(count));
      Bytes expected;
      for (int32_t i = count - 1; i >= 0; --i) {
        for (int32_t byte = 0; byte < pixelSize; ++byte) expected.push_back(pixels[i * pixelSize + byte]);
      }
      for (const fence::Side side : {fence::Side::kBefore, fence::Side::kAfter}) {
        const fence::Block source(size + 1, side);
        // The odd byte is on the side away from the fence.
        const int32_t first = side == fence::Side::kAfter ? 1 : 0;
        std::copy(pixels.begin(), pixels.end(), source.Data() + first);
        ForEachForm(ReversalOf(pixelSize), [&](auto reverse) {
          const fence::Block dest(size + 1, side);
          reverse(source.Data() + first, dest.Data() + first, count);
          EXPECT_EQ(Bytes(dest.Data() + first, dest.Data() + first + size), expected) << pixelSize << ' ' << count;
          EXPECT_EQ(dest.Data()[first == 1 ? 0 : size], 0);
        });
      }
    }
  }
}

}  // namespace
}  // namespace zvk::geometry
