#include "pictures/picture_import.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/host_services.h"
#include "image/image_formats.h"
#include "image/views.h"
#include "tests/pictures/picture_testing.h"

namespace zvk::pictures {
namespace {

using namespace picture_testing;
using standalone::GDStorage;
using standalone::HostKind;
using standalone::Object;
using standalone::Picture;
using Bytes = std::vector<uint8_t>;

// --- what is drawn ---

class ImportFromEveryLayout : public testing::TestWithParam<int32_t> {
 protected:
  ImportFromEveryLayout() : host_(HostOf(GetParam())) {}

  // One row of pictures of this layout: red 10, 20, ..., green one more, blue two more.
  Owned<Picture> Ramp(int32_t width) {
    auto picture = host_.NewPicture(MakeStorage(width, 1, GetParam()));
    for (int32_t x = 0; x < width; ++x) {
      const auto red = static_cast<uint8_t>(10 * x + 10);
      picture->SetPixel(x, 0, {red, static_cast<uint8_t>(red + 1), static_cast<uint8_t>(red + 2), 128});
    }
    return picture;
  }

  Owned<Object> BlackImage(int32_t width, int32_t format) {
    auto image = host_.New("PictureZVK");
    ImageConstructor(image, width, 1, format);
    return image;
  }

  PluginHost host_;
};

INSTANTIATE_TEST_SUITE_P(PictureImport, ImportFromEveryLayout, testing::ValuesIn(kLayouts));

Bytes FirstBytes(Object &image, size_t count) {
  const uint8_t *pixels = RecordOf(image.Handle())->Buffer;
  return {pixels, pixels + count};
}

TEST_P(ImportFromEveryLayout, ThreeSamplesGoToTheirOffsetsAndAlphaStays) {
  auto picture = Ramp(2);
  auto image = BlackImage(3, ImageFormatABGR);
  rbDrawPictureRGB2(image, picture);
  EXPECT_EQ(FirstBytes(*image, 12), (Bytes{0, 12, 11, 10, 0, 22, 21, 20, 0, 0, 0, 0}));
  EXPECT_TRUE(IsFree(*picture));
  EXPECT_EQ(picture->CacheClears(), 0);
}

TEST_P(ImportFromEveryLayout, ColoursGoOverAsTheyStand) {
  // A half clear pixel whose colour exceeds its alpha: nothing is multiplied, divided or cut.
  auto picture = host_.NewPicture(MakeStorage(1, 1, GetParam()));
  SetBytesAt(*picture, 0, 0, {200, 150, 100, 50});
  auto image = BlackImage(1, ImageFormatRGB);
  rbDrawPictureRGB2(image, picture);
  Bytes expected = {100, 150, 200};
  if (GetParam() % 2 == 1) expected = {200, 150, 100};
  if (GetParam() % 2 == 0 && GetParam() != kGD) expected = {150, 100, 50};
  EXPECT_EQ(FirstBytes(*image, 3), expected);
}

TEST_P(ImportFromEveryLayout, OneSampleGoesToTheGrayChannel) {
  auto picture = Ramp(2);
  auto image = BlackImage(2, ImageFormatGA);
  rbDrawPictureRedToGrayChannel6(image, picture, 0, 0, 2, 1);
  EXPECT_EQ(FirstBytes(*image, 4), (Bytes{10, 0, 20, 0}));
  rbDrawPictureGreenToGrayChannel6(image, picture, 0, 0, 2, 1);
  EXPECT_EQ(FirstBytes(*image, 4), (Bytes{11, 0, 21, 0}));
  rbDrawPictureBlueToGrayChannel6(image, picture, 0, 0, 2, 1);
  EXPECT_EQ(FirstBytes(*image, 4), (Bytes{12, 0, 22, 0}));
  EXPECT_TRUE(IsFree(*picture));
}

TEST_P(ImportFromEveryLayout, A16BitSampleGetsItsFirstByteAndKeepsItsSecond) {
  auto picture = Ramp(2);
  auto image = BlackImage(2, ImageFormatGray16);
  RecordOf(image)->Buffer[1] = RecordOf(image)->Buffer[3] = 99;
  rbDrawPictureRedToGrayChannel8(image, picture, 0, 0, 2, 1, 0, 0);
  EXPECT_EQ(FirstBytes(*image, 4), (Bytes{10, 99, 20, 99}));
}

TEST_P(ImportFromEveryLayout, ASourcePositionCutsOutAPart) {
  auto picture = Ramp(5);
  auto image = BlackImage(4, ImageFormatRGB);
  rbDrawPictureRGB8(image, picture, 1, 0, 2, 1, 3, 0);
  EXPECT_EQ(FirstBytes(*image, 12), (Bytes{0, 0, 0, 40, 41, 42, 50, 51, 52, 0, 0, 0}));
  auto gray = BlackImage(4, ImageFormatG);
  rbDrawPictureBlueToGrayChannel8(gray, picture, 1, 0, 2, 1, 3, 0);
  EXPECT_EQ(FirstBytes(*gray, 4), (Bytes{0, 42, 52, 0}));
}

TEST_P(ImportFromEveryLayout, APictureDrawnIntoTheImageOverItIsReadAsTheLoopGoes) {
  if (GetParam() == 3 || GetParam() == 4) return;  // no image can be made over these
  auto picture = Ramp(100);
  const uint8_t alpha = picture->GetPixel(2, 0).alpha;
  auto image = host_.New("PictureZVK");
  ImageConstructorPicture(image, picture, true);
  ASSERT_TRUE(RecordOf(image)->Valid);
  // Each pixel is stored before the next is read, so the first one runs through to the right.
  rbDrawPictureRGB4(image, picture, 1, 0);
  for (int32_t x = 0; x < 100; ++x) EXPECT_EQ(picture->GetPixel(x, 0), (Pixel{10, 11, 12, alpha}));
}

TEST_P(ImportFromEveryLayout, APictureDrawnIntoAnImageOfOtherPixelsInItsMemoryIsReadAsTheLoopGoes) {
  for (const int32_t format : {ImageFormatRGB, ImageFormatBGR, ImageFormatRGBX, ImageFormatXBGR}) {
    for (int32_t start = 0; start < 12; ++start) {
      auto picture = NewFilledPicture(host_, 100, 1, GetParam());
      auto image = host_.NewMemoryBlock(1);
      auto over = host_.New("PictureZVK");
      ImageConstructorMemory(over, image, 90, 1, format, 400);
      ImageClassData &record = *RecordOf(over);
      record.Buffer = picture->Storage().Row(0) + start;

      // The same, pixel by pixel, on a twin.
      auto twin = NewFilledPicture(host_, 100, 1, GetParam());
      for (int32_t x = 0; x < 90; ++x) {
        const Pixel pixel = twin->GetPixel(x, 0);
        uint8_t *dest = twin->Storage().Row(0) + start + x * record.PixelSize;
        dest[record.RedOffset] = pixel.red;
        dest[record.GreenOffset] = pixel.green;
        dest[record.BlueOffset] = pixel.blue;
      }
      rbDrawPictureRGB2(over, picture);
      for (int32_t x = 0; x < 100; ++x) ASSERT_EQ(BytesAt(*picture, x, 0), BytesAt(*twin, x, 0)) << format << start;
    }
  }
}

TEST_P(ImportFromEveryLayout, OffsetsThatFallTogetherKeepTheLastSampleStored) {
  auto picture = Ramp(40);
  for (const int32_t format : {ImageFormatRGB, ImageFormatRGBX}) {
    auto image = BlackImage(40, format);
    ImageClassData &record = *RecordOf(image);
    SetRedOffset(image, 0, 1);
    SetGreenOffset(image, 0, 1);
    SetBlueOffset(image, 0, 1);
    rbDrawPictureRGB2(image, picture);
    for (int32_t x = 0; x < 40; ++x) {
      EXPECT_EQ(*SampleAt(record, x, 0, 0), 0);
      EXPECT_EQ(*SampleAt(record, x, 0, 1), picture->GetPixel(x, 0).blue);
    }
  }
}

TEST_P(ImportFromEveryLayout, OffsetsBeyondThePixelSizeDrawIntoAClippedView) {
  auto picture = Ramp(40);
  for (const int32_t format : {ImageFormatRGB, ImageFormatBGR, ImageFormatARGB}) {
    auto image = BlackImage(42, format);
    ImageClassData &record = *RecordOf(image);
    const int32_t offsets[] = {record.RedOffset, record.GreenOffset, record.BlueOffset};
    record.Width = 40;
    record.RedOffset += 2 * record.PixelSize;
    record.GreenOffset += 2 * record.PixelSize;
    record.BlueOffset += 2 * record.PixelSize;
    rbDrawPictureRGB2(image, picture);
    for (int32_t x = 0; x < 42; ++x) {
      const Pixel expected = x < 2 ? Pixel{0, 0, 0} : picture->GetPixel(x - 2, 0);
      EXPECT_EQ(*SampleAt(record, x, 0, offsets[0]), expected.red);
      EXPECT_EQ(*SampleAt(record, x, 0, offsets[1]), expected.green);
      EXPECT_EQ(*SampleAt(record, x, 0, offsets[2]), expected.blue);
    }
  }
}

TEST_P(ImportFromEveryLayout, APictureDrawnToTheLeftAndUpIntoTheImageOverItIsMoved) {
  if (GetParam() == 3 || GetParam() == 4) return;  // no image can be made over these
  auto picture = NewFilledPicture(host_, 100, 3, GetParam());
  auto before = NewFilledPicture(host_, 100, 3, GetParam());
  auto image = host_.New("PictureZVK");
  ImageConstructorPicture(image, picture, true);
  ASSERT_TRUE(RecordOf(image)->Valid);
  // What is read has not been written yet.
  rbDrawPictureRGB8(image, picture, 0, 0, 100, 3, 3, 1);
  for (int32_t y = 0; y < 3; ++y) {
    for (int32_t x = 0; x < 100; ++x) {
      Pixel expected = before->GetPixel(x, y);
      if (x < 97 && y < 2) {
        const Pixel moved = before->GetPixel(x + 3, y + 1);
        expected = {moved.red, moved.green, moved.blue, expected.alpha};
      }
      ASSERT_EQ(picture->GetPixel(x, y), expected) << x << ", " << y;
    }
  }
}

TEST(DrawPicture, OffsetsBelowZeroNameBytesInFrontOfTheRow) {
  PluginHost host;
  auto picture = host.NewPicture(MakeStorage(3, 1, kGD));
  for (int32_t x = 0; x < 3; ++x) {
    const auto red = static_cast<uint8_t>(10 * x + 10);
    picture->SetPixel(x, 0, {red, static_cast<uint8_t>(red + 1), static_cast<uint8_t>(red + 2)});
  }
  auto block = host.NewMemoryBlock(Bytes(32, 99));
  auto image = host.New("PictureZVK");
  ImageConstructorMemory(image, block, 3, 2, ImageFormatXRGB, 16);
  auto clip = Adopt(ClipImage5(image, 0, 1, 3, 1));
  ASSERT_TRUE(clip);
  // As they would come from sums that have wrapped.
  RecordOf(clip)->RedOffset = -11;
  RecordOf(clip)->GreenOffset = -10;
  RecordOf(clip)->BlueOffset = -9;
  rbDrawPictureRGB2(clip, picture);
  Bytes expected(32, 99);
  for (int32_t x = 0; x < 3; ++x) {
    for (int32_t i = 0; i < 3; ++i) expected[16 - 11 + 4 * x + i] = static_cast<uint8_t>(10 * x + 10 + i);
  }
  EXPECT_EQ(Bytes(block->Data(), block->Data() + 32), expected);
}

// --- rectangles: an image of 12 x 12 black pixels, a picture of 10 x 10 ---

class ImportRectangle : public testing::Test {
 protected:
  ImportRectangle() : picture_(host_.NewPicture(MakeStorage(10, 10, kGD))) {
    for (int32_t y = 0; y < 10; ++y) {
      for (int32_t x = 0; x < 10; ++x) picture_->SetPixel(x, y, {static_cast<uint8_t>(100 + 10 * y + x), 1, 2});
    }
  }

