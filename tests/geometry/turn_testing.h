// What the tests of mirroring and turning share: images on every kind of storage whose bytes can be looked at and put
// back as a whole, and all moves as plain nested loops, which know the channels by letters of their own.
#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/image_record.h"
#include "image/image_storage.h"
#include "standalone/runtime/memory_block.h"
#include "tests/support/plugin_host.h"

namespace turn_testing {

using standalone::MemoryBlock;
using standalone::Object;
using standalone::Owned;
using zvk::image::ImageClassData;
using zvk::image::RecordOf;
using Bytes = std::vector<uint8_t>;

// --- images ---

// The formats that have channels of eight bits.
inline const std::vector<int32_t> kFormats = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 15, 16,
                                              17, 18, 19, 20, 21, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32};

inline int32_t PixelSizeOf(int32_t format) {
  ImageClassData record{};
  zvk::image::InitImageClassData(&record, 1, 1, format);
  return record.PixelSize;
}

// Random bytes, 0 and 255 more often than the others.
inline Bytes Noise(size_t count, uint32_t seed) {
  std::minstd_rand random(seed + 1);
  Bytes bytes(count);
  for (uint8_t &byte : bytes) {
    const auto kind = random() % 8;
    const auto value = static_cast<uint8_t>(random() >> 8);
    byte = kind == 0 ? uint8_t{0} : kind == 1 ? uint8_t{255} : value;
  }
  return bytes;
}

enum class Kind { Memory, Block, Table, File };

// Five rows in a block, the least that there may be, so that blocks move in a low image too. Views take that over.
inline void UseSmallBlocks(ImageClassData &record) {
  munmap(record.MappingBase, static_cast<size_t>(record.MappingBlockSize));
  record.IsMapped = false;
  record.MappingBase = record.Buffer = nullptr;
  record.MappedFirstRow = record.MappedLastRow = -1;
  record.MappedRowCount = 5;
  record.MappingBlockSize = 5 * record.RowSize;
  record.GetRow(&record, 0);
}

// An image of one kind of storage, filled with noise. Bytes() are all bytes of the storage, gaps between rows as well;
// in a block the last row ends with its last pixel.
class Storage {
 public:
  // `gap` bytes follow each row of a block; `upwards` lets its rows run from the bottom.
  Storage(PluginHost &host, Kind kind, int32_t width, int32_t height, int32_t format, int32_t gap = 0,
          bool upwards = false, uint32_t seed = 1)
      : kind_(kind), image(host.New("PictureZVK")) {
    ImageClassData &record = Record();
    const int32_t extent = width * PixelSizeOf(format);
    const int32_t distance = extent + gap;
    switch (kind) {
      case Kind::Memory:
        zvk::image::ImageConstructor(image, width, height, format);
        break;
      case Kind::Block:
        block = host.NewMemoryBlock((height - 1) * distance + extent);
        zvk::image::ImageConstructorMemory(image, block, width, height, format, upwards ? -distance : distance);
        if (upwards) record.Buffer += ptrdiff_t{height - 1} * distance;
        break;
      case Kind::Table:
        block = host.NewMemoryBlock(height * extent);
        for (int32_t y = 0; y < height; ++y) rows_.push_back(block->Data() + ptrdiff_t{y} * extent);
        std::shuffle(rows_.begin(), rows_.end(), std::minstd_rand(seed));
        zvk::image::InitImageClassData(&record, width, height, format);
        record.RowTable = rows_.data();
        record.RowSize = extent;
        record.GetRow = zvk::image::GetRowGDImage;
        record.Valid = true;
        break;
      case Kind::File:
        zvk::image::ImageConstructorFile(image, width, height, format, 0, nullptr);
        UseSmallBlocks(record);
        break;
    }
    EXPECT_TRUE(record.Valid);
    Put(Noise(Size(), seed));
  }
  Storage(const Storage &) = delete;
  Storage &operator=(const Storage &) = delete;

  ImageClassData &Record() const { return *RecordOf(image); }
  bool HoldsRowsTogether() const { return kind_ == Kind::Memory || kind_ == Kind::Block; }

