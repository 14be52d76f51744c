#include "levels/compare_images.h"

#include <gtest/gtest.h>

#include "levels/invert.h"
#include "tests/levels/in_place_testing.h"

namespace zvk::levels {
namespace {

using namespace in_place_testing;

using Compare = InPlaceTest;

TEST_F(Compare, ImagesOfTheSameShapeGiveTheNumberOfPixels) {
  const TestImage image = NewImage(5, 3, ImageFormatRGB), inverse = NewImage(5, 3, ImageFormatRGB);
  Invert1(inverse);
  EXPECT_EQ(CompareImages(image, inverse), 15);
  EXPECT_EQ(CompareImages(image, image), 15);
  EXPECT_EQ(image.All(), Bytes(45, 7));
  EXPECT_EQ(inverse.All(), Bytes(45, 248));
}

TEST_F(Compare, TheOrderOfTheChannelsAndFillerDoNotCount) {
  const TestImage image = NewImage(5, 3, ImageFormatRGB);
  EXPECT_EQ(CompareImages(image, NewImage(5, 3, ImageFormatBGR)), 15);
  EXPECT_EQ(CompareImages(image, NewImage(5, 3, ImageFormatXRGB)), 15);
  EXPECT_EQ(CompareImages(NewImage(2, 2, ImageFormatG), NewImage(2, 2, ImageFormat3of4)), 4);
  EXPECT_EQ(CompareImages(NewImage(2, 2, ImageFormatCMYK), NewImage(2, 2, ImageFormatKYMCX)), 4);
}

TEST_F(Compare, DifferentShapesGiveMinusOne) {
  const TestImage image = NewImage(5, 3, ImageFormatRGB);
  for (const auto &[width, height, format] : std::vector<std::array<int32_t, 3>>{{4, 3, ImageFormatRGB},
                                                                                 {5, 2, ImageFormatRGB},
                                                                                 {3, 5, ImageFormatRGB},
                                                                                 {5, 3, ImageFormatRGBA},
                                                                                 {5, 3, ImageFormatG},
                                                                                 {5, 3, ImageFormatCMYK},
                                                                                 {5, 3, ImageFormatBuffer}}) {
    const TestImage other = NewImage(width, height, format);
    EXPECT_EQ(CompareImages(image, other), -1) << width << " " << height << " " << format;
    EXPECT_EQ(CompareImages(other, image), -1) << width << " " << height << " " << format;
  }
  EXPECT_EQ(CompareImages(NewImage(5, 3, ImageFormatG), NewImage(5, 3, ImageFormatGray16)), -1);
  EXPECT_EQ(CompareImages(NewImage(5, 3, ImageFormatG), NewImage(5, 3, ImageFormatBuffer)), -1);
}

TEST_F(Compare, ImagesOfNoFamilyGiveMinusOneAfterTheYields) {
  const TestImage image = NewImage(5, 3, ImageFormatBuffer), other = NewImage(5, 3, ImageFormatBuffer);
  Log(image, "self");
  Log(other, "other");
  EXPECT_EQ(CompareImages(image, other), -1);
  EXPECT_EQ(TakeLog(), "yield yield");
}

TEST_F(Compare, NilGivesMinusOne) {
  const TestImage image = NewImage(5, 3, ImageFormatRGB);
  EXPECT_EQ(CompareImages(image, nullptr), -1);
  EXPECT_EQ(CompareImages(nullptr, image), -1);
  EXPECT_EQ(CompareImages(nullptr, nullptr), -1);
}

TEST_F(Compare, UnusableImagesGiveMinusOne) {
  const TestImage image = NewImage(4, 3, ImageFormatRGB);
  ForEachUnusable(host_, ImageFormatRGB, [&](const char *what, REALobject unusable) {
    EXPECT_EQ(CompareImages(image, unusable), -1) << what;
    EXPECT_EQ(CompareImages(unusable, image), -1) << what;
    EXPECT_EQ(CompareImages(unusable, unusable), -1) << what;
  });
}

TEST_F(Compare, ViewsOfNegativeSizeGiveMinusOneAndWithoutWidthZero) {
  const TestImage image = NewImage(4, 3, ImageFormatRGB);
  const TestImage narrow = Clip(image, 6, 0, 1, 1), low = Clip(image, 0, 3, 1, 1), empty = Clip(image, 4, 0, 1, 2);
  EXPECT_EQ(CompareImages(narrow, narrow), -1);
  EXPECT_EQ(low.Record().Height, 0);
  EXPECT_EQ(CompareImages(low, low), -1);
  EXPECT_EQ(empty.Record().Width, 0);
  EXPECT_EQ(CompareImages(empty, Clip(image, 4, 0, 1, 2)), 0);
}

TEST_F(Compare, ImagesWhoseRowsHaveWrappedGiveMinusOneOfEverySize) {
  const TestImage image = NewImage((1 << 30) + 10, 2, ImageFormatRGBA), other = NewImage(10, 2, ImageFormatRGBA);
  const TestImage higher = NewImage((1 << 30) + 10, 3, ImageFormatRGBA);
  Log(image, "self");
  Log(other, "other");
  Log(higher, "higher");
  EXPECT_EQ(CompareImages(image, image), -1);
  EXPECT_EQ(CompareImages(image, other), -1);
  EXPECT_EQ(CompareImages(other, image), -1);
  EXPECT_EQ(CompareImages(image, higher), -1);
  EXPECT_EQ(TakeLog(), "");
}

TEST_F(Compare, TheNumberOfPixelsGoesBeyond32Bits) {
  const TestImage image = NewImage(1, 50000, ImageFormatG);
  image.Record().Width = 100000;  // no pixel is read
  EXPECT_EQ(CompareImages(image, image), 5000000000);
}

TEST_F(Compare, AfterAYieldOnEachAllRowsAreFetchedInTurnTheOtherImageFirst) {
  const TestImage image = NewImage(2, 2, ImageFormatGA), other = NewImage(2, 2, ImageFormatAG);
  Log(image, "self");
  Log(other, "other");
  EXPECT_EQ(CompareImages(image, other), 4);
  EXPECT_EQ(TakeLog(), "yield yield other0 self0 other1 self1");
}

TEST_F(Compare, ARefusalComesBeforeItsYield) {
  const TestImage image = NewImage(2, 2, ImageFormatG), other = NewImage(2, 2, ImageFormatG);
  Log(image, "self");
  Log(other, "other");
  other.Record().GetRow = nullptr;
  EXPECT_EQ(CompareImages(image, other), -1);  // self is given time first
  EXPECT_EQ(TakeLog(), "yield");
  EXPECT_EQ(CompareImages(other, image), -1);
  EXPECT_EQ(TakeLog(), "");
  other.Record().Valid = false;
  EXPECT_EQ(CompareImages(image, other), -1);
  EXPECT_EQ(TakeLog(), "");
}

TEST_F(Compare, AnImageThatIsClosedInAYieldGivesMinusOne) {
  for (const bool closesSelf : {true, false}) {
    const TestImage image = NewImage(2, 2, ImageFormatG), other = NewImage(2, 2, ImageFormatG);
    other.Record().Yield.YieldTicks = 1;
    onYield_ = [&] { ImageDestructor(closesSelf ? image : other); };
    EXPECT_EQ(CompareImages(image, other), -1);
  }
}

}  // namespace
}  // namespace zvk::levels
