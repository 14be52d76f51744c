// The same request gives the same bytes on every host.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/end_to_end/loaded_plugin.h"

namespace standalone {
namespace {

class ScaleOnEveryHost : public LoadedPlugin {
 protected:
  void ExpectScaled(const Value &source, const Grid &pixels, const std::string &format, const std::string &filter,
                    int32_t width, int32_t height) const {
    const int32_t mode = Constant("Scale" + filter);
    const Value result = NewImage(width, height, format);
    ASSERT_TRUE(result.Call("Scale", {source, nullptr, mode, width, height}).AsBoolean());
    EXPECT_EQ(ColoursOf(result.Call("CopyPicture")), NaivelyScaled(pixels, mode, width, height))
        << filter << " into " << format;
  }
};

INSTANTIATE_TEST_SUITE_P(, ScaleOnEveryHost, testing::ValuesIn(AllHosts()), HostName);

TEST_P(ScaleOnEveryHost, APictureThatWasDrawnIntoAnImage) {
  const Grid pixels = ReadExample("rocket.jpg", 250, 20, 160, 120);
  const Value source = ImageOf(pixels, "RGB");
  for (const char *filter : {"Triangle", "Box", "Lanczos3", "Lanczos8", "Mitchell", "Poly3", "Cubic"}) {
    ExpectScaled(source, pixels, "RGB", filter, 61, 47);
    ExpectScaled(source, pixels, "XBGR", filter, 67, 200);
  }
}

// Pictures whose alpha stands first or last are images as they stand; the others are refused, without a word.
TEST_P(ScaleOnEveryHost, AnImageOverAPicture) {
  const Grid pixels = ReadExample("astronaut.png", 180, 60, 101, 97);
  const Value picture = PictureOf(pixels);
  const Value source = Images().New({picture});
  const uint32_t layout = GetParam().options.newPictureLayout.alphaInfo;
  if (GetParam().options.kind == HostKind::Desktop && (layout == 3 || layout == 4)) {
    EXPECT_FALSE(source.Get("Valid").AsBoolean());
    EXPECT_FALSE(NewImage(5, 5, "RGB").Call("Scale", {source, nullptr, 1, 5, 5}).AsBoolean());
    return;
  }
  ExpectScaled(source, pixels, "RGB", "Lanczos3", 40, 150);
  ExpectScaled(source, pixels, "BGRA", "Mitchell", 150, 40);

  // And the other way: scaled straight into the pixels of a picture.
  const Value target = PictureOf(Grid(30, 31));
  const Value dest = Images().New({target});
  ASSERT_TRUE(dest.Call("Scale", {source, nullptr, Constant("ScaleCubic"), 30, 31}).AsBoolean());
  EXPECT_EQ(ColoursOf(target), NaivelyScaled(pixels, Constant("ScaleCubic"), 30, 31));
  EXPECT_EQ(ColoursOf(picture), pixels);
}

TEST_P(ScaleOnEveryHost, GivesTheHostTimeWhileItWorks) {
  // Enough ticks pass between two looks at the clock to make every yield due.
  host_.SetEntry(
      "TickCount", +[]() -> uint32_t {
        static uint32_t ticks = 0;
        return ticks += 5;
      });
  int yields = 0;
  host_.onYield = [&] { ++yields; };
  const Grid pixels = ReadExample("coffee.png", 200, 100, 20, 30);
  const Value source = ImageOf(pixels, "RGB");
  const Value dest = NewImage(10, 15, "RGB");
  ASSERT_TRUE(dest.Call("Scale", {source, nullptr, 1, 10, 15}).AsBoolean());
  EXPECT_EQ(yields, 0) << "without YieldTicks";
  dest.Set("YieldTicks", 5);
  ASSERT_TRUE(dest.Call("Scale", {source, nullptr, 1, 10, 15}).AsBoolean());
  // Once for the image, and after each column of the table, row of the source, row of the table and row of the result.
  EXPECT_EQ(yields, 1 + 10 + 30 + 15 + 15);
  host_.onYield = nullptr;
  EXPECT_EQ(ColoursOf(dest.Call("CopyPicture")), NaivelyScaled(pixels, 1, 10, 15));
}

TEST_P(ScaleOnEveryHost, OnThreadsWithFractionsDroppedBetweenThePasses) {
  const Grid pixels = ReadExample("rocket.jpg", 250, 20, 160, 120);
  const Value source = ImageOf(pixels, "RGB");
  const int32_t mode = Constant("ScaleLanczos3");
  const Grid expected = NaivelyScaled(pixels, mode, 61, 200, 0.0);
  for (const int32_t threads : {-1, 0, 1, 2, 5}) {
    const Value result = NewImage(61, 200, "BGR");
    ASSERT_TRUE(result.Call("ScaleMT", {threads, source, nullptr, mode, 61, 200}).AsBoolean());
    EXPECT_EQ(ColoursOf(result.Call("CopyPicture")), expected) << threads;
  }
}

TEST_P(ScaleOnEveryHost, FastByNearestPixels) {
  const Grid pixels = ReadExample("rocket.jpg", 250, 20, 160, 120);
  const Value source = ImageOf(pixels, "RGB");
  const Value result = NewImage(80, 360, "XRGB");
  ASSERT_TRUE(result.Call("ScaleFast", {source, 1000, 1000}).AsBoolean());
  Grid expected(80, 360);
  for (int32_t y = 0; y < 360; ++y) {
    for (int32_t x = 0; x < 80; ++x) {
      std::copy_n(pixels.bytes.begin() + 3 * (y / 3 * 160 + x * 2), 3, expected.bytes.begin() + 3 * (y * 80 + x));
    }
  }
  EXPECT_EQ(ColoursOf(result.Call("CopyPicture")), expected);
}

TEST_P(ScaleOnEveryHost, RefusesWithoutAnException) {
  const Value source = ImageOf(Grid(4, 4), "RGB");
  const Value dest = NewImage(2, 2, "RGB");
  EXPECT_FALSE(dest.Call("Scale", {nullptr, nullptr, 1, 2, 2}).AsBoolean());
  EXPECT_FALSE(dest.Call("Scale", {source, nullptr, 0, 2, 2}).AsBoolean());
  EXPECT_FALSE(dest.Call("Scale", {source, nullptr, 8, 2, 2}).AsBoolean());
  EXPECT_FALSE(dest.Call("Scale", {source, nullptr, 1, 0, 2}).AsBoolean());
  EXPECT_FALSE(dest.Call("Scale", {source, nullptr, 1, 2, -1}).AsBoolean());
  EXPECT_FALSE(NewImage(2, 2, "CMYK").Call("Scale", {source, nullptr, 1, 2, 2}).AsBoolean());
  EXPECT_FALSE(host_.HasPendingException());
}

}  // namespace
}  // namespace standalone
