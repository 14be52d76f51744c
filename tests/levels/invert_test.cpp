#include "levels/invert.h"

#include <gtest/gtest.h>

#include "tests/levels/in_place_testing.h"

namespace zvk::levels {
namespace {

using namespace in_place_testing;

using Invert = InPlaceTest;

TEST_F(Invert, EverySampleAndAlphaIsComplementedAndNoFiller) {
  const Bytes pixel{0, 1, 100, 254, 255};
  const std::vector<std::pair<int32_t, Bytes>> pixels{
      {ImageFormatG, {255}},
      {ImageFormatAG, {255, 254}},
      {ImageFormat3of3, {0, 1, 155}},
      {ImageFormat2of4, {0, 254, 100, 254}},
      {ImageFormatBGR, {255, 254, 155}},
      {ImageFormatRGBX, {255, 254, 155, 254}},
      {ImageFormatXRGB, {0, 254, 155, 1}},
      {ImageFormatABGR, {255, 254, 155, 1}},
      {ImageFormatCMYK, {255, 254, 155, 1}},
      {ImageFormatKYMCA, {255, 254, 155, 1, 0}},
      {ImageFormatCMYKX, {255, 254, 155, 1, 255}},
      {ImageFormatXCMYK, {0, 254, 155, 1, 0}},
      {ImageFormatBuffer, {0}},
      {ImageFormatScaling5, {0, 1, 100, 254, 255}},
  };
  for (const auto &[format, inverted] : pixels) {
    const TestImage image =
        NewImage(1, 1, format, Bytes(pixel.begin(), pixel.begin() + static_cast<ptrdiff_t>(inverted.size())));
    Invert1(image);
    EXPECT_EQ(image.All(), inverted) << format;
  }
}

TEST_F(Invert, A16BitSampleIsComplementedAsAWhole) {
  const TestImage image = NewImage(3, 1, ImageFormatGray16);
  const std::array<uint16_t, 3> samples{0, 65535, 0x1234};
  std::memcpy(image.block->Data(), samples.data(), 6);
  Invert1(image);
  std::array<uint16_t, 3> inverted{};
  std::memcpy(inverted.data(), image.block->Data(), 6);
  EXPECT_EQ(inverted, (std::array<uint16_t, 3>{65535, 0, 0xEDCB}));
}

TEST_F(Invert, A16BitSampleMayBeMisaligned) {
  const TestImage image = NewImage(2, 2, ImageFormatGray16, 5);
  Invert5(image, 1, 0, 1, 2);
  EXPECT_EQ(image.All(), (Bytes{7, 7, 248, 248, 7, 7, 7, 248, 248, 7}));
}

TEST_F(Invert, A16BitSampleThatHangsOverTheStorageLosesItsLastByte) {
  const TestImage image = NewImage(2, 2, ImageFormatGray16);
  SetGrayOffset(image, 0, 1);
  Invert1(image);
  // The last sample of the first row reaches into the second row, which begins at its own second byte.
  EXPECT_EQ(image.All(), (Bytes{7, 248, 248, 248, 248, 248, 248, 248}));
}

TEST_F(Invert, SixteenBitSamplesOfRowsShorterThanTheirPixelsAreComplementedWhole) {
  const auto block = host_.NewMemoryBlock(Bytes(16, 7));
  const auto inverted = [&](int32_t rowSize) {
    std::fill_n(block->Data(), 16, uint8_t{7});
    const auto image = host_.New("PictureZVK");
    ImageConstructorMemory(image, block, 4, 2, ImageFormatGray16, rowSize);
    Invert1(image);
    return Bytes(block->Data(), block->Data() + 16);
  };
  // Byte 7 is in both rows. The last sample begins with byte 13, the storage's last.
  EXPECT_EQ(inverted(7), (Bytes{248, 248, 248, 248, 248, 248, 248, 7, 248, 248, 248, 248, 248, 248, 7, 7}));
  // Bytes 4 to 7 are in both rows, and the second row goes on behind the 8 bytes that the caller has described.
  EXPECT_EQ(inverted(4), (Bytes{248, 248, 248, 248, 7, 7, 7, 7, 248, 248, 248, 248, 7, 7, 7, 7}));
}

TEST_F(Invert, AClipAndTheGrayViewOf16BitSamplesKnowThem) {
  const TestImage image = NewImage(3, 1, ImageFormatGray16);
  Invert1(Clip(image, 1, 0, 1, 1));
  EXPECT_EQ(image.All(), (Bytes{7, 7, 248, 248, 7, 7}));
  Invert5(View(image, GrayChannel(image)), 2, 0, 1, 1);
  EXPECT_EQ(image.All(), (Bytes{7, 7, 248, 248, 248, 248}));
}

TEST_F(Invert, TwiceRestoresTheImage) {
  for (int32_t format = 1; format <= 41; ++format) {
    if (format == 14) continue;
    const TestImage image = NewImage(70, 3, format);
    Bytes bytes = image.All();
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i * 31 + i / 7);
    image.Set(bytes);
    Invert1(image);
    const ImageClassData &record = image.Record();
    EXPECT_EQ(image.All() != bytes, record.IsGray || record.IsRGB || record.IsCMYK) << format;
    Invert1(image);
    EXPECT_EQ(image.All(), bytes) << format;
  }
}

TEST_F(Invert, ARectangleWithoutHeightChangesNothing) {
  const TestImage image = NewImage(3, 3, ImageFormatRGB);
  Log(image);
  Invert5(image, 0, 0, 3, 0);
  Invert5(image, 3, 0, 3, 3);
  EXPECT_EQ(image.All(), Bytes(27, 7));
  EXPECT_EQ(TakeLog(), "");
}

TEST_F(Invert, OnlyTheRectangleIsInverted) {
  const TestImage image = NewImage(3, 3, ImageFormatG, 4);
  Invert5(image, 3, 3, -2, -2);
  EXPECT_EQ(image.All(), (Bytes{7, 7, 7, 7, 7, 248, 248, 7, 7, 248, 248, 7}));
}

TEST_F(Invert, EachRowIsFetchedOnceWithAYieldBeforeTheFirstAndAfterEach) {
  const TestImage image = NewImage(3, 4, ImageFormatCMYK);
  Log(image);
  Invert5(image, 0, 1, 1, 2);
  EXPECT_EQ(TakeLog(), "yield 1 yield 2 yield");
}

TEST_F(Invert, AnImageOfNoFamilyYieldsAndItsRowsAreNotFetched) {
  const TestImage image = NewImage(3, 4, ImageFormatBuffer);
  Log(image);
  Invert1(image);
  EXPECT_EQ(TakeLog(), "yield");
  EXPECT_EQ(image.All(), Bytes(12, 7));
}

TEST_F(Invert, ChannelsThatShareAByteAreInvertedTwice) {
  const TestImage image = NewImage(2, 1, ImageFormatRGB);
  SetGreenOffset(image, 0, 0);
  Invert1(image);
  EXPECT_EQ(image.All(), (Bytes{7, 7, 248, 7, 7, 248}));
}

TEST_F(Invert, UnusableImagesAreLeftAlone) {
  for (const int32_t format : {ImageFormatRGB, ImageFormatGray16}) {
    ForEachUnusable(host_, format, [](const char *, REALobject image) {
      Invert1(image);
      Invert5(image, 0, 0, 1, 1);
    });
  }
  Invert1(nullptr);
  Invert5(nullptr, 0, 0, 1, 1);
}

TEST_F(Invert, OverlappingRowsAreInvertedOneAfterTheOther) {
  const TestImage whole = NewImage(5, 1, ImageFormatG);
  const auto image = host_.New("PictureZVK");
  ImageConstructorMemory(image, whole.block, 3, 2, ImageFormatG, 2);  // columns 0 to 2, then 2 to 4
  Invert1(image);
  EXPECT_EQ(whole.All(), (Bytes{248, 248, 7, 248, 248}));
}

}  // namespace
}  // namespace zvk::levels
