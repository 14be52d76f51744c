#include "pixels/layouts.h"

#include <gtest/gtest.h>

#include <vector>

#include "image/image_formats.h"

namespace zvk::pixels {
namespace {

using enum ColourFamily;

ImageClassData Record(int32_t format) {
  ImageClassData record{};
  InitImageClassData(&record, 1, 1, format);
  return record;
}

// What a visitor is called with.
struct Visit {
  ColourFamily family;
  bool hasAlpha;
  std::vector<int32_t> offsets;

  bool operator==(const Visit &) const = default;
};

template <ColourFamily... kOrder>
std::vector<Visit> Visits(const ImageClassData &image) {
  std::vector<Visit> visits;
  const bool visited = VisitLayout<kOrder...>(image, [&]<class Layout>(Layout) {
    const auto offsets = Layout::OffsetsOf(image);
    EXPECT_EQ(offsets.size(), Layout::channelCount);
    EXPECT_EQ(Layout::channelCount, Layout::colourCount + (Layout::hasAlpha ? 1 : 0));
    visits.push_back({Layout::family, Layout::hasAlpha, {offsets.begin(), offsets.end()}});
  });
  EXPECT_EQ(visited, !visits.empty());
  return visits;
}

TEST(Layouts, ColoursComeInTheirOrderAndThenAlpha) {
  EXPECT_EQ((Visits<Gray, RGB, CMYK>(Record(ImageFormatG))), (std::vector<Visit>{{Gray, false, {0}}}));
  EXPECT_EQ((Visits<Gray, RGB, CMYK>(Record(ImageFormatAG))), (std::vector<Visit>{{Gray, true, {1, 0}}}));
  EXPECT_EQ((Visits<Gray, RGB, CMYK>(Record(ImageFormatXBGR))), (std::vector<Visit>{{RGB, false, {3, 2, 1}}}));
  EXPECT_EQ((Visits<Gray, RGB, CMYK>(Record(ImageFormatBGRA))), (std::vector<Visit>{{RGB, true, {2, 1, 0, 3}}}));
  EXPECT_EQ((Visits<Gray, RGB, CMYK>(Record(ImageFormatKYMC))), (std::vector<Visit>{{CMYK, false, {3, 2, 1, 0}}}));
  EXPECT_EQ((Visits<Gray, RGB, CMYK>(Record(ImageFormatACMYK))), (std::vector<Visit>{{CMYK, true, {1, 2, 3, 4, 0}}}));
}

TEST(Layouts, AnImageWithoutAFamilyIsNotVisited) {
  EXPECT_TRUE((Visits<Gray, RGB, CMYK>(Record(ImageFormatBuffer)).empty()));
  EXPECT_TRUE((Visits<CMYK, RGB, Gray>(Record(ImageFormatScaling4)).empty()));
}

TEST(Layouts, AFamilyThatIsNotAskedForIsNotVisited) {
  EXPECT_TRUE((Visits<Gray, CMYK>(Record(ImageFormatRGB)).empty()));
  EXPECT_EQ((Visits<RGB>(Record(ImageFormatRGB)).size()), 1u);
}

TEST(Layouts, TheFirstFamilyOfTheOrderIsVisitedAndNoOther) {
  ImageClassData image = Record(ImageFormatRGBA);
  image.IsGray = image.IsCMYK = true;
  const auto family = [](const std::vector<Visit> &visits) {
    EXPECT_EQ(visits.size(), 1u);
    return visits.front().family;
  };
  EXPECT_EQ(family(Visits<Gray, RGB, CMYK>(image)), Gray);
  EXPECT_EQ(family(Visits<CMYK, RGB, Gray>(image)), CMYK);
  EXPECT_EQ(family(Visits<RGB, Gray>(image)), RGB);
}

TEST(Layouts, TheFlagsOfTheColoursAreNotAskedFor) {
  ImageClassData image = Record(ImageFormatRGB);
  image.HasRed = image.HasGreen = image.HasBlue = false;
  EXPECT_EQ((Visits<Gray, RGB, CMYK>(image)), (std::vector<Visit>{{RGB, false, {0, 1, 2}}}));
}

template <ColourFamily kFamily, bool kAlpha>
bool PackedAlike(const ImageClassData &a, const ImageClassData &b) {
  const bool alike = Layout<kFamily, kAlpha>::PackedAlike(a, b);
  EXPECT_EQ(alike, (Layout<kFamily, kAlpha>::PackedAlike(b, a)));
  return alike;
}

TEST(Layouts, PixelsOfTheSameChannelsInTheSameOrderArePackedAlike) {
  EXPECT_TRUE((PackedAlike<Gray, false>(Record(ImageFormatG), Record(ImageFormatG))));
  EXPECT_TRUE((PackedAlike<RGB, true>(Record(ImageFormatARGB), Record(ImageFormatARGB))));
  EXPECT_TRUE((PackedAlike<CMYK, false>(Record(ImageFormatKYMC), Record(ImageFormatKYMC))));
  EXPECT_FALSE((PackedAlike<RGB, false>(Record(ImageFormatRGB), Record(ImageFormatBGR))));
  EXPECT_FALSE((PackedAlike<RGB, true>(Record(ImageFormatRGBA), Record(ImageFormatARGB))));
}

TEST(Layouts, FillerAndOtherSizesAreNotPacked) {
  EXPECT_FALSE((PackedAlike<RGB, false>(Record(ImageFormatRGBX), Record(ImageFormatRGBX))));
  EXPECT_FALSE((PackedAlike<RGB, false>(Record(ImageFormatRGB), Record(ImageFormatRGBX))));
  EXPECT_FALSE((PackedAlike<Gray, false>(Record(ImageFormatGray16), Record(ImageFormatGray16))));
}

TEST(Layouts, AClipIsPackedLikeItsImage) {
  const ImageClassData image = Record(ImageFormatBGR);
  ImageClassData clip = image;
  for (ChannelOffset channel : Layout<RGB, false>::channels) clip.*channel += 15;
  EXPECT_TRUE((PackedAlike<RGB, false>(image, clip)));
  EXPECT_EQ((Layout<RGB, false>::FirstOffset(image)), 0);
  EXPECT_EQ((Layout<RGB, false>::FirstOffset(clip)), 15);
}

TEST(Layouts, TwoChannelsInOnePlaceAreNotPacked) {
  ImageClassData image = Record(ImageFormatRGB);
  image.GreenOffset = image.RedOffset;
  EXPECT_FALSE((PackedAlike<RGB, false>(image, image)));
  image.GreenOffset = 0x7FFFFFFF;
  image.BlueOffset = -0x7FFFFFFF;
  EXPECT_FALSE((PackedAlike<RGB, false>(image, image)));
}

}  // namespace
}  // namespace zvk::pixels
