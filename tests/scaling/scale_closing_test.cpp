// Code of the host that runs in a yield may close an image of a scale and construct it anew, smaller. The rows that it
// does not hold any more are left out.
#include "tests/scaling/scale_closing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <utility>

#include "image/views.h"
#include "scaling/fast_scale.h"
#include "scaling/scale_engine.h"

namespace zvk::scaling {
namespace {

constexpr int32_t kTriangle = 1;
constexpr int32_t kLanczos3 = 3;

TEST_F(ScaleClosing, AScaleTouchesNothingOutsideOfAnImageWhateverBecomesOfItInAnyYield) {
  SpoilAnyImageInAnyYield([](REALobject dest, REALobject source, REALobject temp, Size size) {
    PictureScaleZVK(dest, source, temp, kLanczos3, size.width, size.height);
  });
}

TEST_F(ScaleClosing, AFastScaleTouchesNothingOutsideOfAnImageWhateverBecomesOfItInAnyYield) {
  SpoilAnyImageInAnyYield([](REALobject dest, REALobject source, REALobject, Size size) {
    ScalePictureFast(dest, source, size.width, size.height);
  });
}

// A scale of 4 x 4 gray pixels to as many, which are the same. What nobody has written is 99.
class ScaleClosingInPass : public ScaleClosing {
 protected:
  ScaleClosingInPass() {
    Bytes bytes = {0, 1, 2, 3, 10, 11, 12, 13, 20, 21, 22, 23, 30, 31, 32, 33};
    std::copy(bytes.begin(), bytes.end(), RecordOf(source_)->Buffer);
    YieldOnRows(dest_);
  }

  // The destination is given time once, for each of 4 columns' lists, after each of 4 rows, for each of 4 rows' lists,
  // and after each of its own rows.
  static constexpr int32_t kInTableOfColumns = 1;
  static constexpr int32_t kAfterRowsOfTemp = 1 + 4;
  static constexpr int32_t kInTableOfRows = 1 + 4 + 4;
  static constexpr int32_t kAfterRowsOfDest = 1 + 4 + 4 + 4;

  void Scale(int32_t yield, std::function<void()> act) {
    ActInYield(yield, std::move(act));
    EXPECT_TRUE(PictureScaleZVK(dest_, source_, temp_, kTriangle, 4, 4));
    EXPECT_GE(yields_, yield);
  }

