#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <utility>

#include "image/rectangle.h"
#include "tests/scenes/cases.h"

namespace zvk::image {
namespace {

using scenes::CheckCases;
using scenes::Random;

// A position or size around a small image, in which no sum wraps.
int32_t Near(Random &random) { return random.Between(-40, 59); }
int32_t ImageSide(Random &random) { return random.Between(0, 29); }

using Columns = std::set<int64_t>;
using Pairs = std::set<std::pair<int64_t, int64_t>>;

// The columns that a caller means, counted one by one.
Columns ColumnsMeant(int64_t position, int64_t size, int64_t limit) {
  Columns columns;
  for (int64_t i = 0; i < 200; ++i) {
    const int64_t column = size < 0 ? position - 1 - i : position + i;
    if (i < (size < 0 ? -size : size) && column >= 0 && column < limit) columns.insert(column);
  }
  return columns;
}

Columns ColumnsOf(int64_t position, int64_t size) {
  Columns columns;
  for (int64_t i = 0; i < size; ++i) columns.insert(position + i);
  return columns;
}

TEST(FitRectangleProperty, CoversExactlyTheCallersPixelsInTheImage) {
  CheckCases([](Random &random) {
    const Rectangle caller{Near(random), Near(random), Near(random), Near(random)};
    const int32_t width = ImageSide(random), height = ImageSide(random);
    const Rectangle fitted = FitRectangle(caller, width, height);
    RC_ASSERT(ColumnsOf(fitted.x, fitted.width) == ColumnsMeant(caller.x, caller.width, width));
    RC_ASSERT(ColumnsOf(fitted.y, fitted.height) == ColumnsMeant(caller.y, caller.height, height));
  });
}

TEST(FitRectangleProperty, TheCutChangesNothingWhereNoSumWrapped) {
  CheckCases([](Random &random) {
    const int32_t width = ImageSide(random), height = ImageSide(random);
    const Rectangle fitted = FitRectangle({Near(random), Near(random), Near(random), Near(random)}, width, height);
    if (IsEmpty(fitted)) return;
    const Rectangle cut = CutToImage(fitted, width, height);
    RC_ASSERT(cut.x == fitted.x && cut.y == fitted.y && cut.width == fitted.width && cut.height == fitted.height);
  });
}

TEST(FitRectangleProperty, NothingOutsideTheImageIsLeftAfterTheCut) {
  CheckCases([](Random &random) {
    const int32_t width = random.Number(), height = random.Number();
    const Rectangle cut =
        CutToImage(FitRectangle({random.Number(), random.Number(), random.Number(), random.Number()}, width, height),
                   width, height);
    RC_ASSERT(cut.width >= 0 && cut.height >= 0);
    if (IsEmpty(cut)) return;
    RC_ASSERT(cut.x >= 0 && int64_t{cut.x} + cut.width <= width);
    RC_ASSERT(cut.y >= 0 && int64_t{cut.y} + cut.height <= height);
  });
}

// Destination and source columns that go together. A negative source position and then a negative size change what is
// meant; after that a column is drawn if it exists on both sides.
Pairs PairsMeant(int64_t dest, int64_t size, int64_t source, int64_t destLimit, int64_t sourceLimit) {
  if (source < 0) {
    size -= -source;
    dest -= -source;
    source = 0;
  }
  if (size < 0) {
    dest -= -size;
    size = -size;
  }
  Pairs pairs;
  for (int64_t i = 0; i < size; ++i) {
    const bool inDest = dest + i >= 0 && dest + i < destLimit;
    const bool inSource = source + i >= 0 && source + i < sourceLimit;
    if (inDest && inSource) pairs.insert({dest + i, source + i});
  }
  return pairs;
}

Pairs PairsOf(int64_t dest, int64_t size, int64_t source) {
  Pairs pairs;
  for (int64_t i = 0; i < size; ++i) pairs.insert({dest + i, source + i});
  return pairs;
}

TEST(FitTransferProperty, CoversExactlyThePixelsThatExistOnBothSides) {
  CheckCases([](Random &random) {
    const Transfer caller{Near(random), Near(random), Near(random), Near(random), Near(random), Near(random)};
    const int32_t width = ImageSide(random), height = ImageSide(random), sourceWidth = ImageSide(random),
                  sourceHeight = ImageSide(random);
    const Transfer fitted = FitTransfer(caller, width, height, sourceWidth, sourceHeight);
    RC_ASSERT(PairsOf(fitted.destX, fitted.width, fitted.sourceX) ==
              PairsMeant(caller.destX, caller.width, caller.sourceX, width, sourceWidth));
    RC_ASSERT(PairsOf(fitted.destY, fitted.height, fitted.sourceY) ==
              PairsMeant(caller.destY, caller.height, caller.sourceY, height, sourceHeight));
  });
}

TEST(FitTransferProperty, TheCutChangesNothingWhereNoSumWrapped) {
  CheckCases([](Random &random) {
    const int32_t width = ImageSide(random), height = ImageSide(random), sourceWidth = ImageSide(random),
                  sourceHeight = ImageSide(random);
    const Transfer fitted =
        FitTransfer({Near(random), Near(random), Near(random), Near(random), Near(random), Near(random)}, width, height,
                    sourceWidth, sourceHeight);
    if (IsEmpty(fitted)) return;
    const Transfer cut = CutToImages(fitted, width, height, sourceWidth, sourceHeight);
    RC_ASSERT(cut.destX == fitted.destX && cut.width == fitted.width && cut.sourceX == fitted.sourceX);
    RC_ASSERT(cut.destY == fitted.destY && cut.height == fitted.height && cut.sourceY == fitted.sourceY);
  });
}

TEST(FitTransferProperty, NothingOutsideEitherImageIsLeftAfterTheCut) {
  CheckCases([](Random &random) {
    const int32_t width = random.Number(), height = random.Number(), sourceWidth = random.Number(),
                  sourceHeight = random.Number();
    const Transfer fitted = FitTransfer(
        {random.Number(), random.Number(), random.Number(), random.Number(), random.Number(), random.Number()}, width,
        height, sourceWidth, sourceHeight);
    const Transfer cut = CutToImages(fitted, width, height, sourceWidth, sourceHeight);
    RC_ASSERT(cut.width >= 0 && cut.height >= 0);
    if (IsEmpty(cut)) return;
    RC_ASSERT(cut.destX >= 0 && int64_t{cut.destX} + cut.width <= width);
    RC_ASSERT(cut.destY >= 0 && int64_t{cut.destY} + cut.height <= height);
    RC_ASSERT(cut.sourceX >= 0 && int64_t{cut.sourceX} + cut.width <= sourceWidth);
    RC_ASSERT(cut.sourceY >= 0 && int64_t{cut.sourceY} + cut.height <= sourceHeight);
  });
}

}  // namespace
}  // namespace zvk::image
