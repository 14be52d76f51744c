#include "geometry/mirror.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <utility>

#include "geometry/pixel_access.h"
#include "geometry/pixel_mover.h"
#include "geometry/pixel_reversal.h"
#include "geometry/run_exchange.h"
#include "host/resources.h"
#include "pixels/layouts.h"
#include "pixels/overlap.h"
#include "pixels/pixel_watch.h"
#include "pixels/row_walker.h"

namespace zvk::geometry {

namespace {

using enum ColourFamily;

bool IsServed(const ImageClassData &image) { return image.BitsPerComponent != 16 && IsUsable(image); }

// The record of an image that is changed in place, after the first yield; nil if it is refused.
ImageClassData *ImageToMove(REALobject instance) {
  ImageClassData *image = RecordOf(instance);
  if (image == nullptr || !IsServed(*image)) return nullptr;
  const PixelWatch watch(*image);
  YieldOn(*image);
  // A yield lets other code of the host run, which may have closed the image or constructed it anew.
  return IsServed(*image) && watch.HasStorage() ? image : nullptr;
}

// True if an image can still be moved after a later yield. One without colours is left alone, and its pixels may be
// larger than any that have channels.
bool MayGoOn(const ImageClassData &image) { return IsServed(image) && (image.IsGray || image.IsRGB || image.IsCMYK); }

// --- within a row ---

// Left and right change places pixel by pixel, channel by channel.
template <class L>
void MirrorByPixels(const ImageClassData &image, uint8_t *row) {
  const auto offsets = L::OffsetsOf(image);
  const ptrdiff_t pixelSize = image.PixelSize;
  uint8_t *left = row;
  uint8_t *right = row + (image.Width - 1) * pixelSize;
  for (int32_t i = 0; i < image.Width / 2; ++i) {
    for (const int32_t offset : offsets) std::swap(left[offset], right[offset]);
    left += pixelSize;
    right -= pixelSize;
  }
}

// The same by runs of pixels from both ends of the row.
void MirrorByRuns(const PixelMover &mover, const ImageClassData &image, uint8_t *row) {
  constexpr int32_t kMostPixels = 256;
  std::array<uint8_t, ptrdiff_t{kMostPixels} *kLargestPixel> aside = {};
  const int32_t half = image.Width / 2;
  for (int32_t left = 0; left < half; left += kMostPixels) {
    const int32_t part = std::min(kMostPixels, half - left);
    const int32_t right = image.Width - left - part;
    std::memcpy(aside.data(), mover.SourceAt(row, left), static_cast<size_t>(part) * image.PixelSize);
    mover.Reverse(mover.SourceAt(row, right), mover.DestAt(row, left), part);
    mover.Reverse(aside.data(), mover.DestAt(row, right), part);
  }
}

// Mirrors the rows of an image as it is at present.
template <class L>
class RowMirror {
 public:
  explicit RowMirror(const ImageClassData &image)
      : image_(image), mover_(L{}, image, image), byRuns_(SamplesAreApart<L>(image)) {}

  void operator()(uint8_t *row) const {
    if (byRuns_) {
      // A single pixel stays, and so does its page.
      if (image_.Width > 1) ExpectWrites(image_, row, RangeOf(L::OffsetsOf(image_)), image_.Width);
      MirrorByRuns(mover_, image_, row);
    } else {
      MirrorByPixels<L>(image_, row);
    }
  }

 private:
  const ImageClassData &image_;
  PixelMover mover_;
  bool byRuns_;  // not where two channels share a sample, which changes its place twice
};

// --- between two rows ---

enum class PixelOrder : uint8_t { Forward, Backward };

// Rows of one image, put aside and written back elsewhere. A caller's RowSize may be shorter than the pixels: those
// whose samples do not all lie in the first RowSize bytes are not in the copies, and stay out of it.
template <class L, PixelOrder kOrder>
class RowExchange {
 public:
  explicit RowExchange(ImageClassData &image) : image_(image), mover_(L{}, image, image) {
    const auto [lowest, highest] = RangeOf(L::OffsetsOf(image));
    const int64_t pixelSize = image.PixelSize;
    const int64_t first = lowest < 0 ? (pixelSize - 1 - lowest) / pixelSize : 0;
    const int64_t end = highest < image.RowSize ? (image.RowSize - 1 - highest) / pixelSize + 1 : 0;
    first_ = static_cast<int32_t>(std::min<int64_t>(first, image.Width));
    count_ = static_cast<int32_t>(std::max<int64_t>(std::min<int64_t>(end, image.Width) - first_, 0));
    firstByte_ = first_ * pixelSize + lowest;
    bytes_ = count_ > 0 ? (count_ - 1) * pixelSize + highest + 1 - lowest : 0;
  }

