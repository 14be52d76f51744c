#include "levels/auto_level.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <random>

#include "tests/levels/in_place_testing.h"

namespace zvk::levels {
namespace {

using namespace in_place_testing;

using AutoLevel = InPlaceTest;

// The operation by its definition, over packed RGB pixels.
void NaiveLevel(Bytes &pixels) {
  std::vector<int64_t> histogram(256, 0), cum(256, 0);
  for (size_t i = 0; i < pixels.size(); i += 3) {
    const double lum = pixels[i + 2] * 0.01 + (pixels[i + 1] * 0.813 + pixels[i] * 0.177);
    ++histogram[static_cast<size_t>(std::trunc(lum))];
  }
  int64_t sum = 0;
  for (size_t i = 0; i < 256; ++i) cum[i] = sum += histogram[i];
  const volatile auto total = static_cast<float>(cum[255]);
  const volatile float lowProduct = total * 0.005F, highProduct = total * 0.995F;
  const auto tl = static_cast<int64_t>(lowProduct), th = static_cast<int64_t>(highProduct);
  int32_t low = 0, high = 0;
  for (int32_t i = 0; i < 256; ++i) {
    if (cum[static_cast<size_t>(i)] <= tl) low = i;
    if (cum[static_cast<size_t>(i)] <= th) high = i;
  }
  const double scale = 255.0 / (high - low);
  for (uint8_t &byte : pixels) {
    const int32_t v = byte;
    byte = v < low    ? uint8_t{0}
           : v > high ? uint8_t{255}
           : v == low ? uint8_t{0}
                      : static_cast<uint8_t>(std::trunc((v - low) * scale));
  }
}

TEST_F(AutoLevel, ThreeLevelsSpreadOverTheWholeRange) {
  // Brightness of gray 100, 120, 140; four pixels: the thresholds are trunc(0.02) = 0 and trunc(3.98) = 3. Up to 99 (or
  // just below 100) there are none, up to 139 there are three.
  const TestImage image =
      NewImage(4, 1, ImageFormatRGB, Bytes{100, 100, 100, 120, 120, 120, 120, 120, 120, 140, 140, 140});
  Bytes expected = image.All();
  NaiveLevel(expected);
  EXPECT_TRUE(AutoLevel1(image));
  EXPECT_EQ(image.All(), expected);
  // 140 lies above the high level, and 100 one or two above the low one.
  EXPECT_EQ(expected[11], 255);
  EXPECT_LT(expected[0], 13);
  EXPECT_GT(expected[3], 127);
  EXPECT_LT(expected[3], 140);
}

TEST_F(AutoLevel, GreenIsNearlyAllOfTheBrightness) {
  // 100 green is 81.3, 100 red 17.7, 100 blue 1: Low is 0, as no brightness is without pixels below 1; High is 80.
  const TestImage image = NewImage(3, 1, ImageFormatBGR, Bytes{100, 0, 0, 0, 0, 100, 0, 100, 0});
  EXPECT_TRUE(AutoLevel1(image));
  EXPECT_EQ(image.All(), (Bytes{255, 0, 0, 0, 0, 255, 0, 255, 0}));
  // Between them: a blue of 40 beside the same pixels is 40 x 255 / 80 = 127.5.
  const TestImage other = NewImage(4, 1, ImageFormatRGB, Bytes{0, 0, 40, 0, 0, 100, 100, 0, 0, 0, 100, 0});
  EXPECT_TRUE(AutoLevel1(other));
  EXPECT_EQ(other.All(), (Bytes{0, 0, 127, 0, 0, 255, 255, 0, 0, 0, 255, 0}));
}

TEST_F(AutoLevel, AUniformImageTurnsWhite) {
  // Both levels are just below the brightness, so all samples lie above them.
  const TestImage image = NewImage(10, 10, ImageFormatRGB);
  image.Set(Bytes(300, 90));
  EXPECT_TRUE(AutoLevel1(image));
  EXPECT_EQ(image.All(), Bytes(300, 255));
}

TEST_F(AutoLevel, AUniformImageKeepsWhatLiesBelowItsLevels) {
  // Brightness 0.813 x 100 + 0.177 x 200 + 0.01 x 50 = 117.2: both levels are 116.
  const TestImage image = NewImage(1, 1, ImageFormatRGB, Bytes{200, 100, 50});
  EXPECT_TRUE(AutoLevel1(image));
  EXPECT_EQ(image.All(), (Bytes{255, 0, 0}));
}

TEST_F(AutoLevel, ASampleAtBothLevelsBecomesZero) {
  // Brightness 0.813 x 116 + 0.177 x 130 + 0.01 x 0 = 117.318: both levels are 116, where green is.
  const TestImage image = NewImage(1, 1, ImageFormatRGB, Bytes{130, 116, 0});
  EXPECT_TRUE(AutoLevel1(image));
  EXPECT_EQ(image.All(), (Bytes{255, 0, 0}));
}

TEST_F(AutoLevel, ABlackImageStaysBlack) {
  // No brightness is without pixels, so both levels are 0.
  const TestImage image = NewImage(4, 4, ImageFormatRGB);
  image.Set(Bytes(48, 0));
  EXPECT_TRUE(AutoLevel1(image));
  EXPECT_EQ(image.All(), Bytes(48, 0));
}

TEST_F(AutoLevel, HalfAPercentMayLieBelowTheLowLevel) {
  // 1000 pixels: the thresholds are 5 and 995. Greens: 5 pixels of 10, 990 of 100, 5 of 200. Brightness: 8, 81, 162.
  for (const int32_t dark : {5, 6}) {
    Bytes pixels;
    for (int32_t i = 0; i < 1000; ++i) {
      const uint8_t green = i < dark ? 10 : i < 995 ? 100 : 200;
      pixels.insert(pixels.end(), {0, green, 0});
    }
    const TestImage image = NewImage(1000, 1, ImageFormatRGB, pixels);
    EXPECT_TRUE(AutoLevel1(image));
    // With five dark ones the low level is 80, else 7. The high level is 161 either way.
    EXPECT_EQ(image.All()[1], dark == 5 ? 0 : 4);  // (10 - 7) x 255 / 154 = 4.97
    EXPECT_EQ(image.All()[3 * 500 + 1],
              dark == 5 ? 62 : 153);  // (100 - 80) x 255 / 81 = 62.96, 93 x 255 / 154 = 153.99
    EXPECT_EQ(image.All()[3 * 999 + 1], 255);
  }
}

TEST_F(AutoLevel, TheThresholdsAreRoundedToSinglePrecision) {
  // 132001 x 0.995 is 131340.995, which is 131341 in single precision: as many pixels as are dark. So the high level is
  // 161, just below the bright ones, and not 80, just below the dark ones.
  Bytes pixels;
  for (int32_t i = 0; i < 132001; ++i) pixels.insert(pixels.end(), {0, i < 131341 ? uint8_t{100} : uint8_t{200}, 0});
  const TestImage image = NewImage(132001, 1, ImageFormatRGB, pixels);
  EXPECT_TRUE(AutoLevel1(image));
  EXPECT_EQ(image.All()[1], 62);  // (100 - 80) x 255 / 81 = 62.96
}

TEST_F(AutoLevel, AlphaAndFillerKeepTheirBytes) {
  for (const int32_t format : {ImageFormatRGBA, ImageFormatBGRX, ImageFormatARGB, ImageFormatXBGR}) {
    const TestImage image = NewImage(2, 1, format, Bytes{50, 50, 50, 50, 90, 90, 90, 90});
    EXPECT_TRUE(AutoLevel1(image));
    const size_t other = format == ImageFormatARGB || format == ImageFormatXBGR ? 0 : 3;
    EXPECT_EQ(image.All()[other], 50) << format;
    EXPECT_EQ(image.All()[4 + other], 90) << format;
    EXPECT_EQ(image.All()[5], 255) << format;
  }
}

TEST_F(AutoLevel, TheRectangleAloneIsCountedAndLevelled) {
  const TestImage image = NewImage(3, 2, ImageFormatRGB);
  Bytes pixels(18, 255);
  for (size_t i = 3; i < 9; ++i) pixels[i] = i < 6 ? 10 : 20;
  image.Set(pixels);
  Bytes part(pixels.begin() + 3, pixels.begin() + 9);
  NaiveLevel(part);
  EXPECT_TRUE(AutoLevel5(image, 3, 1, -2, -1));
  std::copy(part.begin(), part.end(), pixels.begin() + 3);
  EXPECT_EQ(image.All(), pixels);
}

TEST_F(AutoLevel, OtherFamiliesAndEmptyRectanglesAreRefused) {
  for (const int32_t format : {ImageFormatG, ImageFormatGA, ImageFormatGray16, ImageFormatCMYK, ImageFormatBuffer}) {
    const TestImage image = NewImage(2, 2, format);
    const Bytes before = image.All();
    Log(image);
    EXPECT_FALSE(AutoLevel1(image));
    EXPECT_EQ(image.All(), before);
    EXPECT_EQ(TakeLog(), "");
  }
  const TestImage image = NewImage(20, 20, ImageFormatRGB);
  Log(image);
  EXPECT_FALSE(AutoLevel5(image, 0, 0, 0, 10));
  EXPECT_FALSE(AutoLevel5(image, 0, 0, 10, 0));
  EXPECT_FALSE(AutoLevel5(image, 20, 0, 10, 10));
  EXPECT_FALSE(AutoLevel5(image, 0, 25, 10, 10));
  EXPECT_FALSE(AutoLevel5(image, 0, 0, INT_MIN, 10));
  EXPECT_EQ(image.All(), Bytes(1200, 7));
  EXPECT_EQ(TakeLog(), "");
  image.Record().BitsPerComponent = 16;
  EXPECT_FALSE(AutoLevel1(image));
}

TEST_F(AutoLevel, UnusableImagesAreRefused) {
  ForEachUnusable(host_, ImageFormatRGB, [](const char *what, REALobject image) {
    EXPECT_FALSE(AutoLevel1(image)) << what;
    EXPECT_FALSE(AutoLevel5(image, 0, 0, 1, 1)) << what;
  });
  EXPECT_FALSE(AutoLevel1(nullptr));
  EXPECT_FALSE(AutoLevel5(nullptr, 0, 0, 1, 1));
}

TEST_F(AutoLevel, TheFirstPassYieldsBeforeAndAfterEachRowAndTheSecondDoesNot) {
  const TestImage image = NewImage(2, 4, ImageFormatRGB);
  Log(image);
  EXPECT_TRUE(AutoLevel5(image, 0, 1, 2, 2));
  EXPECT_EQ(TakeLog(), "yield 1 yield 2 yield 1 2");
}

TEST_F(AutoLevel, AnImageThatIsClosedInAYieldIsRefused) {
  const TestImage image = NewImage(2, 4, ImageFormatRGB);
  image.Record().Yield.YieldTicks = 1;
  int32_t yields = 0;
  onYield_ = [&] {
    if (++yields == 3) ImageDestructor(image);
  };
  EXPECT_FALSE(AutoLevel1(image));
  EXPECT_EQ(image.All(), Bytes(24, 7));
}

TEST_F(AutoLevel, AViewOfTheColoursAloneAndAClipAreLevelled) {
  const TestImage image = NewImage(2, 1, ImageFormatARGB, Bytes{1, 10, 10, 10, 2, 20, 20, 20});
  Bytes colours{10, 10, 10, 20, 20, 20};
  NaiveLevel(colours);
  EXPECT_TRUE(AutoLevel1(View(image, RGBChannel(image))));
  EXPECT_EQ(image.All(), (Bytes{1, colours[0], colours[1], colours[2], 2, colours[3], colours[4], colours[5]}));
  image.Set(Bytes{1, 10, 10, 10, 2, 20, 20, 20});
  EXPECT_TRUE(AutoLevel1(Clip(image, 1, 0, 1, 1)));
  EXPECT_EQ(image.All(), (Bytes{1, 10, 10, 10, 2, 255, 255, 255}));
}

TEST_F(AutoLevel, ManyPixelsOfAnyContrastAreLevelledByTheDefinition) {
  std::minstd_rand random(5);
  for (int32_t run = 0; run < 60; ++run) {
    const uint32_t floor = random() % 200, range = 1 + random() % (256 - floor);
    const auto width = static_cast<int32_t>(1 + random() % 2000);
    Bytes pixels(static_cast<size_t>(width) * 6);
    for (uint8_t &byte : pixels) byte = static_cast<uint8_t>(floor + random() % range);
    // Grays have a brightness that is a whole number but for the last bit.
    if (run % 3 == 0) {
      for (size_t i = 0; i < pixels.size(); i += 3) pixels[i + 1] = pixels[i + 2] = pixels[i];
    }
    const TestImage image = NewImage(width, 2, ImageFormatRGB, pixels);
    NaiveLevel(pixels);
    EXPECT_TRUE(AutoLevel1(image));
    ASSERT_EQ(image.All(), pixels) << run;
  }
}

TEST_F(AutoLevel, EveryBrightnessIsCountedByItsSumInDoublePrecision) {
  // One pixel of each colour on a grid, beside 200 black and 200 white ones less, so that every sum matters in turn.
  for (int32_t blue = 0; blue < 256; blue += 15) {
    Bytes pixels;
    for (int32_t green = 0; green < 256; green += 3) {
      for (int32_t red = 0; red < 256; red += 5) {
        pixels.insert(pixels.end(),
                      {static_cast<uint8_t>(red), static_cast<uint8_t>(green), static_cast<uint8_t>(blue)});
      }
    }
    const TestImage image = NewImage(static_cast<int32_t>(pixels.size() / 3), 1, ImageFormatRGB, pixels);
    NaiveLevel(pixels);
    EXPECT_TRUE(AutoLevel1(image));
    ASSERT_EQ(image.All(), pixels) << blue;
  }
}

}  // namespace
}  // namespace zvk::levels
