// What the tests of filters share: images of every kind, their pixels as grids of bytes, and what goes for all filters.
#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/image_record.h"
#include "image/image_storage.h"
#include "image/views.h"
#include "tests/support/plugin_host.h"

namespace filter_testing {

using namespace zvk::filters;
using standalone::Object;
using standalone::Owned;
using Image = Owned<Object>;
using Bytes = std::vector<uint8_t>;
// Rows of pixels, a row as its bytes.
using Grid = std::vector<Bytes>;

inline ImageClassData &Record(const Image &image) { return *RecordOf(image); }

inline uint8_t *Row(const Image &image, int32_t y) { return Record(image).GetRow(&Record(image), y); }

// All bytes of the pixels, filler too.
inline Grid PixelsOf(const Image &image) {
  Grid grid;
  for (int32_t y = 0; y < Record(image).Height; ++y) {
    const uint8_t *const row = Row(image, y);
    grid.emplace_back(row, row + ptrdiff_t{Record(image).Width} * Record(image).PixelSize);
  }
  return grid;
}

inline void SetPixels(const Image &image, const Grid &grid) {
  for (size_t y = 0; y < grid.size(); ++y) {
    std::copy(grid[y].begin(), grid[y].end(), Row(image, static_cast<int32_t>(y)));
  }
}

// Random bytes, 0 and 255 more often than the others.
inline void FillNoise(uint8_t *bytes, size_t count, uint32_t seed) {
  std::minstd_rand random(seed + 1);
  for (size_t i = 0; i < count; ++i) {
    const auto kind = random() % 8;
    const auto value = static_cast<uint8_t>(random() >> 8);
    bytes[i] = kind == 0 ? uint8_t{0} : kind == 1 ? uint8_t{255} : value;
  }
}

// Lets the image see no more than five rows of its file at a time.
inline void ShrinkBlock(const Image &image) {
  ImageClassData &record = Record(image);
  munmap(record.MappingBase, static_cast<size_t>(record.MappingBlockSize));
  record.MappingBase = record.Buffer = nullptr;
  record.IsMapped = false;
  record.MappedFirstRow = record.MappedLastRow = -1;
  record.MappedRowCount = 5;
  record.MappingBlockSize = 5 * record.RowSize;
  record.GetRow(&record, 0);
}

class FilterTest : public testing::Test {
 protected:
  explicit FilterTest(standalone::HostOptions options = {.fenced = true}) : host_(std::move(options)) {}

  // A zero-filled image in memory of its own.
  Image New(int32_t width, int32_t height, int32_t format) {
    Image image = host_.New("PictureZVK");
    ImageConstructor(image, width, height, format);
    return image;
  }

  Image New(int32_t width, int32_t height, int32_t format, const Grid &grid) {
    Image image = New(width, height, format);
    SetPixels(image, grid);
    return image;
  }

  // An image of noise.
  Image Noise(int32_t width, int32_t height, int32_t format, uint32_t seed = 1) {
    Image image = New(width, height, format);
    FillNoise(Record(image).Buffer, static_cast<size_t>(Record(image).TotalSize), seed);
    return image;
  }

  // An image of noise in a file; its rows are a page long each.
  Image NoiseInFile(int32_t width, int32_t height, int32_t format, uint32_t seed = 1) {
    Image image = host_.New("PictureZVK");
    ImageConstructorFile(image, width, height, format, 0, nullptr);
    SetPixels(image, PixelsOf(Noise(width, height, format, seed)));
    return image;
  }

  // An image of 256 x 1 that has every sample once, in all bytes of a pixel.
  Image Ramp(int32_t format) {
    Image image = New(256, 1, format);
    const int32_t pixelSize = Record(image).PixelSize;
    for (int32_t x = 0; x < 256; ++x) std::memset(Row(image, 0) + ptrdiff_t{x} * pixelSize, x, pixelSize);
    return image;
  }

  void ExpectNothingRaised() { EXPECT_FALSE(host_.TakeException()); }

  PluginHost host_;
};

}  // namespace filter_testing
