#include "pictures/picture_export.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "image/image_formats.h"
#include "tests/pictures/picture_export_testing.h"

namespace zvk::pictures {
namespace {

using namespace picture_testing;
using standalone::HostKind;
using standalone::Object;
using standalone::Picture;

// --- pixel words ---

// Each layout's bytes of an opaque pixel of the given colour.
Bytes OpaqueBytes(int32_t layout, uint8_t red, uint8_t green, uint8_t blue) {
  if (layout == 1 || layout == 3 || layout == 5) return {red, green, blue, 255};
  if (layout == 2 || layout == 4 || layout == 6) return {255, red, green, blue};
  return {blue, green, red, 0};
}

class ExportToEveryLayout : public testing::TestWithParam<int32_t> {
 protected:
  ExportToEveryLayout() : host_(HostOf(GetParam())) { MakeNewPicturesOf(host_, GetParam()); }

  PluginHost host_;
};

INSTANTIATE_TEST_SUITE_P(PictureExport, ExportToEveryLayout, testing::ValuesIn(kLayouts));

TEST_P(ExportToEveryLayout, RGBBecomesOpaqueWordsAndAlphaIsIgnored) {
  auto image = RowImage(host_, ImageFormatBGRA, {3, 2, 1, 9, 30, 20, 10, 0});
  auto picture = AdoptPicture(rbCopyPicture(image, 0, 0, 2, 1));
  ASSERT_TRUE(picture);
  EXPECT_EQ(BytesAt(*picture, 0, 0), OpaqueBytes(GetParam(), 1, 2, 3));
  EXPECT_EQ(BytesAt(*picture, 1, 0), OpaqueBytes(GetParam(), 10, 20, 30));
}

TEST_P(ExportToEveryLayout, GrayBecomesThreeEqualSamples) {
  auto image = RowImage(host_, ImageFormatAG, {7, 100, 8, 0, 9, 255});
  auto picture = AdoptPicture(rbCopyPicture(image, 0, 0, 3, 1));
  ASSERT_TRUE(picture);
  EXPECT_EQ(BytesAt(*picture, 0, 0), OpaqueBytes(GetParam(), 100, 100, 100));
  EXPECT_EQ(BytesAt(*picture, 1, 0), OpaqueBytes(GetParam(), 0, 0, 0));
  EXPECT_EQ(BytesAt(*picture, 2, 0), OpaqueBytes(GetParam(), 255, 255, 255));
}

TEST_P(ExportToEveryLayout, SixteenBitGrayLosesItsLowByte) {
  auto image = NewImage(host_, 3, 1, ImageFormatGray16);
  const uint16_t samples[] = {0x12FF, 0x00FF, 0xFF00};
  std::memcpy(RecordOf(image)->Buffer, samples, sizeof samples);
  auto picture = AdoptPicture(rbCopyPicture(image, 0, 0, 3, 1));
  ASSERT_TRUE(picture);
  EXPECT_EQ(BytesAt(*picture, 0, 0), OpaqueBytes(GetParam(), 0x12, 0x12, 0x12));
  EXPECT_EQ(BytesAt(*picture, 1, 0), OpaqueBytes(GetParam(), 0, 0, 0));
  EXPECT_EQ(BytesAt(*picture, 2, 0), OpaqueBytes(GetParam(), 255, 255, 255));
}

TEST_P(ExportToEveryLayout, CMYKBecomesRGBByPlainArithmetic) {
  // Black 55 leaves 200: 200 - 100 x 200 / 255 = 200 - 78, 200 - 10 x 200 / 255 = 200 - 7, 200 - 255 x 200 / 255 = 0.
  auto image = RowImage(host_, ImageFormatCMYK, {100, 10, 255, 55});
  auto picture = AdoptPicture(rbCopyPicture(image, 0, 0, 1, 1));
  ASSERT_TRUE(picture);
  EXPECT_EQ(BytesAt(*picture, 0, 0), OpaqueBytes(GetParam(), 122, 193, 0));
}

TEST_P(ExportToEveryLayout, TheMaskIsTheAlphaChannelAsGray) {
  auto image = RowImage(host_, ImageFormatARGB, {0, 1, 2, 3, 255, 4, 5, 6, 128, 7, 8, 9});
  auto mask = AdoptPicture(rbCopyMask(image, 0, 0, 3, 1));
  ASSERT_TRUE(mask);
  EXPECT_EQ(BytesAt(*mask, 0, 0), OpaqueBytes(GetParam(), 0, 0, 0));
  EXPECT_EQ(BytesAt(*mask, 1, 0), OpaqueBytes(GetParam(), 255, 255, 255));
  EXPECT_EQ(BytesAt(*mask, 2, 0), OpaqueBytes(GetParam(), 128, 128, 128));
}

TEST_P(ExportToEveryLayout, TheNewPictureIsTheCallersAlone) {
  auto image = NewImage(host_, 6, 5, ImageFormatRGBA);
  auto picture = AdoptPicture(rbCopyPictureWithMask(image, 0, 0, 6, 5));
  ASSERT_TRUE(picture);
  EXPECT_TRUE(IsFree(*picture));
  EXPECT_GE(picture->CacheClears(), 1);
  ASSERT_NE(picture->Mask(), nullptr);
  EXPECT_TRUE(IsFree(*picture->Mask()));
}

TEST_P(ExportToEveryLayout, PictureAndMaskAreJoined) {
  auto image = RowImage(host_, ImageFormatGA, {10, 20, 30, 40});
  auto picture = AdoptPicture(rbCopyPictureWithMask(image, 0, 0, 2, 1));
  ASSERT_TRUE(picture);
  EXPECT_EQ(TopRow(*picture), (std::vector{Gray(10), Gray(30)}));
  ASSERT_NE(picture->Mask(), nullptr);
  EXPECT_EQ(TopRow(*picture->Mask()), (std::vector{Gray(20), Gray(40)}));
}

// What a pixel of an image looks like, told from its bytes.
Pixel ColourAt(const ImageClassData &image, const uint8_t *pixel) {
  if (image.IsRGB) return {pixel[image.RedOffset], pixel[image.GreenOffset], pixel[image.BlueOffset]};
  if (image.IsGray) return Gray(pixel[image.GrayOffset + (image.BitsPerComponent == 16 ? 1 : 0)]);
  const int32_t white = 255 - pixel[image.BlackOffset];
  const auto without = [white](int32_t ink) { return static_cast<uint8_t>(white - ink * white / 255); };
  return {without(pixel[image.CyanOffset]), without(pixel[image.MagentaOffset]), without(pixel[image.YellowOffset])};
}

constexpr int32_t kFormatsOfEveryFamily[] = {ImageFormatG,    ImageFormatAG,   ImageFormatGray16, ImageFormatRGB,
                                             ImageFormatBGRA, ImageFormatCMYK, ImageFormatKYMCA};

TEST_P(ExportToEveryLayout, RowsOfThousandsOfPixelsAreWrittenToTheirEnd) {
  for (const int32_t format : kFormatsOfEveryFamily) {
    for (const int32_t width : {1024, 1025, 2500}) {
      auto image = NewImage(host_, width, 1, format);
      auto picture = AdoptPicture(rbCopyPictureAll(image));
      ASSERT_TRUE(picture);
      for (int32_t x = 0; x < width; ++x) {
        const Pixel colour = ColourAt(*RecordOf(image), SampleAt(*RecordOf(image), x, 0, 0));
        ASSERT_EQ(BytesAt(*picture, x, 0), OpaqueBytes(GetParam(), colour.red, colour.green, colour.blue))
            << format << ", " << x;
      }
    }
  }
}

// A host may make the new picture in memory that the image lies in. Each pixel is then written whole before the next
// one is read.
TEST_P(ExportToEveryLayout, APictureOverTheImageIsWrittenAsTheLoopGoes) {
  constexpr int32_t kWidth = 1500, kImageWidth = 1100;
  for (const int32_t format : kFormatsOfEveryFamily) {
    for (const int32_t start : {0, 1, 4, 7, 400}) {
      auto image = NewImage(host_, kImageWidth, 1, format);
      ImageClassData &record = *RecordOf(image);
      uint8_t *own = record.Buffer;
      Bytes expected;
      host_->SetPictureFactory([&](int32_t, int32_t height) {
        auto storage = MakeStorage(kWidth, height, GetParam());
        uint8_t *row = storage->Row(0);
        scenes::FillNoise(row, 4 * kWidth, 7);
        expected.assign(row, row + 4 * kWidth);
        record.Buffer = row + start;
        return storage;
      });
      auto picture = AdoptPicture(rbCopyPictureAll(image));
      record.Buffer = own;
      ASSERT_TRUE(picture);
      for (int32_t x = 0; x < kImageWidth; ++x) {
        const Pixel colour = ColourAt(record, expected.data() + start + x * record.PixelSize);
        const Bytes word = OpaqueBytes(GetParam(), colour.red, colour.green, colour.blue);
        std::copy(word.begin(), word.end(), expected.begin() + 4 * x);
      }
      const uint8_t *row = picture->Storage().Row(0);
      EXPECT_EQ(Bytes(row, row + 4 * kWidth), expected) << format << ", " << start;
    }
  }
}

TEST(PictureExport, APictureOfUnknownLayoutIsLeftAsItIs) {
  PluginHost host;
  auto image = NewImage(host, 2, 2, ImageFormatRGBA);
  for (const int32_t layout : {0, 7, 9}) {
    uint8_t pixels[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    const std::vector<uint8_t> before(pixels, pixels + 16);
    PictureWriter writer;
    writer.Width = writer.Height = 2;
    writer.RowBytes = 8;
    writer.Layout = layout;
    writer.BaseAddress = writer.RowAddress = pixels;
    WriteColours(PixelWatch(*RecordOf(image)), {0, 0, 2, 2}, writer);
    WriteAlpha(PixelWatch(*RecordOf(image)), {0, 0, 2, 2}, writer);
    EXPECT_EQ(std::vector<uint8_t>(pixels, pixels + 16), before);
  }
}

// --- ink arithmetic ---

TEST(CopyPicture, FullBlackIsBlackForAnyInk) {
  PluginHost host;
  auto image = RowImage(host, ImageFormatCMYK, {0, 0, 0, 255, 255, 255, 255, 255, 1, 128, 254, 255});
  auto picture = AdoptPicture(rbCopyPictureAll(image));
  EXPECT_EQ(TopRow(*picture), (std::vector{Gray(0), Gray(0), Gray(0)}));
}

TEST(CopyPicture, NoInkIsWhite) {
  PluginHost host;
  auto image = RowImage(host, ImageFormatCMYK, {0, 0, 0, 0});
  EXPECT_EQ(TopRow(*AdoptPicture(rbCopyPictureAll(image))), std::vector{Gray(255)});
}

TEST(CopyPicture, Cyan128WithoutBlackLeaves127Red) {
  PluginHost host;
  auto image = RowImage(host, ImageFormatCMYK, {128, 0, 0, 0});
  EXPECT_EQ(TopRow(*AdoptPicture(rbCopyPictureAll(image))), (std::vector{Pixel{127, 255, 255}}));
}

TEST(CopyPicture, EveryInkAndBlackFollowTheRule) {
  PluginHost host;
  auto image = NewImage(host, 256, 256, ImageFormatKYMCA);
  for (int32_t y = 0; y < 256; ++y) {
    for (int32_t x = 0; x < 256; ++x) {
      uint8_t *pixel = SampleAt(*RecordOf(image), x, y, 0);
      pixel[0] = static_cast<uint8_t>(y);
      pixel[1] = pixel[2] = 0;
      pixel[3] = static_cast<uint8_t>(x);
    }
  }
  auto picture = AdoptPicture(rbCopyPictureAll(image));
  for (int32_t y = 0; y < 256; ++y) {
    for (int32_t x = 0; x < 256; ++x) {
      const int32_t white = 255 - y;
      const Pixel expected{static_cast<uint8_t>(white - (x * white) / 255), static_cast<uint8_t>(white),
                           static_cast<uint8_t>(white)};
      ASSERT_EQ(picture->GetPixel(x, y), expected) << x << ", " << y;
    }
  }
}

// --- rectangles ---

// Gray, 20 x 10, the pixel at x, y being 10 y + x.
class ExportRectangle : public testing::Test {
 protected:
  ExportRectangle() : image_(NewImage(host_, 20, 10, ImageFormatGA)) {
    for (int32_t y = 0; y < 10; ++y) {
      for (int32_t x = 0; x < 20; ++x) {
        *SampleAt(*RecordOf(image_), x, y, 0) = static_cast<uint8_t>(10 * y + x);
        *SampleAt(*RecordOf(image_), x, y, 1) = static_cast<uint8_t>(255 - 10 * y - x);
      }
    }
  }

  // Expects that picture and mask show the image from left, top on, at the given size.
  void Expect(std::array<int32_t, 4> asked, int32_t left, int32_t top, int32_t width, int32_t height) {
    auto picture = AdoptPicture(rbCopyPicture(image_, asked[0], asked[1], asked[2], asked[3]));
    auto mask = AdoptPicture(rbCopyMask(image_, asked[0], asked[1], asked[2], asked[3]));
    ASSERT_TRUE(picture && mask);
    for (const Picture *result : {picture.Get(), mask.Get()}) {
      ASSERT_EQ(result->Width(), width);
      ASSERT_EQ(result->Height(), height);
    }
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) {
        const auto value = static_cast<uint8_t>(10 * (top + y) + left + x);
        ASSERT_EQ(picture->GetPixel(x, y), Gray(value));
        ASSERT_EQ(mask->GetPixel(x, y), Gray(static_cast<uint8_t>(255 - value)));
      }
    }
  }

