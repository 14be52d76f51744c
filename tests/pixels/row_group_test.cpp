#include "pixels/row_group.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/image_storage.h"
#include "tests/support/faults.h"
#include "tests/support/row_log.h"
#include "tests/support/stored_image.h"

namespace zvk::pixels {
namespace {

using stored_image::Kind;
using stored_image::StoredImage;
using testing::ElementsAre;

class RowGroupTest : public testing::Test {
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
  static int32_t NumberIn(const uint8_t *row) { return row[0] | row[1] << 8; }

  PluginHost host_;
};

TEST_F(RowGroupTest, FetchesTheDestinationBeforeTheOthers) {
  StoredImage dest = InMemory(), first = InMemory(), second = InMemory();
  RowLog log;
  log.Watch(dest.Record(), 'd');
  log.Watch(first.Record(), 'a');
  log.Watch(second.Record(), 'b');
  RowGroup rows;
  ASSERT_TRUE(rows.Fetch(dest.Record(), 3, first.Record(), &second.Record(), 5));
  EXPECT_THAT(log.Asked(), ElementsAre(std::pair('d', 3), std::pair('a', 5), std::pair('b', 5)));
  EXPECT_EQ(rows.Dest(), GetRowLinear(&dest.Record(), 3));
  EXPECT_EQ(rows.First(), GetRowLinear(&first.Record(), 5));
  EXPECT_EQ(rows.Second(), GetRowLinear(&second.Record(), 5));
  ASSERT_TRUE(rows.Fetch(dest.Record(), 4, first.Record(), nullptr, 6));
  EXPECT_EQ(rows.Second(), nullptr);
}

TEST_F(RowGroupTest, ARowThatCannotBeHadIsTold) {
  StoredImage dest = InMemory(), first = InMemory(), second = InMemory();
  RowLog log;
  log.Watch(dest.Record(), 'd');
  log.Watch(first.Record(), 'a');
  log.Watch(second.Record(), 'b');
  log.Refuse(dest.Record(), 1);
  log.Refuse(first.Record(), 2);
  log.Refuse(second.Record(), 3);
  RowGroup rows;
  for (int32_t y = 0; y < 4; ++y) {
    EXPECT_EQ(rows.Fetch(dest.Record(), y, first.Record(), &second.Record(), y), y == 0);
  }
  EXPECT_EQ(log.Asked().size(), 12u);  // all are asked for all the same
}

TEST_F(RowGroupTest, AMappedImageWithBothRowsInItsBlockIsAskedOnceForEach) {
  StoredImage image = InFile();
  ImageClassData &record = image.Record();
  record.GetRow(&record, 0);
  RowLog log;
  log.Watch(record, 'i');
  RowGroup rows;
  ASSERT_TRUE(rows.Fetch(record, 10, record, &record, 4000));
  EXPECT_THAT(log.Asked(), ElementsAre(std::pair('i', 10), std::pair('i', 4000), std::pair('i', 4000)));
  EXPECT_EQ(NumberIn(rows.Dest()), 10);
  EXPECT_EQ(rows.First(), rows.Second());
  EXPECT_EQ(NumberIn(rows.First()), 4000);
}

TEST_F(RowGroupTest, AMappedImageThatLosesOneRowByTheOtherGivesACopy) {
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

TEST_F(RowGroupTest, WithoutMemoryForTheCopyTheRowsCannotBeHad) {
  StoredImage image = InFile();
  faults::Heap heap;
  heap.FailCalloc([](size_t, size_t) { return true; });
  RowGroup rows;
  EXPECT_FALSE(rows.Fetch(image.Record(), 3, image.Record(), nullptr, 19000));
  heap.FailCalloc({});
  EXPECT_TRUE(rows.Fetch(image.Record(), 3, image.Record(), nullptr, 19000));
}

TEST_F(RowGroupTest, TheWalkYieldsOnTheDestinationAfterEachRowAndEndsWithItsImages) {
  StoredImage dest = InMemory(), first = InMemory(), second = InMemory();
  host_->SetEntry(
      "TickCount", +[]() -> uint32_t {
        static uint32_t ticks;
        return ticks += 10;
      });
  dest.Record().Yield.YieldTicks = 1;
  int32_t yields = 0, groups = 0;
  host_->onYield = [&] { ++yields; };
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

}  // namespace
}  // namespace zvk::pixels
