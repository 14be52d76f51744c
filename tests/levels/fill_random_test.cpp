// The fills with random bytes of levels/fill.h.
#include <gtest/gtest.h>

#include "levels/fill.h"
#include "tests/levels/in_place_testing.h"

namespace zvk::levels {
namespace {

using namespace in_place_testing;

constexpr unsigned kSeed = 20;

// The first bytes of the sequence from kSeed on.
Bytes Sequence(size_t count) {
  std::srand(kSeed);
  Bytes bytes(count);
  for (uint8_t &byte : bytes) byte = static_cast<uint8_t>(std::rand());
  return bytes;
}

class FillRandom : public InPlaceTest {
 protected:
  // Fills from kSeed on, and expects that `samples` numbers were drawn.
  static void FillSeeded(const TestImage &image, int32_t x, int32_t y, int32_t width, int32_t height, size_t samples) {
    const uint8_t next = Sequence(samples + 1).back();
    std::srand(kSeed);
    FillRectRandom5(image, x, y, width, height);
    EXPECT_EQ(static_cast<uint8_t>(std::rand()), next);
  }
};

TEST_F(FillRandom, PackedPixelsTakeBytesInTheOrderOfMemory) {
  for (const int32_t format : {ImageFormatBGR, ImageFormatARGB, ImageFormatG, ImageFormatAG}) {
    const TestImage image = NewImage(3, 2, format);
    const size_t count = image.All().size();
    FillSeeded(image, 0, 0, 3, 2, count);
    EXPECT_EQ(image.All(), Sequence(count)) << format;
  }
}

TEST_F(FillRandom, AlphaComesFirstBesideGrayAndInksAndLastBesideColours) {
  // Each digit: which number of the sequence the byte is, counted from 1; 0 for a byte that stays.
  const std::vector<std::pair<int32_t, Bytes>> orders{
      {ImageFormatG, {1}},
      {ImageFormatGA, {2, 1}},
      {ImageFormatAG, {1, 2}},
      {ImageFormat2of3, {0, 1, 0}},
      {ImageFormatGray16, {1, 0}},
      {ImageFormatRGB, {1, 2, 3}},
      {ImageFormatBGR, {3, 2, 1}},
      {ImageFormatXBGR, {0, 3, 2, 1}},
      {ImageFormatRGBA, {1, 2, 3, 4}},
      {ImageFormatARGB, {4, 1, 2, 3}},
      {ImageFormatABGR, {4, 3, 2, 1}},
      {ImageFormatCMYK, {1, 2, 3, 4}},
      {ImageFormatKYMC, {4, 3, 2, 1}},
      {ImageFormatXKYMC, {0, 4, 3, 2, 1}},
      {ImageFormatCMYKA, {2, 3, 4, 5, 1}},
      {ImageFormatAKYMC, {1, 5, 4, 3, 2}},
  };
  for (const auto &[format, order] : orders) {
    const TestImage image = NewImage(2, 2, format);
    image.Record().IsMapping = true;
    const size_t perPixel = *std::max_element(order.begin(), order.end());
    FillSeeded(image, 0, 0, 2, 2, 4 * perPixel);
    const Bytes sequence = Sequence(4 * perPixel);
    Bytes expected;
    for (size_t pixel = 0; pixel < 4; ++pixel) {
      for (const uint8_t place : order) expected.push_back(place == 0 ? 7 : sequence[pixel * perPixel + place - 1]);
    }
    EXPECT_EQ(image.All(), expected) << format;
  }
}

// Of 20 columns from 10 on, a packed image gets 10: the run ends at column 20.
TEST_F(FillRandom, ThePackedRunEndsAtTheColumnThatIsTheWidth) {
  const TestImage image = NewImage(40, 6, ImageFormatRGB);
  FillSeeded(image, 10, 0, 20, 5, size_t{10} * 3 * 5);
  const Bytes sequence = Sequence(size_t{10} * 3 * 5);
  Bytes expected(40 * 3 * 6, 7);
  for (ptrdiff_t y = 0; y < 5; ++y) std::copy_n(sequence.begin() + y * 30, 30, expected.begin() + y * 120 + 30);
  EXPECT_EQ(image.All(), expected);
}

TEST_F(FillRandom, TheMappedAndTheFillerFormAreFilledToTheFullWidth) {
  for (const int32_t format : {ImageFormatRGB, ImageFormatRGBX}) {
    const TestImage image = NewImage(40, 6, format);
    image.Record().IsMapping = format == ImageFormatRGB;
    FillSeeded(image, 10, 0, 20, 5, size_t{20} * 3 * 5);
    const Bytes sequence = Sequence(size_t{20} * 3 * 5);
    const auto pixelSize = static_cast<size_t>(image.Record().PixelSize);
    Bytes expected(40 * pixelSize * 6, 7);
    size_t next = 0;
    for (size_t y = 0; y < 5; ++y) {
      for (size_t x = 10; x < 30; ++x) {
        for (size_t c = 0; c < 3; ++c) expected[(y * 40 + x) * pixelSize + c] = sequence[next++];
      }
    }
    EXPECT_EQ(image.All(), expected) << format;
  }
}

TEST_F(FillRandom, APackedRunThatBeginsAtOrBeyondTheWidthIsEmptyAndTheRowsAreVisited) {
  const TestImage image = NewImage(40, 3, ImageFormatRGBA);
  const Bytes before = image.All();
  Log(image);
  FillSeeded(image, 10, 0, 10, 2, 0);
  EXPECT_EQ(TakeLog(), "yield 0 yield 1 yield");
  FillSeeded(image, 30, 1, 5, 2, 0);
  EXPECT_EQ(TakeLog(), "yield 1 yield 2 yield");
  EXPECT_EQ(image.All(), before);
}

TEST_F(FillRandom, TheShortfallOfAClipCountsItsOwnColumns) {
  const TestImage image = NewImage(10, 1, ImageFormatG);
  const TestImage clip = Clip(image, 4, 0, 6, 1);
  FillSeeded(clip, 1, 0, 3, 1, 2);  // columns 1 and 2 of the clip
  const Bytes sequence = Sequence(2);
  EXPECT_EQ(image.All(), (Bytes{7, 7, 7, 7, 7, sequence[0], sequence[1], 7, 7, 7}));
}

TEST_F(FillRandom, TheWholeImageIsFilledWithoutARectangle) {
  const TestImage image = NewImage(5, 3, ImageFormatRGB);
  std::srand(kSeed);
  FillRectRandom1(image);
  EXPECT_EQ(image.All(), Sequence(45));
}

TEST_F(FillRandom, ARunThatHangsOverTheLastPixelEndsWithTheStorage) {
  const TestImage image = NewImage(2, 1, ImageFormatGA);
  SetGrayOffset(image, 0, 1);
  std::srand(kSeed);
  FillRectRandom1(image);
  const Bytes sequence = Sequence(3);
  EXPECT_EQ(image.All(), (Bytes{7, sequence[0], sequence[1], sequence[2]}));
}

TEST_F(FillRandom, AViewWithoutFlagsIsFilledChannelByChannel) {
  const TestImage image = NewImage(4, 1, ImageFormatRGB);
  FillSeeded(View(image, RGBChannel(image)), 2, 0, 2, 1, 6);
  const Bytes sequence = Sequence(6);
  Bytes expected(12, 7);
  std::copy(sequence.begin(), sequence.end(), expected.begin() + 6);
  EXPECT_EQ(image.All(), expected);
}

}  // namespace
}  // namespace zvk::levels
