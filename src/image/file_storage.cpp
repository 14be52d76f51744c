#include "image/file_storage.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "host/paths/folder_path.h"
#include "host/resources.h"
#include "image/image_storage.h"

namespace zvk::image {

static_assert(sizeof(off_t) == 8, "a backing file is larger than 32 bits reach");

namespace {

// --- the mapped block ---

// Pages are powers of two; like every sum of sizes this one wraps.
int32_t RoundUpToPage(int32_t bytes) { return (bytes + PageSize - 1) & -PageSize; }

void DropBlock(ImageClassData *record) {
  if (!record->IsMapped) return;
  record->IsMapped = false;
  if (record->MappingBase != nullptr) munmap(record->MappingBase, static_cast<size_t>(record->MappingBlockSize));
  record->MappingBase = record->Buffer = nullptr;
  record->MappedFirstRow = record->MappedLastRow = -1;
}

// Replaces the record's block by one that holds the storage row, and gives the row's address; nil if that fails.
uint8_t *MapBlockWith(ImageClassData *record, int32_t row) {
  // Two rows of lead-in, so that a walk down the image finds the rows it has just left.
  int32_t first = row >= 2 ? row - 2 : row;
  const int32_t limit = record->UnclippedHeight - record->MappedRowCount;
  if (first > limit) first = std::max(limit, 0);

  DropBlock(record);
  void *block = mmap(nullptr, static_cast<size_t>(record->MappingBlockSize), PROT_READ | PROT_WRITE, MAP_SHARED,
                     record->FileHandle, static_cast<off_t>(first) * record->RowSize);
  if (block == MAP_FAILED) return nullptr;
  record->Buffer = record->MappingBase = static_cast<uint8_t *>(block);
  record->IsMapped = true;
  record->MappedFirstRow = first;
  record->MappedLastRow = first + record->MappedRowCount - 1;
  // A block at address zero counts as mapped, but its rows would look like rows somewhere.
  return block != nullptr ? record->Buffer + static_cast<ptrdiff_t>(row - first) * record->RowSize : nullptr;
}

// True if the five rows that a block has at least can be counted in 32 bits. Without them there is no block.
bool CanHaveBlock(const ImageClassData &image) { return int64_t{5} * image.RowSize <= INT32_MAX; }

// Decides the length of the block and the rows in it from the length that is wanted.
void ApplyBlockRule(ImageClassData *record, int32_t wanted) {
  // The number of pages is compared with the page's own size: no block is smaller than page x page, unless the whole
  // image is.
  int32_t bytes = std::max(wanted / PageSize, PageSize) * PageSize;
  if (bytes > record->TotalSize) bytes = static_cast<int32_t>(record->TotalSize);
  // At least five rows, even where they reach past the end of the file.
  bytes = std::max(bytes, 5 * record->RowSize);
  record->MappingBlockSize = RoundUpToPage(bytes);
  // A row whose size has wrapped to 0 has no block: mapping it fails.
  record->MappedRowCount = record->RowSize != 0 ? record->MappingBlockSize / record->RowSize : 0;
}

}  // namespace

uint8_t *GetRowMapping(ImageClassData *record, int32_t index) {
  const int32_t row = record->RowOffset + index;
  if (row >= record->MappedFirstRow && row <= record->MappedLastRow) {
    return record->Buffer + static_cast<ptrdiff_t>(row - record->MappedFirstRow) * record->RowSize;
  }
  return MapBlockWith(record, row);
}

uint8_t *GetRowMappingMirrored(ImageClassData *record, int32_t index) {
  return GetRowMapping(record, record->Height - 1 - index);
}

void SetMemBlockSize(REALobject instance, int32_t /*param*/, int32_t value) {
  ImageClassData *record = RecordOf(instance);
  if (record == nullptr || !HasRows(*record) || record->RowSize == 0) return;
  if (record->IsMapping && !CanHaveBlock(*record)) return;
  DropBlock(record);
  ApplyBlockRule(record, value);
  record->GetRow(record, 0);
}

// --- the backing file ---

namespace {

// A fresh name for a temporary file; empty, with an exception raised, if there is none.
ZeroedBuffer<char> TemporaryPath() {
  ZeroedBuffer<char> path(1026);
  if (!path) {
    RaiseException("OutOfMemoryException", "Failed to allocate memory for temp path.");
    return path;
  }
  // The linker notes that somebody else might take the name before the file is opened. The name only has to be fresh.
  const char *name = std::tmpnam(path.Get());
  if (name == nullptr || *name == '\0') {
    RaiseException("UnsupportedOperationException", "Failed to get temp path.");
    return {};
  }
  return path;
}

// Gives the file its length: the pixels and one page of tail. Bytes written to the tail prove that it was reached.
bool Extend(int file, int64_t pixelBytes) {
  static constexpr uint8_t kZeroes[4096] = {};
  return ftruncate(file, pixelBytes + PageSize) == 0 && lseek(file, pixelBytes, SEEK_SET) == pixelBytes &&
         write(file, kZeroes, sizeof kZeroes) == static_cast<ssize_t>(sizeof kZeroes);
}

// Truncating first gives the disk space back even if another process holds the file open.
void Discard(int file, const char *path) {
  [[maybe_unused]] const int truncated = ftruncate(file, 0);
  close(file);
  unlink(path);
}

}  // namespace

void ImageConstructorFile(REALobject instance, int32_t width, int32_t height, int32_t format, int32_t blockSize,
                          REALobject folderItem) {
  ImageClassData *record = RecordOf(instance);
  if (!BeginConstruction(record, width, height, format)) return;
  // A row starts on a page, as a mapping must.
  const int32_t rowSize = RoundUpToPage(record->PixelSize * record->Width);
  const int64_t size = int64_t{rowSize} * record->Height;

  // An item without a path turns silently into a temporary file.
  ZeroedBuffer<char> path = FolderItemPath(folderItem);
  if (!path) path = TemporaryPath();
  if (!path) return;
  // The mode is the plain number 1638, hexadecimal 666, and not the octal one.
  const int file = open(path.Get(), O_RDWR | O_CREAT | O_TRUNC, 1638);
  if (file < 0) return;
  if (!Extend(file, size)) {
    Discard(file, path.Get());
    return;
  }

  record->FilePath = path.Release();
  record->FileHandle = file;
  record->RowSize = rowSize;
  record->TotalSize = size;
  record->Buffer = record->MappingBase = nullptr;
  record->MappedFirstRow = record->MappedLastRow = -1;
  record->OwnsBuffer = false;
  if (CanHaveBlock(*record)) ApplyBlockRule(record, blockSize);
  record->FileItem = folderItem;
  if (folderItem != nullptr) REALLockObject(folderItem);
  record->GetRow = GetRowMapping;
  record->RemoveFile = true;
  record->IsMapping = true;
  // Without a first block, one of no length for rows that are too large, the file stays with the record, for Close to
  // clean up.
  GetRowMapping(record, 0);
  record->Valid = record->Buffer != nullptr;
}

}  // namespace zvk::image
