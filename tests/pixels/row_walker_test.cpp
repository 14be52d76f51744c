#include "pixels/row_walker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/image_storage.h"
#include "image/views.h"
#include "tests/scenes/row_log.h"
#include "tests/scenes/stored_image.h"
#include "tests/support/faults.h"
#include "tests/support/file_faults.h"

namespace zvk::pixels {
namespace {

using scenes::Kind;
using scenes::StoredImage;
using standalone::Owned;
using testing::ElementsAre;

class RowWalker : public testing::Test {
 protected:
  // Ten gray columns. In a file 4096 rows make a block, and each row begins with its number.
  StoredImage InMemory() { return {host_, Kind::Memory, 10, 20, ImageFormatG}; }
  StoredImage InFile() {
    StoredImage image(host_, Kind::File, 10, 20000, ImageFormatG);
    for (int32_t y = 0; y < 20000; ++y) {
      uint8_t *row = image.Record().GetRow(&image.Record(), y);
      row[0] = static_cast<uint8_t>(y);
      row[1] = static_cast<uint8_t>(y >> 8);
    }
    return image;
  }
  // Has the host's code run in each yield that an image gives.
  void YieldOnRows(const StoredImage &image, std::function<void()> code) {
    host_->SetEntry(
        "TickCount", +[]() -> uint32_t {
          static uint32_t ticks;
          return ticks += 10;
        });
    host_->onYield = std::move(code);
    image.Record().Yield.YieldTicks = 1;
  }
  static int32_t NumberIn(const uint8_t *row) { return row[0] | row[1] << 8; }

