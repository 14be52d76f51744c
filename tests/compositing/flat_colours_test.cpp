#include "compositing/flat_colours.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "compositing/combine.h"
#include "image/image_formats.h"
#include "image/views.h"
#include "tests/naive/combine.h"
#include "tests/scenes/row_log.h"
#include "tests/scenes/stored_image.h"
#include "tests/scenes/yields.h"

namespace zvk::compositing {
namespace {

using scenes::Kind;
using scenes::StoredImage;
using scenes::YieldAlways;
using scenes::Yields;
using Bytes = std::vector<uint8_t>;

constexpr int32_t G = ImageFormatG, GA = ImageFormatGA, RGB = ImageFormatRGB, RGBA = ImageFormatRGBA;

class FlatColours : public testing::Test {
 protected:
  FlatColours() : host_({.fenced = true}) {}

  using Blend = decltype(BlendFlatForeground);

  Bytes Blended(Blend *blend, bool premultiplied, int32_t destFormat, const Bytes &d, int32_t imageFormat,
                const Bytes &s, int32_t colour) {
    StoredImage dest(host_, Kind::Block, 1, 1, destFormat), image(host_, Kind::Block, 1, 1, imageFormat);
    dest.SetBytes(d);
    image.SetBytes(s);
    blend(dest.Record(), image.Record(), premultiplied, {0, 0, 1, 1, 0, 0}, colour);
    EXPECT_EQ(image.Bytes(), s);
    return dest.Bytes();
  }
  Bytes Foreground(bool premultiplied, int32_t destFormat, const Bytes &d, int32_t imageFormat, const Bytes &s,
                   int32_t colour) {
    return Blended(BlendFlatForeground, premultiplied, destFormat, d, imageFormat, s, colour);
  }
  Bytes ThroughMask(bool premultiplied, int32_t destFormat, const Bytes &d, int32_t imageFormat, const Bytes &s,
                    int32_t colour) {
    return Blended(BlendThroughFlatMask, premultiplied, destFormat, d, imageFormat, s, colour);
  }