  // Draws as asked (DestX, DestY, DestWidth, DestHeight, SourceX, SourceY), by both families, and expects that exactly
  // `width` x `height` pixels from destX, destY on come from the picture's sourceX, sourceY on.
  void Expect(std::array<int32_t, 6> asked, int32_t destX, int32_t destY, int32_t width, int32_t height,
              int32_t sourceX, int32_t sourceY) {
    auto colour = host_.New("PictureZVK");
    ImageConstructor(colour, 12, 12, ImageFormatBGRX);
    rbDrawPictureRGB8(colour, picture_, asked[0], asked[1], asked[2], asked[3], asked[4], asked[5]);
    auto gray = host_.New("PictureZVK");
    ImageConstructor(gray, 12, 12, ImageFormatG);
    rbDrawPictureRedToGrayChannel8(gray, picture_, asked[0], asked[1], asked[2], asked[3], asked[4], asked[5]);
    for (int32_t y = 0; y < 12; ++y) {
      for (int32_t x = 0; x < 12; ++x) {
        const bool drawn = x >= destX && x < destX + width && y >= destY && y < destY + height;
        const int32_t expected = drawn ? 100 + 10 * (sourceY + y - destY) + sourceX + x - destX : 0;
        EXPECT_EQ(*SampleAt(*RecordOf(colour), x, y, 2), expected) << x << ", " << y;
        EXPECT_EQ(*SampleAt(*RecordOf(gray), x, y, 0), expected) << x << ", " << y;
      }
    }
    EXPECT_TRUE(IsFree(*picture_));
  }
  void ExpectNothing(std::array<int32_t, 6> asked) { Expect(asked, 0, 0, 0, 0, 0, 0); }

