#include "pictures/masked_drawing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "image/image_formats.h"
#include "pictures/picture_import.h"
#include "tests/pictures/picture_testing.h"

namespace zvk::pictures {
namespace {

using namespace picture_testing;
using standalone::Object;
using standalone::Picture;
using Bytes = std::vector<uint8_t>;

// Gives the picture a mask of that layout and of its own size, filled with random bytes.
Picture &AddMask(PluginHost &host, Picture &picture, int32_t layout, uint32_t seed = 2) {
  auto mask = NewFilledPicture(host, picture.Width(), picture.Height(), layout, seed);
  Picture &result = *mask;
  picture.SetMask(std::move(mask));
  return result;
}

// Every call keeps the reference to the mask that it was given. Expects that of so many calls, and gives them back.
void ExpectReferencesLeft(Picture &mask, int32_t calls) {
  EXPECT_EQ(mask.References(), 1 + calls);
  EXPECT_EQ(mask.LocksHeld(), 0);
  while (mask.References() > 1) mask.Unlock();
}

// An image of one row, all samples `value`.
Owned<Object> FlatImage(PluginHost &host, int32_t width, int32_t format, uint8_t value) {
  auto image = host.New("PictureZVK");
  ImageConstructor(image, width, 1, format);
  ImageClassData &record = *RecordOf(image);
  std::fill_n(record.Buffer, record.TotalSize, value);
  return image;
}

Bytes FirstBytes(Object &image, size_t count) {
  const uint8_t *pixels = RecordOf(image.Handle())->Buffer;
  return {pixels, pixels + count};
}

// --- what is drawn, for every two layouts that may come together ---

class MaskedLayouts : public testing::TestWithParam<std::pair<int32_t, int32_t>> {
 protected:
  MaskedLayouts() : host_(HostOf(GetParam().first)) {}

  // Two pixels: (10, 20, 30) masked by (40, 50, 60), and (200, 0, 255) masked by (128, 255, 0). Neither alpha counts.
  Owned<Picture> TwoPixels() {
    auto picture = host_.NewPicture(MakeStorage(2, 1, GetParam().first));
    picture->SetPixel(0, 0, {10, 20, 30, 77});
    picture->SetPixel(1, 0, {200, 0, 255, 255});
    mask_ = &AddMask(host_, *picture, GetParam().second);
    mask_->SetPixel(0, 0, {40, 50, 60, 3});
    mask_->SetPixel(1, 0, {128, 255, 0, 99});
    return picture;
  }

