// The filters with a neighbourhood in plain nested loops, in the order in which they are defined to read and write. As
// in naive_filters.h, no row address is kept across another fetch. A row that cannot be had is left out.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tests/naive/filters.h"

namespace naive {

inline int64_t Clamp(int64_t value, int64_t low, int64_t high) { return std::max(low, std::min(value, high)); }

// Toward zero, into 32 bits; the most negative number for what does not fit.
inline int32_t Trunc(double value) {
  if (!(std::trunc(value) >= -2147483648.0 && std::trunc(value) <= 2147483647.0)) return INT32_MIN;
  return static_cast<int32_t>(value);
}

// 32-bit sums wrap.
inline int32_t Wrap(int64_t value) { return static_cast<int32_t>(static_cast<uint32_t>(value)); }

// One value for each channel of a pixel; writes nothing where the row cannot be had.
template <class Value>
void WritePixel(ImageClassData &dest, int32_t x, int32_t y, const std::string &channels,
                const std::vector<Value> &values) {
  for (size_t c = 0; c < channels.size(); ++c) {
    uint8_t *const sample = SampleAt(dest, x, y, channels[c]);
    if (sample != nullptr) *sample = static_cast<uint8_t>(values[c]);
  }
}

// The samples of a row: by column, by channel.
using Line = std::vector<std::vector<uint8_t>>;

inline Line ReadLine(ImageClassData &image, int32_t columns, int32_t y, const std::string &channels) {
  Line line(static_cast<size_t>(columns));
  for (int32_t x = 0; x < columns; ++x) {
    for (const char channel : channels) line[static_cast<size_t>(x)].push_back(*SampleAt(image, x, y, channel));
  }
  return line;
}

// --- blurs ---

// r is 0 or more.
inline void BoxBlur(ImageClassData &source, ImageClassData &dest, int32_t r, bool vertical, bool horizontal) {
  const std::string channels = ChannelsOf(source);
  const int32_t width = source.Width, height = source.Height;
  const uint32_t window = r >= 1 ? 2 * static_cast<uint32_t>(r) + 1 : 3;
  std::vector<uint32_t> table((window + 1) * size_t{256});
  for (uint32_t i = 0; i < window * 256; ++i) table[i] = i / window;
  // Sums beyond the table come about only where dest and source are the same bytes; they count as 0.
  const auto means = [&](const std::vector<uint32_t> &sums) {
    std::vector<uint8_t> bytes;
    for (const uint32_t sum : sums) bytes.push_back(static_cast<uint8_t>(sum < table.size() ? table[sum] : 0));
    return bytes;
  };

  if (vertical) {
    std::vector<std::vector<uint32_t>> sums(static_cast<size_t>(width), std::vector<uint32_t>(channels.size()));
    const auto change = [&](int64_t row, uint32_t sign) {
      for (int32_t x = 0; x < width; ++x) {
        for (size_t c = 0; c < channels.size(); ++c) {
          const uint8_t *const sample = SampleAt(source, x, static_cast<int32_t>(row), channels[c]);
          if (sample != nullptr) sums[static_cast<size_t>(x)][c] += sign * *sample;
        }
      }
    };
    for (int64_t j = -r; j <= r; ++j) change(Clamp(j, 0, height - 1), 1);
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) WritePixel(dest, x, y, channels, means(sums[static_cast<size_t>(x)]));
      change(std::max(y - r, 0), static_cast<uint32_t>(-1));
      change(int64_t{y} + r < height - 1 ? int64_t{y} + r + 1 : height - 1, 1);
    }
  }
  if (!horizontal) return;
  for (int32_t y = 0; y < height; ++y) {
    if (dest.GetRow(&dest, y) == nullptr || (!vertical && source.GetRow(&source, y) == nullptr)) continue;
    const Line line = vertical ? ReadLine(dest, width, y, channels) : Line();
    const auto input = [&](int64_t x, size_t c) {
      return vertical ? line[static_cast<size_t>(x)][c] : *SampleAt(source, x, y, channels[c]);
    };
    std::vector<uint32_t> sums(channels.size());
    for (int64_t j = -r; j <= r; ++j) {
      for (size_t c = 0; c < channels.size(); ++c) sums[c] += input(Clamp(j, 0, width - 1), c);
    }
    for (int32_t x = 0; x < width; ++x) {
      WritePixel(dest, x, y, channels, means(sums));
      for (size_t c = 0; c < channels.size(); ++c)
        sums[c] += input(std::min<int64_t>(int64_t{x} + r + 1, width - 1), c);
      for (size_t c = 0; c < channels.size(); ++c) sums[c] -= input(std::max(x - r, 0), c);
    }
  }
}

