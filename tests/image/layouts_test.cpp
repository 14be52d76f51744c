#include "image/layouts.h"

#include <gtest/gtest.h>

#include <vector>

#include "image/image_formats.h"

namespace zvk {
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

}  // namespace
}  // namespace zvk
