#include "geometry/pixel_transposition.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "tests/geometry/turn_testing.h"
#include "tests/support/cpu_levels.h"
#include "tests/support/fence.h"

namespace zvk::geometry {
namespace {

using namespace turn_testing;

// Every row lies by itself, with an unreadable page right behind it.
struct Rows {
  Rows(int32_t count, size_t size) {
    for (int32_t i = 0; i < count; ++i) {
      blocks.push_back(std::make_unique<fence::Block>(size));
      addresses.push_back(blocks.back()->Data());
    }
  }

  std::vector<std::unique_ptr<fence::Block>> blocks;
  std::vector<uint8_t *> addresses;
};

void ExpectTransposed(TranspositionKernel::Form transpose, int32_t width, int32_t height, int32_t pixelSize) {
  const Rows source(height, static_cast<size_t>(width) * pixelSize),
      dest(width, static_cast<size_t>(height) * pixelSize);
  for (int32_t y = 0; y < height; ++y) {
    const Bytes noise = Noise(static_cast<size_t>(width) * pixelSize, static_cast<uint32_t>(y));
    std::copy(noise.begin(), noise.end(), source.addresses[y]);
  }
  transpose({source.addresses.data(), dest.addresses.data(), width, height});
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x) {
      for (int32_t byte = 0; byte < pixelSize; ++byte) {
        ASSERT_EQ(dest.addresses[x][y * pixelSize + byte], source.addresses[y][x * pixelSize + byte])
            << pixelSize << ": " << x << ", " << y << " of " << width << " x " << height;
      }
    }
  }
}

TEST(PixelTransposition, ExchangesRowsAndColumnsAndTouchesNothingElse) {
  for (int32_t pixelSize = 1; pixelSize <= 5; ++pixelSize) {
    ForEachForm(TranspositionOf(pixelSize), [&](auto transpose) {
      for (int32_t size = 1; size <= 35; ++size) {
        ExpectTransposed(transpose, size, 1, pixelSize);
        ExpectTransposed(transpose, 1, size, pixelSize);
        ExpectTransposed(transpose, size, size, pixelSize);
        ExpectTransposed(transpose, size, 33, pixelSize);
        ExpectTransposed(transpose, 17, size, pixelSize);
      }
      ExpectTransposed(transpose, 64, 64, pixelSize);
    });
  }
}

}  // namespace
}  // namespace zvk::geometry