  PluginHost host_{{.fenced = true}};
  Owned<Picture> picture_;
};

TEST_F(ImportRectangle, InsideBothIsDrawnAsAsked) { Expect({2, 3, 4, 5, 1, 2}, 2, 3, 4, 5, 1, 2); }

TEST_F(ImportRectangle, ASizeLargerThanThePictureGivesThePicturesSize) {
  Expect({0, 0, 100, 100, 0, 0}, 0, 0, 10, 10, 0, 0);
  Expect({0, 0, 100, 100, 7, 8}, 0, 0, 3, 2, 7, 8);
}

TEST_F(ImportRectangle, IsCutAtTheImagesEdges) {
  Expect({8, 9, 10, 10, 0, 0}, 8, 9, 4, 3, 0, 0);
  Expect({-3, -4, 10, 10, 0, 0}, 0, 0, 7, 6, 3, 4);
  ExpectNothing({12, 0, 10, 10, 0, 0});
  ExpectNothing({0, 12, 10, 10, 0, 0});
  ExpectNothing({-10, 0, 10, 10, 0, 0});
  ExpectNothing({0, -10, 10, 10, 0, 0});
}

TEST_F(ImportRectangle, SourceXMinus5WithDestX5AndWidth10Draws5Columns) {
  Expect({5, 0, 10, 1, -5, 0}, 0, 0, 5, 1, 0, 0);
  Expect({0, 5, 1, 10, 0, -5}, 0, 0, 1, 5, 0, 0);
}

TEST_F(ImportRectangle, SourceXMinus5WithDestX0AndWidth10DrawsNothing) {
  ExpectNothing({0, 0, 10, 1, -5, 0});
  ExpectNothing({0, 0, 1, 10, 0, -5});
}

TEST_F(ImportRectangle, ANegativeSizeExtendsToTheLeftAndUp) {
  Expect({8, 9, -5, -4, 1, 2}, 3, 5, 5, 4, 1, 2);
  Expect({3, 2, -10, -10, 0, 0}, 0, 0, 3, 2, 7, 8);
}

TEST_F(ImportRectangle, ASourceWhollyBeyondThePictureDrawsNothing) {
  ExpectNothing({0, 0, 5, 5, 10, 0});
  ExpectNothing({0, 0, 5, 5, 0, 10});
  ExpectNothing({0, 0, 5, 5, 1000, 1000});
}

TEST_F(ImportRectangle, AnEmptySizeDrawsNothing) {
  ExpectNothing({0, 0, 0, 5, 0, 0});
  ExpectNothing({0, 0, 5, 0, 0, 0});
}

TEST_F(ImportRectangle, SumsThatWrapReachOutsideNeitherPictureNorImage) {
  Expect({1, 1, INT32_MAX, INT32_MAX, 0, 0}, 1, 1, 10, 10, 0, 0);
  Expect({1, 1, INT32_MAX, INT32_MAX, 2, 3}, 1, 1, 8, 7, 2, 3);
  Expect({11, 11, INT32_MAX, INT32_MAX, 2, 3}, 11, 11, 1, 1, 2, 3);
  Expect({3, 4, INT32_MIN, INT32_MIN, 0, 0}, 0, 0, 0, 0, 0, 0);
  ExpectNothing({-1, -1, 10, 10, INT32_MAX, INT32_MAX});
  ExpectNothing({0, 0, INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX});
  ExpectNothing({INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX, 0, 0});
  ExpectNothing({INT32_MIN, INT32_MIN, 10, 10, INT32_MAX, INT32_MAX});
}

TEST_F(ImportRectangle, TheShortFormsFillInWhatIsMissing) {
  auto image = host_.New("PictureZVK");
  ImageConstructor(image, 12, 12, ImageFormatRGB);
  ImageClassData &record = *RecordOf(image);
  rbDrawPictureRGB6(image, picture_, 11, 0, 5, 5);
  EXPECT_EQ(*SampleAt(record, 11, 4, 0), 140);
  EXPECT_EQ(*SampleAt(record, 10, 0, 0), 0);
  EXPECT_EQ(*SampleAt(record, 11, 5, 0), 0);
  rbDrawPictureRGB4(image, picture_, 10, 11);
  EXPECT_EQ(*SampleAt(record, 11, 11, 0), 101);
  EXPECT_EQ(*SampleAt(record, 9, 11, 0), 0);
  rbDrawPictureRGB2(image, picture_);
  EXPECT_EQ(*SampleAt(record, 9, 9, 0), 199);
  EXPECT_EQ(*SampleAt(record, 10, 9, 0), 0);
}

TEST_F(ImportRectangle, WithoutAReadableSizeTheFormsThatNeedItDrawNothing) {
  auto image = host_.New("PictureZVK");
  ImageConstructor(image, 12, 12, ImageFormatRGB);
  const Bytes before = StorageOf(*RecordOf(image));
  host_->Withhold("REALGetPropValueInt");
  rbDrawPictureRGB2(image, picture_);
  rbDrawPictureRGB4(image, picture_, 1, 1);
  EXPECT_EQ(StorageOf(*RecordOf(image)), before);
  rbDrawPictureRGB6(image, picture_, 0, 0, 1, 1);
  EXPECT_EQ(*SampleAt(*RecordOf(image), 0, 0, 0), 100);
}

// --- which images and pictures ---

using Draw8 = void (*)(REALobject, REALobject, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t);
constexpr Draw8 kGrayDraws[] = {rbDrawPictureRedToGrayChannel8, rbDrawPictureGreenToGrayChannel8,
                                rbDrawPictureBlueToGrayChannel8};

TEST(DrawPicture, ChangesNothingInAnImageThatLacksTheChannels) {
  PluginHost host;
  auto picture = NewFilledPicture(host, 4, 4, kGD);
  for (const int32_t format : {ImageFormatGA, ImageFormatCMYK, ImageFormatBuffer}) {
    auto image = NewImage(host, 4, 4, format);
    YieldAlways(host, image);
    const Bytes before = StorageOf(*RecordOf(image));
    rbDrawPictureRGB2(image, picture);
    EXPECT_EQ(StorageOf(*RecordOf(image)), before);
  }
  for (const int32_t format : {ImageFormatRGBA, ImageFormatCMYKA, ImageFormatScaling4}) {
    auto image = NewImage(host, 4, 4, format);
    YieldAlways(host, image);
    const Bytes before = StorageOf(*RecordOf(image));
    for (const Draw8 draw : kGrayDraws) draw(image, picture, 0, 0, 4, 4, 0, 0);
    EXPECT_EQ(StorageOf(*RecordOf(image)), before);
  }
  EXPECT_EQ(Yields(host), 0);
  EXPECT_EQ(picture->LocksTaken(), 0);
}

TEST(DrawPicture, OneMissingChannelIsEnoughToRefuse) {
  PluginHost host;
  auto picture = NewFilledPicture(host, 4, 4, kGD);
  for (const auto has : {&ImageClassData::HasRed, &ImageClassData::HasGreen, &ImageClassData::HasBlue}) {
    auto image = NewImage(host, 4, 4, ImageFormatRGB);
    RecordOf(image)->*has = false;
    const Bytes before = StorageOf(*RecordOf(image));
    rbDrawPictureRGB2(image, picture);
    EXPECT_EQ(StorageOf(*RecordOf(image)), before);
  }
}

TEST(DrawPicture, RefusesAnImageThatIsNotUsable) {
  PluginHost host;
  auto picture = NewFilledPicture(host, 4, 4, kGD);
  auto unborn = host.New("PictureZVK");
  auto closed = NewImage(host, 4, 4, ImageFormatRGB);
  ImageDestructor(closed);
  auto notValid = NewImage(host, 4, 4, ImageFormatRGB);
  RecordOf(notValid)->Valid = false;
  auto negative = NewImage(host, 4, 4, ImageFormatRGB);
  RecordOf(negative)->Width = -1;
  auto low = NewImage(host, 4, 4, ImageFormatRGB);
  RecordOf(low)->Height = 0;
  auto withoutTable = NewImage(host, 4, 4, ImageFormatRGB);
  RecordOf(withoutTable)->GetRow = GetRowGDImage;
  for (Object *image : {unborn.Get(), closed.Get(), notValid.Get(), negative.Get(), low.Get(), withoutTable.Get()}) {
    RecordOf(image->Handle())->HasGray = true;
    rbDrawPictureRGB2(image->Handle(), picture);
    for (const Draw8 draw : kGrayDraws) draw(image->Handle(), picture, 0, 0, 4, 4, 0, 0);
  }
  rbDrawPictureRGB2(nullptr, picture);
  for (const Draw8 draw : kGrayDraws) draw(nullptr, picture, 0, 0, 4, 4, 0, 0);
  EXPECT_EQ(picture->LocksTaken(), 0);
}

TEST(DrawPicture, ANilPictureDoesNothingAndRaisesNothing) {
  PluginHost host;
  auto image = NewImage(host, 4, 4, ImageFormatRGB);
  auto gray = NewImage(host, 4, 4, ImageFormatG);
  const Bytes before = StorageOf(*RecordOf(image));
  const Bytes grayBefore = StorageOf(*RecordOf(gray));
  rbDrawPictureRGB2(image, nullptr);
  rbDrawPictureRGB4(image, nullptr, 1, 1);
  rbDrawPictureRGB6(image, nullptr, 0, 0, 4, 4);
  rbDrawPictureRGB8(image, nullptr, 0, 0, 4, 4, 0, 0);
  for (const Draw8 draw : kGrayDraws) draw(gray, nullptr, 0, 0, 4, 4, 0, 0);
  EXPECT_EQ(StorageOf(*RecordOf(image)), before);
  EXPECT_EQ(StorageOf(*RecordOf(gray)), grayBefore);
  EXPECT_FALSE(host.TakeException());
}

TEST(DrawPicture, APictureThatCannotBeReadChangesNothing) {
  PluginHost host({.version = 2011.0});
  auto picture = host.NewPicture(MakeStorage(4, 4, 6));
  auto image = NewImage(host, 4, 4, ImageFormatRGB);
  const Bytes before = StorageOf(*RecordOf(image));
  rbDrawPictureRGB2(image, picture);
  EXPECT_EQ(StorageOf(*RecordOf(image)), before);
  EXPECT_EQ(Unlocks(host), 1);  // the balance of an old host
}

TEST(DrawPicture, APictureWithoutABitmapIsReadFromACopy) {
  PluginHost host({.kind = HostKind::Desktop});
  auto picture = host.NewPicture(std::make_unique<standalone::DrawnStorage>(3, 2));
  picture->SetPixel(2, 1, {7, 8, 9});
  auto image = NewImage(host, 3, 2, ImageFormatRGB);
  rbDrawPictureRGB2(image, picture);
  EXPECT_EQ(*SampleAt(*RecordOf(image), 2, 1, 0), 7);
  EXPECT_EQ(*SampleAt(*RecordOf(image), 2, 1, 2), 9);
  EXPECT_TRUE(IsFree(*picture));
}

TEST(DrawPicture, AnUnknownLayoutDrawsNoColoursAndZeroGray) {
  PluginHost host;
  uint8_t pixels[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  for (const int32_t layout : {0, 7, 9}) {
    PictureReader reader;
    reader.Width = reader.Height = 2;
    reader.RowBytes = 8;
    reader.PixelBytes = 4;
    reader.Layout = layout;
    reader.BaseAddress = reader.RowAddress = pixels;
    auto image = NewImage(host, 2, 2, ImageFormatRGB);
    const Bytes before = StorageOf(*RecordOf(image));
    DrawColours(PixelWatch(*RecordOf(image)), {0, 0, 2, 2, 0, 0}, reader);
    EXPECT_EQ(StorageOf(*RecordOf(image)), before);
    auto gray = NewImage(host, 2, 2, ImageFormatGA);
    const Bytes expected = {0, *SampleAt(*RecordOf(gray), 0, 1, 1), 0, *SampleAt(*RecordOf(gray), 1, 1, 1)};
    DrawGray(PixelWatch(*RecordOf(gray)), {0, 0, 2, 2, 0, 0}, reader, PictureColour::Green);
    const uint8_t *row = SampleAt(*RecordOf(gray), 0, 1, 0);
    EXPECT_EQ(Bytes(row, row + 4), expected);
  }
}

TEST(DrawPicture, ARowThatCannotBeHadIsLeftOut) {
  PluginHost host;
  auto picture = NewFilledPicture(host, 4, 3, kGD);
  for (const int32_t format : {ImageFormatRGB, ImageFormatG}) {
    auto image = NewImage(host, 4, 3, format);
    ImageClassData &record = *RecordOf(image);
    record.GetRow = [](ImageClassData *image, int32_t index) {
      return index == 1 ? nullptr : GetRowLinear(image, index);
    };
    const Bytes before = StorageOf(record);
    rbDrawPictureRGB2(image, picture);
    rbDrawPictureRedToGrayChannel6(image, picture, 0, 0, 4, 3);
    EXPECT_EQ(*SampleAt(record, 3, 0, 0), picture->GetPixel(3, 0).red);
    EXPECT_EQ(*SampleAt(record, 3, 2, 0), picture->GetPixel(3, 2).red);
    EXPECT_TRUE(std::equal(record.Buffer + record.RowSize, record.Buffer + 2 * record.RowSize,
                           before.begin() + record.RowSize));
  }
}

}  // namespace
}  // namespace zvk::pictures
