#include "filters/unsharp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "tests/filters/filter_testing.h"

namespace zvk::filters {
namespace {

using namespace filter_testing;

class UnsharpTest : public FilterTest {
 protected:
  Image Gray(const Bytes &row) { return New(static_cast<int32_t>(row.size()), 1, ImageFormatG, {row}); }

  // What becomes of one gray sample.
  int Sharpened(uint8_t sample, uint8_t blurred, double amount, int32_t threshold) {
    const Image image = Gray({sample});
    EXPECT_TRUE(unsharpFilter(image, Gray({blurred}), amount, threshold));
    return PixelsOf(image)[0][0];
  }

  // How often the host gets time in a call while both images ask for it, or only one of them.
  int Yields(const Image &image, const Image &blurred, const std::vector<Image> &asking) {
    standalone::HostClock &clock = host_->SetClock({.ticks = ticks_ += 100});
    int yields = 0;
    host_->onYield = [&] {
      ++yields;
      clock.ticks = ticks_ += 100;
    };
    for (const Image &each : asking) Record(each).Yield.YieldTicks = 1;
    unsharpFilter(image, blurred, 1, 0);
    for (const Image &each : asking) Record(each).Yield.YieldTicks = 0;
    host_->onYield = nullptr;
    return yields;
  }

  void ExpectRefused(const Image &image, const Image &blurred) {
    const Grid before = image && Record(image).GetRow != nullptr ? PixelsOf(image) : Grid();
    EXPECT_FALSE(unsharpFilter(image, blurred, 1, 0));
    EXPECT_EQ(image && Record(image).GetRow != nullptr ? PixelsOf(image) : Grid(), before);
    ExpectNothingRaised();
  }