  void ExpectNil(std::array<int32_t, 4> asked) {
    EXPECT_EQ(rbCopyPicture(image_, asked[0], asked[1], asked[2], asked[3]), nullptr);
    EXPECT_EQ(rbCopyMask(image_, asked[0], asked[1], asked[2], asked[3]), nullptr);
    EXPECT_EQ(rbCopyPictureWithMask(image_, asked[0], asked[1], asked[2], asked[3]), nullptr);
  }

  PluginHost host_;
  Owned<Object> image_;
};

TEST_F(ExportRectangle, InsideIsCopiedAsAsked) {
  Expect({3, 2, 5, 4}, 3, 2, 5, 4);
  Expect({0, 0, 20, 10}, 0, 0, 20, 10);
  Expect({19, 9, 1, 1}, 19, 9, 1, 1);
}

TEST_F(ExportRectangle, FromColumnMinus10With20ColumnsGivesColumns0To9) { Expect({-10, 0, 20, 1}, 0, 0, 10, 1); }

TEST_F(ExportRectangle, IsCutAtEveryEdge) {
  Expect({0, -4, 3, 6}, 0, 0, 3, 2);
  Expect({15, 0, 20, 1}, 15, 0, 5, 1);
  Expect({0, 8, 1, 20}, 0, 8, 1, 2);
  Expect({-5, -5, 100, 100}, 0, 0, 20, 10);
}

TEST_F(ExportRectangle, ANegativeSizeIsTurnedRound) {
  Expect({8, 6, -5, -4}, 3, 2, 5, 4);
  Expect({3, 2, -10, -10}, 0, 0, 3, 2);
  Expect({25, 12, -10, -5}, 15, 7, 5, 3);
}

TEST_F(ExportRectangle, OutsideOrEmptyGivesNil) {
  ExpectNil({20, 0, 5, 5});
  ExpectNil({0, 10, 5, 5});
  ExpectNil({-5, 0, 5, 5});
  ExpectNil({0, -5, 5, 5});
  ExpectNil({100, 100, 5, 5});
  ExpectNil({3, 3, 0, 5});
  ExpectNil({3, 3, 5, 0});
  ExpectNil({0, 0, -5, -5});
  EXPECT_EQ(host_->Calls("newPicture"), 0);
}

TEST_F(ExportRectangle, AWrappedSumLeavesASizeThatIsTooLarge) {
  ExpectNil({5, 0, INT32_MAX, 1});
  ExpectNil({0, 5, 1, INT32_MAX});
  ExpectNil({1, 1, INT32_MAX, INT32_MAX});
  EXPECT_EQ(host_->Calls("newPicture"), 0);
}

TEST_F(ExportRectangle, TheMostNegativeSizeReachesToTheLeftAndTopEdge) {
  Expect({5, 7, INT32_MIN, INT32_MIN}, 0, 0, 5, 7);
  ExpectNil({0, 0, INT32_MIN, INT32_MIN});
}

TEST_F(ExportRectangle, TheFormsWithoutARectangleTakeTheWholeImage) {
  for (auto *copy : {rbCopyPictureAll, rbCopyMaskAll, rbCopyPictureWithMaskAll}) {
    auto picture = AdoptPicture(copy(image_));
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->Width(), 20);
    EXPECT_EQ(picture->Height(), 10);
  }
  EXPECT_EQ(AdoptPicture(rbCopyPictureAll(image_))->GetPixel(19, 9), Gray(109));
  EXPECT_EQ(AdoptPicture(rbCopyMaskAll(image_))->GetPixel(19, 9), Gray(146));
  auto both = AdoptPicture(rbCopyPictureWithMaskAll(image_));
  EXPECT_EQ(both->GetPixel(19, 9), Gray(109));
  EXPECT_EQ(both->Mask()->GetPixel(19, 9), Gray(146));
}

