#include "pixels/gray_conversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "tests/scenes/random.h"
#include "tests/support/fence.h"

namespace zvk::pixels {
namespace {

struct Case {
  const char *name;
  int32_t sourcePixelSize;
  std::array<int32_t, 3> colours;
  int32_t destPixelSize;
  int32_t gray;
  std::optional<SampleMove> alpha;
};

const std::vector<Case> kCases{
    {"packed", 3, {0, 1, 2}, 1, 0, {}},
    {"another order into one of four", 4, {3, 2, 1}, 4, 2, {}},
    {"with alpha", 4, {0, 1, 2}, 2, 0, SampleMove{3, 1}},
    {"with alpha first, complemented", 4, {1, 2, 3}, 2, 1, SampleMove{0, 0, true}},
    {"all colours at one place", 5, {0, 0, 0}, 2, 0, SampleMove{4, 1}},
    {"offsets beyond the pixel", 4, {41, 42, 40}, 2, 20, SampleMove{43, 21}},
    {"alpha and gray at one place", 4, {0, 1, 2}, 2, 1, SampleMove{3, 1}},
    {"alpha among the samples of the next pixel", 4, {0, 1, 2}, 2, 0, SampleMove{3, 3}},
};

int32_t SourceReach(const Case &test, int32_t width) {
  const int32_t highest = std::max(std::ranges::max(test.colours), test.alpha ? test.alpha->from : 0);
  return width == 0 ? 0 : test.sourcePixelSize * (width - 1) + highest + 1;
}

int32_t DestReach(const Case &test, int32_t width) {
  const int32_t highest = std::max(test.gray, test.alpha ? test.alpha->to : 0);
  return width == 0 ? 0 : test.destPixelSize * (width - 1) + highest + 1;
}

// Pixel after pixel, all samples of one read before any is written; gray before alpha.
void ConvertNaively(const Case &test, const uint8_t *source, uint8_t *dest, int32_t width) {
  for (int32_t x = 0; x < width; ++x) {
    const uint8_t *from = source + x * test.sourcePixelSize;
    uint8_t *to = dest + x * test.destPixelSize;
    const int gray = (77 * from[test.colours[0]] + 151 * from[test.colours[1]] + 28 * from[test.colours[2]]) / 256;
    const int alpha = test.alpha ? from[test.alpha->from] : 0;
    to[test.gray] = static_cast<uint8_t>(gray);
    if (test.alpha) to[test.alpha->to] = static_cast<uint8_t>(test.alpha->complement ? 255 - alpha : alpha);
  }
}

GrayConversion ConversionOf(const Case &test) {
  return {test.sourcePixelSize, test.colours, test.destPixelSize, test.gray, test.alpha};
}

TEST(GrayConversion, ConvertsAsThePlainLoopAndStaysInsideItsRows) {
  scenes::Random random(3);
  for (const Case &test : kCases) {
    SCOPED_TRACE(test.name);
    const GrayConversion convert = ConversionOf(test);
    for (const int32_t width : {0, 1, 2, 3, 7, 8, 9, 15, 16, 17, 31, 33, 64, 1023, 1024, 1025, 2100}) {
      fence::Block source(static_cast<size_t>(SourceReach(test, width) + 1));
      fence::Block dest(static_cast<size_t>(DestReach(test, width) + 1));
      scenes::FillNoise(source.Data(), source.Size(), random);
      scenes::FillNoise(dest.Data(), dest.Size(), random);
      std::vector<uint8_t> expected(dest.Data(), dest.Data() + dest.Size()), inOrder = expected;
      ConvertNaively(test, source.Data() + 1, expected.data() + 1, width);
      convert.MoveInOrder(source.Data() + 1, inOrder.data() + 1, width);
      EXPECT_EQ(inOrder, expected) << width;
      convert(source.Data() + 1, dest.Data() + 1, width);
      EXPECT_EQ(std::vector<uint8_t>(dest.Data(), dest.Data() + dest.Size()), expected) << width;
    }
  }
}

TEST(GrayConversion, OverlappingRowsGoPixelAfterPixel) {
  scenes::Random random(4);
  for (const Case &test : kCases) {
    SCOPED_TRACE(test.name);
    const GrayConversion convert = ConversionOf(test);
    for (int32_t distance = -70; distance <= 70; ++distance) {
      std::vector<uint8_t> memory = scenes::Noise(1200, random);
      std::vector<uint8_t> expected = memory, inOrder = memory;
      ConvertNaively(test, expected.data() + 200, expected.data() + 200 + distance, 40);
      convert.MoveInOrder(inOrder.data() + 200, inOrder.data() + 200 + distance, 40);
      EXPECT_EQ(inOrder, expected) << distance;
      convert(memory.data() + 200, memory.data() + 200 + distance, 40);
      EXPECT_EQ(memory, expected) << distance;
    }
  }
}

}  // namespace
}  // namespace zvk::pixels
