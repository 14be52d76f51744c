#include "pixels/row_window.h"

#include <gtest/gtest.h>

#include <algorithm>

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

constexpr OffsetRange kGray{0, 0};

class RowWindowTest : public testing::Test {
 protected:
  // Ten gray columns and 40 rows, each byte of a row its number; five rows are mapped at a time.
  StoredImage InFile() { return Numbered({host_, Kind::File, 10, 40, ImageFormatG, {.blockRows = 5}}); }
  StoredImage InMemory() { return Numbered({host_, Kind::Memory, 10, 40, ImageFormatG}); }

  PluginHost host_;

 private:
  static StoredImage Numbered(StoredImage image) {
    const ImageClassData &record = image.Record();
    for (int32_t y = 0; y < record.Height; ++y) {
      std::fill_n(image.All().begin() + ptrdiff_t{y} * record.RowSize, record.RowSize, static_cast<uint8_t>(y));
    }
    return image;
  }
};

TEST_F(RowWindowTest, RowsInMemoryAreUsedInPlaceAndWithoutMemory) {
  StoredImage image = InMemory();
  faults::Heap heap;
  heap.FailCalloc([](size_t, size_t) { return true; });
  RowWindow window(image.Record(), kGray, 10, 3);
  ASSERT_TRUE(window);
  EXPECT_EQ(window.Row(7), GetRowLinear(&image.Record(), 7));
  EXPECT_EQ(heap.CallocCalls(), 0);
}

TEST_F(RowWindowTest, RowsOfAFileOutliveItsBlock) {
  StoredImage image = InFile();
  RowWindow window(image.Record(), kGray, 10, 12);
  ASSERT_TRUE(window);
  const uint8_t *rows[40] = {};
  for (int32_t y = 0; y < 40; ++y) {
    rows[y] = window.Row(y);
    for (int32_t held = std::max(y - 11, 0); held <= y; ++held) {
      ASSERT_EQ(window.Row(held), rows[held]);
      for (int32_t x = 0; x < 10; ++x) ASSERT_EQ(rows[held][x], held);
    }
  }
}

TEST_F(RowWindowTest, ARowOfAFileIsFetchedOnceWhileItIsInTheWindow) {
  StoredImage image = InFile();
  scenes::RowLog log;
  log.Watch(image.Record(), "i");
  RowWindow window(image.Record(), kGray, 10, 2);
  for (const int32_t y : {3, 4, 3, 4, 5, 4, 5, 3}) EXPECT_EQ(window.Row(y)[0], y);
  EXPECT_EQ(log.Take(), "i3 i4 i5 i3");
}

TEST_F(RowWindowTest, OnlyTheSamplesAreCopied) {
  StoredImage image(host_, Kind::File, 10, 8, ImageFormatRGBA, {.blockRows = 5});
  image.Fill(3);
  ImageClassData &record = image.Record();
  faults::Heap heap;
  RowWindow window(record, {5, 6}, 4, 7);  // green and blue from column 1 on
  ASSERT_TRUE(window);
  EXPECT_EQ(heap.Allocations().front().count * heap.Allocations().front().size, 7u * (3 * 4 + 2));
  for (int32_t y = 0; y < 7; ++y) window.Row(y);
  for (int32_t y = 0; y < 7; ++y) {
    for (int32_t x = 0; x < 4; ++x) {
      for (const int32_t offset : {5, 6}) {
        EXPECT_EQ(window.Row(y)[x * 4 + offset], image.All()[static_cast<size_t>(y * record.RowSize + x * 4 + offset)]);
      }
    }
  }
}

TEST_F(RowWindowTest, SamplesInFrontOfTheRowAreThereToo) {
  StoredImage image = InFile();
  RowWindow window(image.Record(), {-2, 1}, 10, 3);
  EXPECT_EQ(window.Row(6)[-2], 5);
  EXPECT_EQ(window.Row(6)[0], 6);
}

TEST_F(RowWindowTest, AForgottenRowIsFetchedAnew) {
  StoredImage image = InFile();
  RowWindow window(image.Record(), kGray, 10, 2);
  EXPECT_EQ(window.Row(0)[4], 0);
  image.All()[4] = 99;
  EXPECT_EQ(window.Row(0)[4], 0);
  window.Forget();
  EXPECT_EQ(window.Row(0)[4], 99);
  StoredImage inMemory = InMemory();
  RowWindow inPlace(inMemory.Record(), kGray, 10, 2);
  inPlace.Forget();
  EXPECT_EQ(inPlace.Row(5)[0], 5);
}

TEST_F(RowWindowTest, ARowThatCannotBeHadIsNilAndAskedForAgain) {
  StoredImage image = InFile();
  RowWindow window(image.Record(), kGray, 10, 3);
  EXPECT_EQ(window.Row(17)[0], 17);
  {
    faults::Files files;
    files.FailAt(faults::FileCall::kMap, 1);
    EXPECT_EQ(window.Row(30), nullptr);
  }
  EXPECT_EQ(window.Row(30)[0], 30);
  EXPECT_EQ(window.Row(30 - 3)[0], 27);
}

TEST_F(RowWindowTest, WithoutMemoryForTheCopiesThereIsNoWindow) {
  StoredImage image = InFile();
  for (const int nth : {1, 2}) {
    faults::Heap heap;
    heap.FailCallocAt(nth);
    EXPECT_FALSE(RowWindow(image.Record(), kGray, 10, 3));
  }
  EXPECT_FALSE(RowWindow(image.Record(), kGray, 10, INT32_MAX));
  EXPECT_FALSE(RowWindow(image.Record(), {INT32_MIN, INT32_MAX}, 10, 1));
  EXPECT_FALSE(RowWindow(image.Record(), kGray, 0, 1));
  EXPECT_TRUE(RowWindow(image.Record(), kGray, 10, 3));
  // 64 MiB are the most.
  EXPECT_TRUE(RowWindow(image.Record(), kGray, 10, 6710886));
  EXPECT_FALSE(RowWindow(image.Record(), kGray, 10, 6710887));
}

}  // namespace
}  // namespace zvk::pixels
