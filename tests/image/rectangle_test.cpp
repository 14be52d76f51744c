#include "image/rectangle.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace zvk::image {
namespace {

constexpr int32_t kMost = INT32_MAX;
constexpr int32_t kLeast = INT32_MIN;

// --- against one image, 100 x 50 ---

Rectangle Fit(Rectangle rectangle) { return FitRectangle(rectangle, 100, 50); }

TEST(FitRectangle, LeavesARectangleInsideAlone) {
  EXPECT_EQ(Fit({3, 4, 5, 6}), (Rectangle{3, 4, 5, 6}));
  EXPECT_EQ(Fit({0, 0, 100, 50}), (Rectangle{0, 0, 100, 50}));
}

TEST(FitRectangle, CutsWhatHangsOverEachEdge) {
  EXPECT_EQ(Fit({-3, 10, 5, 5}), (Rectangle{0, 10, 2, 5}));
  EXPECT_EQ(Fit({10, -3, 5, 5}), (Rectangle{10, 0, 5, 2}));
  EXPECT_EQ(Fit({98, 10, 5, 5}), (Rectangle{98, 10, 2, 5}));
  EXPECT_EQ(Fit({10, 48, 5, 5}), (Rectangle{10, 48, 5, 2}));
  EXPECT_EQ(Fit({-1, -1, 1000, 1000}), (Rectangle{0, 0, 100, 50}));
}

TEST(FitRectangle, TurnsANegativeSizeToTheOtherSideOfTheCorner) {
  EXPECT_EQ(Fit({15, 20, -10, -5}), (Rectangle{5, 15, 10, 5}));
  EXPECT_EQ(Fit({10, 10, -20, -20}), (Rectangle{0, 0, 10, 10}));
  EXPECT_EQ(Fit({110, 60, -20, -20}), (Rectangle{90, 40, 10, 10}));
}

TEST(FitRectangle, IsEmptyOutsideTheImage) {
  EXPECT_TRUE(IsEmpty(Fit({-5, 0, 5, 5})));
  EXPECT_TRUE(IsEmpty(Fit({-50, 0, 5, 5})));
  EXPECT_TRUE(IsEmpty(Fit({0, -5, 5, 5})));
  EXPECT_TRUE(IsEmpty(Fit({100, 0, 5, 5})));
  EXPECT_TRUE(IsEmpty(Fit({0, 50, 5, 5})));
  EXPECT_TRUE(IsEmpty(Fit({5, 5, 0, 5})));
  EXPECT_TRUE(IsEmpty(Fit({5, 5, 5, 0})));
}

TEST(FitRectangle, BeyondTheFarEdgeTheSizeIsTheImagesLessThePosition) {
  EXPECT_EQ(Fit({100, 50, 5, 5}), (Rectangle{100, 50, 0, 0}));
  EXPECT_EQ(Fit({107, 60, 5, 5}), (Rectangle{107, 60, -7, -10}));
}

TEST(FitRectangle, ASumThatWrapsIsNotCut) {
  // 5 + 2147483647 wraps below zero, which is not above the image's width.
  EXPECT_EQ(Fit({5, 0, kMost, 1}), (Rectangle{5, 0, kMost, 1}));
  EXPECT_EQ(Fit({0, 5, 1, kMost}), (Rectangle{0, 5, 1, kMost}));
}

TEST(FitRectangle, TheMostNegativeSizeReachesToTheLeftEdge) {
  // Turned round the size stays -2147483648; taking the position's 5 - 2147483648 off it wraps to 5.
  EXPECT_EQ(Fit({5, 7, kLeast, kLeast}), (Rectangle{0, 0, 5, 7}));
  EXPECT_TRUE(IsEmpty(Fit({0, 0, kLeast, 1})));
}

TEST(CutToImage, ChangesNothingInsideTheImage) {
  EXPECT_EQ(CutToImage({3, 4, 5, 6}, 100, 50), (Rectangle{3, 4, 5, 6}));
  EXPECT_EQ(CutToImage({0, 0, 100, 50}, 100, 50), (Rectangle{0, 0, 100, 50}));
}

TEST(CutToImage, CutsWhatAWrapHasLeft) {
  EXPECT_EQ(CutToImage({5, 7, kMost, kMost}, 100, 50), (Rectangle{5, 7, 95, 43}));
  EXPECT_EQ(CutToImage({kMost - 10, 0, 100, 1}, kMost, 1), (Rectangle{kMost - 10, 0, 10, 1}));
}

TEST(CutToImage, LeavesNoSizeBelowZero) {
  EXPECT_EQ(CutToImage({107, 60, -7, -10}, 100, 50), (Rectangle{107, 60, 0, 0}));
  EXPECT_EQ(CutToImage({kMost, 0, kMost, 1}, -5, 1), (Rectangle{kMost, 0, 0, 1}));
}

// --- against a destination, 100 x 50, and a source, 20 x 10 ---

Transfer Fit(Transfer transfer) { return FitTransfer(transfer, 100, 50, 20, 10); }

TEST(FitTransfer, LeavesATransferInsideAlone) {
  EXPECT_EQ(Fit({30, 40, 5, 6, 2, 3}), (Transfer{30, 40, 5, 6, 2, 3}));
  EXPECT_EQ(Fit({80, 40, 20, 10, 0, 0}), (Transfer{80, 40, 20, 10, 0, 0}));
}

TEST(FitTransfer, ANegativeSourcePositionShiftsTheDestinationToo) {
  EXPECT_EQ(Fit({5, 0, 10, 1, -5, 0}), (Transfer{0, 0, 5, 1, 0, 0}));
  EXPECT_EQ(Fit({0, 5, 1, 10, 0, -5}), (Transfer{0, 0, 1, 5, 0, 0}));
}

TEST(FitTransfer, WithDestinationAtZeroANegativeSourcePositionTakesItsSizeTwice) {
  EXPECT_TRUE(IsEmpty(Fit({0, 0, 10, 1, -5, 0})));
  EXPECT_TRUE(IsEmpty(Fit({0, 0, 1, 10, 0, -5})));
  EXPECT_EQ(Fit({0, 0, 12, 1, -5, 0}), (Transfer{0, 0, 2, 1, 5, 0}));
}

TEST(FitTransfer, ANegativeSizeExtendsToTheOtherSideOfTheDestinationsCorner) {
  EXPECT_EQ(Fit({30, 40, -10, -5, 1, 2}), (Transfer{20, 35, 10, 5, 1, 2}));
}

TEST(FitTransfer, ANegativeSizeIsTurnedAfterTheSourcesShift) {
  // -10 - 5 = -15, at 30 - 5 = 25: columns 10 to 24 from source column 0.
  EXPECT_EQ(Fit({30, 0, -10, 1, -5, 0}), (Transfer{10, 0, 15, 1, 0, 0}));
}

TEST(FitTransfer, ANegativeDestinationPositionMovesTheSource) {
  EXPECT_EQ(Fit({-3, -4, 10, 9, 1, 0}), (Transfer{0, 0, 7, 5, 4, 4}));
}

TEST(FitTransfer, CutsAtTheDestinationsEdges) {
  EXPECT_EQ(Fit({95, 48, 10, 9, 0, 0}), (Transfer{95, 48, 5, 2, 0, 0}));
  EXPECT_TRUE(IsEmpty(Fit({100, 0, 10, 9, 0, 0})));
  EXPECT_TRUE(IsEmpty(Fit({0, 50, 10, 9, 0, 0})));
}

TEST(FitTransfer, CutsAtTheSourcesEdges) {
  EXPECT_EQ(Fit({0, 0, 1000, 1000, 15, 8}), (Transfer{0, 0, 5, 2, 15, 8}));
  EXPECT_TRUE(IsEmpty(Fit({0, 0, 5, 5, 20, 0})));
  EXPECT_TRUE(IsEmpty(Fit({0, 0, 5, 5, 25, 0})));
  EXPECT_TRUE(IsEmpty(Fit({0, 0, 5, 5, 0, 10})));
}

TEST(FitTransfer, AnEmptySourceGivesNothing) {
  EXPECT_TRUE(IsEmpty(FitTransfer({0, 0, 5, 5, 0, 0}, 100, 50, 0, 10)));
  EXPECT_TRUE(IsEmpty(FitTransfer({0, 0, 5, 5, 0, 0}, 100, 50, 20, 0)));
}

TEST(FitTransfer, SumsThatWrapAreNotCut) {
  // 1 + 2147483647 wraps, so the destination's edge does not cut; the source's does.
  EXPECT_EQ(Fit({1, 0, kMost, 1, 0, 0}), (Transfer{1, 0, 20, 1, 0, 0}));
  // Both sums wrap.
  EXPECT_EQ(Fit({1, 0, kMost, 1, 1, 0}), (Transfer{1, 0, kMost, 1, 1, 0}));
  // The source position wraps below zero.
  EXPECT_EQ(Fit({-1, 0, 10, 1, kMost, 0}), (Transfer{0, 0, 9, 1, kLeast, 0}));
}

TEST(CutToImages, ChangesNothingInsideBothImages) {
  EXPECT_EQ(CutToImages({30, 40, 5, 6, 2, 3}, 100, 50, 20, 10), (Transfer{30, 40, 5, 6, 2, 3}));
}

TEST(CutToImages, CutsWhatAWrapHasLeft) {
  EXPECT_EQ(CutToImages({1, 2, kMost, kMost, 3, 4}, 100, 50, 20, 10), (Transfer{1, 2, 17, 6, 3, 4}));
  EXPECT_EQ(CutToImages({95, 0, kMost, 1, 3, 0}, 100, 50, 20, 10), (Transfer{95, 0, 5, 1, 3, 0}));
}

TEST(CutToImages, MovesBothSidesOffAPositionBelowZero) {
  EXPECT_EQ(CutToImages({0, 0, 9, 9, -2, -3}, 100, 50, 20, 10), (Transfer{2, 3, 7, 6, 0, 0}));
}

TEST(CutToImages, IsEmptyForASourceFarBelowZero) {
  const Transfer cut = CutToImages({0, 0, 9, 1, kLeast, 0}, 100, 50, 20, 10);
  EXPECT_TRUE(IsEmpty(cut));
  EXPECT_EQ(cut.width, 0);
}

}  // namespace
}  // namespace zvk::image
