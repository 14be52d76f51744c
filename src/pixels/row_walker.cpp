#include "pixels/row_walker.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zvk::pixels {

void GatherRows(ImageClassData &image, int32_t first, int32_t count) {
  if (HasFixedRows(image)) return;
  // A block reaches from the row that it is moved for to the rows behind that in the file: from the end that comes
  // first in the file to the other one. Which end that is depends on whether the view is mirrored.
  FetchRow(image, first);
  FetchRow(image, first + count - 1);
  FetchRow(image, first);
}

bool FetchRows(ImageClassData &image, int32_t first, int32_t count, uint8_t **rows) {
  GatherRows(image, first, count);
  const BlockPlace place(image);
  for (int32_t i = 0; i < count; ++i) {
    rows[i] = FetchRow(image, first + i);
    if (rows[i] == nullptr || !place.IsThatOf(image)) return false;
  }
  return true;
}

void ExpectWrites(const ImageClassData &image, uint8_t *pixels, const OffsetRange &offsets, int32_t columns) {
  if (HasFixedRows(image)) return;
  uint8_t *bytes = pixels + offsets.lowest;
  const int64_t count = (int64_t{columns} - 1) * image.PixelSize + offsets.Span();
  constexpr int64_t kSmallestPage = 4096;
  // All pages but the first are met at their start.
  const auto beyondPage = static_cast<int64_t>(reinterpret_cast<uintptr_t>(bytes) % kSmallestPage);
  for (int64_t i = 0; i < count; i = i == 0 ? kSmallestPage - beyondPage : i + kSmallestPage) {
    std::atomic_ref(bytes[i]).fetch_or(0, std::memory_order_relaxed);
  }
}

bool RowGroup::Fetch(ImageClassData &dest, int32_t destY, ImageClassData &first, ImageClassData *second,
                     int32_t sourceY) {
  dest_ = FetchRow(dest, destY);
  const BlockPlace place(dest);
  first_ = FetchRow(first, sourceY);
  second_ = second != nullptr ? FetchRow(*second, sourceY) : nullptr;
  if (dest_ == nullptr || first_ == nullptr || (second != nullptr && second_ == nullptr)) return false;
  if (place.IsThatOf(dest)) return true;

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
