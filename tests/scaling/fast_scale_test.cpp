#include "scaling/fast_scale.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <list>
#include <numeric>
#include <utility>
#include <vector>

#include "image/file_storage.h"
#include "image/views.h"
#include "tests/naive/fast_scale.h"
#include "tests/scaling/scale_host.h"
#include "tests/scaling/scale_testing.h"
#include "tests/scenes/stored_image.h"
#include "tests/support/faults.h"
#include "tests/support/plugin_host.h"

namespace zvk::scaling {
namespace {

using scenes::Kind;
using scenes::StoredImage;

class FastScale : public ScaleHost {
 protected:
  static bool Scale(const TestImage &dest, const TestImage &source, int32_t width, int32_t height) {
    return ScalePictureFast(dest.Object(), source.Object(), width, height) != 0;
  }

  // One pixel scaled to one pixel of another format; empty if that is refused.
  static Bytes ScalePixel(int32_t sourceFormat, const Bytes &pixel, int32_t destFormat, const Bytes &destBefore) {
    const TestImage source(1, 1, sourceFormat), dest(1, 1, destFormat);
    source.SetRow(0, pixel);
    dest.SetRow(0, destBefore);
    return Scale(dest, source, 1, 1) ? dest.Row(0, 1) : Bytes();
  }

