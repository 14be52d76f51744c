#include "pixels/in_place.h"

#include <gtest/gtest.h>

#include "tests/levels/in_place_testing.h"
#include "tests/scenes/stored_image.h"

namespace zvk::pixels {
namespace {

using namespace in_place_testing;

using InPlace = InPlaceTest;

TEST_F(InPlace, TheBeginningFitsTheRectangleAndYieldsOnce) {
  const TestImage image = NewImage(4, 3, ImageFormatG);
  Log(image);
  EXPECT_EQ(BeginInPlace(&image.Record(), {-1, 5, 3, -4}), (Rectangle{0, 1, 2, 2}));
  EXPECT_EQ(TakeLog(), "yield");
}

TEST_F(InPlace, NothingBeginsOnANilOrUnusableImageOrAnEmptyRectangle) {
  EXPECT_EQ(BeginInPlace(nullptr, {0, 0, 1, 1}), std::nullopt);
  const TestImage image = NewImage(4, 3, ImageFormatG);
  Log(image);
  EXPECT_EQ(BeginInPlace(&image.Record(), {4, 0, 1, 1}), std::nullopt);
  image.Record().Valid = false;
  EXPECT_EQ(BeginInPlace(&image.Record(), {0, 0, 1, 1}), std::nullopt);
  EXPECT_EQ(TakeLog(), "");
}

TEST_F(InPlace, NothingBeginsOnAViewThatAYieldTakesThePixelsFrom) {
  const TestImage image = NewImage(4, 3, ImageFormatG), view = View(image, GrayChannel(image));
  Log(view);
  EXPECT_EQ(BeginInPlace(&view.Record(), {0, 0, 1, 1}), (Rectangle{0, 0, 1, 1}));
  onYield_ = [&] { ImageDestructor(image); };
  EXPECT_EQ(BeginInPlace(&view.Record(), {0, 0, 1, 1}), std::nullopt);
}

class PixelBytesOf : public InPlaceTest {
 protected:
  // First byte, counted from the block's start, and number.
  static std::pair<ptrdiff_t, size_t> Range(const TestImage &image, int32_t y, int32_t offset, int32_t x,
                                            int32_t width) {
    return Range(image.Record(), image.block->Data(), y, offset, x, width);
  }
  static std::pair<ptrdiff_t, size_t> Range(ImageClassData &record, const uint8_t *first, int32_t y, int32_t offset,
                                            int32_t x, int32_t width) {
    const auto bytes = PixelBytes(record, record.GetRow(&record, y), offset, x, width);
    return {bytes.empty() ? -1 : bytes.data() - first, bytes.size()};
  }
  using Expected = std::pair<ptrdiff_t, size_t>;
};

TEST_F(PixelBytesOf, WholePixelsAreNeverCut) {
  const TestImage image = NewImage(4, 2, ImageFormatRGB);
  EXPECT_EQ(Range(image, 1, 0, 1, 3), (Expected{15, 9}));
  EXPECT_EQ(Range(image, 0, 6, 0, 2), (Expected{6, 6}));
  EXPECT_EQ(Range(image, 0, 0, 1, 0), (Expected{-1, 0}));
  EXPECT_EQ(Range(image, 0, 0, 1, -3), (Expected{-1, 0}));
  // Nor where the caller's rows are closer than the pixels are wide.
  image.Record().RowSize = 2;
  image.Record().TotalSize = 4;
  EXPECT_EQ(Range(image, 1, 0, 0, 4), (Expected{2, 12}));
}

TEST_F(PixelBytesOf, WhatHangsOverIsCutAtTheEndOfTheStorage) {
  const TestImage tight = NewImage(4, 2, ImageFormatRGB), loose = NewImage(4, 2, ImageFormatRGB, 13);
  EXPECT_EQ(Range(tight, 0, 2, 1, 3), (Expected{5, 9}));
  EXPECT_EQ(Range(tight, 1, 2, 1, 3), (Expected{17, 7}));
  EXPECT_EQ(Range(tight, 1, 2, 1, 2), (Expected{17, 6}));
  EXPECT_EQ(Range(loose, 1, 1, 0, 4), (Expected{14, 12}));
  EXPECT_EQ(Range(loose, 1, 2, 0, 4), (Expected{15, 11}));
}

TEST_F(PixelBytesOf, AClipHangsOverWhereItsParentDoes) {
  const TestImage image = NewImage(4, 2, ImageFormatRGB);
  const TestImage clip = Clip(image, 2, 1, 2, 1);
  EXPECT_EQ(Range(clip, 0, 6, 0, 2), (Expected{18, 6}));
  EXPECT_EQ(Range(clip, 0, 7, 0, 2), (Expected{19, 5}));
}

TEST_F(PixelBytesOf, RowsThatRunBackwardsEndWithTheirFirst) {
  const TestImage image = NewImage(4, 2, ImageFormatRGB, -12);
  image.Record().Buffer += 12;
  EXPECT_EQ(Range(image, 0, 1, 0, 4), (Expected{13, 11}));
  EXPECT_EQ(Range(image, 1, 1, 0, 4), (Expected{1, 12}));
}

TEST_F(PixelBytesOf, RowsOfATableAndOfAFileEndByThemselves) {
  const scenes::StoredImage table(host_, scenes::Kind::Table, 4, 2, ImageFormatRGB);
  EXPECT_EQ(Range(table.Record(), table.All().data(), 0, 1, 0, 4), (Expected{1, 11}));
  const TestImage mapped = NewImage(4, 2, ImageFormatRGB);
  mapped.Record().IsMapping = true;
  EXPECT_EQ(Range(mapped, 0, 1, 0, 4), (Expected{1, 11}));
  mapped.Record().IsMapping = false;
}

}  // namespace
}  // namespace zvk::pixels
