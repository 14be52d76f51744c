#include "geometry/turns.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "image/image_factory.h"
#include "image/views.h"
#include "tests/geometry/turn_testing.h"
#include "tests/support/faults.h"
#include "tests/support/file_faults.h"

namespace zvk::geometry {
namespace {

using namespace turn_testing;

using Turn = REALobject (*)(REALobject, REALobject);
constexpr auto kTurns = {Rotate180, Rotate90, Rotate90fast, Rotate270, Rotate270fast};
constexpr auto kQuarterTurns = {Rotate90, Rotate90fast, Rotate270, Rotate270fast};

class Turns : public testing::Test {
 protected:
  ~Turns() override { EXPECT_FALSE(host_.TakeException()); }

  Owned<Object> Gray(const std::vector<Bytes> &rows) {
    auto image = NewImage(host_, static_cast<int32_t>(rows[0].size()), static_cast<int32_t>(rows.size()), ImageFormatG);
    SetGrid(image, 'g', rows);
    return image;
  }

  PluginHost host_{{.fenced = true}};
};

// --- what moves where ---

TEST_F(Turns, AHalfTurnPutsTheUpperLeftPixelToTheLowerRight) {
  const auto image = Gray({{1, 2, 3}, {4, 5, 6}});
  const auto turned = Adopt(Rotate180(image, nullptr));
  EXPECT_EQ(Grid(turned, 'g'), (std::vector<Bytes>{{6, 5, 4}, {3, 2, 1}}));
  EXPECT_EQ(Grid(image, 'g'), (std::vector<Bytes>{{1, 2, 3}, {4, 5, 6}}));
}

TEST_F(Turns, AHalfTurnIntoAnotherImageIsExactForOddHeights) {
  const auto image = Gray({{1, 2}, {3, 4}, {5, 6}});
  EXPECT_EQ(Grid(Adopt(Rotate180(image, nullptr)), 'g'), (std::vector<Bytes>{{6, 5}, {4, 3}, {2, 1}}));
}

TEST_F(Turns, AQuarterTurnPutsTheUpperRightPixelToTheUpperLeft) {
  const auto image = Gray({{1, 2, 3}, {4, 5, 6}});
  for (const auto turn : {Rotate90, Rotate90fast}) {
    EXPECT_EQ(Grid(Adopt(turn(image, nullptr)), 'g'), (std::vector<Bytes>{{3, 6}, {2, 5}, {1, 4}}));
  }
}

TEST_F(Turns, ThreeQuartersPutTheLowerLeftPixelToTheUpperLeft) {
  const auto image = Gray({{1, 2, 3}, {4, 5, 6}});
  for (const auto turn : {Rotate270, Rotate270fast}) {
    EXPECT_EQ(Grid(Adopt(turn(image, nullptr)), 'g'), (std::vector<Bytes>{{4, 1}, {5, 2}, {6, 3}}));
  }
}

TEST_F(Turns, ANewImageHasTheFormatAndTheSizeOfTheTurn) {
  for (const int32_t format : kFamilyFormats) {
    const StoredImage storage = Stored(host_, Kind::Block, 5, 3, format);
    for (const auto turn : kTurns) {
      const auto turned = Adopt(turn(storage.Image(), nullptr));
      const ImageClassData &record = *RecordOf(turned);
      EXPECT_EQ(record.ImageFormat, format);
      EXPECT_EQ(record.Width, turn == Rotate180 ? 5 : 3);
      EXPECT_EQ(record.Height, turn == Rotate180 ? 3 : 5);
      EXPECT_EQ(References(turned), 1);
    }
  }
}

TEST_F(Turns, BothFormsGiveTheSamePixels) {
  for (const int32_t format : kFamilyFormats) {
    const StoredImage storage = Stored(host_, Kind::Memory, 70, 131, format);
    for (const auto &[plain, tiled] : {std::pair{&Rotate90, &Rotate90fast}, {&Rotate270, &Rotate270fast}}) {
      const auto a = Adopt(plain(storage.Image(), nullptr)), b = Adopt(tiled(storage.Image(), nullptr));
      ImageClassData &first = *RecordOf(a), &second = *RecordOf(b);
      ASSERT_EQ(first.TotalSize, second.TotalSize);
      EXPECT_TRUE(std::equal(first.Buffer, first.Buffer + first.TotalSize, second.Buffer)) << format;
    }
  }
}

TEST_F(Turns, FourQuarterTurnsGiveBackEverySample) {
  for (const int32_t format : kFamilyFormats) {
    const StoredImage storage = Stored(host_, Kind::Memory, 67, 130, format);
    for (const auto turn : kQuarterTurns) {
      Owned<Object> image = storage.Image();
      for (int i = 0; i < 4; ++i) image = Adopt(turn(image, nullptr));
      for (const char letter : ChannelsOf(storage.Record())) {
        EXPECT_EQ(Grid(image, letter), Grid(storage.Image(), letter)) << format << letter;
      }
    }
  }
}

TEST_F(Turns, SamplesGoWhereTheDestKeepsThemAndFillerStays) {
  const StoredImage source = Stored(host_, Kind::Block, 2, 1, ImageFormatRGB),
                    dest = Stored(host_, Kind::Block, 1, 2, ImageFormatXBGR, 1);
  source.SetBytes({1, 2, 3, 4, 5, 6});
  dest.SetBytes(Bytes(9, 9));
  EXPECT_EQ(Adopt(Rotate90(source.Image(), dest.Image())).Handle(), dest.Image().Handle());
  EXPECT_EQ(dest.Bytes(), (Bytes{9, 6, 5, 4, 9, 9, 3, 2, 1}));
  const StoredImage wide = Stored(host_, Kind::Block, 2, 1, ImageFormatXBGR);
  wide.SetBytes(Bytes(8, 9));
  Adopt(Rotate180(source.Image(), wide.Image()));
  EXPECT_EQ(wide.Bytes(), (Bytes{9, 6, 5, 4, 9, 3, 2, 1}));
}

TEST_F(Turns, FillerOfANewImageIsZero) {
  const StoredImage storage = Stored(host_, Kind::Memory, 66, 65, ImageFormatCMYKX);
  for (const auto turn : kTurns) {
    const auto turned = Adopt(turn(storage.Image(), nullptr));
    ImageClassData &record = *RecordOf(turned);
    for (int32_t y = 0; y < record.Height; ++y) {
      for (int32_t x = 0; x < record.Width; ++x) ASSERT_EQ(record.GetRow(&record, y)[x * 5 + 4], 0);
    }
  }
}

TEST_F(Turns, ADestOfAnotherFamilyGetsTheSamplesAtItsOwnOffsets) {
  const StoredImage source = Stored(host_, Kind::Block, 2, 1, ImageFormatRGB),
                    dest = Stored(host_, Kind::Block, 2, 1, ImageFormatG);
  source.SetBytes({1, 2, 3, 4, 5, 6});
  Adopt(Rotate180(source.Image(), dest.Image()));
  EXPECT_EQ(dest.Bytes(), (Bytes{6, 3}));  // all three at offset 0, the last one stays
}

TEST_F(Turns, AnImageOfNoFamilyLeavesTheDestAsItIs) {
  const StoredImage source = Stored(host_, Kind::Block, 4, 4, ImageFormatScaling3),
                    dest = Stored(host_, Kind::Block, 4, 4, ImageFormatRGB);
  const Bytes before = dest.Bytes();
  for (const auto turn : kTurns) {
    EXPECT_EQ(Adopt(turn(source.Image(), dest.Image())).Handle(), dest.Image().Handle());
    EXPECT_EQ(dest.Bytes(), before);
    const auto fresh = Adopt(turn(source.Image(), nullptr));
    EXPECT_EQ(RecordOf(fresh)->ImageFormat, ImageFormatScaling3);
  }
}

// --- the dest ---

TEST_F(Turns, TheDestIsReturnedWithAReferenceOfItsOwn) {
  const auto source = NewImage(host_, 3, 3, ImageFormatRGB), dest = NewImage(host_, 3, 3, ImageFormatRGB);
  for (const auto turn : kTurns) {
    const REALobject result = turn(source, dest);
    EXPECT_EQ(result, dest.Handle());
    EXPECT_EQ(References(dest), 2);
    Adopt(result).Reset();
    EXPECT_EQ(References(source), 1);
  }
}

TEST_F(Turns, ADestThatIsNotUsableGivesNilAndIsReleased) {
  const auto source = NewImage(host_, 3, 3, ImageFormatRGB);
  const auto empty = host_.New("PictureZVK"), closed = NewImage(host_, 3, 3, ImageFormatRGB);
  ImageDestructor(closed);
  for (const auto turn : kTurns) {
    for (const auto *dest : {&empty, &closed}) {
      EXPECT_EQ(turn(source, *dest), nullptr);
      EXPECT_EQ(References(*dest), 1);
    }
  }
}

TEST_F(Turns, WithoutMemoryForTheNewImageTheResultIsNil) {
  const auto source = NewImage(host_, 3, 3, ImageFormatRGB);
  for (const auto turn : kTurns) {
    faults::Heap heap;
    heap.FailCalloc([](size_t, size_t size) { return size == 192; });  // three rows of 64 bytes
    EXPECT_EQ(turn(source, nullptr), nullptr);
    heap.FailCalloc({});
    const auto exception = host_.TakeException();
    ASSERT_TRUE(exception);
    EXPECT_EQ(exception->className, "OutOfMemoryException");
  }
}

TEST_F(Turns, ADestThatIsTooLargeKeepsTheRest) {
  const StoredImage source = Stored(host_, Kind::Block, 2, 1, ImageFormatG),
                    dest = Stored(host_, Kind::Block, 3, 3, ImageFormatG);
  source.SetBytes({1, 2});
  const auto turnedInto = [&](Turn turn) {
    dest.SetBytes(Bytes(9, 9));
    Adopt(turn(source.Image(), dest.Image()));
    return dest.Bytes();
  };
  EXPECT_EQ(turnedInto(Rotate180), (Bytes{2, 1, 9, 9, 9, 9, 9, 9, 9}));
  EXPECT_EQ(turnedInto(Rotate90), (Bytes{2, 9, 9, 1, 9, 9, 9, 9, 9}));
  EXPECT_EQ(turnedInto(Rotate90fast), (Bytes{2, 9, 9, 1, 9, 9, 9, 9, 9}));
  EXPECT_EQ(turnedInto(Rotate270), (Bytes{1, 9, 9, 2, 9, 9, 9, 9, 9}));
  EXPECT_EQ(turnedInto(Rotate270fast), (Bytes{1, 9, 9, 2, 9, 9, 9, 9, 9}));
}

TEST_F(Turns, TheSizeOfADestIsNotChecked) {
  // What falls beyond a part of an image goes into the image behind it.
  const auto source = Gray({{1, 2, 3}, {4, 5, 6}});
  const StoredImage whole = Stored(host_, Kind::Block, 4, 4, ImageFormatG, 2);
  const auto part = Adopt(ClipImage5(whole.Image(), 1, 1, 1, 1));
  const auto lowPart = Adopt(ClipImage5(whole.Image(), 1, 2, 1, 1)), mirroredPart = Adopt(GetMirroredView(lowPart));
  const auto turnedInto = [&](Turn turn, const Owned<Object> &dest) {
    whole.SetBytes(Bytes(22, 0));
    Adopt(turn(source, dest));
    return Grid(whole.Image(), 'g');
  };
  EXPECT_EQ(turnedInto(Rotate180, part), (std::vector<Bytes>{{0, 0, 0, 0}, {0, 6, 5, 4}, {0, 3, 2, 1}, {0, 0, 0, 0}}));
  const std::vector<Bytes> left{{0, 0, 0, 0}, {0, 3, 6, 0}, {0, 2, 5, 0}, {0, 1, 4, 0}};
  EXPECT_EQ(turnedInto(Rotate90, part), left);
  EXPECT_EQ(turnedInto(Rotate90fast, part), left);
  const std::vector<Bytes> right{{0, 0, 0, 0}, {0, 4, 1, 0}, {0, 5, 2, 0}, {0, 6, 3, 0}};
  EXPECT_EQ(turnedInto(Rotate270, part), right);
  EXPECT_EQ(turnedInto(Rotate270fast, part), right);
  // Upwards from row 2.
  EXPECT_EQ(turnedInto(Rotate90, mirroredPart),
            (std::vector<Bytes>{{0, 1, 4, 0}, {0, 2, 5, 0}, {0, 3, 6, 0}, {0, 0, 0, 0}}));
}

TEST_F(Turns, WhatFallsOutsideTheStorageIsLeftOut) {
  const auto source = Gray({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
  const StoredImage dest = Stored(host_, Kind::Block, 2, 1, ImageFormatG);  // fenced
  const auto turnedInto = [&](Turn turn) {
    Adopt(turn(source, dest.Image()));
    return dest.Bytes();
  };
  EXPECT_EQ(turnedInto(Rotate180), (Bytes{9, 8}));
  EXPECT_EQ(turnedInto(Rotate90), (Bytes{3, 6}));
  EXPECT_EQ(turnedInto(Rotate90fast), (Bytes{3, 6}));
  EXPECT_EQ(turnedInto(Rotate270), (Bytes{7, 4}));
  EXPECT_EQ(turnedInto(Rotate270fast), (Bytes{7, 4}));
}

TEST_F(Turns, AnImageOfNoColumnsGivesTheDestUnchangedAndNoNewImage) {
  const auto parent = NewImage(host_, 3, 3, ImageFormatRGB);
  const auto none = Adopt(ClipImage5(parent, 3, 0, 1, 3));
  const StoredImage dest = Stored(host_, Kind::Block, 3, 3, ImageFormatRGB);
  const Bytes before = dest.Bytes();
  for (const auto turn : kTurns) {
    EXPECT_EQ(Adopt(turn(none, dest.Image())).Handle(), dest.Image().Handle());
    EXPECT_EQ(dest.Bytes(), before);
    EXPECT_EQ(turn(none, nullptr), nullptr);
  }
}

// --- refusals ---

TEST_F(Turns, SixteenBitGrayGivesNilAndGetsNoTime) {
  const auto image = NewImage(host_, 4, 4, ImageFormatGray16), dest = NewImage(host_, 4, 4, ImageFormatG);
  YieldAlways(host_, image);
  for (const auto turn : kTurns) {
    EXPECT_EQ(turn(image, nullptr), nullptr);
    EXPECT_EQ(turn(image, dest), nullptr);
  }
  EXPECT_EQ(References(dest), 1);
  EXPECT_EQ(Yields(host_), 0);
}

TEST_F(Turns, AnImageThatIsNotUsableGivesNil) {
  const auto empty = host_.New("PictureZVK"), closed = NewImage(host_, 4, 4, ImageFormatRGB);
  ImageDestructor(closed);
  const auto parent = NewImage(host_, 4, 4, ImageFormatRGB);
  const auto negative = Adopt(ClipImage5(parent, 6, 0, 1, 4)), low = Adopt(ClipImage5(parent, 0, 4, 4, 1));
  const StoredImage table = Stored(host_, Kind::Table, 4, 4, ImageFormatRGB);
  const auto tableView = Adopt(ClipImage1(table.Image()));
  for (const auto turn : kTurns) {
    EXPECT_EQ(turn(nullptr, parent), nullptr);
    for (const auto &image : {empty, closed, negative, low, tableView}) {
      EXPECT_EQ(turn(image, nullptr), nullptr);
      EXPECT_EQ(turn(image, parent), nullptr);
    }
    EXPECT_EQ(turn(parent, tableView), nullptr);
  }
  EXPECT_EQ(References(tableView), 1);
}

// --- order of fetches and pixels ---

TEST_F(Turns, LowImagesAndViewsInMemoryTurnInThePlainForm) {
  // Their tiles would have an edge of 0 or less. As source and dest share storage, the order of the pixels can be seen.
  for (const auto &[width, height] : {std::pair{1, 1}, {2, 2}, {2, 5}, {5, 2}, {5, 5}}) {
    const StoredImage storage = Stored(host_, Kind::Block, 5, 5, ImageFormatRGB);
    const Bytes before = storage.Bytes();
    const auto view = Adopt(ClipImage5(storage.Image(), 0, 0, width, height));
    for (const auto &[tiled, left] : {std::pair{&Rotate90fast, true}, {&Rotate270fast, false}}) {
      storage.SetBytes(before);
      naive::QuarterTurn(*RecordOf(view), storage.Record(), left, 0);
      const Bytes expected = storage.Bytes();
      storage.SetBytes(before);
      Adopt(tiled(view, storage.Image()));
      EXPECT_EQ(storage.Bytes(), expected);
    }
    const auto low = NewImage(host_, width, height, ImageFormatRGBA);
    EXPECT_TRUE(Adopt(Rotate90fast(low, nullptr)));
    EXPECT_TRUE(Adopt(Rotate270fast(low, nullptr)));
  }
}

TEST_F(Turns, AnImageTurnedIntoItselfReadsWhatItHasWritten) {
  const auto image = Gray({{1, 2}, {3, 4}});
  // 1 goes to the lower left, 2 to the upper left; what stands in the lower left by then is 1, and so on.
  Adopt(Rotate90(image, image));
  EXPECT_EQ(Grid(image, 'g'), (std::vector<Bytes>{{2, 1}, {1, 1}}));
  SetGrid(image, 'g', {{1, 2}, {3, 4}});
  // 1 goes to the upper right and from there to the lower right, 3 to the upper left, and 1 once more to the lower
  // left.
  Adopt(Rotate270(image, image));
  EXPECT_EQ(Grid(image, 'g'), (std::vector<Bytes>{{3, 1}, {1, 1}}));
  SetGrid(image, 'g', {{1, 2}, {3, 4}});
  Adopt(Rotate180(image, image));
  EXPECT_EQ(Grid(image, 'g'), (std::vector<Bytes>{{1, 2}, {2, 1}}));
}

TEST_F(Turns, TilesOfAnImageTurnedIntoItselfAreVisitedInTheirOrder) {
  for (const int32_t size : {3, 4, 9}) {
    const StoredImage storage = Stored(host_, Kind::Memory, size, size, ImageFormatRGBA);
    const Bytes before = storage.Bytes();
    for (const auto &[tiled, left] : {std::pair{&Rotate90fast, true}, {&Rotate270fast, false}}) {
      storage.SetBytes(before);
      naive::QuarterTurn(storage.Record(), storage.Record(), left, size - 2);
      const Bytes expected = storage.Bytes();
      storage.SetBytes(before);
      Adopt(tiled(storage.Image(), storage.Image()));
      EXPECT_EQ(storage.Bytes(), expected);
    }
  }
}

TEST_F(Turns, PixelsAreReadWholeBeforeTheyAreWritten) {
  // The same bytes as RGB and as BGR: the middle pixel goes to itself and must come out with its ends exchanged.
  const StoredImage storage = Stored(host_, Kind::Block, 1, 1, ImageFormatRGB);
  storage.SetBytes({1, 2, 3});
  const auto other = host_.New("PictureZVK");
  ImageConstructorMemory(other, storage.Block(), 1, 1, ImageFormatBGR, 3);
  for (const auto turn : kTurns) {
    storage.SetBytes({1, 2, 3});
    Adopt(turn(storage.Image(), other));
    EXPECT_EQ(storage.Bytes(), (Bytes{3, 2, 1}));
  }
}

TEST_F(Turns, ThePlainFormFetchesTheDestRowForEveryPixel) {
  const StoredImage source = Stored(host_, Kind::Block, 3, 2, ImageFormatG),
                    dest = Stored(host_, Kind::Block, 2, 3, ImageFormatG);
  ImageClassData &from = source.Record(), &to = dest.Record();
  RowLog log;
  log.WatchAsMapped(from, "s");
  log.WatchAsMapped(to, "d");
  Adopt(Rotate90(source.Image(), dest.Image()));
  EXPECT_EQ(log.Take(), "s0 d2 d1 d0 s1 d2 d1 d0");
  Adopt(Rotate270(source.Image(), dest.Image()));
  EXPECT_EQ(log.Take(), "s0 d0 d1 d2 s1 d0 d1 d2");
}

TEST_F(Turns, AHalfTurnFetchesEachRowOnce) {
  const StoredImage source = Stored(host_, Kind::Block, 3, 3, ImageFormatG),
                    dest = Stored(host_, Kind::Block, 3, 3, ImageFormatG);
  ImageClassData &from = source.Record(), &to = dest.Record();
  RowLog log;
  log.WatchAsMapped(from, "s");
  log.WatchAsMapped(to, "d");
  Adopt(Rotate180(source.Image(), dest.Image()));
  EXPECT_EQ(log.Take(), "s0 d2 s1 d1 s2 d0");
}

TEST_F(Turns, TheTiledFormFetchesByTilesOfTwoRowsLessThanTheSmallerBlock) {
  const StoredImage source = Stored(host_, Kind::Block, 3, 5, ImageFormatG),
                    dest = Stored(host_, Kind::Block, 5, 3, ImageFormatG);
  ImageClassData &from = source.Record(), &to = dest.Record();
  RowLog log;
  log.WatchAsMapped(from, "s");
  log.WatchAsMapped(to, "d");
  from.MappedRowCount = 9;
  to.MappedRowCount = 4;
  std::string expected = "d0 s0";
  for (const auto &[y, x] : std::vector<std::pair<int, std::vector<int>>>{{0, {2, 1}},
                                                                          {1, {2, 1}},
                                                                          {0, {0}},
                                                                          {1, {0}},
                                                                          {2, {2, 1}},
                                                                          {3, {2, 1}},
                                                                          {2, {0}},
                                                                          {3, {0}},
                                                                          {4, {2, 1}},
                                                                          {4, {0}}}) {
    expected += " s" + std::to_string(y);
    for (const int row : x) expected += " d" + std::to_string(row);
  }
  Adopt(Rotate90fast(source.Image(), dest.Image()));
  EXPECT_EQ(log.Take(), expected);
}

TEST_F(Turns, NoBlockMovesInsideATile) {
  const StoredImage source = Stored(host_, Kind::File, 30, 30, ImageFormatRGB),
                    other = Stored(host_, Kind::File, 30, 30, ImageFormatRGB);
  const auto view = Adopt(ClipImage1(source));
  const auto mapsOf = [&](Turn turn, const Owned<Object> &dest) {
    faults::Files files;
    Adopt(turn(source.Image(), dest));
    return files.Records(faults::FileCall::kMap).size();
  };
  // Blocks of 5 rows, so tiles of an edge of 3: a new block of the dest for each of 10 x 10 tiles, one of the source
  // for each of their 10 rows, and two at the start.
  EXPECT_LE(mapsOf(Rotate90fast, view), 112u);
  EXPECT_LE(mapsOf(Rotate270fast, view), 112u);
  // Between parts of one file the plain form walks over the whole dest for each of 30 rows, up at three rows a block or
  // down at three. Between two files it goes by tiles as well.
  EXPECT_GT(mapsOf(Rotate90, view), 250u);
  EXPECT_GT(mapsOf(Rotate270, view), 250u);
  for (const auto turn : kQuarterTurns) EXPECT_LE(mapsOf(turn, other.Image()), 112u);
}

TEST_F(Turns, AHalfTurnBetweenFilesMovesABlockOnceForAllRowsInIt) {
  // Blocks of 32 rows.
  StoredImage source = scenes::NoisyImage(host_, Kind::File, 4, 300, ImageFormatG, {.blockRows = 32}, 5);
  StoredImage dest = scenes::NoisyImage(host_, Kind::File, 4, 300, ImageFormatG, {.blockRows = 32}, 6);
  faults::Files files;
  Adopt(Rotate180(source.Image(), dest.Image()));
  EXPECT_LE(files.Records(faults::FileCall::kMap).size(), 30u);
  const auto rowSize = static_cast<size_t>(source.Record().RowSize);
  for (size_t y = 0; y < 300; ++y) {
    for (size_t x = 0; x < 4; ++x) ASSERT_EQ(dest.All()[(299 - y) * rowSize + 3 - x], source.All()[y * rowSize + x]);
  }
}

TEST_F(Turns, AMappedImageTurnedIntoItselfGivesTheBytesOfOneInMemory) {
  for (const auto turn : kTurns) {
    const StoredImage inFile = Stored(host_, Kind::File, 13, 13, ImageFormatRGB);
    const StoredImage inMemory = Stored(host_, Kind::Memory, 13, 13, ImageFormatRGB);
    inMemory.Record().MappedRowCount = 5;
    for (const char letter : {'R', 'G', 'B'}) SetGrid(inFile.Image(), letter, Grid(inMemory.Image(), letter));
    Adopt(turn(inFile.Image(), inFile.Image()));
    Adopt(turn(inMemory.Image(), inMemory.Image()));
    for (const char letter : {'R', 'G', 'B'}) EXPECT_EQ(Grid(inFile.Image(), letter), Grid(inMemory.Image(), letter));
  }
}

TEST_F(Turns, ARowThatCannotBeMappedIsLeftOut) {
  const auto source = Gray({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
  const StoredImage dest = Stored(host_, Kind::Block, 3, 3, ImageFormatG);
  const auto turnedInto = [&](Turn turn) {
    dest.SetBytes(Bytes(9, 0));
    Adopt(turn(source, dest.Image()));
    return dest.Bytes();
  };
  RowLog rows;
  rows.Refuse(dest.Record(), 1);
  for (const bool mapped : {true, false}) {
    dest.Record().IsMapping = mapped;
    EXPECT_EQ(turnedInto(Rotate180), (Bytes{9, 8, 7, 0, 0, 0, 3, 2, 1}));
    EXPECT_EQ(turnedInto(Rotate90), (Bytes{3, 6, 9, 0, 0, 0, 1, 4, 7}));
    EXPECT_EQ(turnedInto(Rotate270fast), (Bytes{7, 4, 1, 0, 0, 0, 9, 6, 3}));
  }
  rows.Release(dest.Record());
  rows.Refuse(*RecordOf(source), 1);
  for (const bool mapped : {true, false}) {
    RecordOf(source)->IsMapping = mapped;
    EXPECT_EQ(turnedInto(Rotate180), (Bytes{9, 8, 7, 0, 0, 0, 3, 2, 1}));
    EXPECT_EQ(turnedInto(Rotate90fast), (Bytes{3, 0, 9, 2, 0, 8, 1, 0, 7}));
    EXPECT_EQ(turnedInto(Rotate270), (Bytes{7, 0, 1, 8, 0, 2, 9, 0, 3}));
  }
  RecordOf(source)->IsMapping = false;
}

// --- yields ---

TEST_F(Turns, TimeIsGivenOnceOnEachImage) {
  const auto source = NewImage(host_, 9, 9, ImageFormatRGB), dest = NewImage(host_, 9, 9, ImageFormatRGB);
  YieldAlways(host_, source);
  int64_t yields = 0;
  for (const auto turn : kTurns) {
    Adopt(turn(source, dest));
    EXPECT_EQ(Yields(host_), ++yields);
  }
  YieldAlways(host_, dest);
  for (const auto turn : kTurns) {
    Adopt(turn(source, dest));
    EXPECT_EQ(Yields(host_), yields += 2);
  }
}

TEST_F(Turns, ADestThatShrinksDuringItsYieldIsNotWrittenBeyondItsEnd) {
  for (const auto turn : kTurns) {
    const auto source = NewImage(host_, 40, 40, ImageFormatRGB), dest = NewImage(host_, 40, 40, ImageFormatRGB);
    YieldAlways(host_, dest);
    host_->onYield = [&] {
      ImageDestructor(dest);
      ImageConstructor(dest, 3, 2, ImageFormatRGB);
    };
    Adopt(turn(source, dest));
    host_->onYield = nullptr;
    EXPECT_EQ(RecordOf(dest)->Width, 3);
  }
}

}  // namespace
}  // namespace zvk::geometry
