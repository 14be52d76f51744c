#include "pixels/sample_mover.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

#include "pixels/byte_shuffle.h"
#include "tests/scenes/random.h"
#include "tests/support/fence.h"

namespace zvk::pixels {
namespace {

// The moves of a row in plain nested loops.
void MoveNaively(int32_t sourcePixelSize, int32_t destPixelSize, const std::vector<SampleMove> &moves,
                 const uint8_t *source, uint8_t *dest, int32_t width) {
  for (int32_t x = 0; x < width; ++x) {
    std::vector<int> samples;
    for (const SampleMove &move : moves) {
      const int sample = source[x * sourcePixelSize + move.from];
      samples.push_back(move.zero ? 0 : move.full ? 255 : move.complement ? 255 - sample : sample);
    }
    for (size_t i = 0; i < moves.size(); ++i) {
      dest[x * destPixelSize + moves[i].to] = static_cast<uint8_t>(samples[i]);
    }
  }
}

int32_t Reach(const std::vector<SampleMove> &moves, int32_t SampleMove::*offset, int32_t pixelSize, int32_t width) {
  int32_t highest = 0;
  for (const SampleMove &move : moves) highest = std::max(highest, move.*offset);
  return width == 0 ? 0 : pixelSize * (width - 1) + highest + 1;
}

struct Case {
  const char *name;
  int32_t sourcePixelSize;
  int32_t destPixelSize;
  std::vector<SampleMove> moves;
  int32_t narrowest = kShuffleBytes;  // shuffle that holds two pixels; 0: none
};

const std::vector<Case> kCases{
    {"the same bytes", 3, 3, {{0, 0}, {1, 1}, {2, 2}}},
    {"another order without gaps", 4, 4, {{2, 0}, {1, 1}, {0, 2}, {3, 3}}},
    {"a byte is kept", 3, 4, {{2, 0}, {1, 1}, {0, 2}}},
    {"the same place, but with a gap", 4, 4, {{0, 0}, {1, 1}, {2, 2}}},
    {"one byte into four", 1, 4, {{0, 0}, {0, 1}, {0, 2}, {0, 3}}},
    {"one byte into five with a gap", 1, 5, {{0, 1}, {0, 2}, {0, 3}, {0, 4}}},
    {"one of three", 1, 3, {{0, 1}}},
    {"out of five", 5, 1, {{3, 0}}},
    {"five bytes of which one is complemented", 5, 5, {{0, 4}, {1, 3}, {2, 2}, {3, 1}, {4, 0, true}}},
    {"whole pixels but for the complement", 2, 2, {{0, 0}, {1, 1, true}}},
    {"offsets beyond the pixel", 4, 3, {{40, 30}, {41, 31}, {42, 32}}},
    {"the last of two moves to a byte counts", 3, 3, {{0, 0}, {1, 0}, {2, 2}}},
    {"the same places, one of them twice and one not at all", 4, 4, {{0, 0}, {0, 0}, {2, 2}, {3, 3}}},
    {"large pixels", 7, 6, {{6, 5}, {0, 0}}},
    {"one byte into the last of four, zeros before it",
     1,
     4,
     {{0, 0, false, true}, {0, 1, false, true}, {0, 2, false, true}, {0, 3}}},
    {"whole pixels but for a zero, which is not complemented", 2, 2, {{0, 0, true, true}, {1, 1}}},
    {"255 behind three samples", 3, 4, {{2, 0}, {1, 1}, {0, 2}, {.from = 0, .to = 3, .full = true}}},
    {"whole pixels but for 255, which is not complemented", 2, 2, {{0, 0, true, false, true}, {1, 1}}},
    {"255 in front of samples with a gap", 4, 5, {{.from = 3, .to = 0, .full = true}, {2, 4}, {0, 2, true}}},
    {"a pixel as large as a shuffle", 16, 4, {{0, 0}}, kWideShuffleBytes},
    {"samples too far apart to be shuffled", 4, 4, {{0, 0}, {40, 1}}, kWideShuffleBytes},
    {"samples further apart than any shuffle holds", 4, 4, {{0, 0}, {70, 1}}, 0},
    {"samples that lie among those of the next pixel", 2, 2, {{0, 0}, {1, 3}}, 0},
};

// The widths of shuffles at this level, and none.
std::vector<int32_t> ShuffleWidths() {
  std::vector<int32_t> widths{0};
  if (HasByteShuffle()) widths.push_back(kShuffleBytes);
  if (HasWideShuffle()) widths.push_back(kWideShuffleBytes);
  return widths;
}

void CheckInsideRows(const Case &test, int32_t shuffleBytes) {
  const SampleMover move(test.sourcePixelSize, test.destPixelSize, test.moves, shuffleBytes);
  scenes::Random random(7);
  for (int32_t width = 0; width < 150; width += width < 50 ? 1 : 7) {
    const auto sourceSize = static_cast<size_t>(Reach(test.moves, &SampleMove::from, test.sourcePixelSize, width));
    const auto destSize = static_cast<size_t>(Reach(test.moves, &SampleMove::to, test.destPixelSize, width));
    for (const fence::Side side : {fence::Side::kBefore, fence::Side::kAfter}) {
      fence::Block source(sourceSize + 1, side), dest(destSize + 1, side);
      scenes::FillNoise(source.Data(), source.Size(), random);
      scenes::FillNoise(dest.Data(), dest.Size(), random);
      // Without the spare byte on the side of the fence.
      const size_t spare = side == fence::Side::kAfter ? 1 : 0;
      std::vector<uint8_t> expected(dest.Data(), dest.Data() + dest.Size());
      MoveNaively(test.sourcePixelSize, test.destPixelSize, test.moves, source.Data() + spare, expected.data() + spare,
                  width);
      std::vector<uint8_t> inOrder(dest.Data(), dest.Data() + dest.Size());
      move.MoveInOrder(source.Data() + spare, inOrder.data() + spare, width);
      EXPECT_EQ(inOrder, expected) << width;
      move(source.Data() + spare, dest.Data() + spare, width);
      EXPECT_EQ(std::vector<uint8_t>(dest.Data(), dest.Data() + dest.Size()), expected) << width;
    }
  }
}

TEST(SampleMover, MovesAsThePlainLoopsAndStaysInsideItsRows) {
  for (const Case &test : kCases) {
    SCOPED_TRACE(test.name);
    for (const int32_t shuffleBytes : ShuffleWidths()) {
      SCOPED_TRACE(shuffleBytes);
      CheckInsideRows(test, shuffleBytes);
    }
  }
}

TEST(SampleMover, ShufflesWhereverTwoPixelsFit) {
  for (const Case &test : kCases) {
    SCOPED_TRACE(test.name);
    for (const int32_t shuffleBytes : ShuffleWidths()) {
      SCOPED_TRACE(shuffleBytes);
      const SampleMover move(test.sourcePixelSize, test.destPixelSize, test.moves, shuffleBytes);
      std::vector<uint8_t> source(1000), dest(1000), expected(1000);
      std::iota(source.begin(), source.end(), 1);
      const int32_t moved = move.MoveShuffled(source.data(), dest.data(), 50);
      // Narrow shuffles read and write beyond their pixels, and so leave the last ones of a row; wide ones do not.
      const bool shuffles = test.narrowest != 0 && test.narrowest <= shuffleBytes;
      EXPECT_GE(moved, shuffles ? 25 : 0);
      EXPECT_LE(moved, !shuffles ? 0 : shuffleBytes == kShuffleBytes ? 49 : 50);
      EXPECT_EQ(moved == 50, shuffles && shuffleBytes == kWideShuffleBytes);
      MoveNaively(test.sourcePixelSize, test.destPixelSize, test.moves, source.data(), expected.data(), moved);
      const int32_t written = Reach(test.moves, &SampleMove::to, test.destPixelSize, moved);
      EXPECT_TRUE(std::equal(expected.begin(), expected.begin() + written, dest.begin()));
    }
  }
}

TEST(SampleMover, TakesTheWidestShuffleOfTheLevel) {
  EXPECT_EQ(ShuffleWidths().back(), WidestShuffle());
  const SampleMover move(3, 4, kCases[2].moves);
  std::vector<uint8_t> source(1000), dest(1000);
  const int32_t moved = move.MoveShuffled(source.data(), dest.data(), 50);
  EXPECT_EQ(moved == 50, HasWideShuffle());
  EXPECT_EQ(moved > 0, HasByteShuffle());
}

TEST(SampleMover, OverlappingRowsGoPixelAfterPixel) {
  for (const Case &test : kCases) {
    SCOPED_TRACE(test.name);
    const SampleMover move(test.sourcePixelSize, test.destPixelSize, test.moves);
    for (int32_t distance = -70; distance <= 70; ++distance) {
      std::vector<uint8_t> memory(1200);
      std::iota(memory.begin(), memory.end(), 3);
      std::vector<uint8_t> expected = memory;
      MoveNaively(test.sourcePixelSize, test.destPixelSize, test.moves, expected.data() + 200,
                  expected.data() + 200 + distance, 40);
      move(memory.data() + 200, memory.data() + 200 + distance, 40);
      EXPECT_EQ(memory, expected) << distance;
    }
  }
}

TEST(SampleMover, RowsOverlapOnlyWhereTheirSamplesReach) {
  const uint8_t memory[100] = {};
  const PixelReach first{4, 0, 0}, last{4, 3, 3};
  // Ten samples of every fourth byte: 0 to 36, and 3 to 39 from there.
  EXPECT_TRUE(RowsOverlap(memory, first, memory, last, 10));
  EXPECT_TRUE(RowsOverlap(memory, first, memory + 36, first, 10));
  EXPECT_FALSE(RowsOverlap(memory, first, memory + 37, first, 10));
  EXPECT_FALSE(RowsOverlap(memory + 37, first, memory, first, 10));
  EXPECT_FALSE(RowsOverlap(memory, first, memory + 34, last, 10));
  EXPECT_TRUE(RowsOverlap(memory, first, memory + 33, last, 10));
}

}  // namespace
}  // namespace zvk::pixels