TEST_F(ExportRectangle, ANegativeSizeGivesAPictureWithoutMask) {
  auto picture = AdoptPicture(rbCopyPictureWithMask(image_, 8, 6, -5, 4));
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->Width(), 5);
  EXPECT_EQ(picture->Mask(), nullptr);
}

TEST_F(ExportRectangle, OnAnImageTallerThan32BitSumsNothingBelowItIsRead) {
  // One byte that is every row of an image of 2147483647 rows: the bottom edge lies within reach of a wrap.
  auto block = host_.NewMemoryBlock(Bytes{99});
  auto tall = host_.New("PictureZVK");
  ImageConstructorMemory(tall, block, 1, INT32_MAX, ImageFormatG, 0);
  ASSERT_TRUE(RecordOf(tall)->Valid);
  auto picture = AdoptPicture(rbCopyPicture(tall, 0, INT32_MAX - 10, 1, 100));
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->Height(), 10);
  EXPECT_EQ(picture->GetPixel(0, 9), Gray(99));
}

// --- the largest picture ---

TEST(CopyPicture, ASide32767WideWorksAndOne32768WideGivesNil) {
  PluginHost host;
  auto block = host.NewMemoryBlock(2 * 32768);
  block->Data()[2 * 32766] = 200;
  auto wide = host.New("PictureZVK");
  ImageConstructorMemory(wide, block, 32768, 1, ImageFormatGA, 2 * 32768);
  auto tall = host.New("PictureZVK");
  ImageConstructorMemory(tall, block, 1, 32768, ImageFormatGA, 2);
  auto widest = AdoptPicture(rbCopyPicture(wide, 0, 0, 32767, 1));
  auto tallest = AdoptPicture(rbCopyPicture(tall, 0, 0, 1, 32767));
  ASSERT_TRUE(widest && tallest);
  EXPECT_EQ(widest->GetPixel(32766, 0), Gray(200));
  EXPECT_EQ(tallest->GetPixel(0, 32766), Gray(200));
  const int64_t made = host->Calls("newPicture");
  EXPECT_EQ(rbCopyPicture(wide, 0, 0, 32768, 1), nullptr);
  EXPECT_EQ(rbCopyPictureAll(tall), nullptr);
  EXPECT_EQ(rbCopyMask(wide, 0, 0, 32768, 1), nullptr);
  EXPECT_EQ(rbCopyMaskAll(tall), nullptr);
  EXPECT_EQ(host->Calls("newPicture"), made);
}

