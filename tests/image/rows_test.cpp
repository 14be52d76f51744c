#include "image/rows.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <string>

#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/image_storage.h"
#include "image/views.h"
#include "tests/image/file_testing.h"

namespace zvk::image {
namespace {

std::array<uint8_t, 4096> memory;

// An image of 8-bit gray pixels with ten columns in `memory`.
ImageClassData Gray(int32_t first, int32_t rowSize, int32_t height) {
  ImageClassData image{};
  InitImageClassData(&image, 10, height, ImageFormatG);
  image.Buffer = memory.data() + first;
  image.RowSize = rowSize;
  image.GetRow = GetRowLinear;
  image.Valid = true;
  return image;
}

bool Shared(const ImageClassData &a, const ImageClassData &b) {
  EXPECT_EQ(SharesStorage(a, b), SharesStorage(b, a));
  return SharesStorage(a, b);
}

TEST(Rows, AnImageSharesWithItself) {
  const ImageClassData image = Gray(0, 10, 3);
  EXPECT_TRUE(Shared(image, image));
  const ImageClassData same = image;
  EXPECT_TRUE(Shared(image, same));
}

TEST(Rows, NeighboursInMemoryShareNothing) {
  EXPECT_FALSE(Shared(Gray(0, 10, 3), Gray(30, 10, 3)));
  EXPECT_TRUE(Shared(Gray(0, 10, 3), Gray(29, 10, 3)));
}

TEST(Rows, RowsThatRunBackwardsCoverWhatLiesBelow) {
  const ImageClassData backwards = Gray(100, -10, 3);  // rows at 100, 90, 80
  EXPECT_TRUE(Shared(backwards, Gray(80, 10, 1)));
  EXPECT_TRUE(Shared(backwards, Gray(109, 10, 1)));
  EXPECT_FALSE(Shared(backwards, Gray(70, 10, 1)));
  EXPECT_FALSE(Shared(backwards, Gray(110, 10, 1)));
}

// Of a block only its caller knows the length. In 32 bits this one, on the stack, ends behind the last address.
TEST(Rows, AStorageThatIsDescribedAsLargerThanItIsSharesWhatItShows) {
  std::array<uint8_t, 64> bytes{};
  ImageClassData described = Gray(0, 1000, 2000000), part = Gray(0, 10, 3);
  described.Buffer = bytes.data();
  part.Buffer = bytes.data() + 20;
  EXPECT_TRUE(Shared(described, part));
}

TEST(Rows, ARowSizeShorterThanThePixelsReachesFurther) {
  const ImageClassData crowded = Gray(0, 2, 3);  // rows at 0, 2, 4 of ten bytes each
  EXPECT_TRUE(Shared(crowded, Gray(13, 10, 1)));
  EXPECT_FALSE(Shared(crowded, Gray(14, 10, 1)));
}

TEST(Rows, ClipsOfDifferentRowsShareNothing) {
  ImageClassData top = Gray(0, 64, 8);
  ImageClassData bottom = top;
  top.Height = 4;
  bottom.RowOffset = 4;
  bottom.Height = 4;
  EXPECT_FALSE(Shared(top, bottom));
  bottom.RowOffset = 3;
  EXPECT_TRUE(Shared(top, bottom));
}

TEST(Rows, TheOffsetOfAClipReachesBeyondTheRow) {
  ImageClassData clip = Gray(0, 10, 1);
  clip.GrayOffset = 50;
  EXPECT_TRUE(Shared(clip, Gray(59, 10, 1)));
  EXPECT_FALSE(Shared(clip, Gray(60, 10, 1)));
}

TEST(Rows, AnOffsetBelowZeroReachesInFrontOfTheRow) {
  ImageClassData clip = Gray(100, 10, 1);
  clip.GrayOffset = -5;
  EXPECT_TRUE(Shared(clip, Gray(86, 10, 1)));
  EXPECT_FALSE(Shared(clip, Gray(85, 10, 1)));
  uint8_t *rows[] = {clip.Buffer};
  clip.Buffer = nullptr;
  clip.RowTable = rows;
  EXPECT_TRUE(Shared(clip, Gray(86, 10, 1)));
  EXPECT_FALSE(Shared(clip, Gray(85, 10, 1)));
}

TEST(Rows, ARowTableSharesWithItsOwnTableAndWithTheMemoryOfItsRows) {
  uint8_t *rows[] = {memory.data() + 100, nullptr, memory.data() + 300};
  uint8_t *otherRows[] = {memory.data() + 1000};
  ImageClassData table = Gray(0, 10, 3);
  table.Buffer = nullptr;
  table.RowTable = rows;
  ImageClassData other = table;
  other.RowTable = otherRows;
  other.Height = 1;
  EXPECT_FALSE(Shared(table, other));
  other.RowTable = rows;
  EXPECT_TRUE(Shared(table, other));
  EXPECT_TRUE(Shared(table, Gray(309, 10, 1)));
  EXPECT_FALSE(Shared(table, Gray(110, 10, 19)));
}

TEST(Rows, AMappedFileOfWhichNothingIsKnownMayShareWithAnything) {
  ImageClassData a = Gray(0, 10, 1);
  a.IsMapping = true;
  a.FileHandle = -1;
  ImageClassData b = a;
  EXPECT_TRUE(Shared(a, b));
  b.FileHandle = -2;
  EXPECT_TRUE(Shared(a, b));
  EXPECT_TRUE(Shared(a, Gray(1000, 10, 1)));  // perhaps memory that is another mapping of the file
  EXPECT_FALSE(HasFixedRows(a));
  EXPECT_TRUE(HasFixedRows(Gray(0, 10, 1)));
}

using standalone::Object;
using standalone::Owned;

class RowsOfFiles : public file_testing::FileImage {
 protected:
  using Image = Owned<Object>;