  PluginHost host_;
  Picture *mask_ = nullptr;
};

std::vector<std::pair<int32_t, int32_t>> LayoutPairs() {
  std::vector<std::pair<int32_t, int32_t>> pairs = {{kGD, kGD}};
  for (int32_t layout = 1; layout <= 6; ++layout) {
    for (int32_t maskLayout = 1; maskLayout <= 6; ++maskLayout) pairs.emplace_back(layout, maskLayout);
  }
  return pairs;
}

INSTANTIATE_TEST_SUITE_P(MaskedDrawing, MaskedLayouts, testing::ValuesIn(LayoutPairs()),
                         [](const testing::TestParamInfo<std::pair<int32_t, int32_t>> &info) {
                           return std::to_string(info.param.first) + "And" + std::to_string(info.param.second);
                         });

TEST_P(MaskedLayouts, TheMasksRedIsStoredAsAlpha) {
  auto picture = TwoPixels();
  auto image = FlatImage(host_, 3, ImageFormatABGR, 99);
  rbDrawMaskedPictureRGB2(image, picture, false);
  EXPECT_EQ(FirstBytes(*image, 12), (Bytes{40, 30, 20, 10, 128, 255, 0, 200, 99, 99, 99, 99}));
  rbDrawMaskedPictureRGB2(image, picture, true);
  EXPECT_EQ(FirstBytes(*image, 12), (Bytes{215, 30, 20, 10, 127, 255, 0, 200, 99, 99, 99, 99}));
  EXPECT_TRUE(IsFree(*picture));
  EXPECT_EQ(picture->CacheClears() + mask_->CacheClears(), 0);
  ExpectReferencesLeft(*mask_, 2);
}

TEST_P(MaskedLayouts, TheMaskBlendsEachColourByItsOwnSample) {
  auto picture = TwoPixels();
  auto image = FlatImage(host_, 3, ImageFormatRGBA, 100);
  rbDrawPictureApplyMaskRGB2(image, picture, false);
  // ((255 - 40) x 10 + 100 x 40) / 255 = 24, then 35 and 46; (127 x 200 + 100 x 128) / 255 = 149, 100 and 255.
  EXPECT_EQ(FirstBytes(*image, 12), (Bytes{24, 35, 46, 100, 149, 100, 255, 100, 100, 100, 100, 100}));
  auto inverted = FlatImage(host_, 3, ImageFormatRGBA, 100);
  rbDrawPictureApplyMaskRGB2(inverted, picture, true);
  // (10 x 40 + 215 x 100) / 255 = 85, then 84 and 83; (200 x 128 + 127 x 100) / 255 = 150, 0 and 100.
  EXPECT_EQ(FirstBytes(*inverted, 12), (Bytes{85, 84, 83, 100, 150, 0, 100, 100, 100, 100, 100, 100}));
  EXPECT_TRUE(IsFree(*picture));
  ExpectReferencesLeft(*mask_, 2);
}

TEST_P(MaskedLayouts, WithoutMaskAlphaIs255OrInvertedZero) {
  auto picture = TwoPixels();
  picture->SetMask({});
  auto image = FlatImage(host_, 3, ImageFormatRGBA, 99);
  rbDrawMaskedPictureRGB2(image, picture, false);
  EXPECT_EQ(FirstBytes(*image, 12), (Bytes{10, 20, 30, 255, 200, 0, 255, 255, 99, 99, 99, 99}));
  rbDrawMaskedPictureRGB2(image, picture, true);
  EXPECT_EQ(FirstBytes(*image, 12), (Bytes{10, 20, 30, 0, 200, 0, 255, 0, 99, 99, 99, 99}));
  EXPECT_TRUE(IsFree(*picture));
}

TEST_P(MaskedLayouts, WithoutMaskApplyingItDrawsPlainAndInversionCountsForNothing) {
  auto picture = TwoPixels();
  picture->SetMask({});
  for (const bool invert : {false, true}) {
    auto image = FlatImage(host_, 3, ImageFormatRGBA, 99);
    auto plain = FlatImage(host_, 3, ImageFormatRGBA, 99);
    rbDrawPictureApplyMaskRGB2(image, picture, invert);
    rbDrawPictureRGB2(plain, picture);
    EXPECT_EQ(FirstBytes(*image, 12), FirstBytes(*plain, 12));
    EXPECT_EQ(FirstBytes(*image, 12), (Bytes{10, 20, 30, 99, 200, 0, 255, 99, 99, 99, 99, 99}));
  }
}

TEST_P(MaskedLayouts, EveryBlendOfAMaskAndAnImageRoundsDown) {
  auto picture = host_.NewPicture(MakeStorage(256, 256, GetParam().first));
  Picture &mask = AddMask(host_, *picture, GetParam().second);
  for (int32_t y = 0; y < 256; ++y) {
    for (int32_t x = 0; x < 256; ++x) {
      const auto sample = static_cast<uint8_t>(x);
      picture->SetPixel(x, y, {0, 200, 255});
      mask.SetPixel(x, y, {sample, sample, static_cast<uint8_t>(255 - x)});
    }
  }
  for (const int32_t format : {ImageFormatRGB, ImageFormatXBGR}) {
    for (const bool invert : {false, true}) {
      auto image = NewImage(host_, 256, 256, format);
      ImageClassData &record = *RecordOf(image);
      for (int32_t y = 0; y < 256; ++y) std::fill_n(record.GetRow(&record, y), 256 * record.PixelSize, y);
      rbDrawPictureApplyMaskRGB2(image, picture, invert);
      const auto blend = [invert](int32_t p, int32_t d, int32_t m) {
        return invert ? (p * m + (255 - m) * d) / 255 : ((255 - m) * p + d * m) / 255;
      };
      for (int32_t y = 0; y < 256; ++y) {
        for (int32_t x = 0; x < 256; ++x) {
          ASSERT_EQ(*SampleAt(record, x, y, record.RedOffset), blend(0, y, x)) << x << ", " << y;
          ASSERT_EQ(*SampleAt(record, x, y, record.GreenOffset), blend(200, y, x)) << x << ", " << y;
          ASSERT_EQ(*SampleAt(record, x, y, record.BlueOffset), blend(255, y, 255 - x)) << x << ", " << y;
        }
      }
    }
  }
  ExpectReferencesLeft(mask, 4);
}

// --- where alpha goes ---

TEST(MaskedDrawing, InAnImageWithoutAlphaItGoesToByteZeroUnlessAColourLiesThere) {
  PluginHost host;
  auto picture = host.NewPicture(MakeStorage(1, 1, kGD));
  picture->SetPixel(0, 0, {10, 20, 30});
  Picture &mask = AddMask(host, *picture, kGD);
  mask.SetPixel(0, 0, {77, 0, 0});
  const std::pair<int32_t, Bytes> cases[] = {
      {ImageFormatRGB, {10, 20, 30}},      {ImageFormatBGR, {30, 20, 10}},      {ImageFormatRGBX, {10, 20, 30, 99}},
      {ImageFormatBGRX, {30, 20, 10, 99}}, {ImageFormatXRGB, {77, 10, 20, 30}}, {ImageFormatXBGR, {77, 30, 20, 10}},
      {ImageFormatRGBA, {10, 20, 30, 77}}, {ImageFormatBGRA, {30, 20, 10, 77}}, {ImageFormatARGB, {77, 10, 20, 30}},
      {ImageFormatABGR, {77, 30, 20, 10}},
  };
  for (const auto &[format, expected] : cases) {
    auto image = FlatImage(host, 2, format, 99);
    rbDrawMaskedPictureRGB2(image, picture, false);
    EXPECT_EQ(FirstBytes(*image, expected.size()), expected) << format;
    EXPECT_EQ(FirstBytes(*image, 2 * expected.size())[expected.size()], 99) << format;
  }
  ExpectReferencesLeft(mask, 10);
}

// --- overlap ---

// The bytes of a picture's only row.
Bytes RowOf(Picture &picture) {
  const uint8_t *row = picture.Storage().Row(0);
  return {row, row + 4 * picture.Width()};
}

// Draws with the image over the memory of the picture (or of its mask), `start` bytes behind its first pixel, and
// expects what a plain loop makes of a twin. Both families.
void ExpectDrawnAsTheLoopGoes(PluginHost &host, std::pair<int32_t, int32_t> layouts, int32_t width, int32_t imageWidth,
                              int32_t format, int32_t start) {
  struct Twin {
    Owned<Picture> picture;
    Picture *mask;
    Owned<Object> image;
  };
  const auto make = [&](bool overMask) {
    Twin twin{NewFilledPicture(host, width, 1, layouts.first, 3), nullptr, host.New("PictureZVK")};
    twin.mask = &AddMask(host, *twin.picture, layouts.second, 4);
    auto block = host.NewMemoryBlock(1);
    ImageConstructorMemory(twin.image, block, imageWidth, 1, format, 4 * width);
    RecordOf(twin.image)->Buffer = (overMask ? *twin.mask : *twin.picture).Storage().Row(0) + start;
    return twin;
  };
  for (int32_t choice = 0; choice < 4; ++choice) {
    const bool overMask = (choice & 1) != 0, stores = (choice & 2) != 0;
    const Twin drawn = make(overMask), plain = make(overMask);
    (stores ? rbDrawMaskedPictureRGB2 : rbDrawPictureApplyMaskRGB2)(drawn.image, drawn.picture, false);
    ImageClassData &record = *RecordOf(plain.image);
    for (int32_t x = 0; x < imageWidth; ++x) {
      const Pixel p = plain.picture->GetPixel(x, 0), m = plain.mask->GetPixel(x, 0);
      uint8_t *dest = record.Buffer + x * record.PixelSize;
      const int32_t red = dest[record.RedOffset], green = dest[record.GreenOffset], blue = dest[record.BlueOffset];
      const auto blend = [](int32_t from, int32_t to, int32_t by) {
        return static_cast<uint8_t>(((255 - by) * from + to * by) / 255);
      };
      if (stores) dest[record.AlphaOffset] = m.red;
      dest[record.RedOffset] = stores ? p.red : blend(p.red, red, m.red);
      dest[record.GreenOffset] = stores ? p.green : blend(p.green, green, m.green);
      dest[record.BlueOffset] = stores ? p.blue : blend(p.blue, blue, m.blue);
    }
    ASSERT_EQ(RowOf(*drawn.picture), RowOf(*plain.picture)) << format << ", " << start << ", " << choice;
    ASSERT_EQ(RowOf(*drawn.mask), RowOf(*plain.mask)) << format << ", " << start << ", " << choice;
    ExpectReferencesLeft(*drawn.mask, 1);
  }
}

TEST_P(MaskedLayouts, AnImageInTheMemoryOfThePictureOrItsMaskIsDrawnAsTheLoopGoes) {
  for (const int32_t format : {ImageFormatRGB, ImageFormatBGR, ImageFormatRGBA, ImageFormatXBGR, ImageFormatRGBX}) {
    for (int32_t start = 0; start < 9; ++start) {
      ExpectDrawnAsTheLoopGoes(host_, GetParam(), 100, 90, format, start);
    }
  }
}

// Rows of thousands of pixels, shifted by so much that only pixels far from each other meet.
TEST_P(MaskedLayouts, AWideImageInTheMemoryOfThePictureOrItsMaskIsDrawnAsTheLoopGoes) {
  for (const int32_t format : {ImageFormatRGB, ImageFormatXBGR}) {
    for (const int32_t start : {0, 1, 4100, 7600}) {
      ExpectDrawnAsTheLoopGoes(host_, GetParam(), 4000, 2100, format, start);
    }
  }
}

// --- wide rows and large pixels ---

// Draws into an image whose pixels are so many bytes apart, its colours at the given offsets and alpha at 0, and
// expects what a plain loop makes of it. Both families, with and without inversion.
void ExpectWideRow(PluginHost &host, std::pair<int32_t, int32_t> layouts, int32_t width, int32_t pixelSize,
                   std::array<int32_t, 3> offsets) {
  auto picture = NewFilledPicture(host, width, 1, layouts.first, 5);
  Picture &mask = AddMask(host, *picture, layouts.second, 6);
  for (int32_t choice = 0; choice < 4; ++choice) {
    const bool stores = (choice & 1) != 0, invert = (choice & 2) != 0;
    auto block = host.NewMemoryBlock(width * pixelSize);
    auto image = host.New("PictureZVK");
    ImageConstructorMemory(image, block, width, 1, ImageFormatRGB, width * pixelSize);
    ImageClassData &record = *RecordOf(image);
    record.PixelSize = pixelSize;
    record.RedOffset = offsets[0];
    record.GreenOffset = offsets[1];
    record.BlueOffset = offsets[2];
    record.AlphaOffset = 0;
    for (int32_t i = 0; i < block->Size(); ++i) block->Data()[i] = static_cast<uint8_t>(7 * i + i / 256);
    Bytes expected(block->Data(), block->Data() + block->Size());
    for (int32_t x = 0; x < width; ++x) {
      const Pixel p = picture->GetPixel(x, 0), m = mask.GetPixel(x, 0);
      const int32_t drawn[] = {p.red, p.green, p.blue}, masks[] = {m.red, m.green, m.blue};
      uint8_t *dest = expected.data() + x * pixelSize;
      if (stores) dest[0] = static_cast<uint8_t>(invert ? 255 - m.red : m.red);
      for (size_t i = 0; i < 3; ++i) {
        const int32_t keep = invert ? 255 - masks[i] : masks[i];
        uint8_t &sample = dest[offsets[i]];
        sample = static_cast<uint8_t>(stores ? drawn[i] : ((255 - keep) * drawn[i] + keep * sample) / 255);
      }
    }
    (stores ? rbDrawMaskedPictureRGB2 : rbDrawPictureApplyMaskRGB2)(image, picture, invert);
    EXPECT_EQ(Bytes(block->Data(), block->Data() + block->Size()), expected) << pixelSize << ", " << choice;
  }
  ExpectReferencesLeft(mask, 4);
}

TEST_P(MaskedLayouts, RowsOfThousandsOfPixelsAreDrawnToTheirEnd) {
  for (const int32_t width : {1024, 1025, 2500, 4097}) {
    ExpectWideRow(host_, GetParam(), width, 3, {0, 1, 2});
    ExpectWideRow(host_, GetParam(), width, 4, {3, 2, 1});
    ExpectWideRow(host_, GetParam(), width, 4, {1, 0, 3});
  }
}

TEST_P(MaskedLayouts, PixelsOfAnySizeAreDrawn) {
  for (const int32_t pixelSize : {5, 6, 7, 16, 1000, 4095, 4096, 4097, 10000}) {
    ExpectWideRow(host_, GetParam(), 9, pixelSize, {2, 4, 1});
    ExpectWideRow(host_, GetParam(), 9, pixelSize, {pixelSize - 2, pixelSize - 1, 0});
  }
}

}  // namespace
}  // namespace zvk::pictures
