#include "exchange/raw_rows.h"

#include <cstring>

#include "exchange/exchange_rows.h"
#include "image/image_record.h"
#include "pixels/row_walker.h"

namespace zvk::exchange {

namespace {

// False, after an exception, for an index that is not one of the image's rows.
bool CheckIndex(const ImageClassData &image, int32_t index, const char *methodName) {
  if (index >= 0 && index < image.Height) return true;
  RaiseOutOfBoundsException(index, 0, image.Height, "index", methodName);
  return false;
}

}  // namespace

REALobject rbGetRow(REALobject instance, int32_t index) {
  ImageClassData *image = ReadableRecord(instance);
  if (image == nullptr || !CheckIndex(*image, index, "RawRow")) return nullptr;
  uint8_t *row = FetchRow(*image, index);
  // Nothing keeps the row alive for the block's sake.
  return row != nullptr ? REALPtrToMemoryBlock(row) : nullptr;
}

REALobject rbGetRowCopy(REALobject instance, int32_t index) {
  ImageClassData *image = ReadableRecord(instance);
  if (image == nullptr || !CheckIndex(*image, index, "Row")) return nullptr;
  const uint8_t *row = FetchRow(*image, index);
  const int32_t size = image->RowSize;
  if (row == nullptr || size < 1) return nullptr;

  constexpr int32_t kRefusedSize = 2147483647;
  NewBlock copy = size != kRefusedSize ? MakeBlock(size) : NewBlock{};
  if (copy.bytes == nullptr) {
    RaiseOutOfMemory("Failed to allocate a memoryblock with %lld bytes in size.", size);
    return nullptr;
  }
  std::memcpy(copy.bytes, row, static_cast<size_t>(size));
  return copy.block.Release();
}

void rbSetRow(REALobject instance, int32_t index, REALobject block) {
  // Valid is not asked for here, unlike in the getters.
  ImageClassData *image = RecordOf(instance);
  if (image == nullptr || !CheckIndex(*image, index, "Row")) return;
  const uint8_t *bytes = BytesOfBlock(block);
  if (bytes == nullptr) {
    RaiseException("NilObjectException", "Memoryblock is nil");
    return;
  }
  uint8_t *row = HasRows(*image) ? FetchRow(*image, index) : nullptr;
  if (row == nullptr || image->RowSize < 1) return;
  // The block may be the very memory that the image lies in.
  std::memmove(row, bytes, static_cast<size_t>(image->RowSize));
}

}  // namespace zvk::exchange
