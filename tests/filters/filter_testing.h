// What the tests of filters share: images of every kind, their pixels as grids of bytes, and what goes for all filters.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "image/image_formats.h"
#include "image/image_record.h"
#include "image/image_storage.h"
#include "image/views.h"
#include "tests/scenes/image_test.h"
#include "tests/scenes/random.h"
#include "tests/scenes/row_log.h"
#include "tests/scenes/stored_image.h"
#include "tests/support/plugin_host.h"

namespace filter_testing {

using namespace zvk::filters;
using standalone::Object;
using standalone::Owned;
using Image = scenes::ImageObject;
using scenes::Bytes;
using scenes::FillNoise;
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

// Lets the image see no more than five rows of its file at a time.
inline void ShrinkBlock(const Image &image) { scenes::UseBlocksOf(Record(image), 5); }

// What a filter fetches from a gray source of the given size (s) to a dest of its own (d), which pass for mapped.
template <class Filter>
std::string FetchesFor(PluginHost &host, int32_t width, int32_t height, Filter filter) {
  const Image source = scenes::NewImage(host, width, height, ImageFormatG);
  const Image dest = scenes::NewImage(host, width, height, ImageFormatG);
  scenes::RowLog log;
  log.WatchAsMapped(Record(source), "s");
  log.WatchAsMapped(Record(dest), "d");
  EXPECT_TRUE(Adopt(filter(source, dest)));
  return log.Take();
}

class FilterTest : public scenes::ImageTest {
 protected:
  explicit FilterTest(standalone::HostOptions options = {.fenced = true}) : ImageTest(std::move(options)) {}

  using ImageTest::New;
  Image New(int32_t width, int32_t height, int32_t format, const Grid &grid) {
    Image image = New(width, height, format);
    SetPixels(image, grid);
    return image;
  }

  // An image of noise.
  Image Noise(int32_t width, int32_t height, int32_t format, uint32_t seed = 1) {
    return scenes::NewNoise(host_, width, height, format, seed);
  }

  // An image of noise in a file; its rows are a page long each.
  Image NoiseInFile(int32_t width, int32_t height, int32_t format, uint32_t seed = 1) {
    Image image = NewInFile(width, height, format);
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
};

}  // namespace filter_testing
