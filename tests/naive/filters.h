// Filters in plain nested loops, slow and obvious: the judge of the ones under test, with which they share nothing but
// the record of an image. No row address is kept across another fetch. Used by the tests and, as the things to be
// faster than, by the benchmarks.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/naive/samples.h"

namespace naive {

// What a sample of the channel of that letter becomes; -1 is not written.
using SampleRule = std::function<int(char channel, int sample, int32_t x, int32_t y)>;

// Every sample by itself, pixel after pixel: each is written before the next one is read.
inline void MapPixels(ImageClassData &source, ImageClassData &dest, const SampleRule &rule) {
  const std::string channels = ChannelsOf(source);
  for (int32_t y = 0; y < source.Height; ++y) {
    for (int32_t x = 0; x < source.Width; ++x) {
      for (const char channel : channels) {
        const uint8_t *const sample = SampleAt(source, x, y, channel);
        const int value = sample == nullptr ? -1 : rule(channel, *sample, x, y);
        uint8_t *const result = SampleAt(dest, x, y, channel);
        if (result != nullptr && value >= 0) *result = static_cast<uint8_t>(value);
      }
    }
  }
}

struct Matrix {
  int32_t dimension = 0;
  std::vector<int32_t> entries;
  int32_t delta = 0;
  double scale = 1.0;
};

inline uint8_t MatrixResult(const Matrix &matrix, uint32_t sum) {
  const auto shifted = static_cast<int32_t>(sum + static_cast<uint32_t>(matrix.delta));
  int32_t value = shifted;
  if (matrix.scale != 1.0) {
    const double product = static_cast<double>(shifted) * matrix.scale;
    const bool fits = product > -2147483649.0 && product < 2147483648.0;
    value = fits ? static_cast<int32_t>(product) : INT32_MIN;
  }
  return static_cast<uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
}

// The convolution of the first columns and rows.
inline void ApplyMatrix(ImageClassData &source, ImageClassData &dest, int32_t columns, int32_t rows,
                        const Matrix &matrix) {
  const std::string channels = ChannelsOf(source);
  const int64_t d = matrix.dimension;
  for (int32_t y = 0; y < rows; ++y) {
    for (int32_t x = 0; x < columns; ++x) {
      std::vector<uint32_t> sums(channels.size());
      for (int64_t i = 0; i < d; ++i) {
        int64_t sy = y + i - d / 2;
        sy = sy < 0 ? 0 : sy > source.Height - 1 ? source.Height - 1 : sy;
        const uint8_t *const row = source.GetRow(&source, static_cast<int32_t>(sy));
        if (row == nullptr) continue;
        for (int64_t j = 0; j < d; ++j) {
          int64_t sx = x + j - d / 2;
          sx = sx < 0 ? 0 : sx > source.Width - 1 ? source.Width - 1 : sx;
          const auto index = static_cast<size_t>(i * d + j);
          const int32_t entry = index < 2500 && index < matrix.entries.size() ? matrix.entries[index] : 0;
          if (entry >= 255) continue;
          for (size_t c = 0; c < channels.size(); ++c) {
            const uint32_t sample = row[sx * source.PixelSize + OffsetOf(source, channels[c])];
            sums[c] += sample * static_cast<uint32_t>(entry);
          }
        }
      }
      for (size_t c = 0; c < channels.size(); ++c) {
        uint8_t *const sample = SampleAt(dest, x, y, channels[c]);
        if (sample != nullptr) *sample = MatrixResult(matrix, sums[c]);
      }
    }
  }
}

// One sample of the ordered dither; thresholds row by row, size x size of them.
inline int DitheredSample(const std::vector<int> &thresholds, int size, int levels, int sample, int32_t x, int32_t y) {
  const int m = thresholds[static_cast<size_t>((y % size) * size + x % size)];
  const int level = sample * (levels - 1) / 256;
  const int fraction = sample * (size * size + 1) / 256;
  return (fraction <= m ? level + 1 : level) * 255 / (levels - 1);
}

}  // namespace naive