  Image source_ = New({4, 4}, ImageFormatG);
  Image temp_ = New({4, 4}, ImageFormatScaling1);
  Image dest_ = New({4, 4}, ImageFormatG);
  const Block &tempBlock_ = *std::next(blocks_.begin(), 1);
  const Block &destBlock_ = *std::next(blocks_.begin(), 2);
};

TEST_F(ScaleClosingInPass, OfALowerDestinationTheRowsThatThereAreAreWritten) {
  Scale(kAfterRowsOfDest + 2, [&] { ConstructAnew(dest_, {4, 3}, ImageFormatG); });
  EXPECT_EQ(All(destBlock_), (Bytes{0, 1, 2, 3, 10, 11, 12, 13, 99, 99, 99, 99, 99, 99, 99, 99}));
  EXPECT_EQ(All(dest_), (Bytes{99, 99, 99, 99, 99, 99, 99, 99, 20, 21, 22, 23}));
}

TEST_F(ScaleClosingInPass, OfANarrowerDestinationNoRowIsWritten) {
  Scale(kAfterRowsOfDest + 2, [&] { ConstructAnew(dest_, {3, 4}, ImageFormatG); });
  EXPECT_EQ(All(destBlock_), (Bytes{0, 1, 2, 3, 10, 11, 12, 13, 99, 99, 99, 99, 99, 99, 99, 99}));
  EXPECT_EQ(All(dest_), Bytes(12, 99));
}

TEST_F(ScaleClosingInPass, ALargerDestinationIsWrittenOn) {
  Scale(kAfterRowsOfDest + 2, [&] { ConstructAnew(dest_, {5, 5}, ImageFormatG); });
  EXPECT_EQ(All(dest_), (Bytes{99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 20, 21, 22,
                               23, 99, 30, 31, 32, 33, 99, 99, 99, 99, 99, 99}));
}

TEST_F(ScaleClosingInPass, ADestinationThatWasSmallerBeforeItsPassCountsAsItThenIs) {
  for (const int32_t yield : {1, kInTableOfColumns + 1, kAfterRowsOfTemp + 1, kInTableOfRows + 1}) {
    ConstructAnew(dest_, {4, 4}, ImageFormatG);
    Scale(yield, [&] { ConstructAnew(dest_, {4, 2}, ImageFormatG); });
    EXPECT_EQ(All(dest_), (Bytes{0, 1, 2, 3, 10, 11, 12, 13})) << yield;
    ConstructAnew(dest_, {4, 4}, ImageFormatG);
    Scale(yield, [&] { ConstructAnew(dest_, {3, 4}, ImageFormatG); });
    EXPECT_EQ(All(dest_), Bytes(12, 99)) << yield;
  }
}

TEST_F(ScaleClosingInPass, OfALowerTempTheRowsThatThereAreAreWritten) {
  Scale(kAfterRowsOfTemp + 2, [&] { ConstructAnew(temp_, {4, 3}, ImageFormatScaling1); });
  EXPECT_EQ(All(tempBlock_), (Bytes{0, 1, 2, 3, 10, 11, 12, 13, 99, 99, 99, 99, 99, 99, 99, 99}));
  EXPECT_EQ(All(temp_), (Bytes{99, 99, 99, 99, 99, 99, 99, 99, 20, 21, 22, 23}));
  // The last row has no tap: there is no such row of the temp image.
  EXPECT_EQ(All(dest_), (Bytes{99, 99, 99, 99, 99, 99, 99, 99, 20, 21, 22, 23, 0, 0, 0, 0}));
}

TEST_F(ScaleClosingInPass, ANarrowerTempIsNeitherWrittenNorRead) {
  for (const int32_t yield : {1, kInTableOfColumns + 1, kAfterRowsOfTemp + 1, kInTableOfRows + 1}) {
    ConstructAnew(temp_, {4, 4}, ImageFormatScaling1);
    Scale(yield, [&] { ConstructAnew(temp_, {3, 4}, ImageFormatScaling1, 55); });
    EXPECT_EQ(All(temp_), Bytes(12, 55)) << yield;
    EXPECT_EQ(All(dest_), Bytes(16, 99)) << yield;
  }
  ConstructAnew(temp_, {4, 4}, ImageFormatScaling1);
  Scale(kAfterRowsOfDest + 2, [&] { ConstructAnew(temp_, {3, 4}, ImageFormatScaling1); });
  EXPECT_EQ(All(dest_), (Bytes{0, 1, 2, 3, 10, 11, 12, 13, 99, 99, 99, 99, 99, 99, 99, 99}));
}

TEST_F(ScaleClosingInPass, TapsOnRowsThatATempHasNoMoreAreLeftOut) {
  for (const int32_t yield : {kInTableOfRows + 4, kAfterRowsOfDest + 1}) {
    ConstructAnew(temp_, {4, 4}, ImageFormatScaling1);
    ConstructAnew(dest_, {4, 4}, ImageFormatG);
    Scale(yield, [&] { ConstructAnew(temp_, {4, 3}, ImageFormatScaling1, 55); });
    Bytes expected(16, 55);
    if (yield > kAfterRowsOfDest) std::copy_n(Bytes{0, 1, 2, 3}.begin(), 4, expected.begin());
    std::fill_n(expected.begin() + 12, 4, uint8_t{0});
    EXPECT_EQ(All(dest_), expected) << yield;
  }
}

TEST_F(ScaleClosingInPass, OfALowerSourceTheRowsThatThereAreAreRead) {
  Scale(kAfterRowsOfTemp + 2, [&] { ConstructAnew(source_, {4, 3}, ImageFormatG, 55); });
  EXPECT_EQ(All(dest_), (Bytes{0, 1, 2, 3, 10, 11, 12, 13, 55, 55, 55, 55, 99, 99, 99, 99}));
}

TEST_F(ScaleClosingInPass, OfANarrowerSourceNoRowIsRead) {
  Scale(kAfterRowsOfTemp + 2, [&] { ConstructAnew(source_, {3, 4}, ImageFormatG, 55); });
  EXPECT_EQ(All(dest_), (Bytes{0, 1, 2, 3, 10, 11, 12, 13, 99, 99, 99, 99, 99, 99, 99, 99}));
}

TEST_F(ScaleClosingInPass, ASourceThatBecomesNarrowerWhileItsTableIsMadeIsNotRead) {
  Scale(kInTableOfColumns + 4, [&] { ConstructAnew(source_, {3, 4}, ImageFormatG, 55); });
  EXPECT_EQ(All(dest_), Bytes(16, 99));
}

TEST_F(ScaleClosingInPass, OfAHigherSourceNoMoreRowsAreReadThanTheTempHas) {
  YieldOnRows(source_);
  for (const int32_t yield : {1, 1 + kInTableOfColumns + 1, 1 + kAfterRowsOfTemp + 2}) {
    ConstructAnew(source_, {4, 4}, ImageFormatG, 44);
    Scale(yield, [&] { ConstructAnew(source_, {4, 9}, ImageFormatG, 55); });
    const ptrdiff_t before = yield > 1 + kAfterRowsOfTemp ? 8 : 0;
    Bytes expected(16, 55);
    std::fill_n(expected.begin(), before, uint8_t{44});
    EXPECT_EQ(All(temp_), expected) << yield;
  }
}

TEST_F(ScaleClosingInPass, TapsOnRowsThatATempHadForATimeAreLeftOut) {
  ActInYield(kAfterRowsOfTemp + 1, [&] {
    ConstructAnew(temp_, {4, 9}, ImageFormatScaling1);
    // After the lists of the rows, which reach as far as its ninth one, it is what it was.
    ActInYield(3 + 4, [&] {
      ImageDestructor(temp_);
      ImageConstructorMemory(temp_, tempBlock_, 4, 4, ImageFormatScaling1, 4);
    });
  });
  EXPECT_TRUE(PictureScaleZVK(dest_, source_, temp_, kLanczos3, 4, 4));
  EXPECT_EQ(All(tempBlock_), (Bytes{0, 1, 2, 3, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99}));
}

TEST_F(ScaleClosing, AnImageThatHasNoRoomForWideSamplesAnyMoreIsLeftOut) {
  for (const bool isSource : {false, true}) {
    const auto source = New({4, 4}, ImageFormatGray16, 7), temp = New({4, 4}, ImageFormatScaling2);
    const auto dest = New({4, 4}, ImageFormatGray16);
    const Block &destBlock = blocks_.back();
    YieldOnRows(dest);
    ActInYield(isSource ? 1 + 4 + 2 : 1 + 4 + 4 + 4 + 2, [&] {
      ConstructAnew(isSource ? source : dest, {4, 4}, ImageFormatG, 55);
    });
    EXPECT_TRUE(PictureScaleZVK(dest, source, temp, kTriangle, 4, 4));
    Bytes expected(32, 99);
    std::fill_n(expected.begin(), 16, uint8_t{7});
    EXPECT_EQ(All(destBlock), expected) << isSource;
    EXPECT_TRUE(isSource || All(dest) == Bytes(16, 55));
  }
}

// --- sizes beyond an image ---

TEST_F(ScaleClosing, ASizeBeyondTheImagesFromTheStartIsTheCallersUntilTheyAreConstructedAnew) {
  const auto source = New({9, 7}, ImageFormatG, 7), temp = New({9, 7}, ImageFormatScaling1);
  const auto dest = New({9, 7}, ImageFormatG);
  const Block &block = blocks_.back();
  YieldOnRows(dest);
  // The caller has more room than he tells.
  const auto tell = [](REALobject image) {
    RecordOf(image)->Width = 3;
    RecordOf(image)->Height = 2;
    RecordOf(image)->TotalSize = 18;
  };
  tell(dest);
  tell(temp);
  ASSERT_TRUE(PictureScaleZVK(dest, source, temp, kTriangle, 9, 7));
  // There are lists for the temp rows that are told of.
  Bytes expected(9 * 2, 7);
  expected.resize(9 * 7);
  EXPECT_EQ(All(block), expected);

  ConstructAnew(dest, {9, 7}, ImageFormatG);
  const Block &another = blocks_.back();
  tell(dest);
  ActInYield(1 + 9 + 7 + 7 + 2, [&] { ConstructAnew(dest, {3, 7}, ImageFormatG); });
  ASSERT_TRUE(PictureScaleZVK(dest, source, temp, kTriangle, 9, 7));
  expected.assign(9 * 7, 99);
  std::fill_n(expected.begin(), 9 * 2, uint8_t{7});
  EXPECT_EQ(All(another), expected);
  EXPECT_EQ(All(dest), Bytes(3 * 7, 99));
}

// --- other code of the host ---

std::function<void()> inFactory;

REALobject AnswerWithNothing(REALobject, int32_t, int32_t, int32_t) {
  inFactory();
  return nullptr;
}

TEST_F(ScaleClosing, AFactoryThatIsAskedForATempMayMakeTheImagesSmallerAndLarger) {
  host_->Classes().DefineSubclass(
      "TestFactory", "PictureFactoryZVK",
      {{"NewPictureZVK(Width as integer, Height as integer, ImageFormat as integer) as PictureZVK",
        reinterpret_cast<void *>(&AnswerWithNothing)}});
  const auto factory = host_.New("TestFactory");
  const auto source = New({4, 4}, ImageFormatG, 7), dest = New({4, 4}, ImageFormatG);
  RecordOf(source)->Factory = factory;
  inFactory = [&] { ConstructAnew(dest, {4, 3}, ImageFormatG); };
  EXPECT_TRUE(PictureScaleZVK(dest, source, nullptr, kTriangle, 4, 4));
  EXPECT_EQ(All(dest), Bytes(12, 7));
  inFactory = [&] { ConstructAnew(dest, {3, 4}, ImageFormatG); };
  EXPECT_TRUE(PictureScaleZVK(dest, source, nullptr, kTriangle, 4, 4));
  EXPECT_EQ(All(dest), Bytes(12, 99));
  ConstructAnew(dest, {4, 4}, ImageFormatG);
  inFactory = [&] { ConstructAnew(source, {4, 9}, ImageFormatG, 8); };
  EXPECT_TRUE(PictureScaleZVK(dest, source, nullptr, kTriangle, 4, 4));
  RecordOf(source)->Factory = nullptr;
}

// A channel's view holds the image behind it, and not that one's memory.
TEST_F(ScaleClosing, AViewOfAnImageThatIsClosedHasNoFurtherRows) {
  for (const int32_t which : {0, 2}) {
    const Image images[] = {New({4, 4}, ImageFormatG, 7), New({4, 4}, ImageFormatScaling1), New({4, 4}, ImageFormatG)};
    const Block &destBlock = blocks_.back();
    const Image view = Adopt(GrayChannel(Adopt(GrayChannel(images[which]))));
    const auto image = [&](int32_t i) -> REALobject { return i == which ? view : images[i]; };
    YieldOnRows(image(2));
    // After two rows of the pass that writes the temp image, or of the other one.
    ActInYield(which == 2 ? 1 + 4 + 4 + 4 + 2 : 1 + 4 + 2, [&] { ImageDestructor(images[which]); });
    EXPECT_TRUE(PictureScaleZVK(image(2), image(0), image(1), kTriangle, 4, 4));
    Bytes expected(16, 99);
    std::fill_n(expected.begin(), 8, uint8_t{7});
    EXPECT_EQ(All(destBlock), expected) << which;
  }
}

// The file goes with the last reference to its image, which the view between the two has held.
TEST_F(ScaleClosing, AViewOfAViewThatIsClosedHasNoFurtherRowsOfAFile) {
  Image file = host_.New("PictureZVK");
  ImageConstructorFile(file, 4, 4, ImageFormatG, 0, nullptr);
  const Image between = Adopt(ClipImage1(file));
  file = {};
  const Image view = Adopt(ClipImage1(between));
  for (int32_t y = 0; y < 4; ++y) std::fill_n(RecordOf(view)->GetRow(RecordOf(view), y), 4, uint8_t{7});
  const Image temp = New({4, 4}, ImageFormatScaling1), dest = New({4, 4}, ImageFormatG);
  const Block &destBlock = blocks_.back();
  YieldOnRows(dest);
  ActInYield(1 + 4 + 2, [&] { ImageDestructor(between); });
  EXPECT_TRUE(PictureScaleZVK(dest, view, temp, kTriangle, 4, 4));
  Bytes expected(16, 99);
  std::fill_n(expected.begin(), 8, uint8_t{7});
  EXPECT_EQ(All(destBlock), expected);
}

TEST_F(ScaleClosing, AClipThatHoldsTheMemoryItselfKeepsItsRows) {
  for (int32_t which = 0; which < 3; ++which) {
    const Image images[] = {New({4, 4}, ImageFormatG, 7), New({4, 4}, ImageFormatScaling1), New({4, 4}, ImageFormatG)};
    const Block &destBlock = blocks_.back();
    const Image clip = Adopt(ClipImage1(images[which]));
    const auto image = [&](int32_t i) -> REALobject { return i == which ? clip : images[i]; };
    YieldOnRows(image(2));
    ActInYield(which == 2 ? 1 + 4 + 4 + 4 + 2 : 1 + 4 + 2, [&] { ImageDestructor(images[which]); });
    EXPECT_TRUE(PictureScaleZVK(image(2), image(0), image(1), kTriangle, 4, 4));
    EXPECT_EQ(All(destBlock), Bytes(16, 7)) << which;
  }
}

TEST_F(ScaleClosing, AViewOfAnImageThatIsClosedEndsAFastScale) {
  for (const bool isSource : {false, true}) {
    const auto source = New({4, 4}, ImageFormatG, 7), dest = New({4, 4}, ImageFormatG);
    const Block &destBlock = blocks_.back();
    REALobject const closed = isSource ? source : dest;
    const Image view = Adopt(GrayChannel(closed));
    REALobject const viewed = view;
    YieldOnRows(isSource ? dest : viewed);
    ActInYield(1 + 2, [&] { ImageDestructor(closed); });
    EXPECT_FALSE(ScalePictureFast(isSource ? dest : viewed, isSource ? viewed : source, 4, 4));
    Bytes expected(16, 99);
    std::fill_n(expected.begin(), 8, uint8_t{7});
    EXPECT_EQ(All(destBlock), expected) << isSource;
  }
}

}  // namespace
}  // namespace zvk::scaling
