#include "pixels/row_window.h"

#include <algorithm>
#include <cstring>

#include "image/rows.h"
#include "pixels/row_walker.h"

namespace zvk::pixels {

namespace {

// More is not worth its memory, which the mapping of a block may need.
constexpr int64_t kLargestCopies = int64_t{64} << 20;

}  // namespace

RowWindow::RowWindow(ImageClassData &image, const OffsetRange &offsets, int32_t columns, int32_t rows)
    : image_(image),
      rows_(rows),
      first_(offsets.lowest),
      bytes_((int64_t{columns} - 1) * image.PixelSize + offsets.Span()),
      inPlace_(HasFixedRows(image)) {
  if (inPlace_ || bytes_ < 1 || bytes_ > kLargestCopies / rows) return;
  copies_ = ZeroedBuffer<uint8_t>(bytes_ * rows);
  held_ = ZeroedBuffer<int32_t>(rows);
}

const uint8_t *RowWindow::Row(int32_t y) {
  if (inPlace_) return FetchRow(image_, y);
  const int32_t slot = y % rows_;
  uint8_t *copy = copies_.Get() + slot * bytes_;
  if (held_[slot] != y + 1) {
    const uint8_t *row = FetchRow(image_, y);
    held_[slot] = row != nullptr ? y + 1 : 0;
    if (row == nullptr) return nullptr;
    std::memcpy(copy, row + first_, static_cast<size_t>(bytes_));
  }
  return copy - first_;
}

void RowWindow::Forget() {
  if (held_) std::fill_n(held_.Get(), rows_, 0);
}

}  // namespace zvk::pixels