  PluginHost host_;
};

TEST_F(RowWalker, FetchesTheDestinationBeforeTheOthers) {
  StoredImage dest = InMemory(), first = InMemory(), second = InMemory();
  scenes::RowLog log;
  log.Watch(dest.Record(), "d");
  log.Watch(first.Record(), "a");
  log.Watch(second.Record(), "b");
  RowGroup rows;
  ASSERT_TRUE(rows.Fetch(dest.Record(), 3, first.Record(), &second.Record(), 5));
  EXPECT_EQ(log.Take(), "d3 a5 b5");
  EXPECT_EQ(rows.Dest(), GetRowLinear(&dest.Record(), 3));
  EXPECT_EQ(rows.First(), GetRowLinear(&first.Record(), 5));
  EXPECT_EQ(rows.Second(), GetRowLinear(&second.Record(), 5));
  ASSERT_TRUE(rows.Fetch(dest.Record(), 4, first.Record(), nullptr, 6));
  EXPECT_EQ(rows.Second(), nullptr);
}

TEST_F(RowWalker, ARowThatCannotBeHadIsTold) {
  StoredImage dest = InMemory(), first = InMemory(), second = InMemory();
  scenes::RowLog log;
  log.Watch(dest.Record(), "d");
  log.Watch(first.Record(), "a");
  log.Watch(second.Record(), "b");
  log.Refuse(dest.Record(), 1);
  log.Refuse(first.Record(), 2);
  log.Refuse(second.Record(), 3);
  RowGroup rows;
  for (int32_t y = 0; y < 4; ++y) {
    EXPECT_EQ(rows.Fetch(dest.Record(), y, first.Record(), &second.Record(), y), y == 0);
  }
  EXPECT_EQ(log.Count(), 12);  // all are asked for all the same
}

TEST_F(RowWalker, AMappedImageWithBothRowsInItsBlockIsAskedOnceForEach) {
  StoredImage image = InFile();
  ImageClassData &record = image.Record();
  record.GetRow(&record, 0);
  scenes::RowLog log;
  log.Watch(record, "i");
  RowGroup rows;
  ASSERT_TRUE(rows.Fetch(record, 10, record, &record, 4000));
  EXPECT_EQ(log.Take(), "i10 i4000 i4000");
  EXPECT_EQ(NumberIn(rows.Dest()), 10);
  EXPECT_EQ(rows.First(), rows.Second());
  EXPECT_EQ(NumberIn(rows.First()), 4000);
}

TEST_F(RowWalker, AMappedImageThatLosesOneRowByTheOtherGivesACopy) {
  StoredImage image = InFile(), other = InMemory();
  ImageClassData &record = image.Record();
  RowGroup rows;
  for (const int32_t y : {19000, 19001, 5000}) {
    ASSERT_TRUE(rows.Fetch(record, 3, record, nullptr, y));
    EXPECT_EQ(NumberIn(rows.Dest()), 3);
    EXPECT_EQ(NumberIn(rows.First()), y);
    rows.Dest()[9] = 77;
    EXPECT_EQ(GetRowMapping(&record, 3)[9], 77);
    EXPECT_EQ(GetRowMapping(&record, y)[9], 0);
  }
  ASSERT_TRUE(rows.Fetch(record, 4, other.Record(), &record, 11));
  EXPECT_EQ(rows.First(), GetRowLinear(&other.Record(), 11));
  ASSERT_TRUE(rows.Fetch(record, 4, record, &record, 15000));
  EXPECT_EQ(NumberIn(rows.Dest()), 4);
  EXPECT_EQ(NumberIn(rows.First()), 15000);
  EXPECT_EQ(NumberIn(rows.Second()), 15000);
}

TEST_F(RowWalker, WithoutMemoryForTheCopyTheRowsCannotBeHad) {
  StoredImage image = InFile();
  faults::Heap heap;
  heap.FailCalloc([](size_t, size_t) { return true; });
  RowGroup rows;
  EXPECT_FALSE(rows.Fetch(image.Record(), 3, image.Record(), nullptr, 19000));
  heap.FailCalloc({});
  EXPECT_TRUE(rows.Fetch(image.Record(), 3, image.Record(), nullptr, 19000));
}

TEST_F(RowWalker, TheWalkYieldsOnTheDestinationAfterEachRowAndEndsWithItsImages) {
  StoredImage dest = InMemory(), first = InMemory(), second = InMemory();
  int32_t yields = 0, groups = 0;
  YieldOnRows(dest, [&] { ++yields; });
  const auto count = [&](const RowGroup &) { ++groups; };
  EXPECT_TRUE(ForEachRowGroup(dest.Record(), 0, first.Record(), &second.Record(), 3, 7, count));
  EXPECT_EQ(yields, 7);
  EXPECT_EQ(groups, 7);
  host_->onYield = [&] {
    if (++yields == 10) ImageDestructor(second);
  };
  EXPECT_FALSE(ForEachRowGroup(dest.Record(), 0, first.Record(), &second.Record(), 3, 7, count));
  EXPECT_EQ(yields, 10);
  EXPECT_EQ(groups, 10);
}

TEST_F(RowWalker, TheWalkOverAGroupEndsWhereAViewLosesItsPixels) {
  for (const bool isDest : {true, false}) {
    StoredImage parent = InMemory(), other = InMemory();
    const Owned<standalone::Object> view = Adopt(ClipImage5(parent, 0, 0, 5, 20));
    ImageClassData &dest = isDest ? *RecordOf(view) : other.Record();
    ImageClassData &source = isDest ? other.Record() : *RecordOf(view);
    YieldOnRows(other, [&] { ImageDestructor(parent); });
    dest.Yield.YieldTicks = 1;
    int32_t groups = 0;
    EXPECT_FALSE(ForEachRowGroup(dest, 0, source, nullptr, 0, 7, [&](const RowGroup &) { ++groups; }));
    EXPECT_EQ(groups, 1);
  }
}

// --- single rows ---

TEST_F(RowWalker, ARowIsHeldWhileThoseOfAnotherImageAreFetched) {
  StoredImage dest = InFile(), source = InFile();
  scenes::RowLog log;
  log.Watch(dest.Record(), "d");
  HeldRow row(dest.Record(), 7, source.Record());
  uint8_t *const address = row.Get();
  EXPECT_EQ(NumberIn(address), 7);
  FetchRow(source.Record(), 19000);
  EXPECT_EQ(row.Again(), address);
  EXPECT_EQ(log.Take(), "d7");
}

TEST_F(RowWalker, OfOneMappedRecordTheHeldRowIsFetchedAgain) {
  StoredImage image = InFile();
  scenes::RowLog log;
  log.Watch(image.Record(), "i");
  HeldRow row(image.Record(), 7, image.Record());
  EXPECT_EQ(NumberIn(FetchRow(image.Record(), 19000)), 19000);
  EXPECT_EQ(NumberIn(row.Again()), 7);
  EXPECT_EQ(row.Get(), GetRowMapping(&image.Record(), 7));
  EXPECT_EQ(log.Take(), "i7 i19000 i7");
  log.Refuse(image.Record(), 7);
  EXPECT_EQ(row.Again(), nullptr);
  EXPECT_FALSE(row);
}

TEST_F(RowWalker, OfOneRecordInMemoryTheHeldRowStays) {
  StoredImage image = InMemory();
  scenes::RowLog log;
  log.Watch(image.Record(), "i");
  HeldRow row(image.Record(), 7, image.Record());
  EXPECT_EQ(row.Again(), GetRowLinear(&image.Record(), 7));
  EXPECT_TRUE(row);
  EXPECT_EQ(log.Count(), 1);
}

// --- rows that are held together ---

TEST_F(RowWalker, RowsInMemoryAreHeldTogetherHoweverMany) {
  StoredImage image = InMemory();
  EXPECT_EQ(RowsAtATime(image.Record()), INT32_MAX);
  scenes::RowLog log;
  log.Watch(image.Record(), "i");
  uint8_t *rows[3] = {};
  ASSERT_TRUE(FetchRows(image.Record(), 4, 3, rows));
  EXPECT_EQ(log.Take(), "i4 i5 i6");
  for (int32_t i = 0; i < 3; ++i) EXPECT_EQ(rows[i], GetRowLinear(&image.Record(), 4 + i));
}

TEST_F(RowWalker, AsManyRowsOfAFileAsFitBesideTheLeadInAreHeldTogether) {
  for (const bool mirrored : {false, true}) {
    StoredImage image = InFile();
    const Owned<standalone::Object> view = mirrored ? Adopt(GetMirroredView(image)) : image.Image();
    ImageClassData &record = *RecordOf(view);
    scenes::UseBlocksOf(record, 40);
    ASSERT_EQ(RowsAtATime(record), 38);
    uint8_t *rows[38] = {};
    for (const int32_t first : {0, 1, 2, 3, 30, 39, 40, 41, 70, 100, 19000, 90, 60, 59, 19961, 19962, 0}) {
      ASSERT_TRUE(FetchRows(record, first, 38, rows)) << first;
      for (int32_t i = 0; i < 38; ++i) {
        ASSERT_EQ(NumberIn(rows[i]), mirrored ? 19999 - first - i : first + i) << first;
      }
    }
  }
}

TEST_F(RowWalker, TheBlockOfAFileIsMovedOnceForRowsThatAreHeldTogether) {
  StoredImage image = InFile();
  const Owned<standalone::Object> view = Adopt(GetMirroredView(image));
  ImageClassData &record = *RecordOf(view);
  FetchRow(record, 0);
  faults::Files files;
  uint8_t *rows[64] = {};
  ASSERT_TRUE(FetchRows(record, 100, 64, rows));  // which are in the block at the bottom
  EXPECT_EQ(files.Records(faults::FileCall::kMap).size(), 0u);
  ASSERT_TRUE(FetchRows(record, 5000, 64, rows));
  EXPECT_LE(files.Records(faults::FileCall::kMap).size(), 2u);
  GatherRows(record, 9000, 64);
  const size_t before = files.Records(faults::FileCall::kMap).size();
  ASSERT_TRUE(FetchRows(record, 9000, 64, rows));
  EXPECT_EQ(files.Records(faults::FileCall::kMap).size(), before);
}

TEST_F(RowWalker, RowsOfWhichOneCannotBeHadAreNotHeldTogether) {
  StoredImage image = InFile(), memory = InMemory();
  uint8_t *rows[5000] = {};
  EXPECT_FALSE(FetchRows(image.Record(), 10, 5000, rows));  // more than a block holds
  scenes::RowLog log;
  log.Watch(memory.Record(), "m");
  log.Refuse(memory.Record(), 6);
  EXPECT_FALSE(FetchRows(memory.Record(), 4, 3, rows));
  EXPECT_TRUE(FetchRows(memory.Record(), 3, 3, rows));
  faults::Files files;
  files.FailAll(faults::FileCall::kMap);
  EXPECT_FALSE(FetchRows(image.Record(), 15000, 3, rows));
}

TEST_F(RowWalker, ABlockHasMovedIfItIsElsewhereOrHoldsOtherRows) {
  StoredImage image = InFile(), memory = InMemory();
  FetchRow(image.Record(), 0);
  const BlockPlace place(image.Record()), inMemory(memory.Record());
  FetchRow(image.Record(), 4000);
  EXPECT_TRUE(place.IsThatOf(image.Record()));
  FetchRow(image.Record(), 10000);
  EXPECT_FALSE(place.IsThatOf(image.Record()));
  memory.Record().MappedFirstRow = 7;
  EXPECT_TRUE(inMemory.IsThatOf(memory.Record()));
}

TEST_F(RowWalker, RowsThatWillBeWrittenKeepTheirBytes) {
  // Rows of 4096 bytes exactly, and blocks that end with a row.
  StoredImage image(host_, Kind::File, 1024, 9, ImageFormatXRGB, {.blockRows = 5});
  image.Fill(3);
  const scenes::Bytes before = image.Bytes();
  ImageClassData &record = image.Record();
  for (const int32_t x : {0, 1, 511, 1023}) {
    for (const int32_t columns : {0, 1, 1024 - x}) {
      ExpectWrites(record, FetchRow(record, 8) + ptrdiff_t{4} * x, {1, 3}, columns);
      EXPECT_EQ(image.Bytes(), before);
    }
  }
  StoredImage memory = InMemory();
  ExpectWrites(memory.Record(), nullptr, {0, 0}, 10);  // which is not looked at
}

// --- one image ---

TEST_F(RowWalker, ARowThatCannotBeHadIsLeftOut) {
  StoredImage image = InMemory();
  scenes::RowLog log;
  log.Watch(image.Record(), "i");
  log.Refuse(image.Record(), 1);
  std::vector<std::pair<uint8_t *, int32_t>> visited;
  ForEachRow(image.Record(), 3, [&](uint8_t *row, int32_t y) { visited.emplace_back(row, y); });
  EXPECT_EQ(log.Take(), "i0 i1 i2");
  EXPECT_THAT(visited, ElementsAre(std::pair(GetRowLinear(&image.Record(), 0), 0),
                                   std::pair(GetRowLinear(&image.Record(), 2), 2)));
}

TEST_F(RowWalker, TheRowsOfARectangleAreVisitedFromTheTopWithOrWithoutYields) {
  StoredImage image(host_, Kind::Memory, 4, 5, ImageFormatGA);
  std::string log;
  YieldOnRows(image, [&] { log += "yield "; });
  uint8_t *const first = GetRowLinear(&image.Record(), 2) + 2, *const second = GetRowLinear(&image.Record(), 3) + 2;
  const auto visit = [&](const RowPart &part) {
    const PixelRow pixels = part.PixelsOf(image.Record());
    EXPECT_EQ(pixels.count, 2);
    log += pixels.first == first ? "2 " : pixels.first == second ? "3 " : "? ";
  };
  EXPECT_TRUE(ForEachRow(image.Record(), {1, 2, 2, 2}, RowYield::None, visit));
  EXPECT_EQ(std::exchange(log, {}), "2 3 ");
  EXPECT_TRUE(ForEachRow(image.Record(), {1, 2, 2, 2}, RowYield::AfterEachRow, visit));
  EXPECT_EQ(log, "2 yield 3 yield ");
}

TEST_F(RowWalker, ARectangleThatLeadsOutOfTheImageIsCut) {
  StoredImage image(host_, Kind::Memory, 4, 3, ImageFormatG);
  scenes::RowLog log;
  log.Watch(image.Record(), "i");
  EXPECT_TRUE(ForEachRow(image.Record(), {3, 1, INT32_MAX, INT32_MAX}, RowYield::None,
                         [](const RowPart &part) { EXPECT_EQ(part.width, 1); }));
  EXPECT_EQ(log.Take(), "i1 i2");
}

TEST_F(RowWalker, TheRectangleIsCutAnewAfterAYield) {
  StoredImage image = InMemory();
  YieldOnRows(image, [&] {
    ImageConstructor(image, 3, 2, ImageFormatG);
    image.Record().Yield.YieldTicks = 1;
  });
  std::vector<int32_t> widths;
  EXPECT_TRUE(ForEachRow(image.Record(), {1, 0, 9, 20}, RowYield::AfterEachRow,
                         [&](const RowPart &part) { widths.push_back(part.width); }));
  EXPECT_THAT(widths, ElementsAre(9, 2));
}

TEST_F(RowWalker, TheWalkOverARectangleEndsWhereItsImageIsClosedOrTheCheckFails) {
  StoredImage image = InMemory();
  int32_t yields = 0, rows = 0;
  YieldOnRows(image, [&] {
    if (++yields == 7) ImageDestructor(image);
  });
  const auto count = [&](const RowPart &) { ++rows; };
  EXPECT_FALSE(ForEachRow(image.Record(), {0, 0, 10, 20}, RowYield::AfterEachRow, count, [&] { return yields < 3; }));
  EXPECT_EQ(rows, 3);
  EXPECT_FALSE(ForEachRow(image.Record(), {0, 0, 10, 20}, RowYield::AfterEachRow, count));
  EXPECT_EQ(rows, 7);
  EXPECT_FALSE(ForEachRow(image.Record(), {0, 0, 10, 20}, RowYield::AfterEachRow, count));
  EXPECT_EQ(rows, 7);
}

TEST_F(RowWalker, TheWalkOverAViewEndsWhereItsParentIsClosed) {
  StoredImage parent = InMemory();
  const Owned<standalone::Object> clip = Adopt(ClipImage5(parent, 0, 0, 5, 20));
  const Owned<standalone::Object> channel = Adopt(GrayChannel(clip));
  YieldOnRows(parent, [&] { ImageDestructor(parent); });
  RecordOf(channel)->Yield.YieldTicks = 1;
  int32_t rows = 0;
  EXPECT_FALSE(ForEachRow(*RecordOf(channel), {0, 0, 5, 20}, RowYield::AfterEachRow, [&](const RowPart &) { ++rows; }));
  EXPECT_EQ(rows, 1);
}

// --- two images ---

TEST_F(RowWalker, OfAPairTheFirstRowIsFetchedFirst) {
  StoredImage image = InMemory(), other = InMemory();
  scenes::RowLog log;
  log.Watch(image.Record(), "a");
  log.Watch(other.Record(), "b");
  std::vector<std::pair<uint8_t *, const uint8_t *>> rows;
  ForEachRowPair(image.Record(), other.Record(), 2,
                 [&](uint8_t *row, const uint8_t *otherRow) { rows.emplace_back(row, otherRow); });
  EXPECT_EQ(log.Take(), "a0 b0 a1 b1");
  const ImageClassData *const a = &image.Record(), *const b = &other.Record();
  EXPECT_EQ(rows, (std::vector<std::pair<uint8_t *, const uint8_t *>>{
                      {a->Buffer, b->Buffer}, {a->Buffer + a->RowSize, b->Buffer + b->RowSize}}));
}

TEST_F(RowWalker, APairOfWhichARowCannotBeHadIsLeftOut) {
  StoredImage image = InMemory(), other = InMemory();
  scenes::RowLog log;
  log.Watch(image.Record(), "a");
  log.Watch(other.Record(), "b");
  log.Refuse(image.Record(), 1);
  log.Refuse(other.Record(), 3);
  std::vector<int32_t> rows;
  ForEachRowPair(image.Record(), other.Record(), 5,
                 [&](const uint8_t *, const uint8_t *, int32_t y) { rows.push_back(y); });
  EXPECT_THAT(rows, ElementsAre(0, 2, 4));
}

}  // namespace
}  // namespace zvk::pixels
