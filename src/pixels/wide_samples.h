// 16-bit samples, whose place is the caller's affair: the host program may move them by a byte, and a caller's rows may
// be shorter than their pixels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "image/image_record.h"
#include "image/rows.h"

namespace zvk::pixels {

// The last byte of the storage that a row belongs to; nil if no address tells it. A sample that begins there has no
// second byte: it counts as 0 where a number is asked for, and is neither copied nor written. Every other sample is
// read and written whole, wherever it lies.
inline const uint8_t *LastByte(const ImageClassData &image, const uint8_t *row) {
  const int64_t bytes = BytesFromRow(image, row);
  return bytes <= PTRDIFF_MAX ? row + static_cast<ptrdiff_t>(bytes) - 1 : nullptr;
}

// A sample at any address, in the machine's byte order.
inline uint16_t LoadWideSample(const uint8_t *sample, const uint8_t *lastByte) {
  if (sample == lastByte) return *sample;
  uint16_t value;
  std::memcpy(&value, sample, sizeof value);
  return value;
}

inline void StoreWideSample(uint8_t *sample, uint16_t value, const uint8_t *lastByte) {
  if (sample == lastByte) {
    *sample = static_cast<uint8_t>(value);
  } else {
    std::memcpy(sample, &value, sizeof value);
  }
}

// Calls visit(column, count) for the gray samples of columns x to x + width - 1 of a row, from the left, in runs of
// whole samples, and visitCut(column) for the one that has no second byte, if it is among them.
template <class Visitor, class CutVisitor>
void VisitWideSamples(const ImageClassData &image, const uint8_t *row, int32_t x, int32_t width, Visitor &&visit,
                      CutVisitor &&visitCut) {
  const int64_t place = BytesFromRow(image, row) - 1 - image.GrayOffset;
  const int64_t column = place / image.PixelSize;
  const int64_t whole = place % image.PixelSize == 0 ? column - x : -1;
  if (whole < 0 || whole >= width) {
    visit(x, width);
    return;
  }
  const auto cut = static_cast<int32_t>(column);
  if (cut > x) visit(x, cut - x);
  visitCut(cut);
  if (cut + 1 < x + width) visit(cut + 1, x + width - cut - 1);
}

}  // namespace zvk::pixels
