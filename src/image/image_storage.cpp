#include "image/image_storage.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <utility>

#include "host/resources.h"
#include "image/image_formats.h"
#include "image/pixel_work.h"

namespace zvk::image {

namespace {

// The index as the mirrored accessors see it: the record's own rows from the bottom upwards.
int32_t Mirrored(const ImageClassData *record, int32_t index) { return record->Height - 1 - index; }

}  // namespace

bool HasRows(const ImageClassData &image) {
  const bool overTable = image.GetRow == GetRowGDImage || image.GetRow == GetRowGDImageMirrored;
  return image.GetRow != nullptr && (!overTable || image.RowTable != nullptr);
}

uint8_t *GetRowLinear(ImageClassData *record, int32_t index) {
  return record->Buffer + static_cast<ptrdiff_t>(record->RowOffset + index) * record->RowSize;
}

uint8_t *GetRowLinearMirrored(ImageClassData *record, int32_t index) {
  return GetRowLinear(record, Mirrored(record, index));
}

uint8_t *GetRowGDImage(ImageClassData *record, int32_t index) {
  // The storage row is compared with Height and not with UnclippedHeight, so a clip loses its last rows.
  const int32_t row = record->RowOffset + index;
  if (row < 0 || row >= record->Height || record->RowTable == nullptr) return nullptr;
  return record->RowTable[row];
}

uint8_t *GetRowGDImageMirrored(ImageClassData *record, int32_t index) {
  return GetRowGDImage(record, Mirrored(record, index));
}

namespace {

// What an image holds: its pixels, its file and its references. The file's step is taken even if it has been before, on
// descriptor 0 then, as a closed image does not tell that it is one.
void GiveUp(ImageClassData *record) {
  AwaitPixelWork(*record);
  if (record->OwnsBuffer && record->Buffer != nullptr) {
    std::free(record->Buffer);
    record->Buffer = nullptr;
  }
  if (record->IsMapped) {
    record->IsMapped = false;
    if (record->MappingBase != nullptr) munmap(record->MappingBase, static_cast<size_t>(record->MappingBlockSize));
  }
  record->MappingBase = nullptr;
  record->Buffer = nullptr;
  if (record->RemoveFile && record->IsMapping) {
    // Truncating first gives the disk space back even if another process holds the file open.
    [[maybe_unused]] const int truncated = ftruncate(record->FileHandle, 0);
    close(record->FileHandle);
    if (record->FilePath != nullptr) unlink(record->FilePath);
    record->FileHandle = 0;
  }
  record->OwnsBuffer = record->IsAllocated = false;
  record->Buffer = nullptr;
  record->MappingBase = nullptr;
  record->GetRow = nullptr;
  for (REALobject ImageClassData::*field :
       {&ImageClassData::Parent, &ImageClassData::MemoryTarget, &ImageClassData::FileItem, &ImageClassData::Target}) {
    // Cleared first, as the end of an object may run code of the host that closes this image once more.
    if (REALobject object = std::exchange(record->*field, nullptr); object != nullptr) REALUnlockObject(object);
  }
  if (record->FilePath != nullptr) {
    std::free(record->FilePath);
    record->FilePath = nullptr;
  }
}

}  // namespace

void StartAnew(ImageClassData &record) {
  // A closed image has given its file up already; its path went with it.
  if (record.FilePath == nullptr) record.RemoveFile = false;
  GiveUp(&record);
  // What the host program has set stays with the instance.
  const ImageClassData before = record;
  record = {};
  record.Yield = before.Yield;
  record.Factory = before.Factory;
  record.DebugPictureEnabled = before.DebugPictureEnabled;
}

bool BeginConstruction(ImageClassData *record, int32_t width, int32_t height, int32_t format) {
  if (record == nullptr || width < 1 || height < 1) return false;
  StartAnew(*record);
  return InitImageClassData(record, width, height, format);
}

namespace {

// The end of a construction: the pixels lie at `bytes`, `size` of them, row after row.
void PutInMemory(ImageClassData &record, uint8_t *bytes, int64_t size, int32_t rowSize) {
  record.Buffer = bytes;
  record.MappingBase = nullptr;
  record.TotalSize = size;
  record.RowSize = rowSize;
  record.MappedRowCount = record.Height;
  record.GetRow = GetRowLinear;
  record.Valid = true;
}

}  // namespace

void ImageConstructor(REALobject instance, int32_t width, int32_t height, int32_t format) {
  ImageClassData *record = RecordOf(instance);
  if (!BeginConstruction(record, width, height, format)) return;

  const int32_t rowSize = MemoryRowSize(*record);
  const int64_t size = int64_t{rowSize} * record->Height;
  // An image too large for 32 bits is refused without a word; only missing memory is told.
  if (size > kLargestAllocation) return;
  ZeroedBuffer<uint8_t> pixels(size);
  if (!pixels) {
    char message[100];
    std::snprintf(message, sizeof message, "Failed to allocate %lld bytes of memory for image buffer.",
                  static_cast<long long>(size));
    RaiseException("OutOfMemoryException", message);
    return;
  }
  record->OwnsBuffer = record->IsAllocated = true;
  PutInMemory(*record, pixels.Release(), size, rowSize);
}

void ImageConstructorMemory(REALobject instance, REALobject block, int32_t width, int32_t height, int32_t format,
                            int32_t rowSize) {
  if (block == nullptr) {
    RaiseException("NilObjectException", "Memoryblock is nil.");
    return;
  }
  ImageClassData *record = RecordOf(instance);
  if (!BeginConstruction(record, width, height, format)) return;

  // A negative product is let through, so rows may run backwards in the caller's memory.
  const int64_t size = int64_t{rowSize} * record->Height;
  if (size > kLargestAllocation) {
    RaiseException("OutOfBoundsException", "Image needs more bytes than a 32 bit application can access.");
    return;
  }
  void *bytes = REALMemoryBlockGetPtr(block);
  if (bytes == nullptr) {
    RaiseException("NilObjectException", "Memoryblock is nil.");
    return;
  }
  record->MemoryTarget = block;
  REALLockObject(block);
  record->OwnsBuffer = false;
  PutInMemory(*record, static_cast<uint8_t *>(bytes), size, rowSize);
}

void ImageDestructor(REALobject instance) {
  ImageClassData *record = RecordOf(instance);
  if (record != nullptr) GiveUp(record);
}

int64_t GetTotalSizeInt64(REALobject instance, int32_t /*param*/) {
  const ImageClassData *record = RecordOf(instance);
  return record != nullptr ? record->TotalSize : 0;
}

}  // namespace zvk::image