// A copy of the first RowSize bytes of a row, as a buffer that is zero behind them.
class CopiedRow {
 public:
  CopiedRow() = default;
  CopiedRow(ImageClassData &image, int32_t y) {
    const uint8_t *const row = image.GetRow(&image, y);
    if (row != nullptr) bytes_.assign(row, row + std::max(image.RowSize, 0));
  }
  int operator[](int64_t position) const {
    return position >= 0 && position < static_cast<int64_t>(bytes_.size()) ? bytes_[static_cast<size_t>(position)] : 0;
  }

 private:
  std::vector<uint8_t> bytes_;
};

// False for an image without colours.
inline bool FractionalBlur(ImageClassData &source, ImageClassData &dest, double radius) {
  if (ChannelsOf(source).empty()) return false;
  if (int64_t{source.RowSize} + 20 < 1) return true;
  const std::string channels = std::string(source.IsGray ? "g" : "RGB") + (source.HasAlpha ? "A" : "");
  const double f = radius - std::floor(radius);
  const double norm = 1.0 / (f + f + 1.0);
  const int32_t width = source.Width, height = source.Height;

  CopiedRow above, row(source, 0), below(source, std::min(1, height - 1));
  for (int32_t y = 0; y < height; ++y) {
    if (y > 0 && y < height - 1) below = CopiedRow(source, y + 1);
    for (int32_t x = 0; x < width; ++x) {
      std::vector<int32_t> values;
      for (const char channel : channels) {
        const int64_t position = int64_t{x} * source.PixelSize + OffsetOf(source, channel);
        const int up = above[position], v = row[position], down = below[position];
        if (y == 0) {
          values.push_back(Trunc(((v * 2) * f + v) * norm));
        } else if (y < height - 1) {
          values.push_back(Trunc(((up + down) * f + v) * norm));
        } else {
          values.push_back(Trunc(((v + up) * f + v) * norm));
        }
      }
      WritePixel(dest, x, y, channels, values);
    }
    above = row;
    row = below;
  }
  for (int32_t y = 0; y < height; ++y) {
    if (dest.GetRow(&dest, y) == nullptr) continue;
    const Line line = ReadLine(dest, width, y, channels);
    for (int32_t x = 0; x < width; ++x) {
      std::vector<int32_t> values;
      for (size_t c = 0; c < channels.size(); ++c) {
        const auto at = [&](int32_t column) { return int{line[static_cast<size_t>(column)][c]}; };
        const int p = at(x);
        if (x == 0 && width > 1) {
          values.push_back(Trunc(((p + at(1)) * f + p) * norm));
        } else if (x < width - 1) {
          values.push_back(Trunc(((at(x - 1) + at(x + 1)) * f + p) * norm));
        } else {
          values.push_back(Trunc(((p * 2) * f + p) * norm));
        }
      }
      WritePixel(dest, x, y, channels, values);
    }
  }
  return true;
}

inline void Unsharp(ImageClassData &image, ImageClassData &blurred, double amount, int32_t threshold) {
  std::string channels = ChannelsOf(image);
  if (channels == "CMYK") channels = "CMYKA";
  const double k = amount * 4.0 + 1.0;
  for (int32_t y = 0; y < image.Height; ++y) {
    for (int32_t x = 0; x < image.Width; ++x) {
      for (const char channel : channels) {
        const uint8_t *const other = SampleAt(blurred, x, y, channel);
        if (other == nullptr) continue;
        const int b = *other;
        uint8_t *const sample = SampleAt(image, x, y, channel);
        if (sample == nullptr || std::abs(*sample - b) < threshold) continue;
        *sample = static_cast<uint8_t>(Clamp(Trunc((*sample - b) * k + b), 0, 255));
      }
    }
  }
}

// --- artistic filters ---

// levels is 1 or more.
inline void Oil(ImageClassData &source, ImageClassData &dest, int32_t levels, int32_t range) {
  const std::string channels = ChannelsOf(source);
  const int32_t count = std::min(levels, 256);
  struct Bin {
    int32_t samples = 0;
    int32_t sum = 0;
  };
  for (int32_t y = 0; y < source.Height; ++y) {
    for (int32_t x = 0; x < source.Width; ++x) {
      std::vector<std::vector<Bin>> bins(channels.size(), std::vector<Bin>(static_cast<size_t>(count)));
      const int32_t lastRow = std::min(Wrap(int64_t{y} + range), source.Height - 1);
      const int32_t lastColumn = std::min(Wrap(int64_t{x} + range), source.Width - 1);
      for (int32_t row = std::max(Wrap(int64_t{y} - range), 0); row <= lastRow; ++row) {
        for (int32_t column = std::max(Wrap(int64_t{x} - range), 0); column <= lastColumn; ++column) {
          for (size_t c = 0; c < channels.size(); ++c) {
            const uint8_t *const v = SampleAt(source, column, row, channels[c]);
            if (v == nullptr) continue;
            Bin &bin = bins[c][static_cast<size_t>((*v * count) / 256)];
            bin.samples += 1;
            bin.sum += *v;
          }
        }
      }
      for (size_t c = 0; c < channels.size(); ++c) {
        Bin best = bins[c][0];
        for (const Bin &bin : bins[c]) {
          if (bin.samples > best.samples) best = bin;
        }
        const bool none = best.samples == 0;
        const char written = none && (channels[c] == 'M' || channels[c] == 'Y') ? 'C' : channels[c];
        uint8_t *const sample = SampleAt(dest, x, y, written);
        if (sample != nullptr) *sample = static_cast<uint8_t>(none ? 255 : best.sum / best.samples);
      }
    }
  }
}

