// The one way to the rows of images, for whatever walks over them: the fetch, rows that cannot be had (a block of a
// mapped file that cannot be mapped, a missing row of a host's bitmap), the time that the host gets between rows, and
// what must still hold behind it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "host/resources.h"
#include "image/channels.h"
#include "image/image_record.h"
#include "image/rectangle.h"
#include "image/rows.h"
#include "pixels/pixel_watch.h"
#include "pixels/row_samples.h"

namespace zvk::pixels {

// --- single rows ---

// The address of row y of an image that has rows; nil if the row cannot be had. It lasts until the next fetch on the
// same record, and never over a yield. Where a row is fetched for nothing but the block of a mapped file, the address
// may be ignored.
inline uint8_t *FetchRow(ImageClassData &image, int32_t y) { return image.GetRow(&image, y); }

// Where the block of a mapped image lies, of which the addresses of rows last as long as it stays there.
class BlockPlace {
 public:
  explicit BlockPlace(const ImageClassData &image) : block_(image.Buffer), firstRow_(image.MappedFirstRow) {}

  // True if addresses of rows that were fetched then still hold; those of rows that stay where they are always do.
  bool IsThatOf(const ImageClassData &image) const {
    return HasFixedRows(image) || (image.Buffer == block_ && image.MappedFirstRow == firstRow_);
  }

 private:
  const uint8_t *block_;
  int32_t firstRow_;
};

// How many rows next to each other FetchRows can fetch at a time, wherever they lie.
inline int32_t RowsAtATime(const ImageClassData &image) {
  // A mapping may put two rows in front of the one that is fetched.
  return HasFixedRows(image) ? INT32_MAX : std::max(image.MappedRowCount - 2, 1);
}

// Moves the block of a mapped file so that `count` rows (1 to RowsAtATime) from `first` on lie in it, if it can be had.
void GatherRows(ImageClassData &image, int32_t first, int32_t count);

// Fetches that many rows from `first` on to be held together. False if one of them cannot be had. The addresses last
// until a row beyond these is fetched. For rows that are read or written in tiles; a window that slides over rows which
// are only read is a RowWindow.
bool FetchRows(ImageClassData &image, int32_t first, int32_t count, uint8_t **rows);

// Tells that the samples at `offsets` will be read and then written, in that many columns from a pixel of a fetched row
// on. Of a mapped file each of their pages is written to at once, with what is there: being read first and written
// later costs the system two faults for it.
void ExpectWrites(const ImageClassData &image, uint8_t *pixels, const OffsetRange &offsets, int32_t columns);

// A row that is held while rows of another image are fetched. Where both are one record over a mapped file, its block
// may have moved then, so that the row must be fetched again, and those of the other are gone.
class HeldRow {
 public:
  HeldRow(ImageClassData &image, int32_t y, const ImageClassData &other)
      : image_(image), y_(y), moves_(&image == &other && !HasFixedRows(image)), row_(FetchRow(image, y)) {}

  // The row's address as it was last fetched; nil if it could not be had.
  uint8_t *Get() const { return row_; }
  explicit operator bool() const { return row_ != nullptr; }

  // The row's address after rows of the other image have been fetched; nil if it cannot be had.
  uint8_t *Again() {
    if (moves_) row_ = FetchRow(image_, y_);
    return row_;
  }

 private:
  ImageClassData &image_;
  int32_t y_;
  bool moves_;
  uint8_t *row_;
};

// --- one image ---

// Calls visit(row, y) for each of the first `rows` rows, from the top. A row that cannot be had is left out.
template <class Visitor>
void ForEachRow(ImageClassData &image, int32_t rows, Visitor &&visit) {
  for (int32_t y = 0; y < rows; ++y) {
    uint8_t *row = FetchRow(image, y);
    if (row != nullptr) visit(row, y);
  }
}

// The part of one row that lies in a rectangle. The row's address holds until the next row is fetched.
struct RowPart {
  uint8_t *row;
  int32_t x;
  int32_t width;  // pixels, 0 or more

