#include "image/image_storage.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/views.h"
#include "tests/support/faults.h"
#include "tests/support/file_faults.h"
#include "tests/support/plugin_host.h"

namespace zvk::image {
namespace {

class ImageStorage : public testing::Test {
 protected:
  // A zero-filled instance as the host makes it, and its record.
  ImageStorage() : image_(host_.New("PictureZVK")), record_(RecordOf(image_)) {}

  void ExpectNothingRaised() { EXPECT_FALSE(host_.TakeException()); }
  void ExpectRaised(const std::string &className, const std::string &message) {
    const auto exception = host_.TakeException();
    ASSERT_TRUE(exception);
    EXPECT_EQ(exception->className, className);
    EXPECT_EQ(exception->message, message);
    EXPECT_EQ(exception->errorNumber, 0);
  }
  void ExpectNoStorage() {
    EXPECT_FALSE(record_->Valid);
    EXPECT_EQ(record_->GetRow, nullptr);
    EXPECT_EQ(record_->Buffer, nullptr);
    EXPECT_FALSE(record_->OwnsBuffer);
  }

  PluginHost host_;
  standalone::Owned<standalone::Object> image_;
  ImageClassData *record_;
};

TEST_F(ImageStorage, AnAllocatedImageIsBlackAndKnowsItsStorage) {
  ImageConstructor(image_, 30, 3, ImageFormatRGB);
  ExpectNothingRaised();
  EXPECT_TRUE(record_->Valid);
  EXPECT_EQ(record_->RowSize, 128);
  EXPECT_EQ(record_->TotalSize, 384);
  EXPECT_EQ(record_->MappedRowCount, 3);
  EXPECT_TRUE(record_->OwnsBuffer);
  EXPECT_EQ(record_->MappingBase, nullptr);
  EXPECT_FALSE(record_->IsMapping);
  EXPECT_FALSE(record_->RemoveFile);
  EXPECT_EQ(record_->GetRow, GetRowLinear);
  ASSERT_NE(record_->Buffer, nullptr);
  EXPECT_EQ(std::count(record_->Buffer, record_->Buffer + 384, 0), 384);
  EXPECT_EQ(GetTotalSizeInt64(image_, 0), 384);
}

TEST_F(ImageStorage, ATooLargeImageIsQuietlyNotValid) {
  faults::Heap heap;
  ImageConstructor(image_, 1000000, 1000000, ImageFormatRGB);
  ExpectNothingRaised();
  ExpectNoStorage();
  EXPECT_EQ(record_->Width, 1000000);
  EXPECT_EQ(record_->Height, 1000000);
  EXPECT_EQ(record_->ImageFormat, ImageFormatRGB);
  EXPECT_EQ(record_->PixelSize, 3);
  EXPECT_EQ(heap.CallocCalls(), 0);
}

TEST_F(ImageStorage, TheFirstSizeThatIsRefusedIs2147483648) {
  ImageConstructor(image_, 65536, 32768, ImageFormatG);
  ExpectNothingRaised();
  ExpectNoStorage();
}

TEST_F(ImageStorage, AWrappedSizeRaisesOutOfMemory) {
  ImageConstructor(image_, 2147483647, 1, ImageFormatG);
  ExpectRaised("OutOfMemoryException", "Failed to allocate -2147483648 bytes of memory for image buffer.");
  ExpectNoStorage();
}

TEST_F(ImageStorage, ARowThatWrapsToZeroRaisesOutOfMemory) {
  // 4 x 1073741824 is 0 in 32 bits.
  ImageConstructor(image_, 1073741824, 5, ImageFormatRGBA);
  ExpectRaised("OutOfMemoryException", "Failed to allocate 0 bytes of memory for image buffer.");
  ExpectNoStorage();
}

TEST_F(ImageStorage, AFailedAllocationRaisesOutOfMemoryAndLeavesTheFormatFilled) {
  {
    faults::Heap heap;
    heap.FailCalloc([](size_t count, size_t size) { return count * size == 640; });
    ImageConstructor(image_, 10, 10, ImageFormatG);
  }
  ExpectRaised("OutOfMemoryException", "Failed to allocate 640 bytes of memory for image buffer.");
  ExpectNoStorage();
  EXPECT_EQ(record_->Width, 10);
  EXPECT_TRUE(record_->HasGray);
  EXPECT_EQ(record_->RowSize, 0);
}

TEST_F(ImageStorage, ARefusedFormatOrSizeIsQuietlyNotValid) {
  ImageConstructor(image_, 10, 10, 14);
  ExpectNothingRaised();
  ExpectNoStorage();
  EXPECT_EQ(record_->ImageFormat, 14);
  EXPECT_EQ(record_->Width, 10);

  const auto other = host_.New("PictureZVK");
  ImageConstructor(other, 0, 10, ImageFormatRGB);
  ExpectNothingRaised();
  EXPECT_EQ(RecordOf(other)->ImageFormat, 0);
  EXPECT_FALSE(RecordOf(other)->Valid);
}

TEST_F(ImageStorage, AnImageOverAMemoryBlockUsesTheCallersRowsAndHoldsTheBlock) {
  auto block = host_.NewMemoryBlock(100);
  uint8_t *bytes = block->Data();
  ImageConstructorMemory(image_, block, 3, 4, ImageFormatRGB, 13);
  ExpectNothingRaised();
  EXPECT_TRUE(record_->Valid);
  EXPECT_EQ(record_->Buffer, bytes);
  EXPECT_EQ(record_->RowSize, 13);
  EXPECT_EQ(record_->TotalSize, 52);
  EXPECT_EQ(record_->MappedRowCount, 4);
  EXPECT_FALSE(record_->OwnsBuffer);
  EXPECT_EQ(record_->MemoryTarget, block.Handle());
  EXPECT_EQ(block->References(), 2);
  EXPECT_EQ(record_->GetRow(record_, 3), bytes + 39);

  ImageDestructor(image_);
  EXPECT_EQ(block->References(), 1);
  EXPECT_EQ(record_->MemoryTarget, nullptr);
}

TEST_F(ImageStorage, TheBlocksOwnLengthIsNotCompared) {
  auto block = host_.NewMemoryBlock(100);
  ImageConstructorMemory(image_, block, 10, 1000, ImageFormatG, 1000);
  ExpectNothingRaised();
  EXPECT_TRUE(record_->Valid);
  EXPECT_EQ(record_->TotalSize, 1000000);
}

TEST_F(ImageStorage, ANegativeRowSizeRunsBackwards) {
  auto block = host_.NewMemoryBlock(40);
  uint8_t *bytes = block->Data();
  ImageConstructorMemory(image_, block, 10, 4, ImageFormatG, -10);
  ExpectNothingRaised();
  EXPECT_TRUE(record_->Valid);
  EXPECT_EQ(record_->TotalSize, -40);
  EXPECT_EQ(record_->GetRow(record_, 1), bytes - 10);
}

TEST_F(ImageStorage, ARowSizeOfZeroIsAccepted) {
  auto block = host_.NewMemoryBlock(40);
  ImageConstructorMemory(image_, block, 10, 4, ImageFormatG, 0);
  EXPECT_TRUE(record_->Valid);
  EXPECT_EQ(record_->TotalSize, 0);
}

TEST_F(ImageStorage, ABlockWithARefusedFormatOrSizeIsQuietlyNotHeld) {
  auto block = host_.NewMemoryBlock(40);
  // A row size that would be refused as well, were it looked at.
  ImageConstructorMemory(image_, block, 10, INT32_MAX, 14, INT32_MAX);
  ExpectNothingRaised();
  ExpectNoStorage();
  EXPECT_EQ(record_->ImageFormat, 14);
  EXPECT_EQ(record_->Height, INT32_MAX);
  ImageConstructorMemory(image_, block, 10, 0, ImageFormatG, 10);
  ExpectNothingRaised();
  ExpectNoStorage();
  EXPECT_EQ(block->References(), 1);
}

TEST_F(ImageStorage, TheLargestBlockIsOneByteBelow2GiB) {
  auto block = host_.NewMemoryBlock(40);
  ImageConstructorMemory(image_, block, 10, 1, ImageFormatG, INT32_MAX);
  ExpectNothingRaised();
  EXPECT_TRUE(record_->Valid);
  EXPECT_EQ(record_->TotalSize, 2147483647);
}

TEST_F(ImageStorage, AnyNegativeSizeIsLetThrough) {
  auto block = host_.NewMemoryBlock(40);
  ImageConstructorMemory(image_, block, 10, INT32_MAX, ImageFormatG, INT32_MIN);
  ExpectNothingRaised();
  EXPECT_TRUE(record_->Valid);
  EXPECT_EQ(record_->TotalSize, -4611686016279904256);
}

TEST_F(ImageStorage, ANilBlockRaisesBeforeTheFormatIsLookedAt) {
  ImageConstructorMemory(image_, nullptr, 10, 10, 14, 10);
  ExpectRaised("NilObjectException", "Memoryblock is nil.");
  EXPECT_EQ(record_->ImageFormat, 0);
  EXPECT_EQ(record_->Width, 0);
}

TEST_F(ImageStorage, ABlockOfMoreThan32BitsRaisesAndLocksNothing) {
  auto block = host_.NewMemoryBlock(100);
  ImageConstructorMemory(image_, block, 10, 32768, ImageFormatG, 65536);
  ExpectRaised("OutOfBoundsException", "Image needs more bytes than a 32 bit application can access.");
  ExpectNoStorage();
  EXPECT_EQ(record_->Height, 32768);
  EXPECT_EQ(block->References(), 1);

  // Above 32 bits, with lower 32 bits that look small.
  const auto other = host_.New("PictureZVK");
  ImageConstructorMemory(other, block, 10, 65536, ImageFormatG, 65536);
  ExpectRaised("OutOfBoundsException", "Image needs more bytes than a 32 bit application can access.");
}

TEST_F(ImageStorage, ABlockWithoutAddressRaisesAndLocksNothing) {
  auto block = host_.NewMemoryBlock(100);
  host_->Withhold("memoryBlockGetPtr");
  ImageConstructorMemory(image_, block, 10, 10, ImageFormatG, 10);
  ExpectRaised("NilObjectException", "Memoryblock is nil.");
  ExpectNoStorage();
  EXPECT_EQ(block->References(), 1);
}

TEST_F(ImageStorage, ABlockAtNoAddressRaisesAndLocksNothing) {
  host_->SetEntry(
      "memoryBlockGetPtr", +[](REALobject) -> void * { return nullptr; });
  auto block = host_.NewMemoryBlock(100);
  ImageConstructorMemory(image_, block, 10, 10, ImageFormatG, 10);
  ExpectRaised("NilObjectException", "Memoryblock is nil.");
  ExpectNoStorage();
  EXPECT_EQ(record_->Width, 10);
  EXPECT_EQ(record_->MemoryTarget, nullptr);
  EXPECT_EQ(block->References(), 1);
}

TEST_F(ImageStorage, LinearRowsCheckNoBounds) {
  ImageConstructor(image_, 10, 4, ImageFormatG);
  record_->RowOffset = 1;
  record_->Height = 2;
  EXPECT_EQ(GetRowLinear(record_, 0), record_->Buffer + 64);
  EXPECT_EQ(GetRowLinear(record_, 1), record_->Buffer + 128);
  EXPECT_EQ(GetRowLinear(record_, -1), record_->Buffer);
  EXPECT_EQ(GetRowLinear(record_, 2), record_->Buffer + 192);
}

TEST_F(ImageStorage, MirroredRowsCountFromTheRecordsOwnBottom) {
  ImageConstructor(image_, 10, 4, ImageFormatG);
  record_->RowOffset = 1;
  record_->Height = 2;
  EXPECT_EQ(GetRowLinearMirrored(record_, 0), record_->Buffer + 128);
  EXPECT_EQ(GetRowLinearMirrored(record_, 1), record_->Buffer + 64);
  EXPECT_EQ(GetRowLinearMirrored(record_, 2), record_->Buffer);
}

TEST_F(ImageStorage, RowTablesAreCheckedAgainstHeightAndNotAgainstTheUnclippedHeight) {
  uint8_t pixels[4];
  uint8_t *table[] = {pixels, pixels + 1, pixels + 2, pixels + 3};
  ImageClassData record{};
  record.RowTable = table;
  record.Height = 3;
  record.UnclippedHeight = 4;
  record.RowOffset = 1;
  EXPECT_EQ(GetRowGDImage(&record, -1), pixels);
  EXPECT_EQ(GetRowGDImage(&record, 0), pixels + 1);
  EXPECT_EQ(GetRowGDImage(&record, 1), pixels + 2);
  EXPECT_EQ(GetRowGDImage(&record, 2), nullptr);  // storage row 3 is there, but not below Height
  EXPECT_EQ(GetRowGDImage(&record, -2), nullptr);
  EXPECT_EQ(GetRowGDImageMirrored(&record, 0), nullptr);
  EXPECT_EQ(GetRowGDImageMirrored(&record, 1), pixels + 2);
  EXPECT_EQ(GetRowGDImageMirrored(&record, 2), pixels + 1);
  EXPECT_EQ(GetRowGDImageMirrored(&record, 3), pixels);
  EXPECT_EQ(GetRowGDImageMirrored(&record, 4), nullptr);
}

TEST_F(ImageStorage, ANilRowTableGivesNilRowsAndIsNotUsable) {
  ImageClassData record{};
  record.Valid = true;
  record.Width = record.Height = 1;
  for (const RowAccessor accessor : {GetRowGDImage, GetRowGDImageMirrored}) {
    record.GetRow = accessor;
    EXPECT_EQ(accessor(&record, 0), nullptr);
    EXPECT_FALSE(IsUsable(record));
  }
  uint8_t *table[] = {nullptr};
  record.RowTable = table;
  EXPECT_TRUE(IsUsable(record));
}

TEST_F(ImageStorage, AnImageWhoseRowHasWrappedIsMadeAndNotWorkedOn) {
  // 4 x (2^30 + 10) is 40 in 32 bits.
  ImageConstructor(image_, (1 << 30) + 10, 1, ImageFormatRGBA);
  EXPECT_TRUE(record_->Valid);
  EXPECT_EQ(record_->RowSize, 64);
  EXPECT_FALSE(IsUsable(*record_));
  record_->Width = INT32_MAX / 4;
  EXPECT_TRUE(IsUsable(*record_));
  record_->Width = 10;
}

// The last reference to an object may run host code, which may close the image.
TEST_F(ImageStorage, AReferenceIsGivenBackOnceAlsoWhereItsEndClosesTheImage) {
  static REALobject closing;
  static int unlocks;
  const auto block = host_.NewMemoryBlock(100);
  ImageConstructorMemory(image_, block, 10, 10, ImageFormatG, 10);
  closing = image_;
  unlocks = 0;
  host_->SetEntry(
      "REALUnlockObject", +[](REALobject) {
        if (++unlocks < 5) ImageDestructor(closing);
      });
  ImageDestructor(image_);
  EXPECT_EQ(unlocks, 1);
  block->Unlock();
}

// --- constructed a second time ---

TEST_F(ImageStorage, ASecondConstructionGivesUpTheFirstBuffer) {
  ImageConstructor(image_, 10, 10, ImageFormatG);
  const void *first = record_->Buffer;
  faults::Heap heap;
  ImageConstructor(image_, 20, 5, ImageFormatRGBA);
  EXPECT_EQ(heap.Freed(), std::vector<const void *>{first});
  EXPECT_TRUE(record_->Valid);
  EXPECT_EQ(record_->Width, 20);
  EXPECT_EQ(record_->TotalSize, 128 * 5);
}

TEST_F(ImageStorage, ASecondConstructionThatGivesUpLeavesNoImage) {
  ImageConstructor(image_, 10, 10, ImageFormatG);
  ImageConstructor(image_, 1000000, 1000000, ImageFormatRGB);
  ExpectNoStorage();
  EXPECT_EQ(record_->Width, 1000000);

  ImageConstructor(image_, 10, 10, ImageFormatG);
  ImageConstructor(image_, 10, 10, 14);
  ExpectNoStorage();
  EXPECT_EQ(record_->ImageFormat, 14);

  const auto block = host_.NewMemoryBlock(100);
  ImageConstructorMemory(image_, block, 10, 10, ImageFormatG, 10);
  EXPECT_EQ(block->References(), 2);
  ImageConstructorMemory(image_, block, 10, 10, ImageFormatG, INT32_MAX);
  ExpectRaised("OutOfBoundsException", "Image needs more bytes than a 32 bit application can access.");
  ExpectNoStorage();
  EXPECT_EQ(record_->MemoryTarget, nullptr);
  EXPECT_EQ(block->References(), 1);
}

TEST_F(ImageStorage, ASecondConstructionWithoutASizeOrABlockWritesNothing) {
  ImageConstructor(image_, 10, 10, ImageFormatG);
  const ImageClassData before = *record_;
  ImageConstructor(image_, 0, 10, ImageFormatRGB);
  ImageConstructor(image_, 10, -1, ImageFormatRGB);
  ImageConstructorFile(image_, 10, 0, ImageFormatRGB, 0, nullptr);
  ImageConstructorMemory(image_, host_.NewMemoryBlock(100), 10, 0, ImageFormatRGB, 10);
  ExpectNothingRaised();
  ImageConstructorMemory(image_, nullptr, 10, 10, ImageFormatRGB, 10);
  ExpectRaised("NilObjectException", "Memoryblock is nil.");
  EXPECT_EQ(std::memcmp(&before, record_, sizeof before), 0);
}

TEST_F(ImageStorage, ASecondConstructionKeepsWhatTheHostProgramHasSet) {
  const auto factory = host_.New("PictureFactoryZVK");
  ImageConstructor(image_, 10, 10, ImageFormatG);
  record_->Yield.YieldTicks = 3;
  record_->Factory = factory;
  record_->DebugPictureEnabled = true;
  ImageConstructor(image_, 5, 5, ImageFormatCMYKA);
  EXPECT_EQ(record_->Yield.YieldTicks, 3);
  EXPECT_EQ(record_->Factory, factory.Handle());
  EXPECT_TRUE(record_->DebugPictureEnabled);
  record_->Factory = nullptr;
}

TEST_F(ImageStorage, AViewThatIsConstructedIsAViewNoMore) {
  ImageConstructor(image_, 10, 10, ImageFormatG);
  const auto view = Adopt(ClipImage5(image_, 2, 5, 3, 3));
  ImageClassData &record = *RecordOf(view);
  ASSERT_EQ(record.RowOffset, 5);
  ImageConstructor(view, 4, 4, ImageFormatG);
  EXPECT_EQ(record.RowOffset, 0);
  EXPECT_EQ(record.Parent, nullptr);
  EXPECT_EQ(image_->References(), 1);
  EXPECT_EQ(record.GetRow(&record, 0), record.Buffer);
}

TEST_F(ImageStorage, AnImageIsUsableFromAWidthOfZeroAndAHeightOfOne) {
  ImageConstructor(image_, 10, 10, ImageFormatG);
  const ImageClassData good = *record_;
  EXPECT_TRUE(IsUsable(good));
  ImageClassData changed = good;
  changed.Width = 0;
  changed.Height = 1;
  EXPECT_TRUE(IsUsable(changed));
  changed.Width = -1;
  EXPECT_FALSE(IsUsable(changed));
  changed = good;
  changed.Height = 0;
  EXPECT_FALSE(IsUsable(changed));
  changed = good;
  changed.Valid = false;
  EXPECT_FALSE(IsUsable(changed));
  changed = good;
  changed.GetRow = nullptr;
  EXPECT_FALSE(IsUsable(changed));
}

TEST_F(ImageStorage, CloseFreesTheBufferOnceAndKeepsValid) {
  ImageConstructor(image_, 10, 10, ImageFormatG);
  const void *buffer = record_->Buffer;
  faults::Heap heap;
  ImageDestructor(image_);
  ImageDestructor(image_);
  const auto freed = heap.Freed();
  EXPECT_EQ(std::count(freed.begin(), freed.end(), buffer), 1);
  EXPECT_TRUE(record_->Valid);
  EXPECT_EQ(record_->GetRow, nullptr);
  EXPECT_EQ(record_->Buffer, nullptr);
  EXPECT_FALSE(record_->OwnsBuffer);
  EXPECT_FALSE(IsUsable(*record_));
}

TEST_F(ImageStorage, ABorrowedBufferIsNotFreed) {
  uint8_t pixels[64] = {};
  record_->Buffer = pixels;
  record_->OwnsBuffer = false;
  faults::Heap heap;
  ImageDestructor(image_);
  EXPECT_EQ(record_->Buffer, nullptr);
  const auto freed = heap.Freed();
  EXPECT_EQ(std::count(freed.begin(), freed.end(), static_cast<void *>(pixels)), 0);
}

TEST_F(ImageStorage, TheDestructorGivesUpTheFourReferences) {
  std::vector<standalone::Owned<standalone::MemoryBlock>> held;
  const std::array fields = {&ImageClassData::Parent, &ImageClassData::MemoryTarget, &ImageClassData::FileItem,
                             &ImageClassData::Target};
  for (const auto field : fields) {
    held.push_back(host_.NewMemoryBlock(1));
    REALLockObject(held.back());
    record_->*field = held.back();
  }
  ImageDestructor(image_);
  for (size_t i = 0; i < fields.size(); ++i) {
    EXPECT_EQ(held[i]->References(), 1) << i;
    EXPECT_EQ(record_->*fields[i], nullptr) << i;
  }
}

// What the destructor gave back to the host, in order.
std::vector<REALobject> unlocked;

TEST_F(ImageStorage, TheReferencesAreGivenUpInTheirOrder) {
  unlocked.clear();
  host_->SetEntry(
      "REALUnlockObject", +[](REALobject object) { unlocked.push_back(object); });
  std::vector<standalone::Owned<standalone::MemoryBlock>> held;
  std::vector<REALobject> expected;
  for (const auto field :
       {&ImageClassData::Parent, &ImageClassData::MemoryTarget, &ImageClassData::FileItem, &ImageClassData::Target}) {
    held.push_back(host_.NewMemoryBlock(1));
    expected.push_back(held.back());
    record_->*field = held.back();
  }
  ImageDestructor(image_);
  EXPECT_EQ(unlocked, expected);
}

TEST_F(ImageStorage, ThePathIsFreed) {
  char *const path = strdup("somewhere");
  record_->FilePath = path;
  const faults::Heap heap;
  ImageDestructor(image_);
  EXPECT_EQ(record_->FilePath, nullptr);
  const auto freed = heap.Freed();
  EXPECT_EQ(std::count(freed.begin(), freed.end(), static_cast<const void *>(path)), 1);
}

TEST_F(ImageStorage, AMappingWithoutABaseIsNotUnmapped) {
  record_->IsMapped = true;
  record_->MappingBlockSize = 4096;
  const faults::Files files;
  ImageDestructor(image_);
  EXPECT_FALSE(record_->IsMapped);
  EXPECT_TRUE(files.Records().empty());
}

TEST_F(ImageStorage, AFileIsRemovedOnlyByAMappedImageThatOpenedIt) {
  record_->RemoveFile = true;
  record_->FileHandle = 12345;
  const faults::Files files;
  ImageDestructor(image_);
  EXPECT_TRUE(files.Records().empty());
  EXPECT_EQ(record_->FileHandle, 12345);
}

TEST_F(ImageStorage, TheHostClosesWhatTheProgramDidNot) {
  ImageConstructor(image_, 10, 10, ImageFormatG);
  const void *buffer = record_->Buffer;
  const faults::Heap heap;
  image_.Reset();
  const auto freed = heap.Freed();
  EXPECT_EQ(std::count(freed.begin(), freed.end(), buffer), 1);
}

TEST_F(ImageStorage, NothingIsMadeOrClosedWithoutAnInstance) {
  ImageConstructor(nullptr, 10, 10, ImageFormatG);
  ImageDestructor(nullptr);
  EXPECT_EQ(GetTotalSizeInt64(nullptr, 0), 0);
  ExpectNothingRaised();
}

TEST_F(ImageStorage, TheDestructorUnmapsTruncatesClosesAndDeletesABackingFile) {
  char path[] = "/tmp/zvk-storage-XXXXXX";
  const int file = mkstemp(path);
  ASSERT_GE(file, 0);
  ASSERT_EQ(ftruncate(file, 8192), 0);
  const int other = open(path, O_RDONLY);
  void *mapping = mmap(nullptr, 8192, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  ASSERT_NE(mapping, MAP_FAILED);
  record_->MappingBase = record_->Buffer = static_cast<uint8_t *>(mapping);
  record_->MappingBlockSize = 8192;
  record_->IsMapped = record_->IsMapping = record_->RemoveFile = true;
  record_->FileHandle = file;
  record_->FilePath = strdup(path);

  ImageDestructor(image_);
  EXPECT_FALSE(record_->IsMapped);
  EXPECT_EQ(record_->MappingBase, nullptr);
  EXPECT_EQ(record_->FileHandle, 0);
  EXPECT_EQ(record_->FilePath, nullptr);
  EXPECT_EQ(fcntl(file, F_GETFD), -1);
  EXPECT_NE(access(path, F_OK), 0);
  struct stat status;
  ASSERT_EQ(fstat(other, &status), 0);
  EXPECT_EQ(status.st_size, 0);
  EXPECT_EQ(msync(mapping, 8192, MS_ASYNC), -1);  // no longer mapped
  close(other);
}

TEST_F(ImageStorage, AViewOfABackingFileLeavesTheFileAlone) {
  char path[] = "/tmp/zvk-storage-XXXXXX";
  const int file = mkstemp(path);
  ASSERT_GE(file, 0);
  record_->IsMapping = true;
  record_->RemoveFile = false;
  record_->FileHandle = file;
  ImageDestructor(image_);
  EXPECT_NE(fcntl(file, F_GETFD), -1);
  EXPECT_EQ(access(path, F_OK), 0);
  close(file);
  unlink(path);
}

TEST_F(ImageStorage, ASecondRunOnABackingFileGoesToDescriptor0) {
  record_->IsMapping = record_->RemoveFile = true;
  record_->FileHandle = 0;
  ASSERT_NE(fcntl(0, F_GETFD), -1);
  ImageDestructor(image_);
  EXPECT_EQ(fcntl(0, F_GETFD), -1);
  ASSERT_EQ(open("/dev/null", O_RDWR), 0);  // what a host does about it
}

}  // namespace
}  // namespace zvk::image