  uint32_t ticks_ = 0;
};

// --- the table ---

TEST_F(UnsharpTest, TheDifferenceFromTheBlurredSampleGrowsBy4TimesTheAmount) {
  EXPECT_EQ(Sharpened(110, 100, 0.25, 0), 120);
  EXPECT_EQ(Sharpened(110, 100, 1, 0), 150);
  EXPECT_EQ(Sharpened(95, 100, 1, 0), 75);
  EXPECT_EQ(Sharpened(110, 100, -0.25, 0), 100);  // the blurred sample itself
}

TEST_F(UnsharpTest, WhatIsBeyondASampleIsCut) {
  EXPECT_EQ(Sharpened(200, 100, 1, 0), 255);
  EXPECT_EQ(Sharpened(100, 200, 1, 0), 0);
}

TEST_F(UnsharpTest, TheResultIsTruncatedTowardZero) {
  EXPECT_EQ(Sharpened(103, 100, 0.05, 0), 103);  // 3 x 1.2 + 100 = 103.6
  EXPECT_EQ(Sharpened(97, 100, 0.05, 0), 96);    // 96.4
}

TEST_F(UnsharpTest, AmountZeroChangesNothing) {
  for (int blurred = 0; blurred < 256; ++blurred) {
    const Image image = Ramp(ImageFormatG);
    EXPECT_TRUE(unsharpFilter(image, Gray(Bytes(256, static_cast<uint8_t>(blurred))), 0, 0));
    EXPECT_EQ(PixelsOf(image), PixelsOf(Ramp(ImageFormatG)));
  }
}

TEST_F(UnsharpTest, DifferencesBelowTheThresholdStay) {
  EXPECT_EQ(Sharpened(104, 100, 1, 5), 104);
  EXPECT_EQ(Sharpened(105, 100, 1, 5), 125);
  EXPECT_EQ(Sharpened(96, 100, 1, 5), 96);
  EXPECT_EQ(Sharpened(95, 100, 1, 5), 75);
  EXPECT_EQ(Sharpened(100, 100, 1, -7), 100);
}

TEST_F(UnsharpTest, AThresholdNoDifferenceReachesLeavesEverythingAndIsTrue) {
  const Image image = Noise(20, 10, ImageFormatRGBA);
  const Grid before = PixelsOf(image);
  EXPECT_TRUE(unsharpFilter(image, Noise(20, 10, ImageFormatRGBA, 2), 5, 300));
  EXPECT_EQ(PixelsOf(image), before);
}

// Beyond 32 bits, upwards as well, a number counts as the most negative one.
TEST_F(UnsharpTest, WhatDoesNotFitAnIntegerGives0) {
  EXPECT_EQ(Sharpened(110, 100, 1e6, 0), 255);
  EXPECT_EQ(Sharpened(110, 100, 1e12, 0), 0);
  EXPECT_EQ(Sharpened(90, 100, 1e12, 0), 0);
  EXPECT_EQ(Sharpened(100, 100, 1e12, 0), 100);
  EXPECT_EQ(Sharpened(100, 100, std::nan(""), 0), 0);
  EXPECT_EQ(Sharpened(100, 100, std::numeric_limits<double>::infinity(), 0), 0);
  EXPECT_EQ(Sharpened(100, 100, std::nan(""), 1), 100);
}

// --- channels ---

TEST_F(UnsharpTest, ChannelsGoByTheOffsetsOfEachImage) {
  const Image image = New(2, 1, ImageFormatRGB, {{110, 50, 60, 90, 50, 60}});
  const Image whole = New(2, 1, ImageFormatRGBX, {{100, 50, 60, 1, 100, 50, 60, 2}});
  const Image blurred = Adopt(RGBChannel(whole));  // the number of RGB, and pixels of 4 bytes
  EXPECT_TRUE(unsharpFilter(image, blurred, 0.25, 0));
  EXPECT_EQ(PixelsOf(image), (Grid{{120, 50, 60, 80, 50, 60}}));
}

TEST_F(UnsharpTest, AlphaIsSharpenedAsAChannel) {
  const Image image = New(1, 1, ImageFormatARGB, {{110, 1, 2, 3}});
  EXPECT_TRUE(unsharpFilter(image, New(1, 1, ImageFormatARGB, {{100, 1, 2, 3}}), 0.25, 0));
  EXPECT_EQ(PixelsOf(image), (Grid{{120, 1, 2, 3}}));
}

TEST_F(UnsharpTest, FillerStays) {
  const Image image = New(1, 1, ImageFormatXRGB, {{110, 110, 2, 3}});
  EXPECT_TRUE(unsharpFilter(image, New(1, 1, ImageFormatXRGB, {{100, 100, 2, 3}}), 0.25, 0));
  EXPECT_EQ(PixelsOf(image), (Grid{{110, 120, 2, 3}}));
}

TEST_F(UnsharpTest, OfCMYKWithoutAlphaTheFirstByteIsSharpenedOnceMore) {
  const auto sharpened = [&](int32_t format, const Bytes &pixel, const Bytes &blurred) {
    const Image image = New(1, 1, format, {pixel});
    EXPECT_TRUE(unsharpFilter(image, New(1, 1, format, {blurred}), 0.25, 0));
    return PixelsOf(image)[0];
  };
  // 10 beyond 100 becomes 20, and then 40.
  EXPECT_EQ(sharpened(ImageFormatCMYK, {110, 110, 110, 110}, {100, 100, 100, 100}), (Bytes{140, 120, 120, 120}));
  EXPECT_EQ(sharpened(ImageFormatKYMC, {110, 110, 110, 110}, {100, 100, 100, 100}), (Bytes{140, 120, 120, 120}));
  EXPECT_EQ(sharpened(ImageFormatCMYKX, {110, 110, 110, 110, 110}, {100, 100, 100, 100, 100}),
            (Bytes{140, 120, 120, 120, 110}));
  // Filler is what lies there.
  EXPECT_EQ(sharpened(ImageFormatXCMYK, {110, 110, 110, 110, 110}, {100, 100, 100, 100, 100}),
            (Bytes{120, 120, 120, 120, 120}));
}

TEST_F(UnsharpTest, OfCMYKWithAlphaEachChannelIsSharpenedOnce) {
  for (const int32_t format : {ImageFormatCMYKA, ImageFormatACMYK, ImageFormatKYMCA, ImageFormatAKYMC}) {
    const Image image = New(1, 1, format, {{110, 110, 110, 110, 110}});
    EXPECT_TRUE(unsharpFilter(image, New(1, 1, format, {{100, 100, 100, 100, 100}}), 0.25, 0));
    EXPECT_EQ(PixelsOf(image), (Grid{{120, 120, 120, 120, 120}}));
  }
}

TEST_F(UnsharpTest, AnImageOfNoFamilyIsLeftAloneAndTheResultIsTrue) {
  const Image image = New(2, 1, ImageFormatScaling1, {{110, 110}});
  EXPECT_TRUE(unsharpFilter(image, New(2, 1, ImageFormatScaling1, {{100, 100}}), 1, 0));
  EXPECT_EQ(PixelsOf(image), (Grid{{110, 110}}));
}

TEST_F(UnsharpTest, AnImageIsItsOwnBlurredCopyWithoutEffect) {
  const Image image = Noise(20, 10, ImageFormatCMYK);
  const Grid before = PixelsOf(image);
  EXPECT_TRUE(unsharpFilter(image, image, 3, 0));
  EXPECT_EQ(PixelsOf(image), before);
}

// --- what is refused ---

TEST_F(UnsharpTest, ImagesThatDifferAreRefused) {
  const Image image = Noise(4, 3, ImageFormatRGB);
  ExpectRefused(image, {});
  ExpectRefused(image, Noise(5, 3, ImageFormatRGB));
  ExpectRefused(image, Noise(4, 2, ImageFormatRGB));
  ExpectRefused(image, Noise(4, 3, ImageFormatBGR));
  ExpectRefused(image, Noise(4, 3, ImageFormatRGBX));
  ExpectRefused(image, Noise(4, 3, ImageFormatG));
}

TEST_F(UnsharpTest, ImagesOf16BitsAreRefused) {
  ExpectRefused(Noise(4, 3, ImageFormatGray16), Noise(4, 3, ImageFormatGray16));
}

TEST_F(UnsharpTest, ImagesThatAreNotUsableAreRefused) {
  const Image image = Noise(4, 3, ImageFormatRGB);
  const Image notValid = Noise(4, 3, ImageFormatRGB);
  Record(notValid).Valid = false;
  ExpectRefused(image, notValid);
  ExpectRefused(notValid, image);
  const Image closed = Noise(4, 3, ImageFormatRGB);
  ImageDestructor(closed);
  ExpectRefused(image, closed);
  ExpectRefused(closed, image);
  ExpectRefused(image, host_.New("PictureZVK"));
  const auto below = [&](const Image &of) { return Adopt(ClipImage5(of, 0, 3, 4, 3)); };  // of height 0
  ExpectRefused(below(image), below(image));
  EXPECT_FALSE(unsharpFilter(nullptr, image, 1, 0));
}

// --- time for the host ---

TEST_F(UnsharpTest, EachImageYieldsOnce) {
  const Image image = Noise(4, 3, ImageFormatRGB), blurred = Noise(4, 3, ImageFormatRGB);
  EXPECT_EQ(Yields(image, blurred, {image}), 1);
  EXPECT_EQ(Yields(image, blurred, {blurred}), 1);
  EXPECT_EQ(Yields(image, blurred, {image, blurred}), 2);
}

// Whether the blurred image has rows is asked last, after a yield on the image.
TEST_F(UnsharpTest, WhatIsRefusedDoesNotYieldUnlessOnlyTheBlurredImageHasNoRows) {
  const Image image = Noise(4, 3, ImageFormatRGB), closed = Noise(4, 3, ImageFormatRGB);
  ImageDestructor(closed);
  const auto yields = [&](const Image &of, const Image &by) { return Yields(of, by, {of, by}); };
  EXPECT_EQ(yields(image, closed), 1);
  EXPECT_EQ(yields(closed, image), 0);
  EXPECT_EQ(yields(image, Noise(4, 3, ImageFormatBGR)), 0);
  EXPECT_EQ(yields(Noise(4, 3, ImageFormatGray16), Noise(4, 3, ImageFormatGray16)), 0);
  const Image notValid = Noise(4, 3, ImageFormatRGB);
  Record(notValid).Valid = false;
  EXPECT_EQ(yields(image, notValid), 0);
}

TEST_F(UnsharpTest, AnImageThatIsClosedInAYieldIsRefused) {
  standalone::HostClock &clock = host_->SetClock({});
  for (const bool closesImage : {true, false}) {
    const Image image = Noise(4, 3, ImageFormatRGB), blurred = Noise(4, 3, ImageFormatRGB);
    Record(blurred).Yield.YieldTicks = 1;
    clock.ticks += 100;
    host_->onYield = [&] { ImageDestructor(closesImage ? image : blurred); };
    EXPECT_FALSE(unsharpFilter(image, blurred, 1, 0));
  }
  host_->onYield = nullptr;
}

// --- rows of mapped images ---

TEST_F(UnsharpTest, TheRowOfTheBlurredImageIsFetchedFirst) {
  const auto sharpen = [](REALobject blurred, REALobject image) {
    EXPECT_TRUE(unsharpFilter(image, blurred, 1, 0));
    REALLockObject(image);
    return image;
  };
  EXPECT_EQ(FetchesFor(host_, 2, 3, sharpen), "s0 d0 s1 d1 s2 d2");
}

TEST_F(UnsharpTest, ViewsOfAFileAreSharpenedPixelAfterPixelThroughTheirMappings) {
  for (const int32_t format : {ImageFormatG, ImageFormatRGB, ImageFormatARGB, ImageFormatCMYKA}) {
    const Image file = NoiseInFile(200, 1, format);
    const auto pixelSize = static_cast<size_t>(Record(file).PixelSize);
    // Every pixel is sharpened by the one to its left as that has become.
    Bytes expected = PixelsOf(file)[0];
    for (size_t i = pixelSize; i < expected.size(); ++i) {
      const int blurred = expected[i - pixelSize];
      expected[i] = static_cast<uint8_t>(std::clamp((expected[i] - blurred) * 2 + blurred, 0, 255));
    }
    const Image left = Adopt(ClipImage5(file, 0, 0, 199, 1)), right = Adopt(ClipImage5(file, 1, 0, 199, 1));
    EXPECT_TRUE(unsharpFilter(right, left, 0.25, 0));
    EXPECT_EQ(PixelsOf(file), Grid{expected}) << format;
  }
}

}  // namespace
}  // namespace zvk::filters
