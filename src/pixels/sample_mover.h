// Moves samples, byte for byte, from a row of pixels into a row of pixels of another layout: the inner loop of every
// conversion that computes nothing.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "image/channels.h"
#include "pixels/byte_shuffle.h"

namespace zvk::pixels {

// The way of one sample: its offset in the pixel that is read and in the one that is written, in bytes.
struct SampleMove {
  int32_t from;
  int32_t to;
  bool complement : 1 = false;  // stored as 255 - sample
  bool zero : 1 = false;        // stored as 0 whatever is read
  bool full : 1 = false;        // stored as 255 whatever is read; not together with `zero`

  bool operator==(const SampleMove &) const = default;
};

// Which bytes of its row one side of a conversion uses.
struct PixelReach {
  int32_t pixelSize;    // distance between two pixels, 1 or more
  OffsetRange offsets;  // of the samples that are used

  // Where the first of these bytes lies, from the row's first pixel, and how many there are to the last one of `width`
  // pixels.
  ptrdiff_t First() const { return offsets.lowest; }
  ptrdiff_t Size(int32_t width) const {
    return ptrdiff_t{pixelSize} * (width - 1) + static_cast<ptrdiff_t>(offsets.Span());
  }
  // How many pixels lie in the bytes of a shuffle from a pixel's first sample on; 0 if not even one.
  int32_t PixelsPerShuffle(int32_t shuffleBytes = kShuffleBytes) const;
  // The last pixel of `width` from whose first sample on 16 bytes lie within the row's samples; negative: none.
  int32_t LastShuffle(int32_t width) const;
};

// True if the samples of `width` pixels, one or more, of two rows have a byte in their range in common.
bool RowsOverlap(const uint8_t *row, const PixelReach &reach, const uint8_t *otherRow, const PixelReach &otherReach,
                 int32_t width);

// The moves of one to five samples, settled at construction for any number of rows.
class SampleMover {
 public:
  static constexpr size_t kMost = 5;

  // The moves are made in their order: where two write the same byte the last one counts. `shuffleBytes` is the width
  // of the shuffles, 0 for none, at most what the machine has.
  SampleMover(int32_t sourcePixelSize, int32_t destPixelSize, std::span<const SampleMove> moves,
              int32_t shuffleBytes = WidestShuffle());

  // Moves the samples of `width` pixels. No other byte changes.
  void operator()(const uint8_t *source, uint8_t *dest, int32_t width) const;

  // The same in the plain order, which decides the bytes where the rows overlap: pixel after pixel, all samples of one
  // read before any is written.
  void MoveInOrder(const uint8_t *source, uint8_t *dest, int32_t width) const;

  // The same several pixels at once, for one pixel or more of rows that do not overlap. Returns how many pixels it has
  // moved, from the first one on: all of them by wide shuffles. Those behind are to be moved yet, and may have been
  // touched. 0 without shuffles, or where one would hold a single pixel.
  int32_t MoveShuffled(const uint8_t *source, uint8_t *dest, int32_t width) const;

  // If pixels without gaps are copied as they are, how far the samples lie behind their place in the pixel that is
  // written; else empty.
  std::optional<int32_t> ShiftOfCopy() const {
    return wholePixels_ ? std::optional(source_.offsets.lowest - dest_.offsets.lowest) : std::nullopt;
  }

 private:
  // What becomes of the bytes of a shuffle in the row that is written, from a pixel's first sample on.
  struct Shuffle {
    using Bytes = std::array<uint8_t, kWideShuffleBytes>;

    alignas(kWideShuffleBytes) Bytes from;        // the byte of the other row; hexadecimal 80: zero
    alignas(kWideShuffleBytes) Bytes complement;  // exclusive-ored with that
    alignas(kWideShuffleBytes) Bytes keep;        // bits of the old byte that stay
    int32_t bytes;                                // of the shuffle
    int32_t pixels;
    bool keepsNothing;
  };

  template <size_t kCount>
  void MoveCountInOrder(const uint8_t *source, uint8_t *dest, int32_t width) const;
  Shuffle MakeShuffle(int32_t shuffleBytes) const;
  bool MovesWholePixels() const;
  void ShuffleOver(const uint8_t *source, uint8_t *dest, int32_t steps) const;
  void ShuffleInto(const uint8_t *source, uint8_t *dest, int32_t steps) const;
  void ShuffleWide(const uint8_t *source, uint8_t *dest, int32_t width) const;

  size_t count_;
  std::array<SampleMove, kMost> moves_{};
  PixelReach source_;
  PixelReach dest_;
  Shuffle shuffle_;
  bool wholePixels_;
};

}  // namespace zvk::pixels