  Bytes All() const {
    Bytes bytes(Size());
    if (kind_ == Kind::File) {
      EXPECT_EQ(pread(Record().FileHandle, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
    } else {
      std::memcpy(bytes.data(), First(), bytes.size());
    }
    return bytes;
  }
  void Put(const Bytes &bytes) const {
    if (kind_ == Kind::File) {
      EXPECT_EQ(pwrite(Record().FileHandle, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
    } else {
      std::memcpy(First(), bytes.data(), bytes.size());
    }
  }

 private:
  size_t Size() const { return block ? static_cast<size_t>(block->Size()) : static_cast<size_t>(Record().TotalSize); }
  uint8_t *First() const { return block ? block->Data() : Record().Buffer; }

  Kind kind_;
  std::vector<uint8_t *> rows_;

 public:
  Owned<MemoryBlock> block;
  Owned<Object> image;
};

// Counts every request for a yield: the clock moves whenever it is read, so none comes too early.
inline void YieldAlways(PluginHost &host, REALobject image) {
  static uint32_t ticks;
  ticks = 1000;
  host->SetEntry(
      "TickCount", +[]() -> uint32_t { return ticks += 10; });
  RecordOf(image)->Yield.YieldTicks = 1;
}
inline int64_t Yields(PluginHost &host) { return host->Calls("REALYieldToRB"); }

inline int32_t References(REALobject image) { return Object::From(image)->References(); }

// An image in memory of its own, all zero.
inline Owned<Object> NewImage(PluginHost &host, int32_t width, int32_t height, int32_t format) {
  auto image = host.New("PictureZVK");
  zvk::image::ImageConstructor(image, width, height, format);
  return image;
}

// A fetch of a row: whose, and which.
struct Fetch {
  const ImageClassData *record;
  int32_t row;
  bool operator==(const Fetch &) const = default;
};

inline std::vector<Fetch> fetches;

// Stands in for the accessor of a file that is mapped block by block: linear rows, every fetch noted.
inline uint8_t *NotedRow(ImageClassData *record, int32_t row) {
  fetches.push_back({record, row});
  return zvk::image::GetRowLinear(record, row);
}
inline void NoteFetches(ImageClassData &record) {
  record.IsMapping = true;
  record.GetRow = NotedRow;
}

// The same for a file of which row 1 cannot be mapped.
inline uint8_t *RowsButOne(ImageClassData *record, int32_t row) {
  return row == 1 ? nullptr : zvk::image::GetRowLinear(record, row);
}

// --- pixels ---

inline int32_t OffsetOf(const ImageClassData &record, char letter) {
  switch (letter) {
    case 'g':
      return record.GrayOffset;
    case 'R':
      return record.RedOffset;
    case 'G':
      return record.GreenOffset;
    case 'B':
      return record.BlueOffset;
    case 'C':
      return record.CyanOffset;
    case 'M':
      return record.MagentaOffset;
    case 'Y':
      return record.YellowOffset;
    case 'K':
      return record.BlackOffset;
    default:
      return record.AlphaOffset;
  }
}

// The channels that move: of the first family that the image belongs to, and alpha. Empty without a family.
inline std::string LettersOf(const ImageClassData &record) {
  std::string letters;
  if (record.IsGray) {
    letters = "g";
  } else if (record.IsRGB) {
    letters = "RGB";
  } else if (record.IsCMYK) {
    letters = "CMYK";
  } else {
    return "";
  }
  if (record.HasAlpha) letters += 'A';
  return letters;
}

inline uint8_t &SampleAt(ImageClassData &record, int64_t x, int32_t y, char letter) {
  return record.GetRow(&record, y)[x * record.PixelSize + OffsetOf(record, letter)];
}

// The samples of a pixel in the order of the letters.
inline Bytes PixelAt(ImageClassData &record, int32_t x, int32_t y, const std::string &letters) {
  Bytes samples;
  for (const char letter : letters) samples.push_back(SampleAt(record, x, y, letter));
  return samples;
}
inline void SetPixelAt(ImageClassData &record, int32_t x, int32_t y, const std::string &letters, const Bytes &samples) {
  for (size_t i = 0; i < letters.size(); ++i) SampleAt(record, x, y, letters[i]) = samples[i];
}

// The first channel of all pixels, row by row.
inline std::vector<Bytes> Grid(const Owned<Object> &image, char letter) {
  ImageClassData &record = *RecordOf(image);
  std::vector<Bytes> rows(static_cast<size_t>(record.Height));
  for (int32_t y = 0; y < record.Height; ++y) {
    for (int32_t x = 0; x < record.Width; ++x) rows[static_cast<size_t>(y)].push_back(SampleAt(record, x, y, letter));
  }
  return rows;
}
inline void SetGrid(const Owned<Object> &image, char letter, const std::vector<Bytes> &rows) {
  ImageClassData &record = *RecordOf(image);
  for (int32_t y = 0; y < record.Height; ++y) {
    for (int32_t x = 0; x < record.Width; ++x) {
      SampleAt(record, x, y, letter) = rows[static_cast<size_t>(y)][static_cast<size_t>(x)];
    }
  }
}

// --- the moves as they are told ---

namespace naive {

// The row of the storage that an image shows in a row of its own.
inline int32_t StorageRow(const ImageClassData &image, int32_t row) {
  const bool mirrored =
      image.GetRow == zvk::image::GetRowLinearMirrored || image.GetRow == zvk::image::GetRowMappingMirrored;
  return image.RowOffset + (mirrored ? image.Height - 1 - row : row);
}

inline void MovePixel(ImageClassData &source, int32_t x, int32_t y, ImageClassData &dest, int32_t column, int32_t row) {
  const std::string letters = LettersOf(source);
  // The size of a dest is not checked, but where there is no storage behind it nothing can be stored.
  for (const char letter : letters) {
    const int64_t byte = int64_t{column} * dest.PixelSize + OffsetOf(dest, letter);
    if (column >= dest.Width && byte >= std::abs(int64_t{dest.RowSize})) return;
  }
  const int32_t storageRow = StorageRow(dest, row);
  const bool hasRow = dest.RowTable == nullptr && storageRow >= 0 && storageRow < dest.UnclippedHeight;
  if (row >= dest.Height && !hasRow) return;
  SetPixelAt(dest, column, row, letters, PixelAt(source, x, y, letters));
}

inline void HalfTurn(ImageClassData &source, ImageClassData &dest) {
  for (int32_t y = 0; y < source.Height; ++y) {
    for (int32_t column = 0; column < source.Width; ++column) {
      MovePixel(source, source.Width - 1 - column, y, dest, column, source.Height - 1 - y);
    }
  }
}

// Tiles of the given edge, row-major; 0: the plain form.
inline void QuarterTurn(ImageClassData &source, ImageClassData &dest, bool left, int32_t edge) {
  const int32_t width = source.Width;
  const int32_t height = source.Height;
  if (edge <= 0) edge = std::max({width, height, 1});
  for (int32_t ty = 0; ty < height; ty += edge) {
    for (int32_t tx = 0; tx < width; tx += edge) {
      for (int32_t y = ty; y < std::min(ty + edge, height); ++y) {
        for (int32_t x = tx; x < std::min(tx + edge, width); ++x) {
          if (left) {
            MovePixel(source, x, y, dest, y, width - 1 - x);
          } else {
            MovePixel(source, x, y, dest, height - 1 - y, x);
          }
        }
      }
    }
  }
}

inline int32_t TileEdge(const ImageClassData &source, const ImageClassData &dest) {
  return std::min(source.MappedRowCount, dest.MappedRowCount) - 2;
}

inline void HMirror(ImageClassData &image) {
  for (int32_t y = 0; y < image.Height; ++y) {
    for (int32_t i = 0; i < image.Width / 2; ++i) {
      for (const char letter : LettersOf(image)) {
        const uint8_t left = SampleAt(image, i, y, letter);
        const uint8_t right = SampleAt(image, image.Width - 1 - i, y, letter);
        SampleAt(image, i, y, letter) = right;
        SampleAt(image, image.Width - 1 - i, y, letter) = left;
      }
    }
  }
}

// The samples of a row, of which those beyond RowSize are not kept (-1).
using KeptRow = std::map<std::pair<int32_t, char>, int>;

inline KeptRow Keep(ImageClassData &image, int32_t y) {
  KeptRow kept;
  for (int32_t x = 0; x < image.Width; ++x) {
    for (const char letter : LettersOf(image)) {
      const int64_t position = int64_t{x} * image.PixelSize + OffsetOf(image, letter);
      kept[{x, letter}] = position >= 0 && position < image.RowSize ? SampleAt(image, x, y, letter) : -1;
    }
  }
  return kept;
}

inline void WriteKept(ImageClassData &image, int32_t y, const KeptRow &kept, bool backward) {
  const std::string letters = LettersOf(image);
  for (int32_t x = 0; x < image.Width; ++x) {
    const int32_t from = backward ? image.Width - 1 - x : x;
    Bytes samples;
    for (const char letter : letters) {
      if (kept.at({from, letter}) >= 0) samples.push_back(static_cast<uint8_t>(kept.at({from, letter})));
    }
    if (samples.size() == letters.size()) SetPixelAt(image, x, y, letters, samples);
  }
}

inline void ExchangeHalves(ImageClassData &image, bool backward) {
  if (image.RowSize < 1) return;
  KeptRow upper;
  KeptRow lower = Keep(image, 0);
  for (auto &[place, sample] : lower) sample = std::min(sample, 0);  // zeros
  for (int32_t i = 0; i < image.Height / 2; ++i) {
    upper = Keep(image, i);
    lower = Keep(image, image.Height - 1 - i);
    WriteKept(image, i, lower, backward);
    WriteKept(image, image.Height - 1 - i, upper, backward);
  }
  if (backward && image.Height % 2 != 0) WriteKept(image, image.Height / 2, lower, true);
}

}  // namespace naive
}  // namespace turn_testing