  PixelRow PixelsOf(const ImageClassData &image) const {
    return {row + ptrdiff_t{x} * image.PixelSize, image.PixelSize, width};
  }
};

enum class RowYield : uint8_t { AfterEachRow, None };

// Calls visit(RowPart) for each row of a fitted rectangle, from the top; rows without width are visited as well, also
// those of an image whose pixels cannot be reached. A row that cannot be had is left out. The rectangle is cut anew for
// each row, as the host may have constructed the image anew. After each yield mayGoOn() is asked, with the image as it
// is then; false ends the walk. Returns false if it ended there, or because there are no pixels any more.
template <class Visitor, class Check>
bool ForEachRow(ImageClassData &image, const Rectangle &fitted, RowYield yield, Visitor &&visit, Check &&mayGoOn) {
  const PixelWatch watch(image);
  for (int32_t y = fitted.y;; ++y) {
    const Rectangle inside = CutToImage(fitted, image.Width, image.Height);
    if (!(inside.width > 0 ? HasPixels(image) : HasRows(image))) return false;
    if (y - inside.y >= inside.height) return true;
    uint8_t *row = FetchRow(image, y);
    if (row != nullptr) visit(RowPart{row, inside.x, inside.width});
    if (yield == RowYield::None || image.Yield.YieldTicks == 0) continue;
    YieldOn(image);
    if (!watch.HasStorage() || !mayGoOn()) return false;
  }
}

template <class Visitor>
bool ForEachRow(ImageClassData &image, const Rectangle &fitted, RowYield yield, Visitor &&visit) {
  return ForEachRow(image, fitted, yield, visit, [] { return true; });
}

// --- two images, without yields ---

// Calls visit(row, otherRow), or visit(row, otherRow, y), for the first `rows` rows of both images, from the top; that
// of `image` is fetched first. A pair of which one row cannot be had is left out.
template <class Visitor>
void ForEachRowPair(ImageClassData &image, ImageClassData &other, int32_t rows, Visitor &&visit) {
  for (int32_t y = 0; y < rows; ++y) {
    uint8_t *row = FetchRow(image, y);
    uint8_t *otherRow = FetchRow(other, y);
    if (row == nullptr || otherRow == nullptr) continue;
    if constexpr (std::is_invocable_v<Visitor, uint8_t *, uint8_t *, int32_t>) {
      visit(row, otherRow, y);
    } else {
      visit(row, otherRow);
    }
  }
}

// --- a dest and one or two sources ---

// One row that is written, and one or two that are read.
class RowGroup {
 public:
  // Fetches row destY of dest, then row sourceY of first and of second (nil: not needed). False if one of them cannot
  // be had. The addresses last until the next fetch on any of the images.
  bool Fetch(ImageClassData &dest, int32_t destY, ImageClassData &first, ImageClassData *second, int32_t sourceY);

  uint8_t *Dest() const { return dest_; }
  const uint8_t *First() const { return first_; }
  const uint8_t *Second() const { return second_; }  // nil if it is not needed

 private:
  bool KeepCopy(const uint8_t *row, int32_t size);

  uint8_t *dest_ = nullptr;
  const uint8_t *first_ = nullptr;
  const uint8_t *second_ = nullptr;
  ZeroedBuffer<uint8_t> copy_;
  int32_t copySize_ = 0;
};

// Calls visit(group) for `height` rows, those of dest from destY on and those of the others from sourceY on (second may
// be nil). A group of which a row cannot be had is left out. Yields on dest after each row. False if it ended early,
// because the host has closed one of the images in a yield or has given it other pixels.
template <class Visitor>
bool ForEachRowGroup(ImageClassData &dest, int32_t destY, ImageClassData &first, ImageClassData *second,
                     int32_t sourceY, int32_t height, Visitor &&visit) {
  const PixelWatch watchedDest(dest), watchedFirst(first), watchedSecond(second != nullptr ? *second : first);
  RowGroup rows;
  bool hostRan = false;
  for (int32_t i = 0; i < height; ++i) {
    if (hostRan && !(watchedDest.HasSamePixels() && watchedFirst.HasSamePixels() && watchedSecond.HasSamePixels())) {
      return false;
    }
    if (rows.Fetch(dest, destY + i, first, second, sourceY + i)) visit(rows);
    hostRan = dest.Yield.YieldTicks != 0;
    YieldOn(dest);
  }
  return true;
}

}  // namespace zvk::pixels