// --- which images ---

TEST(CopyPicture, AnImageWithoutFamilyGivesNil) {
  PluginHost host;
  for (const int32_t format : {ImageFormatBuffer, ImageFormatScaling1, ImageFormatScaling8}) {
    auto image = NewImage(host, 4, 4, format);
    YieldAlways(host, image);
    EXPECT_EQ(rbCopyPictureAll(image), nullptr);
    EXPECT_EQ(rbCopyMaskAll(image), nullptr);
  }
  EXPECT_EQ(Yields(host), 0);
}

TEST(CopyPicture, AnImageThatIsNotUsableGivesNil) {
  PluginHost host;
  auto unborn = host.New("PictureZVK");
  auto closed = NewImage(host, 4, 4, ImageFormatRGBA);
  ImageDestructor(closed);
  auto notValid = NewImage(host, 4, 4, ImageFormatRGBA);
  RecordOf(notValid)->Valid = false;
  auto negative = NewImage(host, 4, 4, ImageFormatRGBA);
  RecordOf(negative)->Width = -1;
  auto low = NewImage(host, 4, 4, ImageFormatRGBA);
  RecordOf(low)->Height = 0;
  for (Object *image : {unborn.Get(), closed.Get(), notValid.Get(), negative.Get(), low.Get()}) {
    EXPECT_EQ(rbCopyPicture(image->Handle(), 0, 0, 2, 2), nullptr);
    EXPECT_EQ(rbCopyMask(image->Handle(), 0, 0, 2, 2), nullptr);
    EXPECT_EQ(rbCopyPictureWithMask(image->Handle(), 0, 0, 2, 2), nullptr);
    EXPECT_EQ(rbCopyPictureAll(image->Handle()), nullptr);
  }
  EXPECT_EQ(rbCopyPictureAll(nullptr), nullptr);
  EXPECT_EQ(rbCopyPicture(nullptr, 0, 0, 2, 2), nullptr);
  EXPECT_EQ(host->Calls("newPicture"), 0);
}

