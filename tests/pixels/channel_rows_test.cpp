#include "pixels/channel_rows.h"

#include <gtest/gtest.h>

#include "pixels/layouts.h"
#include "tests/filters/filter_testing.h"

namespace zvk::pixels {
namespace {

using namespace filter_testing;
using RGBRuns = ByteRuns<Layout<ColourFamily::RGB, false>>;

class ByteRunsTest : public FilterTest {
 protected:
  // An image over `block`, `first` bytes from its start.
  Image Over(const Owned<standalone::MemoryBlock> &block, ptrdiff_t first, int32_t format) {
    Image image = host_.New("PictureZVK");
    ImageConstructorMemory(image, block, 4, 1, format, 12);
    Record(image).Buffer += first;
    return image;
  }

  // What is visited of the first rows: the bytes counted from the start of the rows, and how many; -1 for no visit.
  struct Visited {
    ptrdiff_t source = -1;
    ptrdiff_t dest = -1;
    ptrdiff_t count = -1;
    bool operator==(const Visited &) const = default;
  };
  static Visited VisitRows(const Image &source, const Image &dest) {
    Visited visited;
    const uint8_t *const sourceRow = Row(source, 0);
    uint8_t *const destRow = Row(dest, 0);
    const bool isVisited = RGBRuns(Record(source), Record(dest))
                               .Visit(sourceRow, destRow, [&](const uint8_t *from, uint8_t *to, ptrdiff_t count) {
                                 visited = {from - sourceRow, to - destRow, count};
                               });
    EXPECT_EQ(isVisited, visited.count >= 0);
    return visited;
  }
};

TEST_F(ByteRunsTest, PixelsThatArePackedAlikeAreOneRun) {
  EXPECT_EQ(VisitRows(New(4, 1, ImageFormatRGB), New(9, 1, ImageFormatRGB)), (Visited{0, 0, 12}));
  const Image whole = New(9, 1, ImageFormatBGR);
  EXPECT_EQ(VisitRows(Adopt(ClipImage5(whole, 5, 0, 2, 1)), New(2, 1, ImageFormatBGR)), (Visited{15, 0, 6}));
  EXPECT_EQ(VisitRows(Adopt(ClipImage5(whole, 9, 0, 2, 1)), whole), (Visited{27, 0, 0}));
}

TEST_F(ByteRunsTest, OthersAreNot) {
  EXPECT_EQ(VisitRows(New(4, 1, ImageFormatRGB), New(4, 1, ImageFormatBGR)), Visited{});
  EXPECT_EQ(VisitRows(New(4, 1, ImageFormatRGBX), New(4, 1, ImageFormatRGBX)), Visited{});
  EXPECT_EQ(VisitRows(New(4, 1, ImageFormatRGB), New(4, 1, ImageFormatRGBX)), Visited{});
}

TEST_F(ByteRunsTest, RowsShareAllBytesOrNone) {
  const auto block = host_.NewMemoryBlock(40);
  const Image image = Over(block, 14, ImageFormatRGB);
  EXPECT_EQ(VisitRows(image, image), (Visited{0, 0, 12}));
  EXPECT_EQ(VisitRows(image, Over(block, 14, ImageFormatRGB)), (Visited{0, 0, 12}));
  for (const ptrdiff_t first : {3, 4, 13, 15, 24, 25}) {
    EXPECT_EQ(VisitRows(image, Over(block, first, ImageFormatRGB)), Visited{}) << first;
  }
  EXPECT_EQ(VisitRows(image, Over(block, 2, ImageFormatRGB)), (Visited{0, 0, 12}));
  EXPECT_EQ(VisitRows(image, Over(block, 26, ImageFormatRGB)), (Visited{0, 0, 12}));
}

TEST_F(ByteRunsTest, OfMappedImagesOnlyTheImageItselfIsKnownToShare) {
  const Image image = New(4, 1, ImageFormatRGB), other = Over(host_.NewMemoryBlock(12), 0, ImageFormatRGB);
  Record(image).IsMapping = true;
  EXPECT_EQ(VisitRows(image, image), (Visited{0, 0, 12}));
  EXPECT_EQ(VisitRows(image, other), Visited{});
  EXPECT_EQ(VisitRows(other, image), Visited{});
  Record(image).IsMapping = false;
}

TEST_F(ByteRunsTest, AMappedImageAndOneOfAnotherStorageAreRuns) {
  const Image image = NoiseInFile(4, 1, ImageFormatRGB), otherFile = NoiseInFile(4, 1, ImageFormatRGB);
  const Image memory = New(4, 1, ImageFormatRGB);
  EXPECT_EQ(VisitRows(image, memory), (Visited{0, 0, 12}));
  EXPECT_EQ(VisitRows(memory, image), (Visited{0, 0, 12}));
  EXPECT_EQ(VisitRows(image, otherFile), (Visited{0, 0, 12}));
  EXPECT_EQ(VisitRows(image, Adopt(ClipImage1(image))), Visited{});
}

}  // namespace
}  // namespace zvk::pixels
