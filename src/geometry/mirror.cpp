#include "geometry/mirror.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "geometry/pixel_access.h"
#include "geometry/pixel_reversal.h"
#include "host/resources.h"
#include "image/layouts.h"

namespace zvk {

namespace {

using enum ColourFamily;

// The record of an image that is changed in place, after the first yield; nil if it is refused.
ImageClassData *ImageToMove(REALobject instance) {
  ImageClassData *image = RecordOf(instance);
  if (image == nullptr || image->BitsPerComponent == 16 || !IsUsable(*image)) return nullptr;
  YieldOn(*image);
  // A yield lets other code of the host run, which may have closed the image or constructed it anew.
  return IsUsable(*image) ? image : nullptr;
}

// --- within a row ---

template <class L>
void MirrorRow(const ImageClassData &image, uint8_t *row) {
  const int32_t width = image.Width;
  if (L::PackedAlike(image, image)) {
    ReverseInPlace(row + L::FirstOffset(image), width, image.PixelSize);
    return;
  }
  const auto offsets = L::OffsetsOf(image);
  const ptrdiff_t pixelSize = image.PixelSize;
  uint8_t *left = row;
  uint8_t *right = row + (width - 1) * pixelSize;
  for (int32_t i = 0; i < width / 2; ++i) {
    for (const int32_t offset : offsets) std::swap(left[offset], right[offset]);
    left += pixelSize;
    right -= pixelSize;
  }
}

// --- between two rows ---

enum class PixelOrder : uint8_t { Forward, Backward };

// The pixels of a row whose samples lie in the first `rowSize` bytes of it: all, unless a caller's RowSize is shorter
// than the pixels. What lies further out is not in a copy of the row.
struct HeldPixels {
  int32_t first;
  int32_t end;  // one beyond the last
  ptrdiff_t firstByte;
  ptrdiff_t bytes;

  template <class L>
  static HeldPixels Of(const ImageClassData &image, int32_t rowSize) {
    const auto offsets = L::OffsetsOf(image);
    const auto [lowest, highest] = std::minmax_element(offsets.begin(), offsets.end());
    const int64_t size = image.PixelSize;
    const int64_t first = *lowest < 0 ? (size - 1 - int64_t{*lowest}) / size : 0;
    const int64_t end = *highest < rowSize ? (int64_t{rowSize} - 1 - *highest) / size + 1 : 0;
    HeldPixels held = {};
    if (std::min<int64_t>(end, image.Width) <= first) return held;
    held.first = static_cast<int32_t>(first);
    held.end = static_cast<int32_t>(std::min<int64_t>(end, image.Width));
    held.firstByte = first * size + *lowest;
    held.bytes = (held.end - 1) * size + *highest + 1 - held.firstByte;
    return held;
  }
};

// Rows of one image, put aside and written back elsewhere.
template <class L, PixelOrder kOrder>
class RowExchange {
 public:
  explicit RowExchange(ImageClassData &image, int32_t rowSize) : image_(image), rowSize_(rowSize) {}

  // False if the row cannot be had.
  bool PutAside(int32_t y, uint8_t *copy) {
    const uint8_t *row = image_.GetRow(&image_, y);
    if (row == nullptr) return false;
    const HeldPixels held = HeldPixels::Of<L>(image_, rowSize_);
    std::memcpy(copy + held.firstByte, row + held.firstByte, static_cast<size_t>(held.bytes));
    return true;
  }

  // Writes the samples of a row that was put aside.
  void Write(int32_t y, const uint8_t *copy) {
    uint8_t *row = image_.GetRow(&image_, y);
    if (row == nullptr) return;
    const HeldPixels held = HeldPixels::Of<L>(image_, rowSize_);
    const int32_t width = image_.Width;
    if (held.end - held.first == width && L::PackedAlike(image_, image_)) {
      const ptrdiff_t first = L::FirstOffset(image_);
      if constexpr (kOrder == PixelOrder::Forward) {
        std::memcpy(row + first, copy + first, static_cast<size_t>(held.bytes));
      } else {
        ReversePixels(copy + first, row + first, width, image_.PixelSize);
      }
      return;
    }
    const auto pixels = AccessTo<L>(image_);
    if constexpr (kOrder == PixelOrder::Forward) {
      for (int32_t x = held.first; x < held.end; ++x) pixels.Write(row, x, pixels.Read(copy, x));
    } else {
      for (int32_t x = held.end - 1; x >= held.first; --x) pixels.Write(row, width - 1 - x, pixels.Read(copy, x));
    }
  }

 private:
  ImageClassData &image_;
  int32_t rowSize_;
};

// Lets the rows of the upper half and those of the lower half change places.
template <PixelOrder kOrder>
void ExchangeHalves(REALobject instance) {
  ImageClassData *image = ImageToMove(instance);
  if (image == nullptr) return;
  const int32_t rowSize = image->RowSize;
  const ZeroedBuffer<uint8_t> upper(rowSize);
  const ZeroedBuffer<uint8_t> lower(rowSize);
  if (!upper || !lower) return;

  VisitLayout<Gray, RGB, CMYK>(*image, [&]<class L>(L) {
    RowExchange<L, kOrder> rows(*image, rowSize);
    for (int32_t i = 0; i < image->Height / 2; ++i) {
      const int32_t j = image->Height - 1 - i;
      // No address is kept from one fetch to the next, which may move the block of a mapped image.
      const bool hasUpper = rows.PutAside(i, upper.Get());
      const bool hasLower = rows.PutAside(j, lower.Get());
      if (hasUpper && hasLower) {
        rows.Write(i, lower.Get());
        rows.Write(j, upper.Get());
      }
      YieldOn(*image);
      if (!IsUsable(*image) || image->RowSize != rowSize) return;
    }
    if (kOrder == PixelOrder::Backward && image->Height % 2 != 0) {
      // The middle row is not put aside first: it gets the reversal of what was put aside last, the row below it as it
      // was, or zeros where there is no other row.
      rows.Write(image->Height / 2, lower.Get());
    }
  });
}

}  // namespace

void HMirrorSelf(REALobject instance) {
  ImageClassData *image = ImageToMove(instance);
  if (image == nullptr) return;
  VisitLayout<Gray, RGB, CMYK>(*image, [image]<class L>(L) {
    for (int32_t y = 0; y < image->Height; ++y) {
      uint8_t *row = image->GetRow(image, y);
      if (row != nullptr) MirrorRow<L>(*image, row);
      YieldOn(*image);
      if (!IsUsable(*image)) return;
    }
  });
}

void VMirrorSelf(REALobject instance) { ExchangeHalves<PixelOrder::Forward>(instance); }

void Rotate180Self(REALobject instance) { ExchangeHalves<PixelOrder::Backward>(instance); }

}  // namespace zvk