TEST(CopyPicture, ARecordOverAMissingRowTableGivesNil) {
  PluginHost host;
  auto view = NewImage(host, 4, 4, ImageFormatRGBA);
  RecordOf(view)->GetRow = GetRowGDImage;  // as in a view of an image over a host's rows
  EXPECT_EQ(rbCopyPictureAll(view), nullptr);
  EXPECT_EQ(rbCopyMaskAll(view), nullptr);
}

TEST(CopyPicture, TheFamiliesAreTriedGrayFirst) {
  PluginHost host;
  auto image = RowImage(host, ImageFormatRGB, {10, 20, 30});
  RecordOf(image)->IsGray = true;
  RecordOf(image)->GrayOffset = 1;
  EXPECT_EQ(TopRow(*AdoptPicture(rbCopyPictureAll(image))), std::vector{Gray(20)});
}

TEST(CopyPicture, OffsetsBeyondThePixelSizeShowAClippedView) {
  PluginHost host;
  auto image = RowImage(host, ImageFormatRGB, {1, 2, 3, 4, 5, 6, 7, 8, 9});
  ImageClassData *record = RecordOf(image);
  record->RedOffset += 3;
  record->GreenOffset += 3;
  record->BlueOffset += 3;
  record->Width = 2;
  EXPECT_EQ(TopRow(*AdoptPicture(rbCopyPictureAll(image))), (std::vector<Pixel>{{4, 5, 6}, {7, 8, 9}}));
}