  // The same name is the same file.
  Image InFile(const std::string &name) {
    Image image = host_.New("PictureZVK");
    ImageConstructorFile(image, 10, 8, ImageFormatRGB, 0, NewItem(name));
    EXPECT_TRUE(RecordOf(image)->Valid);
    return image;
  }
  Image InMemory() {
    Image image = host_.New("PictureZVK");
    ImageConstructor(image, 10, 8, ImageFormatRGB);
    return image;
  }
  Image OverBlock(const Owned<standalone::MemoryBlock> &block) {
    Image image = host_.New("PictureZVK");
    ImageConstructorMemory(image, block, 10, 8, ImageFormatRGB, 30);
    return image;
  }
  static bool SharesWith(const Image &a, const Image &b) { return Shared(*RecordOf(a), *RecordOf(b)); }
};

TEST_F(RowsOfFiles, DifferentFilesShareNothing) {
  const Image a = InFile("a"), b = InFile("b");
  EXPECT_FALSE(SharesWith(a, b));
  EXPECT_FALSE(SharesWith(Adopt(GetMirroredView(Adopt(ClipImage5(a, 1, 1, 5, 5)))), Adopt(RGBChannel(b))));
}

TEST_F(RowsOfFiles, AFileSharesWithItselfHoweverItIsOpened) {
  const Image a = InFile("a"), again = InFile("a");
  EXPECT_NE(RecordOf(a)->FileHandle, RecordOf(again)->FileHandle);
  EXPECT_TRUE(SharesWith(a, again));
  std::filesystem::create_hard_link(folder_.In("a"), folder_.In("link"));
  const Image linked = InFile("link");
  EXPECT_TRUE(SharesWith(a, linked));
  EXPECT_TRUE(SharesWith(Adopt(RedChannel(a)), Adopt(ClipImage5(linked, 5, 5, 2, 2))));
}

TEST_F(RowsOfFiles, ViewsOfOneFileShareItWhateverTheyShow) {
  const Image a = InFile("a");
  const Image top = Adopt(ClipImage5(a, 0, 0, 10, 4)), bottom = Adopt(ClipImage5(a, 0, 4, 10, 4));
  EXPECT_TRUE(SharesWith(a, top));
  EXPECT_TRUE(SharesWith(top, bottom));
}

TEST_F(RowsOfFiles, WhatAnImageHasAllocatedIsNoFile) {
  const Image file = InFile("a"), memory = InMemory();
  EXPECT_FALSE(SharesWith(file, memory));
  EXPECT_FALSE(SharesWith(Adopt(GetMirroredView(file)), Adopt(ClipImage1(Adopt(GreenChannel(memory))))));
  const Image clone = Adopt(Clone(memory));
  EXPECT_FALSE(SharesWith(file, clone));
  RecordOf(clone)->OwnsBuffer = false;  // one of the two must give up the buffer
}

TEST_F(RowsOfFiles, OnlyWhatSharesAFileIsMappedTwice) {
  const auto mappedTwice = [](const Image &a, const Image &b) { return MayBeMappedTwice(*RecordOf(a), *RecordOf(b)); };
  const Image file = InFile("a"), memory = InMemory();
  EXPECT_TRUE(mappedTwice(file, Adopt(ClipImage1(file))));
  EXPECT_TRUE(mappedTwice(file, InFile("a")));
  EXPECT_TRUE(mappedTwice(OverBlock(host_.NewMemoryBlock(240)), file));
  EXPECT_FALSE(mappedTwice(file, file));  // which has one mapping
  EXPECT_FALSE(mappedTwice(file, InFile("b")));
  EXPECT_FALSE(mappedTwice(file, memory));
  EXPECT_FALSE(mappedTwice(memory, Adopt(ClipImage1(memory))));  // of which addresses tell
}

TEST_F(RowsOfFiles, OtherMemoryMayBeTheFileToo) {
  const Image file = InFile("a");
  const Image block = OverBlock(host_.NewMemoryBlock(240));
  EXPECT_TRUE(SharesWith(file, block));
  EXPECT_TRUE(SharesWith(file, Adopt(ClipImage1(block))));
  const Image mapped = OverBlock(AdoptMemoryBlock(GetMemory(file, 0)));
  EXPECT_TRUE(SharesWith(file, mapped));
  const Image clone = Adopt(Clone(mapped));  // which passes for the owner of the mapping
  EXPECT_TRUE(SharesWith(file, clone));
  RecordOf(clone)->OwnsBuffer = false;
  uint8_t *rows[8] = {};
  ImageClassData table = *RecordOf(block);
  table.Buffer = nullptr;
  table.RowTable = rows;
  EXPECT_TRUE(Shared(*RecordOf(file), table));
}

TEST_F(RowsOfFiles, AnImageThatIsConstructedAnewIsWhatItIsThen) {
  const Image file = InFile("a"), other = InMemory();
  EXPECT_FALSE(SharesWith(file, other));
  const auto block = host_.NewMemoryBlock(240);
  ImageConstructorMemory(other, block, 10, 8, ImageFormatRGB, 30);
  EXPECT_TRUE(SharesWith(file, other));
  ImageConstructor(other, 10, 8, ImageFormatRGB);
  EXPECT_FALSE(SharesWith(file, other));
}

TEST_F(RowsOfFiles, OfAViewWhoseFileHasBeenClosedNothingIsKnown) {
  const Image parent = InFile("a"), other = InFile("b");
  const Image view = Adopt(ClipImage1(Adopt(ClipImage1(parent))));
  EXPECT_FALSE(SharesWith(view, other));
  const int descriptor = RecordOf(parent)->FileHandle;
  ImageDestructor(parent);
  const Image next = InFile("c");
  ASSERT_EQ(RecordOf(next)->FileHandle, descriptor);  // the view's descriptor is another file now
  EXPECT_TRUE(SharesWith(view, other));
  EXPECT_TRUE(SharesWith(view, next));
  EXPECT_FALSE(SharesWith(view, InMemory()));
}

TEST(Rows, TheStorageEndsBehindTheLastRowInMemory) {
  std::array<uint8_t, 100> bytes = {};
  ImageClassData image{};
  image.Buffer = bytes.data() + 40;
  image.RowSize = 10;
  image.TotalSize = 50;
  EXPECT_EQ(BytesFromRow(image, image.Buffer + 20), 30);
  image.RowSize = -10;
  image.TotalSize = -50;
  EXPECT_EQ(BytesFromRow(image, image.Buffer), 10);
  EXPECT_EQ(BytesFromRow(image, image.Buffer - 20), 30);
  image.RowSize = 10;
  image.TotalSize = 50;
  image.IsMapping = true;
  EXPECT_EQ(BytesFromRow(image, image.Buffer + 20), 10);
  image.IsMapping = false;
  uint8_t *table[] = {bytes.data()};
  image.RowTable = table;
  EXPECT_EQ(BytesFromRow(image, table[0]), 10);
}

TEST(Rows, AnImageHasTheSamePixelsUntilItIsClosedOrConstructedAnew) {
  const ImageClassData before = Gray(0, 10, 3);
  ImageClassData image = before;
  EXPECT_TRUE(HasSamePixels(before, image));
  image.GrayOffset = 3;  // the host may move a channel
  image.Yield.YieldTicks = 5;
  image.MappingBlockSize = 77;
  EXPECT_TRUE(HasSamePixels(before, image));
  for (const ImageClassData &other : {Gray(1, 10, 3), Gray(0, 11, 3), Gray(0, 10, 4)}) {
    EXPECT_FALSE(HasSamePixels(before, other));
  }
  ImageClassData closed = before;
  closed.GetRow = nullptr;
  EXPECT_FALSE(HasSamePixels(before, closed));
  ImageClassData larger = before;
  larger.PixelSize = 4;
  EXPECT_FALSE(HasSamePixels(before, larger));
}

TEST(Rows, TheBlockOfAMappedImageMayMove) {
  ImageClassData before = Gray(0, 10, 3);
  before.IsMapping = true;
  before.FileHandle = 5;
  ImageClassData image = before;
  image.Buffer += 100;
  image.MappedFirstRow = 7;
  EXPECT_TRUE(HasSamePixels(before, image));
  image.FileHandle = 6;
  EXPECT_FALSE(HasSamePixels(before, image));
}

}  // namespace
}  // namespace zvk::image
