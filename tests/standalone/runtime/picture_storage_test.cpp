#include "standalone/runtime/picture_storage.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <vector>

namespace standalone {
namespace {

constexpr Pixel kMixed = {10, 20, 30, 40};

std::vector<uint8_t> PixelBytes(PictureStorage &storage, int32_t x, int32_t y) {
  const uint8_t *const pixel = storage.Row(y) + 4 * x;
  return {pixel, pixel + 4};
}

using ByteList = std::vector<uint8_t>;

TEST(GDStorage, IsAGDTrueColourImage) {
  GDStorage storage(3, 2);
  REALpictureDescription description{};
  ASSERT_TRUE(storage.Describe(10, &description));
  EXPECT_EQ(description.type, 10u);
  EXPECT_EQ(description.width, 3);
  EXPECT_EQ(description.height, 2);
  EXPECT_EQ(description.depth, 32);
  EXPECT_EQ(description.pixelBuffer, nullptr);
  const auto *const words = static_cast<const GDImage *>(description.data);
  EXPECT_EQ(words->paletteRows, nullptr);
  EXPECT_EQ(words->width, 3);
  EXPECT_EQ(words->height, 2);
  EXPECT_NE(words->trueColor, 0);
  ASSERT_NE(words->trueColorRows, nullptr);
  EXPECT_EQ(words->trueColorRows[1], storage.Row(1));
  EXPECT_FALSE(storage.HasAlphaChannel());
  EXPECT_EQ(storage.Get(2, 1), (Pixel{0, 0, 0, 255}));
}

TEST(GDStorage, IsDescribedAsAnyFormAndNotAsABitmap) {
  GDStorage storage(1, 1);
  REALpictureDescription description{};
  EXPECT_TRUE(storage.Describe(0, &description));
  EXPECT_FALSE(storage.Describe(8, &description));
}

TEST(GDStorage, KeepsBlueGreenRedAndAnAlphaOf127Steps) {
  GDStorage storage(2, 1);
  storage.Set(1, 0, {10, 20, 30, 255});
  EXPECT_EQ(PixelBytes(storage, 1, 0), (ByteList{30, 20, 10, 0}));
  EXPECT_EQ(PixelBytes(storage, 0, 0), (ByteList{0, 0, 0, 0}));
  storage.Set(1, 0, {10, 20, 30, 0});
  EXPECT_EQ(PixelBytes(storage, 1, 0), (ByteList{30, 20, 10, 127}));
  EXPECT_EQ(storage.Get(1, 0), (Pixel{10, 20, 30, 0}));
  storage.Row(0)[7] = 64;  // half: 255 - 64 * 255 / 127, rounded
  EXPECT_EQ(storage.Get(1, 0).alpha, 126);
  storage.Row(0)[7] = 255;  // more than GD has
  EXPECT_EQ(storage.Get(1, 0).alpha, 0);
}

TEST(PaletteStorage, HasAPaletteTableAndNoTrueColour) {
  PaletteStorage storage(3, 2);
  REALpictureDescription description{};
  ASSERT_TRUE(storage.Describe(10, &description));
  const auto *const image = static_cast<const GDImage *>(description.data);
  EXPECT_NE(image->paletteRows, nullptr);
  EXPECT_EQ(image->trueColor, 0);
  EXPECT_EQ(image->trueColorRows, nullptr);
  EXPECT_EQ(description.depth, 8);
  EXPECT_EQ(storage.Row(0), nullptr);
  EXPECT_FALSE(storage.Describe(8, &description));
}

TEST(PaletteStorage, TakesTheNearestColourWhenThePaletteIsFull) {
  PaletteStorage storage(258, 1);
  for (int32_t x = 0; x < 255; ++x) storage.Set(x, 0, {static_cast<uint8_t>(x + 1), 0, 0, 255});  // black is there
  EXPECT_EQ(storage.Image().colourCount, 256);
  storage.Set(255, 0, {100, 9, 0, 255});
  storage.Set(256, 0, {7, 0, 0, 255});
  EXPECT_EQ(storage.Image().colourCount, 256);
  EXPECT_EQ(storage.Get(254, 0), (Pixel{255, 0, 0, 255}));
  EXPECT_EQ(storage.Get(255, 0), (Pixel{100, 0, 0, 255}));
  EXPECT_EQ(storage.Get(256, 0), (Pixel{7, 0, 0, 255}));
  EXPECT_EQ(storage.Get(257, 0), (Pixel{0, 0, 0, 255}));
}

struct LayoutCase {
  uint32_t alphaInfo;
  ByteList bytes;  // of kMixed
  uint8_t alpha;   // read back
};

TEST(BitmapStorage, LaysBytesOutByTheAlphaInfo) {
  const LayoutCase cases[] = {
      {1, {10, 20, 30, 40}, 40},   {2, {40, 10, 20, 30}, 40},   {3, {10, 20, 30, 40}, 40},
      {4, {40, 10, 20, 30}, 40},   {5, {10, 20, 30, 255}, 255}, {6, {255, 10, 20, 30}, 255},
      {0, {10, 20, 30, 255}, 255}, {7, {10, 20, 30, 255}, 255}, {0x2002, {40, 10, 20, 30}, 40},
  };
  for (const LayoutCase &one : cases) {
    BitmapStorage storage(2, 2, {.alphaInfo = one.alphaInfo});
    storage.Set(1, 1, kMixed);
    EXPECT_EQ(PixelBytes(storage, 1, 1), one.bytes) << one.alphaInfo;
    EXPECT_EQ(storage.Get(1, 1), (Pixel{10, 20, 30, one.alpha})) << one.alphaInfo;
    EXPECT_EQ(storage.Get(0, 1), (Pixel{255, 255, 255, 255})) << one.alphaInfo;
    EXPECT_EQ(storage.Context().alphaInfo, one.alphaInfo);
  }
}

TEST(BitmapStorage, DescribesItsContext) {
  BitmapStorage storage(3, 2, {.alphaInfo = 2, .bytesPerRow = 20, .hasAlphaChannel = true});
  REALpictureDescription description{};
  ASSERT_TRUE(storage.Describe(8, &description));
  EXPECT_EQ(description.type, 8u);
  EXPECT_EQ(description.width, 3);
  EXPECT_EQ(description.height, 2);
  const auto *const context = static_cast<const BitmapContext *>(description.data);
  EXPECT_EQ(context->data, storage.Row(0));
  EXPECT_EQ(context->bytesPerRow, 20u);
  EXPECT_EQ(storage.Row(1) - storage.Row(0), 20);
  EXPECT_EQ(context->bitsPerPixel, 32u);
  EXPECT_TRUE(storage.HasAlphaChannel());
  EXPECT_TRUE(storage.Describe(0, &description));
  EXPECT_FALSE(storage.Describe(10, &description));
}

TEST(BitmapStorage, OfOtherDepthsHasNoPixelsToSet) {
  BitmapStorage storage(3, 2, {.bitsPerPixel = 16});
  EXPECT_EQ(storage.Context().bytesPerRow, 6u);
  EXPECT_EQ(storage.Row(0), nullptr);
  storage.Set(0, 0, kMixed);
  EXPECT_EQ(storage.Get(0, 0), Pixel{});
}

TEST(BitmapStorage, ThrowsWhereThereIsNoMemory) { EXPECT_THROW(BitmapStorage(2147483647, 2147483647), std::bad_alloc); }

TEST(DrawnStorage, HasPixelsButNoDescription) {
  DrawnStorage storage(3, 2);
  REALpictureDescription description{};
  for (const int32_t type : {0, 8, 10}) EXPECT_FALSE(storage.Describe(type, &description));
  EXPECT_EQ(storage.Get(2, 1), (Pixel{255, 255, 255, 255}));
  storage.Set(2, 1, kMixed);
  EXPECT_EQ(storage.Get(2, 1), kMixed);
  EXPECT_EQ(storage.Get(1, 1), (Pixel{255, 255, 255, 255}));
  EXPECT_EQ(storage.Row(0), nullptr);
}

}  // namespace
}  // namespace standalone
