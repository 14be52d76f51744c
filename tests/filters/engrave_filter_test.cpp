#include "filters/engrave_filter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

#include "tests/filters/filter_testing.h"
#include "tests/support/faults.h"
#include "tests/support/file_faults.h"

namespace zvk::filters {
namespace {

using namespace filter_testing;

class EngraveFilterTest : public FilterTest {
 protected:
  static Image Engrave(const Image &image, const Image &dest, int32_t level) {
    return Adopt(EngraveFilter(image, dest, level));
  }
  Image Gray(const Grid &grid) {
    return New(static_cast<int32_t>(grid[0].size()), static_cast<int32_t>(grid.size()), ImageFormatG, grid);
  }
};

TEST_F(EngraveFilterTest, ASampleBecomesItsDifferenceFromTheOneFurtherRightAndDown) {
  // The right column and the bottom row meet themselves where there is nothing further on.
  EXPECT_EQ(PixelsOf(Engrave(Gray({{10, 20, 30}, {40, 60, 80}, {70, 71, 77}}), {}, 1)),
            (Grid{{78, 68, 78}, {97, 111, 131}, {127, 122, 128}}));
  EXPECT_EQ(PixelsOf(Engrave(Gray({{10, 20, 30}, {40, 60, 80}, {70, 71, 77}}), {}, 2)),
            (Grid{{61, 71, 81}, {91, 111, 131}, {121, 122, 128}}));
}

TEST_F(EngraveFilterTest, ANegativeLevelReversesTheDirection) {
  EXPECT_EQ(PixelsOf(Engrave(Gray({{10, 20, 30}, {40, 60, 80}}), {}, -1)), (Grid{{128, 138, 138}, {158, 178, 188}}));
}

TEST_F(EngraveFilterTest, WhatIsBeyondASampleIsCut) {
  EXPECT_EQ(PixelsOf(Engrave(Gray({{255, 0, 255, 127, 255}}), {}, 1)), (Grid{{255, 0, 255, 0, 128}}));
}

TEST_F(EngraveFilterTest, LevelZeroAndUniformImagesGive128InAllChannels) {
  for (const int32_t format : {ImageFormatG, ImageFormatAG, ImageFormatRGB, ImageFormatBGRA}) {
    const Image image = New(5, 4, format);
    std::fill_n(Record(image).Buffer, Record(image).TotalSize, uint8_t{173});
    const Image flat = New(5, 4, format);
    std::fill_n(Record(flat).Buffer, Record(flat).TotalSize, uint8_t{128});
    for (const int32_t level : {0, 1, -3, 400}) EXPECT_EQ(PixelsOf(Engrave(image, {}, level)), PixelsOf(flat));
    EXPECT_EQ(PixelsOf(Engrave(Noise(5, 4, format), {}, 0)), PixelsOf(flat));
  }
}

TEST_F(EngraveFilterTest, ALevelBeyondTheImageMeetsItsCorner) {
  const Image image = Gray({{10, 20, 30}, {40, 60, 80}});
  for (const int32_t level : {3, 1000, INT32_MAX - 2}) {
    EXPECT_EQ(PixelsOf(Engrave(image, {}, level)), (Grid{{58, 68, 78}, {88, 108, 128}})) << level;
  }
  for (const int32_t level : {-3, -1000, INT32_MIN}) {
    EXPECT_EQ(PixelsOf(Engrave(image, {}, level)), (Grid{{128, 138, 148}, {158, 178, 198}})) << level;
  }
}

// A place plus the largest number wraps but for the first place, and so leads to the near edge.
TEST_F(EngraveFilterTest, ALevelThatWrapsMeetsTheOppositeEdge) {
  // Row 0 meets row 1, row 1 row 0; column 0 meets column 2, and the others column 0.
  EXPECT_EQ(PixelsOf(Engrave(Gray({{10, 20, 30}, {40, 60, 80}}), {}, INT32_MAX)),
            (Grid{{58, 108, 118}, {138, 178, 198}}));
}

TEST_F(EngraveFilterTest, ChannelsGoByTheOffsetsOfEachImageAndFillerStays) {
  const Image image = New(2, 1, ImageFormatRGB, {{1, 20, 30, 2, 10, 33}});
  const Image dest = New(2, 1, ImageFormatXBGR, {{7, 7, 7, 7, 8, 8, 8, 8}});
  EXPECT_EQ(PixelsOf(Engrave(image, dest, 1)), (Grid{{7, 125, 138, 127, 8, 128, 128, 128}}));
}

TEST_F(EngraveFilterTest, OfInksNothingIsWritten) {
  for (const int32_t format : {ImageFormatCMYK, ImageFormatCMYKA}) {
    const Image dest = Noise(3, 2, format, 9);
    const Grid before = PixelsOf(dest);
    const Image result = Engrave(Noise(3, 2, format), dest, 1);
    EXPECT_EQ(result.Handle(), dest.Handle());
    EXPECT_EQ(PixelsOf(result), before);
  }
}

TEST_F(EngraveFilterTest, InPlaceTheFilterReadsWhatItHasWritten) {
  const Image forward = Gray({{10, 20, 30}});
  EXPECT_EQ(PixelsOf(Engrave(forward, forward, 1)), (Grid{{118, 118, 128}}));
  const Image backward = Gray({{10, 20, 30}});
  EXPECT_EQ(PixelsOf(Engrave(backward, backward, -1)), (Grid{{128, 20, 138}}));
}

TEST_F(EngraveFilterTest, WhatTheFrameRefusesIsNil) {
  EXPECT_FALSE(Engrave(Noise(3, 2, ImageFormatGray16), {}, 1));
  EXPECT_FALSE(Engrave(Noise(3, 2, ImageFormatG), host_.New("PictureZVK"), 1));
  ExpectNothingRaised();
}

TEST_F(EngraveFilterTest, WithoutMemoryForRowsTheResultIsTheSame) {
  const Image image = Noise(20, 9, ImageFormatRGB), dest = New(20, 9, ImageFormatRGB);
  const Grid expected = PixelsOf(Engrave(image, {}, 2));
  faults::Heap heap;
  heap.FailCalloc([](size_t, size_t) { return true; });
  EXPECT_EQ(PixelsOf(Engrave(image, dest, 2)), expected);
}

TEST_F(EngraveFilterTest, BothRowsAreFetchedForEachPixel) {
  const auto engrave = [](REALobject image, REALobject dest) { return EngraveFilter(image, dest, 1); };
  EXPECT_EQ(FetchesFor(host_, 2, 2, engrave), "d0 s0 s1 s0 s1 d1 s1 s1 s1 s1");
}

TEST_F(EngraveFilterTest, ARowOfAFileIsMappedOnceHoweverFarItsCounterpartIs) {
  const Image memory = Noise(9, 40, ImageFormatRGB), file = NoiseInFile(9, 40, ImageFormatRGB);
  const Image dest = New(9, 40, ImageFormatRGB);
  for (const int32_t level : {1, 4, -5, 11, -20, 39, -39, 1000}) {
    ShrinkBlock(file);
    faults::Files files;
    Engrave(file, dest, level);
    // Blocks of five rows, of which two have been there before, and back to the first row behind a far counterpart.
    EXPECT_LE(files.Records(faults::FileCall::kMap).size(), 16u) << level;
    EXPECT_EQ(PixelsOf(dest), PixelsOf(Engrave(memory, {}, level))) << level;
  }
}

}  // namespace
}  // namespace zvk::filters
