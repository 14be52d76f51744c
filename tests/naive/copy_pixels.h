// Copying pixels as plain nested loops, written from the rules alone, one sample at a time.
#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "tests/naive/samples.h"
#include "tests/scenes/stored_image.h"

namespace naive::copying {

struct Numbers {
  int32_t destX, destY, width, height, sourceX, sourceY;
};

// The rectangle in the order in which the copy tells its steps. False if nothing is to be copied.
inline bool FitNaively(Numbers &n, const ImageClassData &self, const ImageClassData &source) {
  auto &[dx, dy, w, h, sx, sy] = n;
  if (sx < 0) {
    dx += sx;
    w += sx;
    sx = 0;
  }
  if (sy < 0) {
    dy += sy;
    h += sy;
    sy = 0;
  }
  if (w < 0) {
    dx += w;
    w = -w;
  }
  if (h < 0) {
    dy += h;
    h = -h;
  }
  if (dx < 0) {
    sx -= dx;
    w += dx;
    dx = 0;
  }
  if (dy < 0) {
    sy -= dy;
    h += dy;
    dy = 0;
  }
  if (dx >= self.Width) w = 0;
  if (dy >= self.Height) h = 0;
  if (dx + w > self.Width) w = self.Width - dx;
  if (dy + h > self.Height) h = self.Height - dy;
  if (sx + w > source.Width) w = source.Width - sx;
  if (sy + h > source.Height) h = source.Height - sy;
  return w >= 1 && h >= 1;
}

inline int CountOf(const ImageClassData &image) {
  return (image.HasRed ? 1 : 0) + (image.HasGreen ? 1 : 0) + (image.HasBlue ? 1 : 0) + (image.HasGray ? 1 : 0) +
         (image.HasAlpha ? 1 : 0);
}

inline bool GoesInBlocks(const ImageClassData &self, const ImageClassData &source) {
  if (self.IsMapping || source.IsMapping) return false;
  if (CountOf(self) != self.PixelSize || CountOf(source) != source.PixelSize) return false;
  if (self.HasRed != source.HasRed || self.HasGreen != source.HasGreen || self.HasBlue != source.HasBlue) return false;
  if (self.HasGray != source.HasGray || self.HasAlpha != source.HasAlpha) return false;
  if (self.BitsPerComponent != source.BitsPerComponent) return false;
  if (self.RedOffset != source.RedOffset || self.GreenOffset != source.GreenOffset) return false;
  if (self.BlueOffset != source.BlueOffset) return false;
  return !self.HasAlpha || self.AlphaOffset == source.AlphaOffset;
}

inline int32_t LeastOffset(const ImageClassData &image) {
  std::vector<int32_t> offsets;
  if (image.HasRed) offsets.push_back(image.RedOffset);
  if (image.HasGreen) offsets.push_back(image.GreenOffset);
  if (image.HasBlue) offsets.push_back(image.BlueOffset);
  if (image.HasGray) offsets.push_back(image.GrayOffset);
  if (image.HasAlpha) offsets.push_back(image.AlphaOffset);
  return *std::min_element(offsets.begin(), offsets.end());
}

// Which samples a pixel of self takes: offset and value, in the order of writing. Empty: no conversion.
using Writes = std::vector<std::pair<int32_t, uint8_t>>;

inline Writes WritesOf(const ImageClassData &self, const ImageClassData &source, const uint8_t *pixel) {
  const auto at = [&](int32_t offset) { return pixel[offset]; };
  const auto luma = [&] {
    return static_cast<uint8_t>(
        (at(source.RedOffset) * 77 + at(source.GreenOffset) * 151 + at(source.BlueOffset) * 28) >> 8);
  };
  const bool alpha = self.HasAlpha && source.HasAlpha;
  Writes writes;
  if (self.IsRGB) {
    if (source.IsRGB) {
      writes = {{self.RedOffset, at(source.RedOffset)},
                {self.GreenOffset, at(source.GreenOffset)},
                {self.BlueOffset, at(source.BlueOffset)}};
    } else if (source.IsGray) {
      const uint8_t gray = at(source.GrayOffset);
      writes = {{self.RedOffset, gray}, {self.GreenOffset, gray}, {self.BlueOffset, gray}};
    }
  } else if (self.IsCMYK) {
    if (source.IsGray) {
      writes = {{self.CyanOffset, 0},
                {self.MagentaOffset, 0},
                {self.YellowOffset, 0},
                {self.BlackOffset, at(source.GrayOffset)}};
    } else if (source.IsCMYK) {
      writes = {{self.CyanOffset, at(source.CyanOffset)},
                {self.MagentaOffset, at(source.MagentaOffset)},
                {self.YellowOffset, at(source.YellowOffset)},
                {self.BlackOffset, at(source.BlackOffset)}};
    }
  } else if (self.IsGray) {
    if (source.IsRGB) {
      writes = {{self.GrayOffset, luma()}};
    } else if (source.IsCMYK) {
      writes = {{self.GrayOffset, alpha ? luma() : at(source.BlackOffset)}};
    } else if (source.IsGray) {
      writes = {{self.GrayOffset, at(source.GrayOffset)}};
      if (!alpha && self.BitsPerComponent == 16) {
        // 257 times a byte has that byte in both places.
        const bool wide = source.BitsPerComponent == 16;
        writes.emplace_back(self.GrayOffset + 1, at(source.GrayOffset + (wide ? 1 : 0)));
      }
    }
  }
  if (alpha && !writes.empty()) writes.emplace_back(self.AlphaOffset, at(source.AlphaOffset));
  return writes;
}

// Copies, or returns false with nothing changed. The storages tell where the blocks must end.
inline bool CopyNaively(ImageClassData &self, const scenes::StoredImage &selfStorage, ImageClassData &source,
                        const scenes::StoredImage &sourceStorage, Numbers n) {
  if (!FitNaively(n, self, source)) return false;
  if (GoesInBlocks(self, source)) {
    const int32_t c = CountOf(self);
    for (int32_t i = 0; i < n.height; ++i) {
      uint8_t *to = self.GetRow(&self, n.destY + i);
      const uint8_t *from = source.GetRow(&source, n.sourceY + i);
      const int64_t toStart = n.destX * c + LeastOffset(self), fromStart = n.sourceX * c + LeastOffset(source);
      std::vector<uint8_t> block;
      for (int64_t k = 0; k < (n.width + n.destX) * c; ++k) {
        if (fromStart + k >= sourceStorage.BytesFrom(from) || toStart + k >= selfStorage.BytesFrom(to)) break;
        block.push_back(from[fromStart + k]);
      }
      std::copy(block.begin(), block.end(), to + toStart);
    }
    return true;
  }
  for (int32_t y = 0; y < n.height; ++y) {
    for (int32_t x = 0; x < n.width; ++x) {
      const Writes writes = WritesOf(self, source, SampleAt(source, n.sourceX + x, n.sourceY + y, 0));
      if (writes.empty()) return false;
      for (const auto &[offset, value] : writes) *SampleAt(self, n.destX + x, n.destY + y, offset) = value;
    }
  }
  return true;
}

}  // namespace naive::copying