TEST(CopyPicture, AHighByteBehindTheStorageIs0) {
  PluginHost host;
  auto block = host.NewMemoryBlock(Bytes{0xAA, 0x34, 0x12, 0x78, 0x56});
  for (const int32_t rowSize : {5, 4}) {
    auto image = host.New("PictureZVK");
    ImageConstructorMemory(image, block, 2, 1, ImageFormatGray16, rowSize);
    RecordOf(image)->GrayOffset = 1;
    EXPECT_EQ(TopRow(*AdoptPicture(rbCopyPictureAll(image))),
              (std::vector{Gray(0x12), rowSize == 5 ? Gray(0x56) : Gray(0)}));
  }
}

TEST(CopyPicture, EveryColumnOfRowsShorterThanTheir16BitPixelsIsWritten) {
  PluginHost host;
  auto block = host.NewMemoryBlock(Bytes{0, 1, 0, 2, 0, 3, 0, 4, 5, 6, 7, 8, 9, 10, 11, 12});
  const auto highBytes = [&](int32_t rowSize) {
    auto image = host.New("PictureZVK");
    ImageConstructorMemory(image, block, 4, 2, ImageFormatGray16, rowSize);
    const auto picture = AdoptPicture(rbCopyPictureAll(image));
    std::vector<Pixel> pixels;
    for (int32_t i = 0; i < 8; ++i) pixels.push_back(picture->GetPixel(i % 4, i / 4));
    return pixels;
  };
  const auto grays = [](std::initializer_list<uint8_t> values) {
    std::vector<Pixel> pixels;
    for (const uint8_t value : values) pixels.push_back(Gray(value));
    return pixels;
  };
  // The 14 bytes that the caller has described end in the middle of the last sample.
  EXPECT_EQ(highBytes(7), grays({1, 2, 3, 4, 5, 7, 9, 0}));
  EXPECT_EQ(highBytes(4), grays({1, 2, 3, 4, 3, 4, 6, 8}));
  EXPECT_EQ(highBytes(0), grays({1, 2, 3, 4, 1, 2, 3, 4}));
}

