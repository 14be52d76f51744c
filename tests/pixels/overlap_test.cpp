#include "pixels/overlap.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>

#include "image/image_formats.h"
#include "pixels/layouts.h"
#include "tests/filters/filter_testing.h"

namespace zvk::pixels {
namespace {

using namespace filter_testing;
using Gray = Layout<ColourFamily::Gray, false>;
using RGB = Layout<ColourFamily::RGB, false>;
using RGBA = Layout<ColourFamily::RGB, true>;
using CMYK = Layout<ColourFamily::CMYK, false>;
using CMYKA = Layout<ColourFamily::CMYK, true>;

class Overlap : public FilterTest {
 protected:
  // Four columns over a block of the caller's.
  Image Over(int32_t rowSize, int32_t height, int32_t format = ImageFormatRGBX) {
    Image image = host_.New("PictureZVK");
    ImageConstructorMemory(image, block_, 4, height, format, rowSize);
    return image;
  }
  template <class Layout>
  static bool SamplesStandAlone(const Image &image, int32_t columns) {
    const ImageClassData &record = Record(image);
    return SamplesAreApart<Layout>(record) &&
           RowsAreApart(record, RangeOf(Layout::OffsetsOf(record)), columns, record.Height);
  }

  Owned<standalone::MemoryBlock> block_ = host_.NewMemoryBlock(100);
};

// --- offsets ---

TEST_F(Overlap, TheRangeOfOffsetsGoesFromTheLowestToTheHighest) {
  constexpr OffsetRange one = RangeOf(std::array{7});
  static_assert(one.lowest == 7 && one.highest == 7 && one.Span() == 1);
  const OffsetRange range = RangeOf(std::array{2, -3, 40, 0});
  EXPECT_EQ(range.lowest, -3);
  EXPECT_EQ(range.highest, 40);
  EXPECT_EQ(range.Span(), 44);
  EXPECT_EQ(RangeOf(std::array{INT32_MIN, INT32_MAX}).Span(), int64_t{1} << 32);
}

TEST_F(Overlap, TheRangeOfAllChannelsHoldsTheStartOfThePixelAndChannelsThatTheImageDoesNotHave) {
  ImageClassData clip{};
  clip.HasGray = true;
  clip.GrayOffset = 20;
  EXPECT_EQ(RangeOfChannels(clip).lowest, 0);
  EXPECT_EQ(RangeOfChannels(clip).highest, 20);
  clip.AlphaOffset = -2;
  clip.BlackOffset = 31;
  EXPECT_EQ(RangeOfChannels(clip).lowest, -2);
  EXPECT_EQ(RangeOfChannels(clip).highest, 31);
}

TEST_F(Overlap, TwoChannelsAtOneOffsetAreNotDistinct) {
  EXPECT_TRUE(SamplesAreDistinct(std::array{5}));
  EXPECT_TRUE(SamplesAreDistinct(std::array{0, 1, 2}));
  EXPECT_TRUE(SamplesAreDistinct(std::array{40, -3, 7, 6}));
  EXPECT_FALSE(SamplesAreDistinct(std::array{0, 1, 0}));
  EXPECT_FALSE(SamplesAreDistinct(std::array{1, 2, 3, 4, 4}));
}

TEST_F(Overlap, SamplesWithoutAGapStandSideBySide) {
  EXPECT_TRUE(SamplesAreSideBySide(std::array{9}));
  EXPECT_TRUE(SamplesAreSideBySide(std::array{2, 1, 0}));
  EXPECT_TRUE(SamplesAreSideBySide(std::array{-1, 1, 0}));
  EXPECT_FALSE(SamplesAreSideBySide(std::array{0, 1, 3}));
  EXPECT_FALSE(SamplesAreSideBySide(std::array{0, 2, 2}));
  EXPECT_FALSE(SamplesAreSideBySide(std::array{0, 0, 1}));
}

TEST_F(Overlap, PixelsAreApartIfTheirSamplesSpanNoMoreThanTheirDistance) {
  EXPECT_TRUE(PixelsAreApart(OffsetRange{0, 2}, 3));
  EXPECT_TRUE(PixelsAreApart(OffsetRange{30, 32}, 3));  // a clip of column 10
  EXPECT_TRUE(PixelsAreApart(OffsetRange{-1, 1}, 3));
  EXPECT_FALSE(PixelsAreApart(OffsetRange{0, 3}, 3));  // the highest sample is the lowest one of the next pixel
  EXPECT_FALSE(PixelsAreApart(OffsetRange{INT32_MIN, INT32_MAX}, INT32_MAX));
}

// --- the samples of an image ---

TEST_F(Overlap, EverySampleStandsAloneInTheFormats) {
  EXPECT_TRUE(SamplesStandAlone<Gray>(New(7, 5, ImageFormatG), 7));
  EXPECT_TRUE(SamplesStandAlone<RGB>(New(7, 5, ImageFormatXBGR), 7));
  EXPECT_TRUE(SamplesStandAlone<RGBA>(New(7, 5, ImageFormatARGB), 7));
  EXPECT_TRUE(SamplesStandAlone<RGB>(Adopt(ClipImage5(New(7, 5, ImageFormatRGB), 3, 1, 2, 2)), 2));
}

TEST_F(Overlap, SamplesInOneBytesPlaceAreNotApart) {
  EXPECT_FALSE(SamplesStandAlone<RGB>(New(7, 5, ImageFormatG), 7));
  EXPECT_FALSE(SamplesStandAlone<RGB>(New(7, 5, ImageFormatCMYK), 7));
  EXPECT_FALSE(SamplesAreApart<CMYKA>(Record(New(7, 5, ImageFormatCMYK))));  // alpha that is not there is byte 0
  // Red of one pixel where green of the next one is.
  const Image image = New(7, 5, ImageFormatRGB);
  Record(image).RedOffset = 4;
  EXPECT_TRUE(SamplesAreDistinct(RGB::OffsetsOf(Record(image))));
  EXPECT_FALSE(PixelsAreApart<RGB>(Record(image)));
  EXPECT_FALSE(SamplesStandAlone<RGB>(image, 7));
}

TEST_F(Overlap, RowsThatReachIntoEachOtherAreNotApart) {
  // Four pixels of RGBX reach over 15 bytes.
  EXPECT_TRUE(SamplesStandAlone<RGB>(Over(15, 3), 4));
  EXPECT_FALSE(SamplesStandAlone<RGB>(Over(14, 3), 4));
  EXPECT_TRUE(SamplesStandAlone<RGB>(Over(14, 3), 3));
  EXPECT_TRUE(SamplesStandAlone<RGB>(Over(-15, 3), 4));
  EXPECT_FALSE(SamplesStandAlone<RGB>(Over(-14, 3), 4));
  EXPECT_TRUE(SamplesStandAlone<RGB>(Over(0, 1), 4));
}

TEST_F(Overlap, OnlyTheRowsAndSamplesThatAreAskedAboutCount) {
  const Image image = Over(14, 3);
  const ImageClassData &record = Record(image);
  EXPECT_TRUE(RowsAreApart(record, {0, 2}, 4, 1));
  EXPECT_FALSE(RowsAreApart(record, {0, 2}, 4, 2));
  EXPECT_TRUE(RowsAreApart(record, {1, 2}, 4, 2));
  EXPECT_TRUE(RowsAreApart(record, {101, 102}, 4, 2));
}

TEST_F(Overlap, TheRowsOfATableAreTakenToLieApart) {
  const Image image = New(4, 3, ImageFormatG);
  Record(image).RowSize = 1;
  EXPECT_FALSE(SamplesStandAlone<Gray>(image, 4));
  uint8_t *rows[] = {nullptr};
  Record(image).RowTable = rows;
  EXPECT_TRUE(SamplesStandAlone<Gray>(image, 4));
  Record(image).RowTable = nullptr;
}

TEST_F(Overlap, RunsOverlapWhereTheyHaveAByteInCommon) {
  const uint8_t bytes[20] = {};
  EXPECT_TRUE(RunsOverlap(bytes, 10, bytes, 10));
  EXPECT_TRUE(RunsOverlap(bytes, 10, bytes + 9, 3));
  EXPECT_TRUE(RunsOverlap(bytes + 9, 3, bytes, 10));
  EXPECT_TRUE(RunsOverlap(bytes + 4, 1, bytes, 10));
  EXPECT_FALSE(RunsOverlap(bytes, 10, bytes + 10, 3));
  EXPECT_FALSE(RunsOverlap(bytes + 10, 3, bytes, 10));
  EXPECT_FALSE(RunsOverlap(bytes, 0, bytes, 0));
}

// --- two images ---

TEST_F(Overlap, ImagesOfTheirOwnAreApart) {
  const Image self = New(4, 3, ImageFormatG), dest = New(4, 3, ImageFormatG);
  EXPECT_TRUE(ImagesAreApart(Record(self), Record(dest)));
  EXPECT_FALSE(ImagesAreApart(Record(self), Record(self)));
}

TEST_F(Overlap, ThroughAClipThatIsTooSmallMoreIsWrittenThanItSays) {
  const Image whole = New(9, 9, ImageFormatG);
  const Image upper = Adopt(ClipImage5(whole, 0, 0, 9, 2)), lower = Adopt(ClipImage5(whole, 0, 5, 9, 4));
  EXPECT_TRUE(ImagesAreApart(Record(upper), Record(lower)));
  EXPECT_FALSE(ImagesAreApart(Record(lower), Record(upper)));
  EXPECT_TRUE(ImagesAreApart(Record(lower), Record(upper), 9, 2));
  EXPECT_FALSE(ImagesAreApart(Record(lower), Record(upper), 10, 2));
}

TEST_F(Overlap, PixelsOfAnotherSizeCountByTheirBytes) {
  const Image source = New(9, 9, ImageFormatG), dest = New(9, 9, ImageFormatRGB);
  EXPECT_TRUE(ImagesAreApart(Record(source), Record(dest), 27, 9, 1));
  EXPECT_FALSE(ImagesAreApart(Record(source), Record(dest), 28, 9, 1));
  EXPECT_TRUE(ImagesAreApart(Record(source), Record(dest), 6, 9, 4));
  EXPECT_FALSE(ImagesAreApart(Record(source), Record(dest), 7, 9, 4));
  EXPECT_FALSE(ImagesAreApart(Record(source), Record(dest), 6, 10, 4));
  EXPECT_FALSE(ImagesAreApart(Record(source), Record(dest), INT32_MAX, 1, INT32_MAX));
}

TEST_F(Overlap, ClipsSideBySideShareTheRowsBetweenThem) {
  const Image whole = New(9, 9, ImageFormatG);
  const Image left = Adopt(ClipImage5(whole, 0, 0, 4, 9)), right = Adopt(ClipImage5(whole, 5, 0, 4, 9));
  EXPECT_FALSE(ImagesAreApart(Record(left), Record(right)));
}

TEST_F(Overlap, AMappedFileIsApartFromMemoryOfTheImagesButItsRowsDoNotStay) {
  const Image file = host_.New("PictureZVK"), otherFile = host_.New("PictureZVK");
  ImageConstructorFile(file, 4, 3, ImageFormatG, 0, nullptr);
  ImageConstructorFile(otherFile, 4, 3, ImageFormatG, 0, nullptr);
  const Image memory = New(4, 3, ImageFormatG);
  for (const Image *other : {&memory, &otherFile}) {
    EXPECT_TRUE(ImagesAreApart(Record(file), Record(*other)));
    EXPECT_TRUE(ImagesAreApart(Record(*other), Record(file)));
    EXPECT_FALSE(ImagesAreApart(Record(*other), Record(file), 5, 3));
    EXPECT_TRUE(OrderIsUnobservable<Gray>(Record(*other), Record(file), 4, 3));
    EXPECT_FALSE(HasFixedRows(Record(file)));
  }
  EXPECT_TRUE(HasFixedRows(Record(memory)));
  EXPECT_TRUE(ImagesAreApart(Record(memory), Record(New(4, 3, ImageFormatG))));
}

TEST_F(Overlap, OfAMappedFileAndACallersBlockNothingIsKnown) {
  const Image file = host_.New("PictureZVK");
  ImageConstructorFile(file, 4, 3, ImageFormatG, 0, nullptr);
  const Image block = Over(15, 3, ImageFormatG);
  EXPECT_FALSE(ImagesAreApart(Record(file), Record(block)));
  EXPECT_FALSE(OrderIsUnobservable<Gray>(Record(block), Record(file), 4, 3));
}

TEST_F(Overlap, TheOrderIsUnobservableWhereImagesAreApartAndPixelsOfDestStandAlone) {
  const Image source = New(4, 3, ImageFormatRGB);
  EXPECT_TRUE(OrderIsUnobservable<RGB>(Record(source), Record(New(4, 3, ImageFormatXBGR)), 4, 3));
  EXPECT_FALSE(OrderIsUnobservable<RGB>(Record(source), Record(source), 4, 3));
  EXPECT_FALSE(OrderIsUnobservable<RGB>(Record(source), Record(New(4, 3, ImageFormatXBGR)), 5, 3));
  EXPECT_FALSE(OrderIsUnobservable<RGB>(Record(source), Record(New(4, 3, ImageFormatXBGR)), 4, 4));
  // All three samples of a pixel in one byte, and one of them in the next pixel.
  const Image gray = New(4, 3, ImageFormatG);
  EXPECT_TRUE(OrderIsUnobservable<RGB>(Record(source), Record(gray), 4, 3));
  Record(gray).RedOffset = 1;
  EXPECT_FALSE(OrderIsUnobservable<RGB>(Record(source), Record(gray), 4, 3));
  EXPECT_FALSE(OrderIsUnobservable<RGB>(Record(source), Record(Over(14, 3)), 4, 3));
  EXPECT_TRUE(OrderIsUnobservable<RGB>(Record(source), Record(Over(14, 3)), 3, 3));
  // The samples of the source may be shared, as they are only read.
  EXPECT_TRUE(OrderIsUnobservable<RGB>(Record(Over(1, 3)), Record(source), 4, 3));
}

}  // namespace
}  // namespace zvk::pixels
