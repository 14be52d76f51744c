#include "image/file_storage.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "image/views.h"
#include "tests/image/file_testing.h"
#include "tests/support/faults.h"

namespace zvk::image {
namespace {

using faults::FileCall;
using faults::FileRecord;
using faults::Files;
using file_testing::BytesAt;
using file_testing::ContentOf;
using file_testing::LengthOf;
using file_testing::OpenDescriptors;
using file_testing::StatusOf;

class FileStorage : public file_testing::FileImage {
 protected:
  // What every failure before the first mapping leaves: the fields of the format and nothing else.
  void ExpectOnlyTheFormat() {
    EXPECT_FALSE(record_->Valid);
    EXPECT_EQ(record_->GetRow, nullptr);
    EXPECT_EQ(record_->FilePath, nullptr);
    EXPECT_EQ(record_->FileItem, nullptr);
    EXPECT_EQ(record_->FileHandle, 0);
    EXPECT_FALSE(record_->RemoveFile);
    EXPECT_FALSE(record_->IsMapping);
    EXPECT_EQ(record_->RowSize, 0);
    EXPECT_EQ(record_->TotalSize, 0);
    EXPECT_EQ(record_->Width, 10);
    EXPECT_EQ(record_->Height, 10);
    EXPECT_EQ(record_->ImageFormat, ImageFormatG);
    EXPECT_TRUE(record_->HasGray);
  }
};

// --- a file that is made ---

TEST_F(FileStorage, ASmallImageTakesAPageForEachRowAndOneForTheTail) {
  Construct(10, 10, ImageFormatG, 1);
  ExpectNothingRaised();
  EXPECT_TRUE(record_->Valid);
  EXPECT_EQ(record_->RowSize, 4096);
  EXPECT_EQ(record_->TotalSize, 40960);
  EXPECT_EQ(record_->GetRow, GetRowMapping);
  EXPECT_TRUE(record_->IsMapping);
  EXPECT_TRUE(record_->RemoveFile);
  EXPECT_FALSE(record_->OwnsBuffer);
  EXPECT_EQ(record_->FilePath, folder_.In("image"));
  EXPECT_EQ(LengthOf(folder_.In("image")), 45056);

  ImageDestructor(image_);
  EXPECT_EQ(LengthOf(folder_.In("image")), -1);
}

TEST_F(FileStorage, ARowIsRoundedUpToThePage) {
  Construct(1366, 2, ImageFormatRGB, 0);  // 4098 bytes
  EXPECT_EQ(record_->RowSize, 8192);
  const auto other = host_.New("PictureZVK");
  ImageConstructorFile(other, 1024, 2, ImageFormatRGBA, 0, NewItem("other"));
  EXPECT_EQ(RecordOf(other)->RowSize, 4096);
}

TEST_F(FileStorage, ANewImageIsAllZeroes) {
  Construct(10, 10, ImageFormatRGB, 0);
  for (int32_t row = 0; row < 10; ++row) EXPECT_EQ(std::count(Row(row), Row(row) + 4096, 0), 4096);
  const std::vector<uint8_t> file = BytesAt(record_->FileHandle, 0, 45056);
  EXPECT_EQ(std::count(file.begin(), file.end(), 0), 45056);
}

TEST_F(FileStorage, TheSystemIsAskedForTheFileStepByStep) {
  const auto item = NewItem("image");
  const Files files;
  ImageConstructorFile(image_, 10, 10, ImageFormatG, 0, item);
  const std::vector<FileRecord> records = files.Records();
  ASSERT_EQ(records.size(), 5u);
  EXPECT_EQ(records[0].call, FileCall::kOpen);
  EXPECT_EQ(records[0].path, folder_.In("image"));
  EXPECT_EQ(records[0].flags & (O_ACCMODE | O_CREAT | O_TRUNC | O_EXCL | O_APPEND), O_RDWR | O_CREAT | O_TRUNC);
  EXPECT_EQ(records[0].mode, 1638u);
  EXPECT_EQ(records[1].call, FileCall::kTruncate);
  EXPECT_EQ(records[1].size, 45056);
  EXPECT_EQ(records[2].call, FileCall::kSeek);
  EXPECT_EQ(records[2].offset, 40960);
  EXPECT_EQ(records[3].call, FileCall::kWrite);
  EXPECT_EQ(records[3].size, 4096);
  EXPECT_EQ(records[4].call, FileCall::kMap);
  EXPECT_EQ(records[4].size, 40960);
  EXPECT_EQ(records[4].offset, 0);
  for (const size_t call : {1, 2, 3, 4}) EXPECT_EQ(records[call].descriptor, record_->FileHandle);
}

TEST_F(FileStorage, TheModeIsTheDecimalNumber) {
  const mode_t mask = umask(0);
  Construct(10, 10, ImageFormatG, 0);
  umask(mask);
  // 1638 is octal 3146, of which a plain file gets the permissions 146.
  EXPECT_EQ(StatusOf(record_->FileHandle).st_mode & 0777, 0146u);
}

TEST_F(FileStorage, OnlyTheTailTakesUpDisk) {
  Construct(10, 100000, ImageFormatG, 0);
  EXPECT_EQ(StatusOf(record_->FileHandle).st_size, 409604096);
  const int64_t taken = int64_t{StatusOf(record_->FileHandle).st_blocks} * 512;
  EXPECT_GE(taken, 4096);
  EXPECT_LT(taken, 1000000);
}

TEST_F(FileStorage, AnExistingFileIsEmptiedAtOnceAndDeletedInTheEnd) {
  std::ofstream(folder_.In("image")) << std::string(100000, 'x');
  Construct(10, 10, ImageFormatG, 0);
  EXPECT_TRUE(record_->Valid);
  EXPECT_EQ(ContentOf(folder_.In("image")), std::string(45056, '\0'));
  ImageDestructor(image_);
  EXPECT_EQ(LengthOf(folder_.In("image")), -1);
}

TEST_F(FileStorage, AnExistingFileUnderAComposedNameIsLeftAlone) {
  std::ofstream(folder_.In("\xC3\xA9")) << "content";
  ImageConstructorFile(image_, 10, 10, ImageFormatG, 0, NewItem("\xC3\xA9"));
  EXPECT_EQ(record_->FilePath, folder_.In("e\xCC\x81"));
  ImageDestructor(image_);
  EXPECT_EQ(ContentOf(folder_.In("\xC3\xA9")), "content");
  EXPECT_TRUE(std::filesystem::remove(folder_.In("\xC3\xA9")));
}

TEST_F(FileStorage, TheItemIsHeldUntilClose) {
  const auto item = NewItem("image");
  ImageConstructorFile(image_, 10, 10, ImageFormatG, 0, item);
  EXPECT_EQ(record_->FileItem, item.Handle());
  EXPECT_EQ(item->References(), 2);
  ImageDestructor(image_);
  EXPECT_EQ(record_->FileItem, nullptr);
  EXPECT_EQ(item->References(), 1);
}

TEST_F(FileStorage, WithoutAnItemATemporaryFileServes) {
  ImageConstructorFile(image_, 10, 10, ImageFormatG, 0, nullptr);
  ASSERT_TRUE(record_->Valid);
  EXPECT_EQ(record_->FileItem, nullptr);
  EXPECT_EQ(host_->Questions("REALLockObject"), 0);
  const std::string path = record_->FilePath;
  EXPECT_EQ(path.rfind(P_tmpdir "/", 0), 0u) << path;
  EXPECT_EQ(LengthOf(path), 45056);
  ImageDestructor(image_);
  EXPECT_EQ(LengthOf(path), -1);
}

TEST_F(FileStorage, TheTemporaryNameHasABufferOf1026Zeroes) {
  Files files;
  files.SetTemporaryName(folder_.In("temporary"));
  const faults::Heap heap;
  ImageConstructorFile(image_, 10, 10, ImageFormatG, 0, nullptr);
  EXPECT_EQ(record_->FilePath, folder_.In("temporary"));
  const auto calls = heap.Allocations();
  EXPECT_EQ(std::count_if(calls.begin(), calls.end(),
                          [&](const faults::Allocation &call) {
                            return call.address == record_->FilePath && call.zeroed && call.count * call.size == 1026;
                          }),
            1);
}

TEST_F(FileStorage, AnItemWithoutAPathTurnsSilentlyIntoATemporaryFile) {
  Files files;
  files.SetTemporaryName(folder_.In("temporary"));
  host_->Withhold("REALFSRefFromFolderItem");
  host_->Withhold("REALFSSpecFromFolderItem");
  const auto item = NewItem("image");
  ImageConstructorFile(image_, 10, 10, ImageFormatG, 0, item);
  ExpectNothingRaised();
  EXPECT_TRUE(record_->Valid);
  EXPECT_EQ(record_->FilePath, folder_.In("temporary"));
  EXPECT_EQ(LengthOf(folder_.In("image")), -1);
  EXPECT_EQ(record_->FileItem, item.Handle());
  EXPECT_EQ(item->References(), 2);
}

TEST_F(FileStorage, AnItemWhosePathIsMalformedTurnsIntoATemporaryFile) {
  Files files;
  files.SetTemporaryName(folder_.In("temporary"));
  const auto item = NewItem("caf\xE9");
  item->refusals.parent = true;  // whose name would be mended by the host
  ImageConstructorFile(image_, 10, 10, ImageFormatG, 0, item);
  ExpectNothingRaised();
  EXPECT_EQ(record_->FilePath, folder_.In("temporary"));
}

TEST_F(FileStorage, AnItemWhoseNameHoldsAZeroCharacterLeavesTheFileNamedBeforeItAlone) {
  std::ofstream(folder_.In("image")) << "content";
  Files files;
  files.SetTemporaryName(folder_.In("temporary"));
  const auto item = NewItem(std::string("image\0more", 10));
  ImageConstructorFile(image_, 10, 10, ImageFormatG, 0, item);
  ExpectNothingRaised();
  EXPECT_TRUE(record_->Valid);
  EXPECT_EQ(record_->FilePath, folder_.In("temporary"));
  ImageDestructor(image_);
  EXPECT_EQ(ContentOf(folder_.In("image")), "content");
  EXPECT_TRUE(std::filesystem::remove(folder_.In("image")));
}

class FileStorageOnLargePages : public file_testing::FileImage {
 protected:
  FileStorageOnLargePages() : FileImage(8192) {}
};

TEST_F(FileStorageOnLargePages, ThePageCountsForRowsTailAndBlock) {
  const auto item = NewItem("image");
  const Files files;
  ImageConstructorFile(image_, 10, 10, ImageFormatG, 0, item);
  EXPECT_TRUE(record_->Valid);
  EXPECT_EQ(record_->RowSize, 8192);
  EXPECT_EQ(record_->TotalSize, 81920);
  EXPECT_EQ(LengthOf(folder_.In("image")), 90112);
  ASSERT_EQ(files.Records(FileCall::kWrite).size(), 1u);
  EXPECT_EQ(files.Records(FileCall::kWrite)[0].size, 4096);  // whatever the page
  EXPECT_EQ(files.Records(FileCall::kSeek)[0].offset, 81920);
  ExpectBlock(0, 9, 81920);
}

class FileStorageOnSmallPages : public file_testing::FileImage {
 protected:
  FileStorageOnSmallPages() : FileImage(1024) {}
};

TEST_F(FileStorageOnSmallPages, APageCountsAs4096AtLeast) {
  Construct(10, 10, ImageFormatG, 0);
  EXPECT_EQ(record_->RowSize, 4096);
  EXPECT_EQ(LengthOf(folder_.In("image")), 45056);
}

// --- what is refused or fails ---

TEST_F(FileStorage, ARefusedFormatOrSizeTouchesNoFile) {
  const auto item = NewItem("image");
  const Files files;
  ImageConstructorFile(image_, 10, 10, 14, 0, item);
  ImageConstructorFile(image_, 0, 10, ImageFormatG, 0, item);
  ImageConstructorFile(image_, 10, -1, ImageFormatG, 0, nullptr);
  ExpectNothingRaised();
  EXPECT_TRUE(files.Records().empty());
  EXPECT_FALSE(record_->Valid);
  EXPECT_EQ(record_->GetRow, nullptr);
  EXPECT_EQ(record_->ImageFormat, 14);
  EXPECT_EQ(item->References(), 1);
}

TEST_F(FileStorage, NoMemoryForATemporaryNameRaises) {
  const Files files;
  {
    faults::Heap heap;
    heap.FailCalloc([](size_t count, size_t size) { return count * size == 1026; });
    ImageConstructorFile(image_, 10, 10, ImageFormatG, 0, nullptr);
  }
  ExpectRaised("OutOfMemoryException", "Failed to allocate memory for temp path.");
  ExpectOnlyTheFormat();
  EXPECT_TRUE(files.Records().empty());
}

TEST_F(FileStorage, NoTemporaryNameRaisesAndFreesItsBuffer) {
  for (const bool isEmpty : {false, true}) {
    Files files;
    if (isEmpty) {
      files.SetTemporaryName("");
    } else {
      files.FailAll(FileCall::kTemporaryName);
    }
    faults::Heap heap;
    ImageConstructorFile(image_, 10, 10, ImageFormatG, 0, nullptr);
    const void *buffer = nullptr;
    for (const faults::Allocation &call : heap.Allocations()) {
      if (call.zeroed && call.count * call.size == 1026) buffer = call.address;
    }
    ASSERT_NE(buffer, nullptr);
    const auto freed = heap.Freed();
    EXPECT_EQ(std::count(freed.begin(), freed.end(), buffer), 1);
    ExpectRaised("UnsupportedOperationException", "Failed to get temp path.");
    ExpectOnlyTheFormat();
    EXPECT_TRUE(files.Records(FileCall::kOpen).empty());
  }
}

TEST_F(FileStorage, AFileThatCannotBeOpenedIsQuietlyNotValid) {
  const auto item = NewItem("image");
  const size_t descriptors = OpenDescriptors();
  {
    Files files;
    files.FailAll(FileCall::kOpen, EACCES);
    const faults::Heap heap;
    ImageConstructorFile(image_, 10, 10, ImageFormatG, 0, item);
    EXPECT_EQ(files.Records().size(), 1u);
    EXPECT_EQ(heap.Outstanding(), 0u);  // the path is freed
  }
  ExpectNothingRaised();
  ExpectOnlyTheFormat();
  EXPECT_EQ(item->References(), 1);
  EXPECT_EQ(OpenDescriptors(), descriptors);
}

TEST_F(FileStorage, AFileInAFolderThatIsNotThereIsQuietlyNotValid) {
  ImageConstructorFile(image_, 10, 10, ImageFormatG, 0, NewItem("no folder/image"));
  ExpectNothingRaised();
  ExpectOnlyTheFormat();
}

TEST_F(FileStorage, AFolderInThePlaceOfTheFileIsLeftAlone) {
  std::filesystem::create_directory(folder_.In("image"));
  const auto item = NewItem("image");
  ImageConstructorFile(image_, 10, 10, ImageFormatG, 0, item);
  ExpectNothingRaised();
  ExpectOnlyTheFormat();
  EXPECT_EQ(item->References(), 1);
  EXPECT_TRUE(std::filesystem::remove(folder_.In("image")));
}

TEST_F(FileStorage, AFileThatDoesNotReachItsLengthIsTruncatedClosedAndDeleted) {
  enum Failure { kTruncate, kSeek, kShortSeek, kWrite, kShortWrite };
  for (const Failure failure : {kTruncate, kSeek, kShortSeek, kWrite, kShortWrite}) {
    SCOPED_TRACE(failure);
    const auto item = NewItem("image");
    const size_t descriptors = OpenDescriptors();
    {
      Files files;
      if (failure == kTruncate) files.FailAt(FileCall::kTruncate, 1, ENOSPC);
      if (failure == kSeek) files.FailAt(FileCall::kSeek, 1);
      if (failure == kShortSeek) files.ShortenSeeks();
      if (failure == kWrite) files.FailAt(FileCall::kWrite, 1, ENOSPC);
      if (failure == kShortWrite) files.ShortenWrites();
      const faults::Heap heap;
      ImageConstructorFile(image_, 10, 10, ImageFormatG, 0, item);
      EXPECT_EQ(heap.Outstanding(), 0u);

      const std::vector<FileRecord> records = files.Records();
      ASSERT_GE(records.size(), 4u);
      const std::vector<FileRecord> last(records.end() - 3, records.end());
      EXPECT_EQ(last[0].call, FileCall::kTruncate);
      EXPECT_EQ(last[0].size, 0);
      EXPECT_EQ(last[1].call, FileCall::kClose);
      EXPECT_EQ(last[1].descriptor, last[0].descriptor);
      EXPECT_EQ(last[2].call, FileCall::kUnlink);
      EXPECT_EQ(last[2].path, folder_.In("image"));
      EXPECT_TRUE(files.Records(FileCall::kMap).empty());
    }
    ExpectNothingRaised();
    ExpectOnlyTheFormat();
    EXPECT_EQ(item->References(), 1);
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_TRUE(folder_.IsEmpty());
  }
}

TEST_F(FileStorage, AFileThatWasThereOrATemporaryOneIsDeletedAsWell) {
  std::ofstream(folder_.In("image")) << std::string(100000, 'x');
  Files files;
  files.ShortenWrites();
  files.SetTemporaryName(folder_.In("temporary"));
  const auto item = NewItem("image");
  for (REALobject place : {item.Handle(), REALobject{}}) {
    ImageConstructorFile(image_, 10, 10, ImageFormatG, 0, place);
    ExpectNothingRaised();
    ExpectOnlyTheFormat();
  }
  const std::vector<FileRecord> opened = files.Records(FileCall::kOpen), deleted = files.Records(FileCall::kUnlink);
  ASSERT_EQ(opened.size(), 2u);
  ASSERT_EQ(deleted.size(), 2u);
  EXPECT_EQ(opened[1].path, folder_.In("temporary"));
  for (const size_t file : {0, 1}) EXPECT_EQ(deleted[file].path, opened[file].path);
  EXPECT_TRUE(folder_.IsEmpty());
}

TEST_F(FileStorage, AFailedFirstMappingLeavesTheFileToClose) {
  const auto item = NewItem("image");
  const size_t descriptors = OpenDescriptors();
  {
    Files files;
    files.FailAt(FileCall::kMap, 1, ENOMEM);
    ImageConstructorFile(image_, 10, 10, ImageFormatG, 1, item);
  }
  ExpectNothingRaised();
  EXPECT_FALSE(record_->Valid);
  EXPECT_FALSE(IsUsable(*record_));
  EXPECT_EQ(record_->GetRow, GetRowMapping);
  EXPECT_EQ(record_->FilePath, folder_.In("image"));
  EXPECT_EQ(record_->FileItem, item.Handle());
  EXPECT_TRUE(record_->RemoveFile);
  EXPECT_TRUE(record_->IsMapping);
  EXPECT_EQ(record_->RowSize, 4096);
  EXPECT_EQ(record_->TotalSize, 40960);
  EXPECT_EQ(record_->MappingBlockSize, 40960);
  EXPECT_EQ(record_->MappedRowCount, 10);
  ExpectUnmapped();
  EXPECT_EQ(LengthOf(folder_.In("image")), 45056);
  EXPECT_EQ(OpenDescriptors(), descriptors + 1);

  ImageDestructor(image_);
  EXPECT_EQ(OpenDescriptors(), descriptors);
  EXPECT_EQ(LengthOf(folder_.In("image")), -1);
  EXPECT_EQ(item->References(), 1);
}

TEST_F(FileStorage, AFirstBlockAtAddressZeroLeavesTheFileToCloseToo) {
  {
    Files files;
    files.MapAtZero();
    Construct(10, 10, ImageFormatG, 0);
    ExpectNothingRaised();
    EXPECT_FALSE(record_->Valid);
    EXPECT_TRUE(record_->IsMapped);
    EXPECT_EQ(record_->Buffer, nullptr);
    EXPECT_EQ(record_->MappedFirstRow, 0);
    EXPECT_EQ(record_->MappedLastRow, 9);
    ImageDestructor(image_);
    EXPECT_TRUE(files.Records(FileCall::kUnmap).empty());
    EXPECT_EQ(files.Records(FileCall::kUnlink).size(), 1u);
  }
  EXPECT_TRUE(folder_.IsEmpty());
}

TEST_F(FileStorage, ARowThatWrapsToZeroCannotBeMapped) {
  // 4 x 1073741824 is 0 in 32 bits.
  Construct(1073741824, 10, ImageFormatRGBA, 0);
  ExpectNothingRaised();
  EXPECT_FALSE(record_->Valid);
  EXPECT_EQ(record_->RowSize, 0);
  EXPECT_EQ(record_->MappedRowCount, 0);
  ExpectUnmapped();
  SetMemBlockSize(image_, 0, 1000000);  // no division by the row
  EXPECT_EQ(record_->MappingBlockSize, 0);
  ExpectUnmapped();
}

TEST_F(FileStorage, ARowThatWrapsBelowZeroLeavesNoFile) {
  // Rounding 2147483647 up to the page wraps to -2147483648, and no file has such a length.
  Construct(2147483647, 10, ImageFormatG, 0);
  ExpectNothingRaised();
  EXPECT_FALSE(record_->Valid);
  EXPECT_EQ(record_->GetRow, nullptr);
  EXPECT_EQ(record_->FilePath, nullptr);
  EXPECT_TRUE(folder_.IsEmpty());
}

// 5 x 500002816 is more than 2147483647.
TEST_F(FileStorage, WhereFiveRowsCannotBeCountedThereIsNoBlock) {
  for (const int32_t height : {1, 2, 4}) {
    for (const int32_t blockSize : {0, 2000011264, INT32_MAX}) {
      Construct(500000000, height, ImageFormatG, blockSize);
      ExpectNothingRaised();
      EXPECT_FALSE(record_->Valid);
      EXPECT_EQ(record_->RowSize, 500002816);
      EXPECT_EQ(record_->TotalSize, int64_t{500002816} * height);
      ExpectUnmapped();
      SetMemBlockSize(image_, 0, 0);
      SetMemBlockSize(image_, 0, INT32_MAX);
      ExpectUnmapped();
      EXPECT_EQ(Row(0), nullptr);
      ImageDestructor(image_);
      EXPECT_TRUE(folder_.IsEmpty());
    }
  }
}

TEST_F(FileStorage, TheLargestFiveRowsThatCanBeCountedAreABlock) {
  Construct(429494272, 1, ImageFormatG, 0);  // five rows take 2147471360 bytes
  EXPECT_EQ(record_->MappingBlockSize, 2147471360);
  EXPECT_EQ(record_->MappedRowCount, 5);
  // In 32 bits there may be no room for it.
  EXPECT_EQ(record_->Valid != 0, record_->Buffer != nullptr);
}

TEST_F(FileStorage, ARowThatWrapsToASmallOneStays) {
  Construct(1073741825, 10, ImageFormatRGBA, 0);  // 4 bytes
  EXPECT_TRUE(record_->Valid);
  EXPECT_EQ(record_->RowSize, 4096);
  EXPECT_EQ(record_->Width, 1073741825);
}

// --- constructed a second time ---

TEST_F(FileStorage, ASecondConstructionGivesUpTheFirstFileOnce) {
  Construct(10, 10, ImageFormatG, 0);
  const int handle = record_->FileHandle;
  const auto other = NewItem("other");
  const Files files;
  ImageConstructorFile(image_, 20, 20, ImageFormatG, 0, other);
  const std::vector<FileRecord> records = files.Records();
  ASSERT_GE(records.size(), 5u);
  EXPECT_EQ(records[0].call, FileCall::kUnmap);
  EXPECT_EQ(records[1].call, FileCall::kTruncate);
  EXPECT_EQ(records[1].descriptor, handle);
  EXPECT_EQ(records[2].call, FileCall::kClose);
  EXPECT_EQ(records[2].descriptor, handle);
  EXPECT_EQ(records[3].call, FileCall::kUnlink);
  EXPECT_EQ(records[3].path, folder_.In("image"));
  EXPECT_EQ(records[4].call, FileCall::kOpen);
  EXPECT_TRUE(record_->Valid);
  EXPECT_EQ(record_->FileItem, other.Handle());
}

TEST_F(FileStorage, AFileThatCannotBeMadeASecondTimeLeavesNoImage) {
  Construct(10, 10, ImageFormatG, 0);
  ImageConstructorFile(image_, 20, 20, ImageFormatG, 0, NewItem("missing/image"));
  EXPECT_FALSE(record_->Valid);
  EXPECT_EQ(record_->GetRow, nullptr);
  EXPECT_FALSE(record_->RemoveFile);
  EXPECT_EQ(record_->FileItem, nullptr);
  EXPECT_TRUE(folder_.IsEmpty());
}

TEST_F(FileStorage, AnImageInMemoryAfterOneInAFileHasNothingOfTheFile) {
  Construct(10, 10, ImageFormatG, 0);
  ImageConstructor(image_, 20, 20, ImageFormatG);
  EXPECT_TRUE(record_->Valid);
  EXPECT_FALSE(record_->IsMapping);
  EXPECT_FALSE(record_->RemoveFile);
  EXPECT_FALSE(record_->IsMapped);
  EXPECT_EQ(record_->FileItem, nullptr);
  EXPECT_TRUE(folder_.IsEmpty());
  const auto clip = Adopt(ClipImage5(image_, 0, 19, 20, 1));
  const ImageClassData &view = *RecordOf(clip);
  EXPECT_EQ(view.GetRow(RecordOf(clip), 0), record_->Buffer + ptrdiff_t{19} * record_->RowSize);
  const Files files;
  ImageDestructor(image_);
  EXPECT_TRUE(files.Records().empty());
}

TEST_F(FileStorage, AClosedImageThatIsConstructedAnewLeavesDescriptor0Alone) {
  Construct(10, 10, ImageFormatG, 0);
  ImageDestructor(image_);
  const Files files;
  ImageConstructor(image_, 20, 20, ImageFormatG);
  EXPECT_TRUE(files.Records().empty());
  EXPECT_TRUE(record_->Valid);
}

// --- the end ---

TEST_F(FileStorage, CloseUnmapsTruncatesClosesAndDeletes) {
  Construct(10, 10, ImageFormatG, 0);
  const int handle = record_->FileHandle;
  const Files files;
  ImageDestructor(image_);
  const std::vector<FileRecord> records = files.Records();
  ASSERT_EQ(records.size(), 4u);
  EXPECT_EQ(records[0].call, FileCall::kUnmap);
  EXPECT_EQ(records[0].size, 40960);
  EXPECT_EQ(records[1].call, FileCall::kTruncate);
  EXPECT_EQ(records[1].descriptor, handle);
  EXPECT_EQ(records[1].size, 0);
  EXPECT_EQ(records[2].call, FileCall::kClose);
  EXPECT_EQ(records[2].descriptor, handle);
  EXPECT_EQ(records[3].call, FileCall::kUnlink);
  EXPECT_EQ(records[3].path, folder_.In("image"));
  EXPECT_EQ(record_->FileHandle, 0);
  EXPECT_EQ(record_->GetRow, nullptr);
  EXPECT_TRUE(record_->Valid);
  EXPECT_TRUE(record_->IsMapping);
}

TEST_F(FileStorage, ClosingASecondTimeGoesToDescriptor0) {
  Construct(10, 10, ImageFormatG, 0);
  ImageDestructor(image_);
  {
    const Files files;
    image_.Reset();  // the host destroys the instance, and sees to descriptor 0
    const std::vector<FileRecord> records = files.Records();
    ASSERT_GE(records.size(), 2u);
    EXPECT_EQ(records[0].call, FileCall::kTruncate);
    EXPECT_EQ(records[0].descriptor, 0);
    EXPECT_EQ(records[1].call, FileCall::kClose);
    EXPECT_EQ(records[1].descriptor, 0);
    EXPECT_TRUE(files.Records(FileCall::kUnlink).empty());
  }
  EXPECT_NE(fcntl(0, F_GETFD), -1);
}

TEST_F(FileStorage, AnImageThatIsNotClosedEndsWithItsLastReference) {
  Construct(10, 10, ImageFormatG, 0);
  const size_t descriptors = OpenDescriptors();
  image_.Reset();
  EXPECT_EQ(OpenDescriptors(), descriptors - 1);
  EXPECT_TRUE(folder_.IsEmpty());
}

}  // namespace
}  // namespace zvk::image