TEST(CopyPicture, RowsThatRunBackwardsAreRead) {
  PluginHost host;
  auto block = host.NewMemoryBlock(Bytes{1, 2, 3});
  auto image = host.New("PictureZVK");
  ImageConstructorMemory(image, block, 1, 3, ImageFormatG, -1);
  RecordOf(image)->Buffer = block->Data() + 2;
  auto picture = AdoptPicture(rbCopyPictureAll(image));
  EXPECT_EQ(picture->GetPixel(0, 0), Gray(3));
  EXPECT_EQ(picture->GetPixel(0, 2), Gray(1));
}

TEST(CopyMask, AnImageWithoutAlphaGivesNilAndAPictureWithoutMask) {
  PluginHost host;
  auto image = RowImage(host, ImageFormatRGBX, {1, 2, 3, 4});
  EXPECT_EQ(rbCopyMaskAll(image), nullptr);
  auto picture = AdoptPicture(rbCopyPictureWithMaskAll(image));
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->Mask(), nullptr);
  EXPECT_EQ(host->Calls("REALGetPictureMask"), 0);
}

TEST(CopyMask, AlphaOfEveryFamilyIsCopied) {
  PluginHost host;
  auto image = RowImage(host, ImageFormatACMYK, {77, 1, 2, 3, 4});
  EXPECT_EQ(TopRow(*AdoptPicture(rbCopyMaskAll(image))), std::vector{Gray(77)});
}

// --- hosts that lack something ---

TEST(CopyPicture, WithoutNewPictureGivesNil) {
  PluginHost host({.withheld = {"newPicture"}});
  auto image = NewImage(host, 4, 4, ImageFormatRGBA);
  EXPECT_EQ(rbCopyPictureAll(image), nullptr);
  EXPECT_EQ(rbCopyMaskAll(image), nullptr);
  EXPECT_EQ(rbCopyPictureWithMaskAll(image), nullptr);
}

TEST(CopyPicture, ANewPictureThatCannotBeReachedIsGone) {
  PluginHost host({.withheld = {"REALLockPictureDescription"}});
  auto image = NewImage(host, 4, 4, ImageFormatRGBA);
  EXPECT_EQ(rbCopyPictureAll(image), nullptr);
  EXPECT_EQ(rbCopyMaskAll(image), nullptr);
  EXPECT_EQ(host->Calls("newPicture"), 2);
  // The host finds no picture left over at its end.
}

