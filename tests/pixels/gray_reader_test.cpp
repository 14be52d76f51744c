#include "pixels/gray_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

#include "pixels/byte_shuffle.h"
#include "tests/support/fence.h"

namespace zvk::pixels {
namespace {

// Every red and green with one blue: 65536 pixels.
std::vector<uint8_t> PixelsWithBlue(int blue) {
  std::vector<uint8_t> pixels;
  for (int red = 0; red < 256; ++red) {
    for (int green = 0; green < 256; ++green) {
      for (const int sample : {red, green, blue}) pixels.push_back(static_cast<uint8_t>(sample));
    }
  }
  return pixels;
}

TEST(GrayReader, WeighsEveryColourExactly) {
  const GrayReader read(3, {0, 1, 2});
  std::vector<uint8_t> gray(65536);
  for (int blue = 0; blue < 256; ++blue) {
    const std::vector<uint8_t> pixels = PixelsWithBlue(blue);
    std::ranges::fill(gray, 0);
    read(pixels.data(), gray.data(), 65536);
    for (size_t i = 0; i < gray.size(); ++i) {
      ASSERT_EQ(gray[i], (77 * pixels[3 * i] + 151 * pixels[3 * i + 1] + 28 * blue) / 256) << i << " " << blue;
    }
  }
}

TEST(GrayReader, ThePlainLoopWeighsEveryColourExactly) {
  const GrayReader read(3, {0, 1, 2});
  std::vector<uint8_t> gray(65536);
  for (const int blue : {0, 1, 127, 128, 254, 255}) {
    const std::vector<uint8_t> pixels = PixelsWithBlue(blue);
    read.ReadPlain(pixels.data(), gray.data(), 65536);
    for (size_t i = 0; i < gray.size(); ++i) {
      ASSERT_EQ(gray[i], (77 * pixels[3 * i] + 151 * pixels[3 * i + 1] + 28 * blue) / 256) << i << " " << blue;
    }
  }
}

TEST(GrayReader, KnownGrays) {
  const GrayReader read(3, {0, 1, 2});
  const std::vector<uint8_t> pixels{255, 255, 255, 255, 0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0};
  std::vector<uint8_t> gray(5);
  read(pixels.data(), gray.data(), 5);
  EXPECT_EQ(gray, (std::vector<uint8_t>{255, 76, 150, 27, 0}));
}

TEST(GrayReader, ShufflesAndThePlainLoopAgreeAndStayInsideTheirRows) {
  if (!HasByteShuffle()) GTEST_SKIP() << "this machine has no shuffles";
  struct Case {
    int32_t pixelSize;
    std::array<int32_t, 3> offsets;
    bool shuffles;
  };
  // The last: four pixels would not lie in sixteen bytes.
  const std::vector<Case> cases{{3, {0, 1, 2}, true},    {3, {2, 1, 0}, true}, {4, {1, 2, 3}, true},
                                {4, {41, 42, 43}, true}, {2, {0, 0, 1}, true}, {5, {0, 2, 4}, false}};
  for (const Case &test : cases) {
    const GrayReader read(test.pixelSize, test.offsets);
    const int32_t highest = std::ranges::max(test.offsets);
    bool shuffled = false;
    for (int32_t width = 0; width < 60; ++width) {
      const size_t size = width == 0 ? 0 : static_cast<size_t>(test.pixelSize * (width - 1) + highest + 1);
      fence::Block row(size + 1);  // no empty block
      uint8_t *source = row.Data() + 1;
      for (size_t i = 0; i < size; ++i) source[i] = static_cast<uint8_t>(i * 83 + 7);
      fence::Block result(static_cast<size_t>(width) + 1);
      std::vector<uint8_t> plain(static_cast<size_t>(width));
      read.ReadPlain(source, plain.data(), width);
      const int32_t read_ = read.ReadShuffled(source, result.Data() + 1, width);
      ASSERT_LE(read_, width);
      shuffled = shuffled || read_ > 0;
      EXPECT_TRUE(std::equal(plain.begin(), plain.begin() + read_, result.Data() + 1)) << width;
      read(source, result.Data() + 1, width);
      EXPECT_TRUE(std::equal(plain.begin(), plain.end(), result.Data() + 1)) << width;
    }
    EXPECT_EQ(shuffled, test.shuffles) << test.pixelSize;
  }
}

}  // namespace
}  // namespace zvk::pixels
