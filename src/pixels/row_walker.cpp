#include "pixels/row_walker.h"

#include <cstddef>
#include <cstring>

namespace zvk::pixels {

bool RowGroup::Fetch(ImageClassData &dest, int32_t destY, ImageClassData &first, ImageClassData *second,
                     int32_t sourceY) {
  dest_ = FetchRow(dest, destY);
  const uint8_t *block = dest.Buffer;
  const int32_t blockRow = dest.MappedFirstRow;
  first_ = FetchRow(first, sourceY);
  second_ = second != nullptr ? FetchRow(*second, sourceY) : nullptr;
  if (dest_ == nullptr || first_ == nullptr || (second != nullptr && second_ == nullptr)) return false;
  if (!dest.IsMapping || (dest.Buffer == block && dest.MappedFirstRow == blockRow)) return true;

  // A mapped image that is read as well as written has moved its one block away from the row to be written. These are
  // different rows, so what is read may come from a copy.
  if (!KeepCopy(&first == &dest ? first_ : second_, dest.RowSize)) return false;
  if (&first == &dest) first_ = copy_.Get();
  if (second == &dest) second_ = copy_.Get();
  dest_ = FetchRow(dest, destY);
  return dest_ != nullptr;
}

bool RowGroup::KeepCopy(const uint8_t *row, int32_t size) {
  if (copySize_ != size) {
    copy_ = ZeroedBuffer<uint8_t>(size);
    copySize_ = copy_ ? size : 0;
  }
  if (copy_) std::memcpy(copy_.Get(), row, static_cast<size_t>(size));
  return static_cast<bool>(copy_);
}

}  // namespace zvk::pixels
