#include "filters/stamp_filter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <utility>

#include "filters/box_blur.h"
#include "tests/filters/filter_testing.h"

namespace zvk::filters {
namespace {

using namespace filter_testing;

constexpr uint32_t kBlack = 0x000000, kWhite = 0xFFFFFF;

class StampFilterTest : public FilterTest {
 protected:
  static Image Stamp(const Image &image, const Image &dest, double radius, double threshold, double softness,
                     uint32_t black = kBlack, uint32_t white = kWhite) {
    return Adopt(StampFilter(image, dest, radius, threshold, softness, black, white));
  }
  static Image Blur(const Image &image, double radius) { return Adopt(BoxBlurFilter(image, {}, radius, true, true)); }

  // A gray image of one sample, which a blur of radius 1 leaves as it is.
  Bytes Stamped(uint8_t sample, double threshold, double softness, uint32_t black = kBlack, uint32_t white = kWhite) {
    return PixelsOf(Stamp(New(1, 1, ImageFormatG, {{sample}}), {}, 3, threshold, softness, black, white))[0];
  }
};

// --- the curve ---

TEST_F(StampFilterTest, WithoutSoftnessTheThresholdIsHardAndASampleOnItIsWhite) {
  EXPECT_EQ(Stamped(50, 0.2, 0), (Bytes{0}));  // 0.2 x 255 is 51
  EXPECT_EQ(Stamped(51, 0.2, 0), (Bytes{255}));
  EXPECT_EQ(Stamped(52, 0.2, 0), (Bytes{255}));
}

TEST_F(StampFilterTest, SoftnessGivesASmoothStep) {
  for (int sample = 0; sample < 256; ++sample) {
    const double low = (0.5 - 0.4 * 0.5) * 255, high = (0.5 + 0.4 * 0.5) * 255;
    const double t = (sample - low) / (high - low);
    double f = (t * -2 + 3) * t * t;
    if (sample < low) f = 0;
    if (sample >= high) f = 1;
    EXPECT_EQ(Stamped(static_cast<uint8_t>(sample), 0.5, 0.4), (Bytes{static_cast<uint8_t>(f * 255)})) << sample;
  }
}

TEST_F(StampFilterTest, ANegativeSoftnessIsAStepAtTheUpperEnd) {
  // From 0.7 x 255 = 178.5 down to 76.5: whatever is below the first one is black.
  EXPECT_EQ(Stamped(178, 0.5, -0.4), (Bytes{0}));
  EXPECT_EQ(Stamped(179, 0.5, -0.4), (Bytes{255}));
}

TEST_F(StampFilterTest, NotANumberGives0) {
  EXPECT_EQ(Stamped(100, std::nan(""), 0.1, 0x404040), (Bytes{0}));
  EXPECT_EQ(Stamped(100, 0.5, std::nan(""), 0x404040), (Bytes{0}));
}

// --- colours ---

TEST_F(StampFilterTest, GrayGoesByTheGreenPartsOfTheColours) {
  EXPECT_EQ(Stamped(0, 0.5, 0, 0xFF1122, 0x00EE33), (Bytes{0x11}));
  EXPECT_EQ(Stamped(255, 0.5, 0, 0xFF1122, 0x00EE33), (Bytes{0xEE}));
  EXPECT_EQ(Stamped(255, 0.5, 0, 0x99FF1122, 0x8800EE33), (Bytes{0xEE}));
  // Half way from 200 down to 100, and from 1 to 4, of which 2.5 is truncated; 1 x 255 is the middle of 0 and 510.
  EXPECT_EQ(Stamped(255, 1, 2, 200 << 8, 100 << 8), (Bytes{150}));
  EXPECT_EQ(Stamped(255, 1, 2, 1 << 8, 4 << 8), (Bytes{2}));
}

TEST_F(StampFilterTest, EachColourChannelHasACurveOfItsOwn) {
  const Image image = New(1, 1, ImageFormatBGR, {{255, 0, 255}});  // blue, green, red
  EXPECT_EQ(PixelsOf(Stamp(image, {}, 3, 0.5, 0, 0x102030, 0xA0B0C0)), (Grid{{0xC0, 0x20, 0xA0}}));
}

TEST_F(StampFilterTest, AlphaAndFillerOfTheResultAreZero) {
  EXPECT_EQ(PixelsOf(Stamp(New(1, 1, ImageFormatRGBA, {{255, 255, 255, 255}}), {}, 3, 0.5, 0)),
            (Grid{{255, 255, 255, 0}}));
  EXPECT_EQ(PixelsOf(Stamp(New(1, 1, ImageFormatXRGB, {{9, 255, 255, 255}}), {}, 3, 0.5, 0)),
            (Grid{{0, 255, 255, 255}}));
  EXPECT_EQ(PixelsOf(Stamp(New(1, 1, ImageFormatAG, {{255, 255}}), {}, 3, 0.5, 0)), (Grid{{0, 255}}));
}

TEST_F(StampFilterTest, TheResultForOtherFamiliesIsZero) {
  for (const int32_t format : {ImageFormatCMYK, ImageFormatCMYKA, ImageFormatScaling2, ImageFormatBuffer}) {
    const Image result = Stamp(Noise(3, 2, format), {}, 3, 0, 0, kWhite, kWhite);
    ASSERT_TRUE(result);
    EXPECT_EQ(Record(result).ImageFormat, format);
    EXPECT_EQ(PixelsOf(result), PixelsOf(New(3, 2, format)));
  }
}

// --- stages ---

TEST_F(StampFilterTest, TheImageIsBlurredThreeTimesByAThirdOfTheRadius) {
  const Image image = Noise(40, 30, ImageFormatRGB);
  // Without softness the result tells on which side of the middle each blurred sample lies.
  const Image blurred = Blur(Blur(Blur(image, 2), 2), 2);
  const Image result = Stamp(image, {}, 6.5, 0.5, 0);
  for (int32_t y = 0; y < 30; ++y) {
    for (int32_t i = 0; i < 3 * 40; ++i) EXPECT_EQ(Row(result, y)[i], Row(blurred, y)[i] >= 127.5 ? 255 : 0);
  }
}

TEST_F(StampFilterTest, DestGetsTheFirstBlurAndTheResultIsNew) {
  const Image image = Noise(9, 7, ImageFormatRGB), dest = New(9, 7, ImageFormatRGB);
  const Image result = Stamp(image, dest, 3, 0.5, 0.2);
  EXPECT_NE(result.Handle(), dest.Handle());
  EXPECT_EQ(PixelsOf(dest), PixelsOf(Blur(image, 1)));
  EXPECT_EQ(PixelsOf(result), PixelsOf(Stamp(image, {}, 3, 0.5, 0.2)));
  EXPECT_EQ(result->References(), 1);
  EXPECT_EQ(dest->References(), 1);
  EXPECT_EQ(image->References(), 1);
}

TEST_F(StampFilterTest, TheResultHasTheSizeAndFormatOfTheLastBlur) {
  const Image dest = New(6, 5, ImageFormatBGRA);
  const Image result = Stamp(Noise(3, 2, ImageFormatRGB), dest, 3, 0.5, 0);
  EXPECT_EQ(Record(result).Width, 6);
  EXPECT_EQ(Record(result).Height, 5);
  EXPECT_EQ(Record(result).ImageFormat, ImageFormatBGRA);
}

TEST_F(StampFilterTest, AStageThatFailsGivesNil) {
  EXPECT_FALSE(Stamp(Noise(3, 2, ImageFormatGray16), {}, 3, 0.5, 0));
  EXPECT_FALSE(Stamp(host_.New("PictureZVK"), {}, 3, 0.5, 0));
  EXPECT_EQ(StampFilter(nullptr, nullptr, 3, 0.5, 0, 0, 0), nullptr);
  const Image image = Noise(3, 2, ImageFormatG);
  EXPECT_FALSE(Stamp(image, host_.New("PictureZVK"), 3, 0.5, 0));
  // The first blur goes to a dest of 16 bits, which the second one refuses.
  const Image wide = New(3, 2, ImageFormatGray16);
  EXPECT_FALSE(Stamp(image, wide, 3, 0.5, 0));
  EXPECT_EQ(image->References(), 1);
  EXPECT_EQ(wide->References(), 1);
  ExpectNothingRaised();
}

TEST_F(StampFilterTest, WithoutNewImagesTheResultIsNil) {
  const Image image = Noise(3, 2, ImageFormatG), dest = New(3, 2, ImageFormatG);
  const Grid expected = PixelsOf(Adopt(BoxBlurFilter(image, New(3, 2, ImageFormatG), 1, true, true)));
  host_->Withhold("PluginNewInstance");
  EXPECT_FALSE(Stamp(image, {}, 3, 0.5, 0));
  EXPECT_FALSE(Stamp(image, dest, 3, 0.5, 0));
  EXPECT_EQ(PixelsOf(dest), expected);
  EXPECT_EQ(dest->References(), 1);
}

}  // namespace
}  // namespace zvk::filters
