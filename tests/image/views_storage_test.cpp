// Views by what lies under them: files, row tables, nothing; and the two that show the storage itself, a clone and
// Memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <thread>

#include "image/image_formats.h"
#include "image/views.h"
#include "tests/scenes/image_test.h"
#include "tests/support/faults.h"
#include "tests/support/file_faults.h"

namespace zvk::image {
namespace {

using scenes::ImageTest;
using standalone::Object;
using standalone::Owned;

class ViewsOfStorage : public ImageTest {};

// --- mapped files ---

TEST_F(ViewsOfStorage, AViewOfAFileHasABlockOfItsOwnAndLeavesTheFileToItsParent) {
  auto source = NewInFile(10, 100, ImageFormatRGBA);
  const auto view = Adopt(GreenChannel(source));
  const ImageClassData &record = Record(view);
  EXPECT_TRUE(record.IsMapping && record.IsMapped);
  EXPECT_FALSE(record.RemoveFile);
  EXPECT_EQ(record.FileHandle, Record(source).FileHandle);
  EXPECT_EQ(record.MappedFirstRow, 0);
  EXPECT_NE(record.Buffer, Record(source).Buffer);
  Row(view, 99)[4 * 3 + 1] = 55;
  EXPECT_EQ(Row(source, 99)[4 * 3 + 1], 55);
  source.Reset();  // the view keeps it alive
  EXPECT_EQ(Row(view, 99)[4 * 3 + 1], 55);
}

TEST_F(ViewsOfStorage, AMirroredViewOfAFileStartsAtTheBottom) {
  const auto source = NewInFile(10, 100, ImageFormatG);
  Row(source, 99)[0] = 12;
  const auto mirrored = Adopt(GetMirroredView(source));
  EXPECT_EQ(Row(mirrored, 0)[0], 12);
  EXPECT_EQ(Record(mirrored).GetRow, GetRowMappingMirrored);
  EXPECT_EQ(Record(Adopt(GetMirroredView(mirrored))).GetRow, GetRowMapping);
}

TEST_F(ViewsOfStorage, TheBlockSizeOfAViewIsItsOwn) {
  const auto source = NewInFile(4096, 10000, ImageFormatG);
  const auto view = Adopt(ClipImage1(source));
  const int32_t before = Record(source).MappingBlockSize;
  SetMemBlockSize(view, 0, 32000000);
  EXPECT_EQ(Record(source).MappingBlockSize, before);
  EXPECT_NE(Record(view).MappingBlockSize, before);
}

TEST_F(ViewsOfStorage, AViewWhoseBlockCannotBeMappedIsThereAllTheSame) {
  const auto source = NewInFile(10, 100, ImageFormatG);
  faults::Files files;
  files.FailAll(faults::FileCall::kMap);
  const auto view = Adopt(GrayChannel(source));
  ASSERT_TRUE(view);
  EXPECT_TRUE(Record(view).Valid && Record(view).IsMapping);
  EXPECT_FALSE(Record(view).IsMapped);
  EXPECT_EQ(Record(view).Buffer, nullptr);
  EXPECT_EQ(GetMemory(view, 0), nullptr);
}

TEST_F(ViewsOfStorage, AMirroredViewOfAFileMapsTheTopAndThenTheBottom) {
  const auto source = NewInFile(10, 10000, ImageFormatG);
  const faults::Files files;
  const auto mirrored = Adopt(GetMirroredView(source));
  const auto maps = files.Records(faults::FileCall::kMap);
  ASSERT_EQ(maps.size(), 2u);
  EXPECT_EQ(maps[0].offset, 0);
  EXPECT_EQ(maps[1].offset, (10000 - 4096) * 4096);
}

TEST_F(ViewsOfStorage, TheMemoryOfAFileIsItsPresentBlock) {
  const auto source = NewInFile(10, 10000, ImageFormatG);
  Row(source, 9999);
  const auto memory = AdoptMemoryBlock(GetMemory(source, 0));
  EXPECT_EQ(memory->Data(), Row(source, 10000 - 4096));
}

TEST_F(ViewsOfStorage, ThreadsMayWalkViewsOfOneFileAtTheSameTime) {
  const auto source = NewInFile(10, 10000, ImageFormatGA);
  const auto gray = Adopt(GrayChannel(source));
  const auto alpha = Adopt(AlphaChannel(source));
  const auto walk = [](ImageClassData *view, int32_t step) {
    for (int32_t row = 0; row < 10000; ++row) {
      view->GetRow(view, row)[view->GrayOffset] = static_cast<uint8_t>(row * step);
    }
  };
  std::thread first(walk, &Record(gray), 3);
  std::thread second(walk, &Record(alpha), 7);
  first.join();
  second.join();
  int32_t wrong = 0;
  for (int32_t row = 0; row < 10000; ++row) {
    const uint8_t *pixel = Row(source, row);
    wrong += pixel[0] != static_cast<uint8_t>(row * 3) || pixel[1] != static_cast<uint8_t>(row * 7);
  }
  EXPECT_EQ(wrong, 0);
}

// --- row tables ---

TEST_F(ViewsOfStorage, AViewOfARowTableHasNoTableAndNoRows) {
  uint8_t pixels[8] = {};
  uint8_t *table[] = {pixels, pixels + 4};
  const auto source = New(1, 2, ImageFormatRGBA);
  ImageClassData &record = Record(source);
  std::free(record.Buffer);
  record.Buffer = nullptr;
  record.OwnsBuffer = false;
  record.RowTable = table;
  record.GetRow = GetRowGDImage;
  for (REALobject (*const make)(REALobject) : {RedChannel, RGBChannel, ClipImage1, GetMirroredView}) {
    const auto view = Adopt(make(source));
    ASSERT_TRUE(view);
    EXPECT_EQ(Record(view).RowTable, nullptr);
    EXPECT_EQ(Row(view, 0), nullptr);
    EXPECT_FALSE(IsUsable(Record(view)));
    EXPECT_EQ(ClipImage1(view), nullptr);
    EXPECT_EQ(GetMirroredView(view), nullptr);
  }
}

// --- images without rows ---

TEST_F(ViewsOfStorage, AnImageWithoutRowsHasNoViews) {
  const auto closed = New(4, 4, ImageFormatCMYKA);
  ImageDestructor(closed);
  const auto fresh = host_.New("PictureZVK");
  for (const auto *image : {&closed, &fresh}) {
    EXPECT_EQ(AlphaChannel(*image), nullptr);
    EXPECT_EQ(CMYKChannel(*image), nullptr);
    EXPECT_EQ(ClipImage1(*image), nullptr);
    EXPECT_EQ(ClipImage5(*image, 0, 0, 1, 1), nullptr);
    EXPECT_EQ(GetMirroredView(*image), nullptr);
    EXPECT_EQ(Clone(*image), nullptr);
    EXPECT_EQ(GetMemory(*image, 0), nullptr);
  }
  EXPECT_EQ(Channel(closed, 0), nullptr);
  EXPECT_EQ(host_.TakeException(), std::nullopt);
  EXPECT_EQ(Channel(fresh, 0), nullptr);  // an image that has no channel to count
  EXPECT_EQ(host_.TakeException()->message,
            "Parameter index to method Channel is too big. Range is 0 to -1, but value is 0.");
  EXPECT_EQ(RedChannel(nullptr), nullptr);
  EXPECT_EQ(Channel(nullptr, 0), nullptr);
}

// --- clone and memory ---

TEST_F(ViewsOfStorage, ACloneIsASecondOwnerOfTheSamePixels) {
  const auto source = New(4, 3, ImageFormatBGRA);
  const auto clone = Adopt(Clone(source));
  ASSERT_TRUE(clone);
  const ImageClassData &record = Record(clone);
  EXPECT_EQ(record.Buffer, Record(source).Buffer);
  EXPECT_TRUE(record.OwnsBuffer && record.Valid && record.HasAlpha && record.HasRed && record.IsRGB);
  EXPECT_EQ(record.Parent, nullptr);
  EXPECT_EQ(record.RedOffset, 2);
  EXPECT_EQ(record.ChannelCount, 4);
  EXPECT_EQ(record.ChannelOffsets[3], 3);
  EXPECT_EQ(record.ImageFormat, ImageFormatBGRA);
  EXPECT_EQ(record.TotalSize, Record(source).TotalSize);
  EXPECT_EQ(source->References(), 1);
  Record(clone).OwnsBuffer = false;  // one of the two must give up the buffer
}

TEST_F(ViewsOfStorage, ACloneOfAFileOrOfNothingIsNil) {
  EXPECT_EQ(Clone(NewInFile(10, 10, ImageFormatG)), nullptr);
  EXPECT_EQ(Clone(New(10, 10, 14)), nullptr);
  EXPECT_EQ(Clone(nullptr), nullptr);
}

TEST_F(ViewsOfStorage, ACloneOfARefusedSizeAbandonsItsInstance) {
  host_.AllowLeaks();
  const auto block = host_.NewMemoryBlock(40);
  const auto source = host_.New("PictureZVK");
  ImageConstructorMemory(source, block, 4, 3, ImageFormatG, -4);
  EXPECT_EQ(Clone(source), nullptr);
  int32_t pictures = 0;
  for (const auto &leak : host_->Leaks()) pictures += leak.what == "PictureZVK" ? leak.count : 0;
  EXPECT_EQ(pictures, 2);  // the source and the abandoned one
}

TEST_F(ViewsOfStorage, ACloneGoesByTheSizeIn32Bits) {
  const auto block = host_.NewMemoryBlock(40);
  const auto source = host_.New("PictureZVK");
  // 2 x -2147483647 is -4294967294, and 2 in 32 bits.
  ImageConstructorMemory(source, block, 4, 2, ImageFormatG, -2147483647);
  const auto clone = Adopt(Clone(source));
  ASSERT_TRUE(clone);
  EXPECT_EQ(Record(clone).MemoryTarget, nullptr);
  EXPECT_EQ(Record(clone).TotalSize, -4294967294);
  Record(clone).OwnsBuffer = false;  // the buffer is the block's
}

TEST_F(ViewsOfStorage, ACloneOfAClipHasItsPlaceAndNotItsParent) {
  const auto source = New(20, 15, ImageFormatACMYK);
  const auto clip = Adopt(ClipImage5(source, 3, 4, 5, 6));
  const auto mirrored = Adopt(GetMirroredView(clip));
  const auto clone = Adopt(Clone(mirrored));
  const ImageClassData &record = Record(clone);
  EXPECT_EQ(record.Width, 5);
  EXPECT_EQ(record.Height, 6);
  EXPECT_EQ(record.UnclippedHeight, 15);
  EXPECT_EQ(record.RowOffset, 4);
  EXPECT_EQ(record.RowSize, 128);
  EXPECT_EQ(record.TotalSize, 1920);
  EXPECT_EQ(record.PixelSize, 5);
  EXPECT_EQ(record.BitsPerComponent, 8);
  EXPECT_EQ(record.AlphaOffset, 15);
  EXPECT_EQ(record.CyanOffset, 16);
  EXPECT_EQ(record.BlackOffset, 19);
  EXPECT_EQ(record.ChannelCount, 5);
  EXPECT_EQ(record.ChannelOffsets[4], 4);
  EXPECT_TRUE(record.IsCMYK && record.HasCyan && record.HasMagenta && record.HasYellow && record.HasBlack);
  EXPECT_FALSE(record.IsGray || record.IsRGB || record.HasRed || record.HasGray);
  EXPECT_EQ(record.GetRow, GetRowLinearMirrored);
  EXPECT_EQ(record.MappingBase, nullptr);
  EXPECT_EQ(record.MappedRowCount, 0);
  EXPECT_EQ(record.Parent, nullptr);
  Record(clone).OwnsBuffer = false;  // one of the two must give up the buffer
}

TEST_F(ViewsOfStorage, ClosingACloneFreesTheBufferUnderItsSource) {
  const auto source = New(4, 3, ImageFormatG);
  const auto clone = Adopt(Clone(source));
  const void *buffer = Record(source).Buffer;
  Record(source).OwnsBuffer = false;
  const faults::Heap heap;
  ImageDestructor(clone);
  const auto freed = heap.Freed();
  EXPECT_EQ(std::count(freed.begin(), freed.end(), buffer), 1);
}

TEST_F(ViewsOfStorage, MemoryIsTheStartOfTheStorage) {
  const auto source = New(10, 10, ImageFormatG);
  const auto clip = Adopt(ClipImage5(source, 3, 3, 2, 2));
  const auto memory = AdoptMemoryBlock(GetMemory(clip, 0));
  ASSERT_TRUE(memory);
  EXPECT_EQ(memory->Data(), Record(source).Buffer);
  EXPECT_EQ(memory->Size(), standalone::MemoryBlock::kUnknownSize);
}

}  // namespace
}  // namespace zvk::image
