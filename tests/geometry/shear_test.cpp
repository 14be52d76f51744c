#include "geometry/shear.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/geometry/turn_testing.h"

namespace zvk::geometry {
namespace {

using namespace turn_testing;
using enum ColourFamily;

class Shear : public testing::Test {
 protected:
  // What a row of pixels (or of none) comes to, by all forms; the bytes around it must stay.
  template <class L>
  Bytes Skewed(int32_t format, const Bytes &row, int32_t destWidth, int32_t offset, double weight,
               Pixel<L> background) {
    const int32_t size = PixelSizeOf(format);
    const auto width = static_cast<int32_t>(row.size()) / size;
    const StoredImage source = Stored(host_, Kind::Block, std::max(width, 1), 1, format);
    source.Record().Width = width;
    const StoredImage dest = Stored(host_, Kind::Block, destWidth, 3, format);
    if (width > 0) source.SetBytes(row);
    Bytes results[2];
    for (const bool mapped : {false, true}) {
      source.Record().IsMapping = mapped;
      Bytes bytes(dest.Bytes().size(), 0xEE);
      dest.SetBytes(bytes);
      HorizSkew<L>(RowShifted(source), dest.Record(), 1, offset, weight, background);
      const Bytes all = dest.Bytes();
      const auto first = all.begin() + ptrdiff_t{destWidth} * size, last = first + ptrdiff_t{destWidth} * size;
      results[mapped] = Bytes(first, last);
      std::copy(first, last, bytes.begin() + ptrdiff_t{destWidth} * size);
      EXPECT_EQ(all, bytes);
    }
    EXPECT_EQ(results[0], results[1]);
    return results[0];
  }

  // Row 1 is the one row of the source.
  static ImageClassData &RowShifted(const StoredImage &source) {
    source.Record().RowOffset = -1;
    source.Record().Height = 2;
    return source.Record();
  }