  // What a scale does to the destination; the bytes are put back.
  static std::pair<bool, Bytes> Result(const TestImage &dest, const std::function<bool()> &scale) {
    const Bytes before = dest.Storage();
    const bool result = scale();
    const Bytes after = dest.Storage();
    dest.Storage() = before;
    return {result, after};
  }
  static std::pair<bool, Bytes> NaiveResult(const TestImage &dest, const TestImage &source, int32_t width,
                                            int32_t height) {
    return Result(dest, [&] { return naive::ScaleFast(dest.Record(), source.Record(), width, height); });
  }
  static void ExpectNaive(const TestImage &dest, const TestImage &source, int32_t width, int32_t height) {
    ASSERT_TRUE(Result(dest, [&] { return Scale(dest, source, width, height); }) ==
                NaiveResult(dest, source, width, height))
        << source.Record().ImageFormat << " to " << dest.Record().ImageFormat << ", " << source.Record().Width << " x "
        << source.Record().Height << " to " << width << " x " << height;
  }
};

// --- positions ---

TEST_F(FastScale, ThreeColumnsIntoTwoTakeTheFirstTwo) {
  const TestImage source(3, 1, ImageFormatG), dest(2, 1, ImageFormatG);
  source.SetRow(0, {10, 20, 30});
  ASSERT_TRUE(Scale(dest, source, 2, 1));
  EXPECT_EQ(dest.Row(0, 2), (Bytes{10, 20}));
}

TEST_F(FastScale, TwoColumnsIntoFiveAreRepeated) {
  const TestImage source(2, 1, ImageFormatG), dest(5, 1, ImageFormatG);
  source.SetRow(0, {10, 20});
  ASSERT_TRUE(Scale(dest, source, 5, 1));
  EXPECT_EQ(dest.Row(0, 5), (Bytes{10, 10, 10, 20, 20}));
}

TEST_F(FastScale, RowsAreTakenLikeColumns) {
  const TestImage source(1, 3, ImageFormatG), smaller(1, 2, ImageFormatG), larger(1, 7, ImageFormatG);
  for (int32_t y = 0; y < 3; ++y) source.SetRow(y, {static_cast<uint8_t>(10 * y)});
  ASSERT_TRUE(Scale(smaller, source, 1, 2));
  EXPECT_EQ(*smaller.Pixel(0, 0), 0);
  EXPECT_EQ(*smaller.Pixel(0, 1), 10);
  ASSERT_TRUE(Scale(larger, source, 1, 7));
  // Steps of 3 / 7: rows 0, 0, 0, 1, 1, 2, 2.
  constexpr uint8_t kExpected[] = {0, 0, 0, 10, 10, 20, 20};
  for (int32_t y = 0; y < 7; ++y) EXPECT_EQ(*larger.Pixel(0, y), kExpected[y]) << y;
}

TEST_F(FastScale, TheSizeIsCutToTheDestinationAndTheWholeSourceFitsIntoIt) {
  const TestImage source(4, 4, ImageFormatG), dest(2, 2, ImageFormatG);
  source.SetRow(0, {1, 2, 3, 4});
  source.SetRow(2, {5, 6, 7, 8});
  for (const auto &[width, height] : {std::pair{2, 2}, {100, 100}, {INT32_MAX, INT32_MAX}}) {
    TestImage(dest).FillNoise(1);
    ASSERT_TRUE(Scale(dest, source, width, height));
    EXPECT_EQ(dest.Row(0, 2), (Bytes{1, 3}));
    EXPECT_EQ(dest.Row(1, 2), (Bytes{5, 7}));
  }
}

TEST_F(FastScale, ASmallerSizeFillsTheLeftTopCorner) {
  TestImage source(4, 4, ImageFormatRGB), dest(9, 9, ImageFormatRGB);
  source.FillNoise(1);
  dest.FillNoise(2);
  ExpectNaive(dest, source, 3, 7);
  ExpectNaive(dest, source, 9, 1);
}

TEST_F(FastScale, WideRowsGiveTheNaiveBytes) {
  // Products that come close to whole numbers, and widths on both sides of a stretch.
  for (const auto &[sourceWidth, width] :
       {std::pair{3000, 1001}, {1001, 3000}, {49, 2401}, {1023, 1024}, {1024, 1024}, {1025, 1024}, {4099, 1025}}) {
    TestImage source(sourceWidth, 3, ImageFormatRGB), dest(width, 3, ImageFormatRGB);
    source.FillNoise(3);
    ExpectNaive(dest, source, width, 3);
  }
}

// --- formats ---

TEST_F(FastScale, AllFormatsGiveTheNaiveBytes) {
  uint32_t seed = 0;
  for (int32_t sourceFormat = 1; sourceFormat <= 41; ++sourceFormat) {
    for (int32_t destFormat = 1; destFormat <= 41; ++destFormat) {
      if (sourceFormat == 14 || destFormat == 14) continue;
      TestImage source(7, 5, sourceFormat), dest(5, 8, destFormat);
      source.FillNoise(++seed);
      dest.FillNoise(seed + 1);
      ExpectNaive(dest, source, 5, 8);
    }
  }
}

TEST_F(FastScale, ChannelsFollowTheOffsets) {
  EXPECT_EQ(ScalePixel(ImageFormatBGRA, {1, 2, 3, 4}, ImageFormatARGB, {9, 9, 9, 9}), (Bytes{4, 3, 2, 1}));
  EXPECT_EQ(ScalePixel(ImageFormatRGB, {1, 2, 3}, ImageFormatBGR, {9, 9, 9}), (Bytes{3, 2, 1}));
  EXPECT_EQ(ScalePixel(ImageFormatRGBA, {1, 2, 3, 4}, ImageFormatRGBA, {9, 9, 9, 9}), (Bytes{1, 2, 3, 4}));
}

TEST_F(FastScale, AlphaAndFillerThatTheSourceLacksStay) {
  EXPECT_EQ(ScalePixel(ImageFormatRGB, {1, 2, 3}, ImageFormatRGBA, {9, 9, 9, 8}), (Bytes{1, 2, 3, 8}));
  EXPECT_EQ(ScalePixel(ImageFormatRGBA, {1, 2, 3, 4}, ImageFormatXBGR, {9, 9, 9, 9}), (Bytes{9, 3, 2, 1}));
  EXPECT_EQ(ScalePixel(ImageFormatRGBX, {1, 2, 3, 4}, ImageFormatRGBX, {9, 9, 9, 9}), (Bytes{1, 2, 3, 9}));
  EXPECT_EQ(ScalePixel(ImageFormatG, {5}, ImageFormatGA, {9, 8}), (Bytes{5, 8}));
  EXPECT_EQ(ScalePixel(ImageFormatG, {5}, ImageFormat2of3, {7, 8, 9}), (Bytes{7, 5, 9}));
  EXPECT_EQ(ScalePixel(ImageFormatCMYK, {1, 2, 3, 4}, ImageFormatACMYK, {9, 8, 7, 6, 5}), (Bytes{9, 1, 2, 3, 4}));
}

TEST_F(FastScale, GrayWithAlphaIntoColourWithAlphaLeavesTheAlpha) {
  EXPECT_EQ(ScalePixel(ImageFormatGA, {77, 9}, ImageFormatRGBA, {1, 2, 3, 4}), (Bytes{77, 77, 77, 4}));
  EXPECT_EQ(ScalePixel(ImageFormatGA, {77, 9}, ImageFormatRGB, {1, 2, 3}), (Bytes{77, 77, 77}));
  EXPECT_EQ(ScalePixel(ImageFormatG, {77}, ImageFormatARGB, {4, 1, 2, 3}), (Bytes{4, 77, 77, 77}));
}

TEST_F(FastScale, GrayWithAlphaIntoGrayWithAlphaBringsTheAlpha) {
  EXPECT_EQ(ScalePixel(ImageFormatGA, {77, 9}, ImageFormatAG, {1, 2}), (Bytes{9, 77}));
  EXPECT_EQ(ScalePixel(ImageFormatGA, {77, 9}, ImageFormatG, {1}), (Bytes{77}));
}

TEST_F(FastScale, YellowIsReadAsYellow) {
  EXPECT_EQ(ScalePixel(ImageFormatCMYK, {10, 20, 30, 40}, ImageFormatCMYK, {0, 0, 0, 0}), (Bytes{10, 20, 30, 40}));
  EXPECT_EQ(ScalePixel(ImageFormatKYMC, {40, 30, 20, 10}, ImageFormatCMYKA, {0, 0, 0, 0, 7}),
            (Bytes{10, 20, 30, 40, 7}));
  EXPECT_EQ(ScalePixel(ImageFormatACMYK, {5, 10, 20, 30, 40}, ImageFormatKYMCA, {0, 0, 0, 0, 0}),
            (Bytes{40, 30, 20, 10, 5}));
}

TEST_F(FastScale, GrayBecomesBlackInkAloneWhereBothHaveAlphaOrNeither) {
  EXPECT_EQ(ScalePixel(ImageFormatG, {77}, ImageFormatCMYK, {1, 2, 3, 4}), (Bytes{0, 0, 0, 77}));
  EXPECT_EQ(ScalePixel(ImageFormatG, {77}, ImageFormatXKYMC, {9, 1, 2, 3, 4}), (Bytes{9, 77, 0, 0, 0}));
  EXPECT_EQ(ScalePixel(ImageFormatGA, {77, 9}, ImageFormatCMYKA, {1, 2, 3, 4, 5}), (Bytes{0, 0, 0, 77, 5}));
  EXPECT_EQ(ScalePixel(ImageFormatG, {77}, ImageFormatCMYKA, {1, 2, 3, 4, 5}), Bytes());
  EXPECT_EQ(ScalePixel(ImageFormatGA, {77, 9}, ImageFormatCMYK, {1, 2, 3, 4}), Bytes());
}

TEST_F(FastScale, GrayOfInksIsBlackAlone) {
  EXPECT_EQ(ScalePixel(ImageFormatCMYK, {10, 20, 30, 40}, ImageFormatG, {0}), (Bytes{40}));
  EXPECT_EQ(ScalePixel(ImageFormatAKYMC, {5, 40, 30, 20, 10}, ImageFormatGA, {0, 0}), (Bytes{40, 5}));
  EXPECT_EQ(ScalePixel(ImageFormatCMYK, {10, 20, 30, 40}, ImageFormatGA, {0, 8}), (Bytes{40, 8}));
}

TEST_F(FastScale, GrayOfColourHasIntegerWeightsThatKeepWhite) {
  EXPECT_EQ(ScalePixel(ImageFormatRGB, {255, 255, 255}, ImageFormatG, {0}), (Bytes{255}));
  // (77 x 100 + 151 x 200 + 28 x 50) / 256 = 153.5, rounded down
  EXPECT_EQ(ScalePixel(ImageFormatRGB, {100, 200, 50}, ImageFormatG, {0}), (Bytes{153}));
  EXPECT_EQ(ScalePixel(ImageFormatABGR, {9, 50, 200, 100}, ImageFormatGA, {0, 0}), (Bytes{153, 9}));
  EXPECT_EQ(ScalePixel(ImageFormatRGBA, {100, 200, 50, 9}, ImageFormatG, {0}), (Bytes{153}));
}

TEST_F(FastScale, OtherPairsAndWideSamplesAreRefused) {
  for (const auto &[sourceFormat, destFormat] : {std::pair{ImageFormatRGB, ImageFormatCMYK},
                                                 {ImageFormatRGBA, ImageFormatCMYKA},
                                                 {ImageFormatCMYK, ImageFormatRGB},
                                                 {ImageFormatCMYKA, ImageFormatRGBA},
                                                 {ImageFormatGray16, ImageFormatGray16},
                                                 {ImageFormatGray16, ImageFormatRGB},
                                                 {ImageFormatRGB, ImageFormatGray16},
                                                 {ImageFormatBuffer, ImageFormatBuffer},
                                                 {ImageFormatScaling4, ImageFormatRGB},
                                                 {ImageFormatRGB, ImageFormatScaling4}}) {
    TestImage source(3, 3, sourceFormat), dest(3, 3, destFormat);
    dest.FillNoise(1);
    const Bytes before = dest.Storage();
    EXPECT_FALSE(Scale(dest, source, 3, 3));
    EXPECT_EQ(dest.Storage(), before);
  }
}

// --- refusals ---

TEST_F(FastScale, NilImagesAndSizesNotAboveZeroAreRefused) {
  TestImage source(3, 3, ImageFormatG), dest(3, 3, ImageFormatG);
  dest.FillNoise(1);
  const Bytes before = dest.Storage();
  EXPECT_FALSE(ScalePictureFast(nullptr, source.Object(), 3, 3));
  EXPECT_FALSE(ScalePictureFast(dest.Object(), nullptr, 3, 3));
  for (const int32_t size : {0, -1, INT32_MIN}) {
    EXPECT_FALSE(Scale(dest, source, size, 3));
    EXPECT_FALSE(Scale(dest, source, 3, size));
  }
  EXPECT_EQ(dest.Storage(), before);
}

TEST_F(FastScale, ImagesThatAreNotUsableAreRefused) {
  const std::vector<std::function<void(ImageClassData &)>> spoils = {
      [](ImageClassData &record) { record.Valid = false; },
      [](ImageClassData &record) { record.GetRow = nullptr; },
      [](ImageClassData &record) { record.GetRow = GetRowGDImage; },  // without a table
      [](ImageClassData &record) { record.Width = -1; },
      [](ImageClassData &record) { record.Height = 0; },
  };
  for (size_t spoil = 0; spoil < spoils.size(); ++spoil) {
    for (const bool spoilsSource : {false, true}) {
      TestImage source(3, 3, ImageFormatG), dest(3, 3, ImageFormatG);
      dest.FillNoise(1);
      const Bytes before = dest.Storage();
      spoils[spoil]((spoilsSource ? source : dest).Record());
      EXPECT_FALSE(Scale(dest, source, 3, 3)) << spoil << " " << spoilsSource;
      EXPECT_EQ(dest.Storage(), before);
    }
  }
}

// --- a source without columns ---

TEST_F(FastScale, ASourceWithoutColumnsGivesEachPixelTheSamplesAtTheOffsetsOfItsRow) {
  uint32_t seed = 0;
  for (int32_t sourceFormat = 1; sourceFormat <= 41; ++sourceFormat) {
    for (int32_t destFormat = 1; destFormat <= 41; ++destFormat) {
      if (sourceFormat == 14 || destFormat == 14) continue;
      TestImage source(3, 5, sourceFormat), dest(5, 8, destFormat);
      source.FillNoise(++seed).Clip(1, 0, 0, 5);
      dest.FillNoise(seed + 1);
      ExpectNaive(dest, source, 5, 8);
    }
  }
}

TEST_F(FastScale, WhatHasBeenWrittenIsReadWhereASourceWithoutColumnsSharesStorage) {
  // Each pixel takes the first one and turns its order round, so the first one changes under the others.
  TestImage source(3, 1, ImageFormatRGB);
  source.SetRow(0, {1, 2, 3, 4, 5, 6, 7, 8, 9});
  const TestImage dest(source, 0, 3, 1, ImageFormatBGR, 9);
  source.Clip(0, 0, 0, 1);
  ASSERT_TRUE(Scale(dest, source, 3, 1));
  EXPECT_EQ(dest.Row(0, 3), (Bytes{3, 2, 1, 1, 2, 3, 1, 2, 3}));
}

// A part of no columns at the right edge of an image over a fenced block, in which rows of `spare` bytes more than
// their pixels hold the numbers from 1 on.
class FastScaleOfEdge : public testing::Test {
 protected:
  standalone::Owned<standalone::Object> Edge(int32_t width, int32_t height, int32_t format, int32_t spare = 0,
                                             Kind kind = Kind::Block) {
    StoredImage &image = images_.emplace_back(host_, kind, width, height, format, spare);
    std::vector<uint8_t> bytes = image.Bytes();
    std::iota(bytes.begin(), bytes.end(), uint8_t{1});
    image.SetBytes(bytes);
    return Adopt(ClipImage5(image, width, 0, 0, height));
  }