inline int32_t Nearest(int32_t place, int32_t distance, int32_t size) {
  return static_cast<int32_t>(Clamp(Wrap(int64_t{place} + distance), 0, int64_t{size} - 1));
}

inline void Diffuse(ImageClassData &source, ImageClassData &dest, int32_t level) {
  const std::string channels = ChannelsOf(source);
  if (channels.empty() || channels[0] == 'C') return;
  const int32_t m = Wrap(int64_t{2} * level + 1);
  for (int32_t y = 0; y < source.Height; ++y) {
    for (int32_t x = 0; x < source.Width; ++x) {
      const int32_t dx = Wrap(int64_t{std::rand() % m} - level);
      const int32_t dy = Wrap(int64_t{std::rand() % m} - level);
      const int32_t sx = Nearest(x, dx, source.Width), sy = Nearest(y, dy, source.Height);
      if (source.GetRow(&source, sy) == nullptr) continue;
      std::vector<uint8_t> samples;
      for (const char channel : channels) samples.push_back(*SampleAt(source, sx, sy, channel));
      WritePixel(dest, x, y, channels, samples);
    }
  }
}

inline void Engrave(ImageClassData &source, ImageClassData &dest, int32_t level) {
  const std::string channels = ChannelsOf(source);
  if (channels.empty() || channels[0] == 'C') return;
  for (int32_t y = 0; y < source.Height; ++y) {
    for (int32_t x = 0; x < source.Width; ++x) {
      const int32_t sx = Nearest(x, level, source.Width), sy = Nearest(y, level, source.Height);
      if (source.GetRow(&source, y) == nullptr || source.GetRow(&source, sy) == nullptr) continue;
      std::vector<int64_t> values;
      for (const char channel : channels) {
        const int a = *SampleAt(source, x, y, channel), b = *SampleAt(source, sx, sy, channel);
        values.push_back(Clamp(a - b + 128, 0, 255));
      }
      WritePixel(dest, x, y, channels, values);
    }
  }
}

inline void Neon(ImageClassData &source, ImageClassData &dest) {
  if (int64_t{source.RowSize} + 16 < 1) return;
  const std::string channels = ChannelsOf(source);
  CopiedRow next(source, 0);
  for (int32_t y = 0; y < source.Height; ++y) {
    const CopiedRow current = next;
    next = y < source.Height - 1 ? CopiedRow(source, y + 1) : CopiedRow();
    for (int32_t x = 0; x < source.Width; ++x) {
      std::vector<int> values;
      for (const char channel : channels) {
        const int64_t position = int64_t{x} * source.PixelSize + OffsetOf(source, channel);
        const int c = current[position], r = current[position + source.PixelSize], b = next[position];
        const int d = (c - r) * (c - r) + (c - b) * (c - b);
        const double single = static_cast<float>(d);
        const auto n = static_cast<int>(static_cast<float>(std::sqrt(2.0 * single)));
        const bool asksForTheRow = channels == "CMYKA" && channel == 'Y';
        values.push_back((asksForTheRow ? y : n) > 255 ? 255 : n);
      }
      WritePixel(dest, x, y, channels, values);
    }
  }
}

// What a stamp makes of its blurred image.
inline void StampColours(ImageClassData &blurred, ImageClassData &dest, double threshold, double softness,
                         uint32_t black, uint32_t white) {
  const std::map<char, int> shifts = {{'g', 8}, {'R', 16}, {'G', 8}, {'B', 0}};
  const double low = (threshold - softness * 0.5) * 255, high = (threshold + softness * 0.5) * 255;
  for (int32_t y = 0; y < blurred.Height; ++y) {
    for (int32_t x = 0; x < blurred.Width; ++x) {
      for (const char channel : ChannelsOf(blurred)) {
        const uint8_t *const i = SampleAt(blurred, x, y, channel);
        if (i == nullptr || !shifts.contains(channel)) continue;
        double f = 0;
        if (*i < low) {
          f = 0;
        } else if (*i >= high) {
          f = 1;
        } else {
          const double t = (*i - low) / (high - low);
          f = (t * -2 + 3) * t * t;
        }
        const int k = black >> shifts.at(channel) & 255, w = white >> shifts.at(channel) & 255;
        *SampleAt(dest, x, y, channel) = static_cast<uint8_t>(Trunc(f * (w - k) + k));
      }
    }
  }
}

}  // namespace naive
