// Mirroring and turning in plain nested loops, one sample at a time, in the order that is told: the judge of the moves
// under test.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "image/file_storage.h"
#include "image/image_record.h"
#include "image/image_storage.h"
#include "tests/naive/samples.h"

namespace naive {

// The samples of a pixel in the order of the letters.
inline std::vector<uint8_t> PixelAt(ImageClassData &record, int32_t x, int32_t y, const std::string &letters) {
  std::vector<uint8_t> samples;
  for (const char letter : letters) samples.push_back(*SampleAt(record, x, y, letter));
  return samples;
}
inline void SetPixelAt(ImageClassData &record, int32_t x, int32_t y, const std::string &letters,
                       const std::vector<uint8_t> &samples) {
  for (size_t i = 0; i < letters.size(); ++i) *SampleAt(record, x, y, letters[i]) = samples[i];
}

// The row of the storage that an image shows in a row of its own.
inline int32_t StorageRow(const ImageClassData &image, int32_t row) {
  const bool mirrored =
      image.GetRow == zvk::image::GetRowLinearMirrored || image.GetRow == zvk::image::GetRowMappingMirrored;
  return image.RowOffset + (mirrored ? image.Height - 1 - row : row);
}

inline void MovePixel(ImageClassData &source, int32_t x, int32_t y, ImageClassData &dest, int32_t column, int32_t row) {
  const std::string letters = ChannelsOf(source);
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
      for (const char letter : ChannelsOf(image)) {
        const uint8_t left = *SampleAt(image, i, y, letter);
        const uint8_t right = *SampleAt(image, image.Width - 1 - i, y, letter);
        *SampleAt(image, i, y, letter) = right;
        *SampleAt(image, image.Width - 1 - i, y, letter) = left;
      }
    }
  }
}

// The samples of a row, of which those beyond RowSize are not kept (-1).
using KeptRow = std::map<std::pair<int32_t, char>, int>;

inline KeptRow Keep(ImageClassData &image, int32_t y) {
  KeptRow kept;
  for (int32_t x = 0; x < image.Width; ++x) {
    for (const char letter : ChannelsOf(image)) {
      const int64_t position = int64_t{x} * image.PixelSize + OffsetOf(image, letter);
      kept[{x, letter}] = position >= 0 && position < image.RowSize ? *SampleAt(image, x, y, letter) : -1;
    }
  }
  return kept;
}

inline void WriteKept(ImageClassData &image, int32_t y, const KeptRow &kept, bool backward) {
  const std::string letters = ChannelsOf(image);
  for (int32_t x = 0; x < image.Width; ++x) {
    const int32_t from = backward ? image.Width - 1 - x : x;
    std::vector<uint8_t> samples;
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