  PluginHost host_;
};

// --- the colour through the image ---

TEST_F(FlatColours, AColourIsLaidOnWhereTheImageIsBlack) {
  EXPECT_EQ(Foreground(false, RGB, {1, 2, 3}, G, {0}, 0x0A141E), (Bytes{10, 20, 30}));
  EXPECT_EQ(Foreground(false, RGB, {1, 2, 3}, G, {255}, 0x0A141E), (Bytes{1, 2, 3}));
  // (127 x 200 + 128 x 100) / 255
  EXPECT_EQ(Foreground(false, RGB, {100, 100, 100}, G, {128}, 0xC8C8C8), (Bytes{149, 149, 149}));
}

TEST_F(FlatColours, AColourAddedToColoursWraps) {
  EXPECT_EQ(Foreground(true, RGB, {200, 200, 200}, G, {255}, 0x646464), (Bytes{44, 44, 44}));
  EXPECT_EQ(Foreground(true, RGB, {200, 100, 50}, G, {128}, 0x010203), (Bytes{101, 52, 28}));
}

TEST_F(FlatColours, TheCoverageOfColoursIsTheirMean) {
  // (255 + 0 + 0) / 3 = 85, whose Luma would be 76.
  EXPECT_EQ(Foreground(true, RGB, {255, 255, 255}, RGB, {255, 0, 0}, 0), (Bytes{85, 85, 85}));
  EXPECT_EQ(Foreground(true, RGB, {255, 255, 255}, RGB, {1, 1, 0}, 0), (Bytes{0, 0, 0}));
  EXPECT_EQ(Foreground(true, G, {255}, ImageFormatXBGR, {9, 255, 1, 0}, 0), (Bytes{85}));
}

TEST_F(FlatColours, AGrayDestinationTakesTheGrayOfTheBlendedColour) {
  // (127 x C + 128 x 100) / 255 is 177 for 255 and 50 for 0: (77 x 177 + 151 x 50 + 28 x 50) / 256.
  EXPECT_EQ(Foreground(false, G, {100}, G, {128}, 0xFF0000), (Bytes{(77 * 177 + 179 * 50) / 256}));
  // t = 50: (77 x 305 + 151 x 50 + 28 x 50) / 256.
  EXPECT_EQ(Foreground(true, G, {100}, G, {128}, 0xFF0000), (Bytes{(77 * 305 + 179 * 50) / 256}));
  EXPECT_EQ(Foreground(true, G, {255}, G, {255}, 0xFFFFFF), (Bytes{254}));  // 510 wraps
}

TEST_F(FlatColours, InGrayTheGrayOfTheSumIsTheSumWithTheGrayForEveryColour) {
  // All sums of a scaled sample with every gray that a colour can have.
  StoredImage dest(host_, Kind::Memory, 256, 1, G), image(host_, Kind::Memory, 256, 1, G);
  for (int32_t red = 0; red < 256; red += 5) {
    for (int32_t green = 0; green < 256; green += 3) {
      const int32_t blue = (red * 7 + green * 11) % 256;
      for (int32_t x = 0; x < 256; ++x) {
        dest.Record().Buffer[x] = static_cast<uint8_t>(x);
        image.Record().Buffer[x] = 255;
      }
      BlendFlatForeground(dest.Record(), image.Record(), true, {0, 0, 256, 1, 0, 0}, red << 16 | green << 8 | blue);
      for (int32_t t = 0; t < 256; ++t) {
        const int32_t expected = (77 * (t + red) + 151 * (t + green) + 28 * (t + blue)) >> 8;
        ASSERT_EQ(dest.Record().Buffer[t], static_cast<uint8_t>(expected));
      }
    }
  }
}

// --- the image through the colour ---

TEST_F(FlatColours, AnImageIsLaidOnWhereTheColourIsBlack) {
  EXPECT_EQ(ThroughMask(false, RGB, {1, 2, 3}, RGB, {10, 20, 30}, 0xFF0000), (Bytes{1, 20, 30}));
  EXPECT_EQ(ThroughMask(false, RGB, {1, 2, 3}, G, {10}, 0x00FF00), (Bytes{10, 2, 10}));
  EXPECT_EQ(ThroughMask(false, RGB, {100, 100, 100}, RGB, {200, 200, 200}, 0x808080), (Bytes{149, 149, 149}));
}

TEST_F(FlatColours, AnImageAddedToColoursWraps) {
  EXPECT_EQ(ThroughMask(true, RGB, {200, 200, 200}, RGB, {100, 50, 7}, 0xFF8000), (Bytes{44, 150, 7}));
}

TEST_F(FlatColours, AGrayDestinationTakesTheGrayOfBoth) {
  // The colour's gray is 76, that of the image 150.
  EXPECT_EQ(ThroughMask(false, G, {100}, RGB, {0, 255, 0}, 0xFF0000), (Bytes{(100 * 76 + 150 * 179) / 255}));
  EXPECT_EQ(ThroughMask(true, G, {100}, RGB, {0, 255, 0}, 0xFF0000), (Bytes{100 * 76 / 255 + 150}));
  EXPECT_EQ(ThroughMask(true, G, {255}, G, {9}, 0xFFFFFF), (Bytes{8}));
}

TEST_F(FlatColours, TheTopByteOfAColourPlaysNoPart) {
  EXPECT_EQ(Foreground(false, RGB, {1, 2, 3}, G, {0}, 0x7F0A141E), (Bytes{10, 20, 30}));
  EXPECT_EQ(ThroughMask(false, RGB, {1, 2, 3}, G, {10}, 0x7F00FF00), (Bytes{10, 2, 10}));
}

// --- both ---

TEST_F(FlatColours, AlphaIsNeitherReadNorWritten) {
  EXPECT_EQ(Foreground(false, RGBA, {1, 2, 3, 77}, GA, {0, 255}, 0x0A141E), (Bytes{10, 20, 30, 77}));
  EXPECT_EQ(Foreground(true, ImageFormatABGR, {77, 255, 255, 255}, RGBA, {255, 0, 0, 200}, 0), (Bytes{77, 85, 85, 85}));
  EXPECT_EQ(ThroughMask(false, GA, {1, 77}, RGBA, {10, 10, 10, 200}, 0), (Bytes{10, 77}));
  EXPECT_EQ(ThroughMask(true, RGBA, {0, 0, 0, 77}, GA, {10, 200}, 0), (Bytes{10, 10, 10, 77}));
}

TEST_F(FlatColours, EveryPairOfFormatsGivesWhatTheTablesSay) {
  scenes::Random random(5);
  for (int32_t destFormat = 1; destFormat <= 41; ++destFormat) {
    if (destFormat == 14) continue;
    for (const Kind kind : {Kind::Block, Kind::File}) {
      StoredImage dest(host_, kind, 43, 4, destFormat, 2);
      for (int32_t imageFormat = 1; imageFormat <= 41; ++imageFormat) {
        if (imageFormat == 14) continue;
        StoredImage image(host_, Kind::Block, 41, 3, imageFormat, 1);
        image.Fill(random);
        for (int which = 0; which < 4; ++which) {
          const bool premultiplied = which % 2 == 1, imageIsMask = which >= 2;
          const auto colour = static_cast<int32_t>(random.Bits() & 0x7FFFFFFF);
          dest.Fill(random);
          const Bytes before = dest.Bytes();
          naive::combining::BlendFlatNaively(dest.Record(), image.Record(), premultiplied, imageIsMask, colour,
                                             {4, 1, 2, 0, 39, 3});
          const Bytes expected = dest.Bytes();
          dest.SetBytes(before);
          (imageIsMask ? BlendFlatForeground : BlendThroughFlatMask)(dest.Record(), image.Record(), premultiplied,
                                                                     {4, 1, 39, 3, 2, 0}, colour);
          ASSERT_EQ(dest.Bytes(), expected) << destFormat << ", " << imageFormat << ", " << which;
        }
      }
    }
  }
}

TEST_F(FlatColours, RowsLongerThanATileGiveWhatTheTablesSay) {
  for (const int32_t destFormat : {G, RGB, RGBA}) {
    StoredImage dest(host_, Kind::Block, 2500, 1, destFormat), image(host_, Kind::Block, 2500, 1, RGBA);
    image.Fill(7);
    for (int which = 0; which < 4; ++which) {
      dest.Fill(8);
      const Bytes before = dest.Bytes();
      naive::combining::BlendFlatNaively(dest.Record(), image.Record(), which % 2 == 1, which >= 2, 0x123456,
                                         {0, 0, 0, 0, 2500, 1});
      const Bytes expected = dest.Bytes();
      dest.SetBytes(before);
      (which >= 2 ? BlendFlatForeground : BlendThroughFlatMask)(dest.Record(), image.Record(), which % 2 == 1,
                                                                {0, 0, 2500, 1, 0, 0}, 0x123456);
      ASSERT_EQ(dest.Bytes(), expected) << destFormat << ", " << which;
    }
  }
}

TEST_F(FlatColours, ViewsOfOneImageGoPixelAfterPixelInFilesToo) {
  for (const Kind kind : {Kind::Block, Kind::File}) {
    StoredImage image(host_, kind, 200, 1, G);
    image.Fill(3);
    image.Record().GetRow(&image.Record(), 0)[0] = 8;
    const auto left = Adopt(ClipImage5(image, 0, 0, 199, 1)), right = Adopt(ClipImage5(image, 1, 0, 199, 1));
    BlendThroughFlatMask(*RecordOf(right), *RecordOf(left), false, {0, 0, 199, 1, 0, 0}, 0);
    Bytes bytes = image.Bytes();
    bytes.resize(200);
    EXPECT_EQ(bytes, Bytes(200, 8)) << kind;
  }
}

TEST_F(FlatColours, RowsAreAskedForInTurnAndDestYieldsAfterEach) {
  StoredImage dest(host_, Kind::Block, 4, 4, RGB), image(host_, Kind::Block, 4, 4, G);
  YieldAlways(host_, dest);
  for (const auto blend : {BlendFlatForeground, BlendThroughFlatMask}) {
    const int64_t yields = Yields(host_);
    scenes::RowLog log;
    log.Watch(dest.Record(), "d");
    log.Watch(image.Record(), "s");
    blend(dest.Record(), image.Record(), false, {0, 0, 4, 2, 0, 2}, 0);
    EXPECT_EQ(log.Take(), "d0 s2 d1 s3");
    EXPECT_EQ(Yields(host_) - yields, 2);
  }
}

}  // namespace
}  // namespace zvk::compositing
