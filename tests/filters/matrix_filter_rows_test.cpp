// How the convolution reaches rows: of mapped images in the told order, and what happens where one cannot be had.
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "filters/matrix_filter.h"
#include "tests/filters/filter_testing.h"
#include "tests/naive/filters.h"
#include "tests/support/faults.h"
#include "tests/support/file_faults.h"

namespace zvk::filters {
namespace {

using namespace filter_testing;

class MatrixFilterRows : public FilterTest {
 protected:
  Image Apply(const Image &self, const Image &dest, const naive::Matrix &matrix) {
    return Adopt(PictureMatrix5(self, dest, matrix.dimension, host_.NewArray(matrix.entries)->ArrayHandle(),
                                matrix.delta, matrix.scale));
  }
};

const naive::Matrix kBlur{3, {1, 1, 1, 1, 1, 1, 1, 1, 1}, 0, 1.0 / 9};

TEST_F(MatrixFilterRows, OfAMappedSourceARowIsFetchedForEachRowOfTheMatrixAndEachPixel) {
  const Image self = Noise(2, 3, ImageFormatG), dest = Noise(2, 3, ImageFormatG);
  scenes::RowLog log;
  log.WatchAsMapped(Record(self), "s");
  log.WatchAsMapped(Record(dest), "d");
  EXPECT_TRUE(Apply(self, dest, kBlur));
  EXPECT_EQ(log.Take(), "d0 s0 s0 s1 s0 s0 s1 d1 s0 s1 s2 s0 s1 s2 d2 s1 s2 s2 s1 s2 s2");
}

TEST_F(MatrixFilterRows, ARowIsFetchedAlsoWhereNoEntryOfItCounts) {
  const Image self = Noise(1, 1, ImageFormatG), dest = Noise(1, 1, ImageFormatG);
  scenes::RowLog log;
  log.WatchAsMapped(Record(self), "s");
  log.WatchAsMapped(Record(dest), "d");
  EXPECT_TRUE(Apply(self, dest, {2, {255, 0, 300, 0}}));
  EXPECT_EQ(log.Take(), "d0 s0 s0");
  EXPECT_TRUE(Apply(self, dest, {0, {}}));
  EXPECT_EQ(log.Take(), "d0");
}

TEST_F(MatrixFilterRows, ADimensionAbove50FetchesNoRowsWithoutEntries) {
  const Image self = Noise(1, 1, ImageFormatG), dest = New(1, 1, ImageFormatG);
  scenes::RowLog log;
  log.WatchAsMapped(Record(self), "s");
  log.WatchAsMapped(Record(dest), "d");
  for (const auto &[dimension, rows] : {std::pair{50, 50}, {51, 50}, {1250, 2}, {2500, 1}, {INT32_MAX, 1}}) {
    EXPECT_TRUE(Apply(self, dest, {dimension, {1}}));
    EXPECT_EQ(log.TakeCount(), rows + 1) << dimension;
  }
}

TEST_F(MatrixFilterRows, OfAnImageThatSharesNothingWithTheDestEveryRowIsFetchedOnce) {
  for (const bool inFile : {false, true}) {
    const Image self = inFile ? NoiseInFile(4, 9, ImageFormatRGB) : Noise(4, 9, ImageFormatRGB);
    const Image dest = New(4, 9, ImageFormatRGB);
    scenes::RowLog log;
    log.Watch(Record(self), "s");
    EXPECT_TRUE(Apply(self, dest, kBlur));
    EXPECT_EQ(log.Count(), 9);
  }
}

TEST_F(MatrixFilterRows, FilesGiveTheBytesThatMemoryGives) {
  const Image inMemory = Noise(9, 30, ImageFormatBGRA);
  const Image file = NoiseInFile(9, 30, ImageFormatBGRA), destFile = NoiseInFile(9, 30, ImageFormatBGRA, 2);
  const Image dest = New(9, 30, ImageFormatBGRA);
  EXPECT_TRUE(Apply(inMemory, dest, kBlur));
  EXPECT_TRUE(Apply(file, destFile, kBlur));
  EXPECT_EQ(PixelsOf(destFile), PixelsOf(dest));
  const Image fromFile = New(9, 30, ImageFormatBGRA);
  EXPECT_TRUE(Apply(file, fromFile, kBlur));
  EXPECT_EQ(PixelsOf(fromFile), PixelsOf(dest));
}

TEST_F(MatrixFilterRows, AFileThatIsItsOwnDestIsWrittenWhereItsBlockHasMoved) {
  // A window of more rows than the block has, so that it moves for every pixel.
  const Image file = NoiseInFile(3, 60, ImageFormatRGB);
  const Image inMemory = New(3, 60, ImageFormatRGB, PixelsOf(file));
  ShrinkBlock(file);
  naive::Matrix matrix{21, std::vector<int32_t>(441, 0), 3};
  matrix.entries[10] = 1;
  matrix.entries[20 * 21 + 11] = -1;
  EXPECT_TRUE(Apply(file, file, matrix));
  naive::ApplyMatrix(Record(inMemory), Record(inMemory), 3, 60, matrix);
  EXPECT_EQ(PixelsOf(file), PixelsOf(inMemory));
}

TEST_F(MatrixFilterRows, ARowOfTheSourceThatCannotBeHadAddsNothing) {
  const Image self = New(1, 3, ImageFormatG, {{1}, {2}, {4}}), dest = New(1, 3, ImageFormatG);
  scenes::RowLog log;
  log.Refuse(Record(self), 1);
  const naive::Matrix column{3, {0, 1, 0, 0, 1, 0, 0, 1, 0}};
  EXPECT_TRUE(Apply(self, dest, column));
  EXPECT_EQ(PixelsOf(dest), (Grid{{2}, {5}, {8}}));
  const Image byPixel = New(1, 3, ImageFormatG);
  Record(self).IsMapping = Record(byPixel).IsMapping = true;  // of one file, as far as one can tell
  EXPECT_TRUE(Apply(self, byPixel, column));
  EXPECT_EQ(PixelsOf(byPixel), (Grid{{2}, {5}, {8}}));
}

TEST_F(MatrixFilterRows, ARowOfTheDestThatCannotBeHadIsLeftOut) {
  const Image self = New(1, 3, ImageFormatG, {{1}, {2}, {4}}), dest = New(1, 3, ImageFormatG, {{9}, {9}, {9}});
  scenes::RowLog log;
  log.Refuse(Record(dest), 1);
  for (const bool mapped : {false, true}) {
    Record(self).IsMapping = Record(dest).IsMapping = mapped;
    EXPECT_TRUE(Apply(self, dest, {1, {1}}));
    log.Release(Record(dest));
    EXPECT_EQ(PixelsOf(dest), (Grid{{1}, {9}, {4}}));
    SetPixels(dest, {{9}, {9}, {9}});
    log.Refuse(Record(dest), 1);
  }
  Record(self).IsMapping = false;
}

TEST_F(MatrixFilterRows, WhereBlocksCannotBeMappedNothingFaults) {
  const Image file = NoiseInFile(2, 20, ImageFormatG), dest = NoiseInFile(2, 20, ImageFormatG, 2);
  const Grid sourceBefore = PixelsOf(file), destBefore = PixelsOf(dest);
  ShrinkBlock(file);
  ShrinkBlock(dest);
  {
    faults::Files files;
    files.FailAll(faults::FileCall::kMap);
    EXPECT_EQ(Apply(file, dest, kBlur).Handle(), dest.Handle());
  }
  const Image expected = New(2, 20, ImageFormatG);
  naive::ApplyMatrix(Record(file), Record(expected), 2, 20, kBlur);
  const Grid after = PixelsOf(dest), wanted = PixelsOf(expected);
  // The five rows that were mapped, and a window that needs one more at the last of them.
  EXPECT_EQ(Grid(after.begin(), after.begin() + 4), Grid(wanted.begin(), wanted.begin() + 4));
  EXPECT_EQ(Grid(after.begin() + 5, after.end()), Grid(destBefore.begin() + 5, destBefore.end()));

  Row(file, 0);
  {
    faults::Files files;
    files.FailAll(faults::FileCall::kMap);
    EXPECT_EQ(Apply(file, file, kBlur).Handle(), file.Handle());
  }
  const Grid self = PixelsOf(file);
  EXPECT_EQ(Grid(self.begin() + 4, self.end()), Grid(sourceBefore.begin() + 4, sourceBefore.end()));
  ExpectNothingRaised();
}

TEST_F(MatrixFilterRows, WithoutMemoryForLinesTheBytesAreTheSame) {
  const Image self = Noise(40, 9, ImageFormatBGR);
  for (const int32_t format : {ImageFormatBGR, ImageFormatRGBX}) {
    const Image dest = New(40, 9, format), plain = New(40, 9, format);
    EXPECT_TRUE(Apply(self, dest, kBlur));
    for (const int nth : {1, 2}) {
      faults::Heap heap;
      heap.FailCallocAt(nth);
      EXPECT_TRUE(Apply(self, plain, kBlur));
      EXPECT_EQ(PixelsOf(plain), PixelsOf(dest));
      EXPECT_EQ(heap.Outstanding(), 0u);
    }
  }
  ExpectNothingRaised();
}

}  // namespace
}  // namespace zvk::filters