  PluginHost host_{{.fenced = true}};
};

using GrayOnly = Layout<Gray, false>;

TEST_F(Shear, EverySampleGivesItsShareToTheRightAndTheLastOneLeavesItsOwnBehind) {
  // Shares of a quarter: of the background 10, then 25 and 50. Behind the last sample 40 - (10 - 50) is left.
  EXPECT_EQ(Skewed<GrayOnly>(ImageFormatG, {100, 200}, 5, 1, 0.25, {{40}}), (Bytes{40, 85, 175, 80, 40}));
}

TEST_F(Shear, AWeightOfNothingMovesWholePixels) {
  EXPECT_EQ(Skewed<GrayOnly>(ImageFormatG, {1, 2, 3}, 6, 2, 0.0, {{9}}), (Bytes{9, 9, 1, 2, 3, 9}));
}

TEST_F(Shear, AWeightOfOneMovesByOnePixelMore) {
  EXPECT_EQ(Skewed<GrayOnly>(ImageFormatG, {1, 2, 3}, 6, 1, 1.0, {{9}}), (Bytes{9, 9, 1, 2, 3, 9}));
}

TEST_F(Shear, WhatFallsOutsideTheRowIsLeftOut) {
  const Bytes row{100, 200, 60};  // shares of a half: 20 of the background, 50, 100, 30
  EXPECT_EQ(Skewed<GrayOnly>(ImageFormatG, row, 3, 1, 0.5, {{40}}), (Bytes{40, 70, 150}));
  EXPECT_EQ(Skewed<GrayOnly>(ImageFormatG, row, 3, 2, 0.5, {{40}}), (Bytes{40, 40, 70}));
  EXPECT_EQ(Skewed<GrayOnly>(ImageFormatG, row, 3, 3, 0.5, {{40}}), (Bytes{40, 40, 40}));
  EXPECT_EQ(Skewed<GrayOnly>(ImageFormatG, row, 3, 100, 0.5, {{40}}), (Bytes{40, 40, 40}));
  EXPECT_EQ(Skewed<GrayOnly>(ImageFormatG, row, 3, -1, 0.5, {{40}}), (Bytes{150, 130, 50}));
  EXPECT_EQ(Skewed<GrayOnly>(ImageFormatG, row, 3, -2, 0.5, {{40}}), (Bytes{130, 50, 40}));
  EXPECT_EQ(Skewed<GrayOnly>(ImageFormatG, row, 3, -3, 0.5, {{40}}), (Bytes{50, 40, 40}));
  EXPECT_EQ(Skewed<GrayOnly>(ImageFormatG, row, 3, -4, 0.5, {{40}}), (Bytes{40, 40, 40}));
  EXPECT_EQ(Skewed<GrayOnly>(ImageFormatG, row, 3, -100, 0.5, {{40}}), (Bytes{40, 40, 40}));
}

TEST_F(Shear, EveryChannelHasItsBackgroundAndItsOwnShares) {
  // Alpha stands first in the pixels of gray and ink, last in those of colours, whatever the image's own order is.
  EXPECT_EQ((Skewed<Layout<Gray, true>>(ImageFormatGA, {100, 200}, 3, 1, 0.5, {{1, 2}})),
            (Bytes{2, 1, 51, 100, 51, 100}));
  EXPECT_EQ((Skewed<Layout<Gray, true>>(ImageFormatAG, {200, 100}, 3, 1, 0.5, {{1, 2}})),
            (Bytes{1, 2, 100, 51, 100, 51}));
  EXPECT_EQ((Skewed<Layout<RGB, false>>(ImageFormatBGR, {30, 20, 10}, 2, 0, 0.5, {{1, 2, 3}})),
            (Bytes{16, 11, 5, 16, 11, 5}));
  EXPECT_EQ((Skewed<Layout<RGB, true>>(ImageFormatARGB, {40, 10, 20, 30}, 1, 0, 0.0, {{1, 2, 3, 4}})),
            (Bytes{40, 10, 20, 30}));
  EXPECT_EQ((Skewed<Layout<RGB, true>>(ImageFormatARGB, {}, 1, 0, 0.0, {{1, 2, 3, 4}})), (Bytes{4, 1, 2, 3}));
  EXPECT_EQ((Skewed<Layout<CMYK, false>>(ImageFormatKYMC, {}, 1, 0, 0.0, {{1, 2, 3, 4}})), (Bytes{4, 3, 2, 1}));
  EXPECT_EQ((Skewed<Layout<CMYK, true>>(ImageFormatCMYKA, {}, 1, 0, 0.0, {{5, 1, 2, 3, 4}})), (Bytes{1, 2, 3, 4, 5}));
}

TEST_F(Shear, FillerStays) {
  EXPECT_EQ((Skewed<Layout<RGB, false>>(ImageFormatRGBX, {10, 20, 30, 99}, 2, 0, 0.5, {{2, 4, 6}})),
            (Bytes{6, 12, 18, 0xEE, 6, 12, 18, 0xEE}));
  EXPECT_EQ((Skewed<GrayOnly>(ImageFormat2of3, {99, 10, 99}, 2, 1, 0.0, {{7}})),
            (Bytes{0xEE, 7, 0xEE, 0xEE, 10, 0xEE}));
}

TEST_F(Shear, LongRowsOfUnlikeLayoutsAreShearedLikeShortOnes) {
  const Bytes gray = Noise(1000, 1);
  Bytes spread(4000, 99), expected(5000, 0xEE);
  for (size_t i = 0; i < 1000; ++i) spread[4 * i + 2] = gray[i];
  for (const int32_t offset : {-600, -255, -1, 0, 1, 100, 255, 256, 257, 700}) {
    const Bytes sheared = Skewed<GrayOnly>(ImageFormatG, gray, 1250, offset, 0.3, {{50}});
    for (size_t i = 0; i < 1250; ++i) expected[4 * i + 2] = sheared[i];
    EXPECT_EQ(Skewed<GrayOnly>(ImageFormat3of4, spread, 1250, offset, 0.3, {{50}}), expected) << offset;
  }
}

TEST_F(Shear, RowsAreFetchedAnewForEveryPixelOfAMappedImage) {
  const StoredImage source = Stored(host_, Kind::Block, 2, 4, ImageFormatRGB),
                    dest = Stored(host_, Kind::Block, 3, 4, ImageFormatRGB);
  ImageClassData &from = source.Record(), &to = dest.Record();
  RowLog log;
  log.WatchAsMapped(from, "s");
  log.WatchAsMapped(to, "d");
  HorizSkew<Layout<RGB, false>>(from, to, 3, 0, 0.5, {{1, 2, 3}});
  EXPECT_EQ(log.Take(), "d3 d3 d3 s3 d3 s3 d3 d3");
}

TEST_F(Shear, ARowShearedIntoItselfIsFirstOverwrittenByTheBackground) {
  const StoredImage storage = Stored(host_, Kind::Block, 3, 1, ImageFormatG);
  storage.SetBytes({100, 200, 60});
  HorizSkew<GrayOnly>(storage.Record(), storage.Record(), 0, 1, 0.5, {{40}});
  // 40 throughout, of which the first goes to the second place, and so on.
  EXPECT_EQ(storage.Bytes(), (Bytes{40, 40, 40}));
  storage.SetBytes({100, 200, 60});
  HorizSkew<GrayOnly>(storage.Record(), storage.Record(), 0, -1, 0.5, {{41}});
  // Two samples move to the left; behind the last one 41 - (20.5 - 20) is left.
  EXPECT_EQ(storage.Bytes(), (Bytes{41, 41, 40}));
}

TEST_F(Shear, ARowThatCannotBeHadIsLeftOut) {
  const StoredImage source = Stored(host_, Kind::Block, 2, 3, ImageFormatG),
                    dest = Stored(host_, Kind::Block, 2, 3, ImageFormatG);
  const Bytes before = dest.Bytes();
  RowLog rows;
  for (const bool mapped : {false, true}) {
    dest.Record().IsMapping = mapped;
    rows.Refuse(dest.Record(), 1);
    HorizSkew<GrayOnly>(source.Record(), dest.Record(), 1, 0, 0.5, {{41}});
    EXPECT_EQ(dest.Bytes(), before);
    rows.Release(dest.Record());
    rows.Refuse(source.Record(), 1);
    HorizSkew<GrayOnly>(source.Record(), dest.Record(), 1, 0, 0.5, {{0}});
    EXPECT_NE(dest.Bytes()[2], 41);
    dest.SetBytes(before);
    rows.Release(source.Record());
  }
}

}  // namespace
}  // namespace zvk::geometry