  // What becomes of an image whose bytes are all 99.
  Bytes Scaled(REALobject source, int32_t width, int32_t height, int32_t format) {
    StoredImage dest(host_, Kind::Block, width, height, format);
    dest.SetBytes(Bytes(dest.Bytes().size(), 99));
    EXPECT_TRUE(ScalePictureFast(dest, source, width, height));
    return dest.Bytes();
  }

  PluginHost host_{{.fenced = true}};
  std::list<StoredImage> images_;
};

TEST_F(FastScaleOfEdge, ASampleBehindTheStorageLeavesItsChannelAsItIs) {
  // The bytes behind a row are those of the next one; behind the last one there are none.
  EXPECT_EQ(Scaled(Edge(4, 2, ImageFormatG), 2, 2, ImageFormatG), (Bytes{5, 5, 99, 99}));
  EXPECT_EQ(Scaled(Edge(4, 2, ImageFormatG), 1, 4, ImageFormatRGB), (Bytes{5, 5, 5, 5, 5, 5, 99, 99, 99, 99, 99, 99}));
  // Red is the seventh byte and green the eighth, which is the last.
  EXPECT_EQ(Scaled(Edge(2, 1, ImageFormatRGB, 2), 2, 1, ImageFormatRGB), (Bytes{7, 8, 99, 7, 8, 99}));
  EXPECT_EQ(Scaled(Edge(2, 1, ImageFormatRGB, 2), 2, 1, ImageFormatBGRA), (Bytes{99, 8, 7, 99, 99, 8, 7, 99}));
}

TEST_F(FastScaleOfEdge, GrayIsMadeWhereAllItsColoursLieInTheStorage) {
  EXPECT_EQ(Scaled(Edge(2, 1, ImageFormatRGB, 2), 2, 1, ImageFormatG), (Bytes{99, 99}));
  // 77 * 7 + 151 * 8 + 28 * 9 is 1999.
  EXPECT_EQ(Scaled(Edge(2, 1, ImageFormatRGB, 3), 2, 1, ImageFormatG), (Bytes{7, 7}));
  EXPECT_EQ(Scaled(Edge(2, 1, ImageFormatARGB, 2), 1, 1, ImageFormatGA), (Bytes{99, 9}));
}

TEST_F(FastScaleOfEdge, InksThatBecomeZeroDoSoWithoutASampleForBlack) {
  EXPECT_EQ(Scaled(Edge(4, 1, ImageFormatG), 1, 1, ImageFormatCMYK), (Bytes{0, 0, 0, 99}));
}

TEST_F(FastScaleOfEdge, TheStorageOfEveryKindEndsWhereItEnds) {
  // The rows of an image of its own are 64 bytes apart.
  EXPECT_EQ(Scaled(Edge(4, 2, ImageFormatG, 0, Kind::Memory), 1, 2, ImageFormatG), (Bytes{5, 69}));
  // The top row is the last one in memory.
  EXPECT_EQ(Scaled(Edge(4, 2, ImageFormatG, 0, Kind::Backwards), 1, 2, ImageFormatG), (Bytes{99, 5}));
  const auto upright = Edge(4, 2, ImageFormatG);
  EXPECT_EQ(Scaled(Adopt(GetMirroredView(upright)), 1, 2, ImageFormatG), (Bytes{99, 5}));
  // Those of a file are 4096 or more apart.
  EXPECT_EQ(Scaled(Edge(4, 2, ImageFormatG, 0, Kind::File), 1, 2, ImageFormatG), (Bytes{5, 5}));
}

TEST_F(FastScaleOfEdge, NothingIsReadBehindThePixels) {
  // Four columns into each number of them, from rows in which all of them are there, and the first three.
  for (const int32_t rowSize : {12, 9}) {
    for (int32_t width = 1; width <= (rowSize == 12 ? 20 : 2); ++width) {
      Bytes bytes(static_cast<size_t>(2 * rowSize));
      std::iota(bytes.begin(), bytes.end(), uint8_t{1});
      const auto source = host_.New("PictureZVK");
      ImageConstructorMemory(source, host_.NewMemoryBlock(bytes), 4, 2, ImageFormatRGB, rowSize);
      Bytes expected;
      for (int32_t y = 0; y < 2; ++y) {
        for (int32_t x = 0; x < width; ++x) {
          const int32_t pixel = rowSize * y + 3 * (4 * x / width);
          for (int32_t i = 1; i <= 3; ++i) expected.push_back(static_cast<uint8_t>(pixel + i));
        }
      }
      EXPECT_EQ(Scaled(source, width, 2, ImageFormatRGB), expected) << rowSize << ' ' << width;
    }
  }
}

// --- rows ---

TEST_F(FastScale, ARowOfEachImageIsFetchedForEachRowThatIsWrittenTheDestinationsFirst) {
  TestImage source(4, 5, ImageFormatRGB), dest(3, 3, ImageFormatRGB);
  source.FillNoise(1).Map();
  dest.Map();
  fetches.clear();
  ASSERT_TRUE(Scale(dest, source, 3, 3));
  const ImageClassData *const s = &source.Record();
  const ImageClassData *const d = &dest.Record();
  // Steps of 5 / 3.
  EXPECT_EQ(fetches, (std::vector<Fetch>{{d, 0}, {s, 0}, {d, 1}, {s, 1}, {d, 2}, {s, 3}}));
  fetches.clear();
  ExpectNaive(dest, source, 3, 3);
}

uint8_t *NoRow1(ImageClassData *record, int32_t row) { return row == 1 ? nullptr : GetRowLinear(record, row); }

TEST_F(FastScale, ANilRowIsLeftOut) {
  for (const bool inSource : {false, true}) {
    TestImage source(2, 3, ImageFormatG), dest(2, 3, ImageFormatG);
    for (int32_t y = 0; y < 3; ++y) {
      source.SetRow(y, {1, 2});
      dest.SetRow(y, {7, 7});
    }
    (inSource ? source : dest).Record().GetRow = NoRow1;
    EXPECT_TRUE(Scale(dest, source, 2, 3));
    dest.Record().GetRow = GetRowLinear;
    for (int32_t y = 0; y < 3; ++y) EXPECT_EQ(dest.Row(y, 2), (y == 1 ? Bytes{7, 7} : Bytes{1, 2})) << y;
  }
}

TEST_F(FastScale, OneImageIsScaledInPlace) {
  const TestImage image(4, 2, ImageFormatG);
  image.SetRow(0, {1, 2, 3, 4});
  image.SetRow(1, {5, 6, 7, 8});
  ASSERT_TRUE(Scale(image, image, 2, 2));
  EXPECT_EQ(image.Row(0, 4), (Bytes{1, 3, 3, 4}));
  EXPECT_EQ(image.Row(1, 4), (Bytes{5, 7, 7, 8}));
}

TEST_F(FastScale, WhatHasBeenWrittenIsReadWhereImagesShareStorage) {
  // The destination begins one byte behind the source: the first byte runs through the row.
  const TestImage source(4, 1, ImageFormatG);
  source.SetRow(0, {1, 2, 3, 4});
  const TestImage dest(source, 1, 4, 1, ImageFormatG, 4);
  ASSERT_TRUE(Scale(dest, source, 4, 1));
  EXPECT_EQ(source.Row(0, 4), (Bytes{1, 1, 1, 1}));
}

TEST_F(FastScale, RowsThatRunIntoEachOtherAreMadeOneByOne) {
  TestImage source(3, 2, ImageFormatRGB);
  source.FillNoise(1);
  for (const int32_t rowSize : {1, 5, 11, 12, -1, -11}) {
    TestImage dest(4, 6, ImageFormatRGB, rowSize);
    ExpectNaive(dest, source, 4, 6);
  }
}

TEST_F(FastScale, RepeatedRowsKeepWhatLiesBetweenTheirPixels) {
  for (const int32_t format : {ImageFormatRGB, ImageFormatBGRX, ImageFormatXRGB, ImageFormatRGBA}) {
    TestImage source(3, 2, ImageFormatRGB), dest(5, 9, format, 40);
    source.FillNoise(1);
    dest.FillNoise(2);
    ExpectNaive(dest, source, 4, 9);
    TestImage part(9, 12, format);
    part.FillNoise(3).Clip(2, 1, 5, 9);
    ExpectNaive(part, source, 4, 9);
    ExpectNaive(part.Mirror(), source, 4, 9);
  }
}

TEST_F(FastScale, ASourceInAFileIsScaledIntoItselfAcrossItsBlocks) {
  // Rows of a page, of which the smallest block holds 4096: the lower half is out of reach of the upper one.
  constexpr int32_t kHeight = 9000;
  const auto file = host_.New("PictureZVK");
  ImageConstructorFile(file, 1500, kHeight, ImageFormatG, 0, nullptr);
  ImageClassData &record = *RecordOf(file);
  ASSERT_TRUE(record.Valid);
  ASSERT_LT(record.MappedRowCount, kHeight / 2);
  const auto pixel = [](int32_t x, int32_t y) { return static_cast<uint8_t>(x * 7 + y * 31 + (y >> 8)); };
  for (int32_t y = 0; y < kHeight; ++y) {
    uint8_t *const row = record.GetRow(&record, y);
    for (int32_t x = 0; x < 1500; ++x) row[x] = pixel(x, y);
  }
  ASSERT_TRUE(ScalePictureFast(file, file, 1200, 3));
  for (int32_t y = 0; y < 3; ++y) {
    const uint8_t *const row = record.GetRow(&record, y);
    for (int32_t x = 0; x < 1500; ++x) {
      ASSERT_EQ(row[x], x < 1200 ? pixel(x * 5 / 4, y * 3000) : pixel(x, y)) << x << " " << y;
    }
  }
}

TEST_F(FastScale, RowsThatAreCopiedInAFileOutliveItsBlock) {
  const scenes::StoredImage source = scenes::NoisyImage(host_, Kind::Memory, 40, 7, ImageFormatRGB);
  const scenes::StoredImage inMemory(host_, Kind::Memory, 90, 80, ImageFormatRGB);
  const scenes::StoredImage inFile(host_, Kind::File, 90, 80, ImageFormatRGB, {.blockRows = 5});
  ASSERT_TRUE(ScalePictureFast(inMemory, source, 90, 80));
  ASSERT_TRUE(ScalePictureFast(inFile, source, 90, 80));
  for (int32_t y = 0; y < 80; ++y) {
    const uint8_t *expected = inMemory.Record().Buffer + ptrdiff_t{y} * inMemory.Record().RowSize;
    const uint8_t *made = inFile.All().data() + ptrdiff_t{y} * inFile.Record().RowSize;
    ASSERT_TRUE(std::equal(made, made + 270, expected)) << y;
  }
}

// --- time for the host ---

TEST_F(FastScale, EachImageIsGivenTimeOnceAndTheDestinationAfterEveryRow) {
  TestImage source(4, 5, ImageFormatRGB), dest(3, 7, ImageFormatRGB);
  for (const bool isDest : {false, true}) {
    yields_ = 0;
    ImageClassData &record = (isDest ? dest : source).Record();
    record.Yield.YieldTicks = 1;
    ASSERT_TRUE(Scale(dest, source, 3, 7));
    record.Yield.YieldTicks = 0;
    EXPECT_EQ(yields_, isDest ? 1 + 7 : 1);
  }
}

TEST_F(FastScale, NobodyIsAskedForTheTimeWithoutYieldTicks) {
  const TestImage source(4, 5, ImageFormatRGB), dest(3, 7, ImageFormatRGB);
  const uint32_t before = ticks;
  ASSERT_TRUE(Scale(dest, source, 3, 7));
  EXPECT_EQ(ticks, before);
}

TEST_F(FastScale, TheSourceIsGivenTimeBeforeTheDestinationIsLookedAt) {
  TestImage source(4, 5, ImageFormatRGB), dest(3, 7, ImageFormatRGB);
  source.Record().Yield.YieldTicks = 1;
  onYield_ = [&] { dest.Record().GetRow = nullptr; };
  EXPECT_FALSE(Scale(dest, source, 3, 7));
  EXPECT_EQ(yields_, 1);
}

TEST_F(FastScale, WhatHappensInAYieldIsSeenByTheNextRow) {
  TestImage source(1, 4, ImageFormatRGB), dest(1, 4, ImageFormatRGB);
  for (int32_t y = 0; y < 4; ++y) source.SetRow(y, {10, 20, 30});
  dest.Record().Yield.YieldTicks = 1;
  onYield_ = [&] {
    // The first yield comes before the first row.
    if (yields_ == 3) source.Record().RedOffset = 2;
  };
  ASSERT_TRUE(Scale(dest, source, 1, 4));
  for (int32_t y = 0; y < 4; ++y) EXPECT_EQ(dest.Row(y, 1), (Bytes{y < 2 ? uint8_t{10} : uint8_t{30}, 20, 30})) << y;
}

TEST_F(FastScale, WhatHappensInAYieldIsSeenWhereARowIsRepeated) {
  const TestImage source(1, 1, ImageFormatG), dest(1, 4, ImageFormatG);
  dest.Record().Yield.YieldTicks = 1;
  onYield_ = [&] { *source.Pixel(0, 0) = static_cast<uint8_t>(yields_); };
  ASSERT_TRUE(Scale(dest, source, 1, 4));
  for (int32_t y = 0; y < 4; ++y) EXPECT_EQ(*dest.Pixel(0, y), y + 1);
}

TEST_F(FastScale, AnImageThatIsTakenAwayInAYieldEndsTheScale) {
  const std::vector<std::function<void(ImageClassData &)>> spoils = {
      [](ImageClassData &record) { record.GetRow = nullptr; },
      [](ImageClassData &record) { record.Width = 2; },
      [](ImageClassData &record) { record.Height = 3; },
  };
  for (size_t spoil = 0; spoil < spoils.size(); ++spoil) {
    for (const bool spoilsSource : {false, true}) {
      for (const int atYield : {1, 2}) {
        TestImage source(3, 4, ImageFormatG), dest(3, 4, ImageFormatG);
        for (int32_t y = 0; y < 4; ++y) source.SetRow(y, {1, 2, 3});
        dest.Record().Yield.YieldTicks = 1;
        yields_ = 0;
        onYield_ = [&] {
          if (yields_ == atYield) spoils[spoil]((spoilsSource ? source : dest).Record());
        };
        // Before the first row a source may become smaller: its size is taken after that.
        const bool isTooLate = spoilsSource && spoil > 0 && atYield == 1;
        EXPECT_EQ(Scale(dest, source, 3, 4), isTooLate) << spoil << " " << spoilsSource << " " << atYield;
        EXPECT_EQ(yields_, isTooLate ? 5 : atYield);
      }
    }
  }
}

// --- memory ---

TEST_F(FastScale, WithoutMemoryForTheColumnsTheBytesAreTheSame) {
  for (const auto &[sourceFormat, destFormat] : {std::pair{ImageFormatRGB, ImageFormatRGB},
                                                 {ImageFormatRGBA, ImageFormatG},
                                                 {ImageFormatRGB, ImageFormatXRGB}}) {
    TestImage source(31, 9, sourceFormat), dest(17, 13, destFormat);
    source.FillNoise(4);
    const auto expected = NaiveResult(dest, source, 17, 13);
    faults::Heap heap;
    heap.FailCallocAt(1);
    EXPECT_TRUE(Result(dest, [&] { return Scale(dest, source, 17, 13); }) == expected);
    EXPECT_EQ(heap.CallocCalls(), 1);
    EXPECT_EQ(heap.Outstanding(), 0u);
  }
}

// In a clip the host program may move red next to the pixels that are read later on.
TEST(FastScaleOfItself, ReadsWhatItHasWrittenInAFileAsInMemory) {
  using scenes::Kind;
  using scenes::StoredImage;
  PluginHost host;
  std::vector<uint8_t> bytes(75);
  std::iota(bytes.begin(), bytes.end(), uint8_t{1});
  std::vector<std::vector<uint8_t>> results;
  for (const Kind kind : {Kind::Block, Kind::File}) {
    StoredImage image(host, kind, 25, 1, ImageFormatRGB);
    image.SetBytes(bytes);
    const auto view = Adopt(ClipImage5(image, 5, 0, 20, 1));
    SetRedOffset(view, 0, 1);
    EXPECT_TRUE(ScalePictureFast(view, view, 15, 1));
    results.push_back(image.Bytes());
    results.back().resize(bytes.size());
    // Pixel 3 takes green of pixel 4, 29, to byte 25, and pixel 6 red of pixel 8, byte 25, to byte 19.
    EXPECT_EQ(results.back()[19], 29) << kind;
  }
  EXPECT_EQ(results[0], results[1]);
}

}  // namespace
}  // namespace zvk::scaling
