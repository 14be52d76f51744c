// When an export gives the host time, and what other code of the host may do to the image meanwhile.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

#include "image/image_formats.h"
#include "image/views.h"
#include "pictures/picture_export.h"
#include "tests/pictures/picture_export_testing.h"

namespace zvk::pictures {
namespace {

using namespace picture_testing;

TEST(ExportYields, OnceAtTheStartOnceBeforeTheRowsAndAfterEach) {
  PluginHost host;
  auto image = NewImage(host, 4, 7, ImageFormatRGBA);
  YieldAlways(host, image);
  AdoptPicture(rbCopyPicture(image, 0, 2, 4, 5));
  EXPECT_EQ(Yields(host), 7);
  AdoptPicture(rbCopyMask(image, 0, 2, 4, 5));
  EXPECT_EQ(Yields(host), 14);
}

TEST(ExportYields, OnlyAtTheStartWithoutAPicture) {
  PluginHost host({.withheld = {"newPicture"}});
  auto image = NewImage(host, 4, 7, ImageFormatRGBA);
  YieldAlways(host, image);
  rbCopyPictureAll(image);
  EXPECT_EQ(Yields(host), 1);
}

TEST(ExportYields, NeverForAnEmptyRectangle) {
  PluginHost host;
  auto image = NewImage(host, 4, 7, ImageFormatRGBA);
  YieldAlways(host, image);
  rbCopyPicture(image, 4, 0, 4, 5);
  rbCopyMask(image, 4, 0, 4, 5);
  EXPECT_EQ(Yields(host), 0);
}

TEST(ExportYields, AnImageThatDoesNotAskNeverYields) {
  PluginHost host;
  auto image = NewImage(host, 4, 7, ImageFormatRGBA);
  AdoptPicture(rbCopyPictureWithMaskAll(image));
  EXPECT_EQ(Yields(host), 0);
}

TEST(ExportYields, AnImageThatIsClosedOrMadeSmallerInAYieldGivesNoMoreRows) {
  PluginHost host;
  for (int32_t choice = 0; choice < 3; ++choice) {
    auto image = NewImage(host, 3, 4, ImageFormatRGBA);
    ImageClassData &record = *RecordOf(image);
    std::fill_n(record.Buffer, record.TotalSize, 9);
    YieldAlways(host, image);
    host->onYield = [&] {
      if (Yields(host) != 6 * choice + 4) return;  // after the second row
      if (choice == 0) record.GetRow = nullptr;
      if (choice != 0) (choice == 1 ? record.Width : record.Height) = 2;
    };
    const auto picture = AdoptPicture(rbCopyPictureAll(image));
    ASSERT_TRUE(picture);
    EXPECT_EQ(Yields(host), 6 * choice + 6);
    for (int32_t y = 0; y < 4; ++y) EXPECT_EQ(picture->GetPixel(2, y).red, y < 2 ? 9 : 0) << choice;
  }
}

TEST(ExportYields, AViewWhoseParentIsClosedInAYieldGivesNoMoreRows) {
  PluginHost host;
  for (const int32_t closingYield : {1, 2, 4}) {  // before there is a picture, before the first row, after the second
    auto image = NewImage(host, 3, 4, ImageFormatRGBA), view = Adopt(ClipImage1(image));
    ImageClassData &record = *RecordOf(image);
    std::fill_n(record.Buffer, record.TotalSize, 9);
    YieldAlways(host, view);
    const int64_t before = Yields(host);
    host->onYield = [&] {
      if (Yields(host) - before == closingYield) record.GetRow = nullptr;
    };
    const auto picture = AdoptPicture(rbCopyPictureAll(view));
    ASSERT_TRUE(picture);
    EXPECT_EQ(Yields(host) - before, 6);
    for (int32_t y = 0; y < 4; ++y) EXPECT_EQ(picture->GetPixel(2, y).red, y < closingYield - 2 ? 9 : 0);
  }
}

TEST(ExportYields, AViewWhoseParentIsClosedWhileThePictureIsMadeGivesNoMask) {
  PluginHost host;
  auto image = NewImage(host, 3, 4, ImageFormatRGBA), view = Adopt(ClipImage1(image));
  ImageClassData &record = *RecordOf(image);
  std::fill_n(record.Buffer, record.TotalSize, 9);
  YieldAlways(host, view);
  host->onYield = [&] {
    if (Yields(host) == 4) record.GetRow = nullptr;
  };
  const auto picture = AdoptPicture(rbCopyPictureWithMaskAll(view));
  ASSERT_TRUE(picture);
  EXPECT_EQ(Yields(host), 6);
  EXPECT_EQ(picture->Mask(), nullptr);
}

TEST(ExportYields, ThePictureIsAsLargeAsTheRectangleWasBeforeTheFirstYield) {
  PluginHost host;
  auto image = NewImage(host, 20, 10, ImageFormatRGB);
  YieldAlways(host, image);
  host->onYield = [&] {
    if (Yields(host) == 1) ImageConstructor(image, 5, 4, ImageFormatRGB);
  };
  const auto picture = AdoptPicture(rbCopyPicture(image, 2, 0, 12, 8));
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->Width(), 12);
  EXPECT_EQ(picture->Height(), 8);
}

TEST(ExportYields, HostCodeInAYieldMayMoveTheRowsAndTheOffsets) {
  PluginHost host;
  auto image = RowImage(host, ImageFormatG, {1, 2, 3});
  ImageClassData *record = RecordOf(image);
  record->Width = 1;
  record->Height = 3;
  record->RowSize = 0;
  YieldAlways(host, image);
  // Rows of one column, each found where the yields have got to by then.
  host->onYield = [&] { record->GrayOffset = static_cast<int32_t>(Yields(host)) - 2; };
  auto picture = AdoptPicture(rbCopyPictureAll(image));
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->GetPixel(0, 0), Gray(1));
  EXPECT_EQ(picture->GetPixel(0, 1), Gray(2));
  EXPECT_EQ(picture->GetPixel(0, 2), Gray(3));
}

}  // namespace
}  // namespace zvk::pictures
