#include "image/rows.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <tuple>

#include "image/channels.h"

namespace zvk::image {

namespace {

// Addresses from first up to, not including, end. A storage as its caller has described it may reach beyond what an
// address of 32 bits can tell.
struct ByteRange {
  int64_t first;
  int64_t end;
};

bool Overlap(const ByteRange &a, const ByteRange &b) { return a.first < b.end && b.first < a.end; }

int64_t AddressOf(const uint8_t *byte) { return static_cast<int64_t>(reinterpret_cast<uintptr_t>(byte)); }

// Bytes that a row may reach, from its address: the offsets of a clip may lead beyond PixelSize, or be below zero,
// and a caller's RowSize may be shorter than the pixels.
struct RowReach {
  int64_t first;
  int64_t end;
};

RowReach ReachOf(const ImageClassData &image) {
  const auto [lowest, highest] = RangeOfChannels(image);
  return {lowest, std::max(std::abs(int64_t{image.RowSize}), highest + int64_t{image.Width} * image.PixelSize)};
}

// The bytes that the rows of an image with a Buffer span, gaps and all; rows may run backwards.
ByteRange LinearRange(const ImageClassData &image) {
  const int64_t top = int64_t{image.RowOffset} * image.RowSize;
  const int64_t bottom = (int64_t{image.RowOffset} + image.Height - 1) * image.RowSize;
  const RowReach reach = ReachOf(image);
  const int64_t buffer = AddressOf(image.Buffer);
  return {buffer + std::min(top, bottom) + reach.first, buffer + std::max(top, bottom) + reach.end};
}

bool TableTouches(const ImageClassData &table, const ByteRange &range) {
  const RowReach reach = ReachOf(table);
  return std::any_of(table.RowTable, table.RowTable + table.Height, [&](const uint8_t *row) {
    return row != nullptr && Overlap({AddressOf(row) + reach.first, AddressOf(row) + reach.end}, range);
  });
}

// The file that a mapped image shows; false if it is not known: the descriptor of an image that has been closed may be
// another file's by now, and views keep it.
bool StatFile(const ImageClassData &image, struct stat &file) {
  for (const ImageClassData *parent = RecordOf(image.Parent); parent != nullptr; parent = RecordOf(parent->Parent)) {
    if (!parent->IsMapping || parent->FileHandle != image.FileHandle) return false;
  }
  return fstat(image.FileHandle, &file) == 0;
}

// True if the rows of a mapped image are for certain no bytes of the other image.
bool IsFileApart(const ImageClassData &mapped, const ImageClassData &other) {
  if (!other.IsMapping) return other.IsAllocated;
  struct stat file, otherFile;
  if (mapped.FileHandle == other.FileHandle || !StatFile(mapped, file) || !StatFile(other, otherFile)) return false;
  return file.st_dev != otherFile.st_dev || file.st_ino != otherFile.st_ino;
}

}  // namespace

bool SharesStorage(const ImageClassData &a, const ImageClassData &b) {
  if (&a == &b) return true;
  if (a.IsMapping) return !IsFileApart(a, b);
  if (b.IsMapping) return !IsFileApart(b, a);
  if (a.RowTable != nullptr && b.RowTable != nullptr) return a.RowTable == b.RowTable;
  if (a.RowTable != nullptr) return TableTouches(a, LinearRange(b));
  if (b.RowTable != nullptr) return TableTouches(b, LinearRange(a));
  return Overlap(LinearRange(a), LinearRange(b));
}

int64_t BytesFromRow(const ImageClassData &image, const uint8_t *row) {
  const int64_t rowBytes = std::abs(int64_t{image.RowSize});
  if (image.RowTable != nullptr || image.IsMapping) return rowBytes;
  // Rows that run backwards have a size below zero, and end with the top one.
  return std::max(image.TotalSize, rowBytes) - (row - image.Buffer);
}

bool HasSamePixels(const ImageClassData &before, const ImageClassData &image) {
  const auto place = [](const ImageClassData &record) {
    // The block of a mapped file moves with every walk over it.
    const uint8_t *base = record.IsMapping ? nullptr : record.Buffer;
    return std::tuple(record.Valid, record.GetRow, base, record.RowTable, record.IsMapping, record.FileHandle,
                      record.TotalSize, record.Width, record.Height, record.RowOffset, record.RowSize,
                      record.PixelSize);
  };
  return place(before) == place(image);
}

}  // namespace zvk::image
