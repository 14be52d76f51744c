// What the tests of mirroring and turning share: images on every kind of storage whose bytes can be looked at and put
// back as a whole.
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
#include "tests/naive/turns.h"
#include "tests/support/plugin_host.h"

namespace turn_testing {

using naive::ChannelsOf;
using naive::SampleAt;
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

// The first channel of all pixels, row by row.
inline std::vector<Bytes> Grid(const Owned<Object> &image, char letter) {
  ImageClassData &record = *RecordOf(image);
  std::vector<Bytes> rows(static_cast<size_t>(record.Height));
  for (int32_t y = 0; y < record.Height; ++y) {
    for (int32_t x = 0; x < record.Width; ++x) rows[static_cast<size_t>(y)].push_back(*SampleAt(record, x, y, letter));
  }
  return rows;
}
inline void SetGrid(const Owned<Object> &image, char letter, const std::vector<Bytes> &rows) {
  ImageClassData &record = *RecordOf(image);
  for (int32_t y = 0; y < record.Height; ++y) {
    for (int32_t x = 0; x < record.Width; ++x) {
      *SampleAt(record, x, y, letter) = rows[static_cast<size_t>(y)][static_cast<size_t>(x)];
    }
  }
}

}  // namespace turn_testing