TEST(CopyPicture, ANewPictureOfPaletteColoursIsGone) {
  PluginHost host;
  host->SetPictureFactory(
      [](int32_t width, int32_t height) { return std::make_unique<standalone::PaletteStorage>(width, height); });
  auto image = NewImage(host, 4, 4, ImageFormatRGBA);
  EXPECT_EQ(rbCopyPictureAll(image), nullptr);
}

TEST(CopyPicture, IsNotDrawnIntoACopyWhereThereIsNoBitmap) {
  PluginHost host({.kind = HostKind::Desktop});
  host->SetPictureFactory(
      [](int32_t width, int32_t height) { return std::make_unique<standalone::DrawnStorage>(width, height); });
  auto image = NewImage(host, 4, 4, ImageFormatRGBA);
  EXPECT_EQ(rbCopyPictureAll(image), nullptr);
  EXPECT_EQ(host->Calls("newPicture"), 1);
}

TEST(CopyPicture, ARowThatCannotBeHadIsLeftAsTheNewPictureIs) {
  PluginHost host;
  auto image = NewImage(host, 4, 3, ImageFormatRGB);
  ImageClassData &record = *RecordOf(image);
  std::fill_n(record.Buffer, record.TotalSize, 200);
  record.GetRow = [](ImageClassData *image, int32_t index) {
    return index == 1 ? nullptr : GetRowLinear(image, index);
  };
  auto picture = AdoptPicture(rbCopyPictureAll(image));
  ASSERT_TRUE(picture);
  for (int32_t x = 0; x < 4; ++x) {
    EXPECT_EQ(picture->GetPixel(x, 0), (Pixel{200, 200, 200}));
    EXPECT_EQ(picture->GetPixel(x, 1), (Pixel{0, 0, 0}));
    EXPECT_EQ(picture->GetPixel(x, 2), (Pixel{200, 200, 200}));
  }
}

TEST(CopyPicture, NewPicturesAreAskedForWithADepthOf32) {
  PluginHost host;
  static std::vector<int32_t> asked;
  host->SetEntry(
      "newPicture", +[](int32_t width, int32_t height, int32_t depth) -> REALobject {
        asked = {width, height, depth};
        return nullptr;
      });
  auto image = NewImage(host, 4, 3, ImageFormatRGBA);
  EXPECT_EQ(rbCopyPictureAll(image), nullptr);
  EXPECT_EQ(asked, (std::vector<int32_t>{4, 3, 32}));
}

// --- the debugger's picture ---

TEST(DebugPicture, IsNilWhileItIsNotEnabled) {
  PluginHost host;
  auto image = NewImage(host, 4, 3, ImageFormatRGBA);
  EXPECT_EQ(GetDebugPicture(image, 0), nullptr);
  EXPECT_EQ(GetDebugPicture(nullptr, 0), nullptr);
}

TEST(DebugPicture, ShowsTheTopLeftCornerWithItsMask) {
  PluginHost host;
  auto image = NewImage(host, 600, 520, ImageFormatGA);
  RecordOf(image)->DebugPictureEnabled = true;
  *SampleAt(*RecordOf(image), 511, 511, 0) = 33;
  *SampleAt(*RecordOf(image), 511, 511, 1) = 44;
  auto picture = AdoptPicture(GetDebugPicture(image, 0));
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->Width(), 512);
  EXPECT_EQ(picture->Height(), 512);
  EXPECT_EQ(picture->GetPixel(511, 511), Gray(33));
  ASSERT_NE(picture->Mask(), nullptr);
  EXPECT_EQ(picture->Mask()->GetPixel(511, 511), Gray(44));
}

TEST(DebugPicture, IsAsSmallAsTheImage) {
  PluginHost host;
  auto image = RowImage(host, ImageFormatGA, {10, 20, 30, 40});
  RecordOf(image)->DebugPictureEnabled = true;
  auto picture = AdoptPicture(GetDebugPicture(image, 0));
  ASSERT_TRUE(picture);
  EXPECT_EQ(TopRow(*picture), (std::vector{Gray(10), Gray(30)}));
  EXPECT_EQ(TopRow(*picture->Mask()), (std::vector{Gray(20), Gray(40)}));
}

}  // namespace
}  // namespace zvk::pictures