  // Lets two rows change places where they are, if their pixels are the samples and nothing else. False, with nothing
  // done, if they are to be put aside.
  bool ExchangeInPlace(int32_t i, int32_t j) const {
    if (kOrder == PixelOrder::Backward || !L::PackedAlike(image_, image_) || !HasFixedRows(image_)) return false;
    uint8_t *row = FetchRow(image_, i);
    uint8_t *other = FetchRow(image_, j);
    if (row == nullptr || other == nullptr || count_ == 0) return false;
    if (RunsOverlap(row + firstByte_, bytes_, other + firstByte_, bytes_)) return false;
    ExchangeRuns(row + firstByte_, other + firstByte_, bytes_);
    return true;
  }

  // False if the row cannot be had.
  bool PutAside(int32_t y, uint8_t *copy) const {
    const uint8_t *row = FetchRow(image_, y);
    if (row == nullptr) return false;
    std::memcpy(copy + firstByte_, row + firstByte_, static_cast<size_t>(bytes_));
    return true;
  }

  // Writes the samples of a row that was put aside.
  void Write(int32_t y, const uint8_t *copy) const {
    uint8_t *row = FetchRow(image_, y);
    if (row == nullptr || count_ == 0) return;
    const uint8_t *source = mover_.SourceAt(copy, first_);
    if constexpr (kOrder == PixelOrder::Forward) {
      mover_.Copy(source, mover_.DestAt(row, first_), count_);
    } else if (PixelsAreApart<L>(image_)) {
      mover_.Reverse(source, mover_.DestAt(row, image_.Width - first_ - count_), count_);
    } else {
      const auto pixels = AccessTo<L>(image_);
      for (int32_t x = first_ + count_ - 1; x >= first_; --x) {
        pixels.Write(row, image_.Width - 1 - x, pixels.Read(copy, x));
      }
    }
  }

 private:
  ImageClassData &image_;
  PixelMover mover_;
  int32_t first_;  // pixels that are in the copies
  int32_t count_;
  ptrdiff_t firstByte_;  // and the bytes that they take
  ptrdiff_t bytes_;
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

  const PixelWatch watch(*image);
  VisitLayout<Gray, RGB, CMYK>(*image, [&]<class L>(L) {
    std::optional<RowExchange<L, kOrder>> rows(*image);
    for (int32_t i = 0; i < image->Height / 2; ++i) {
      const int32_t j = image->Height - 1 - i;
      if (!rows->ExchangeInPlace(i, j)) {
        // No address is kept from one fetch to the next, which may move the block of a mapped image.
        const bool hasUpper = rows->PutAside(i, upper.Get());
        const bool hasLower = rows->PutAside(j, lower.Get());
        if (hasUpper && hasLower) {
          rows->Write(i, lower.Get());
          rows->Write(j, upper.Get());
        }
      }
      if (image->Yield.YieldTicks == 0) continue;
      YieldOn(*image);
      if (!MayGoOn(*image) || !watch.HasStorage() || image->RowSize != rowSize) return;
      rows.emplace(*image);
    }
    if (kOrder == PixelOrder::Backward && image->Height % 2 != 0) {
      // The middle row is not put aside first: it gets the reversal of what was put aside last, the row below it as it
      // was, or zeros where there is no other row.
      rows->Write(image->Height / 2, lower.Get());
    }
  });
}

}  // namespace

void HMirrorSelf(REALobject instance) {
  ImageClassData *image = ImageToMove(instance);
  if (image == nullptr) return;
  VisitLayout<Gray, RGB, CMYK>(*image, [image]<class L>(L) {
    std::optional<RowMirror<L>> mirror(*image);
    const auto mayGoOn = [&] {
      if (!MayGoOn(*image)) return false;
      mirror.emplace(*image);
      return true;
    };
    // All rows, however many there are after a yield.
    ForEachRow(
        *image, {0, 0, INT32_MAX, INT32_MAX}, RowYield::AfterEachRow, [&](const RowPart &part) { (*mirror)(part.row); },
        mayGoOn);
  });
}

void VMirrorSelf(REALobject instance) { ExchangeHalves<PixelOrder::Forward>(instance); }

void Rotate180Self(REALobject instance) { ExchangeHalves<PixelOrder::Backward>(instance); }

}  // namespace zvk::geometry
