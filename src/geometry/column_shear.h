// The middle step of a free rotation: every column of an image moved up or down by an offset of its own, in the two
// forms of a shear.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "geometry/shear.h"

namespace zvk {

// Column 0 moves by `start` pixels downwards, every further one by `slope` less.
struct ColumnShear {
  double start;
  double slope;
  int32_t columns;  // that are sheared, from the left
  int32_t rows;     // of the result
};

namespace shear_detail {

// Whole pixels downwards, and the rest as a weight.
struct ColumnOffset {
  explicit ColumnOffset(double offset) : pixels(Truncate(std::floor(offset))), weight(offset - pixels) {}

  int32_t pixels;
  double weight;
};

template <class L>
void ShearColumnsByPixels(ImageClassData &source, ImageClassData &dest, const ColumnShear &shear,
                          const Pixel<L> &background) {
  const auto from = ShearAccess<L>(source);
  const auto to = ShearAccess<L>(dest);
  double f = shear.start;
  for (int32_t column = 0; column < shear.columns; ++column) {
    const auto store = [&](int64_t row, int64_t end, const Samples<L> &samples) {
      if (row < 0 || row >= end) return;
      uint8_t *destRow = dest.GetRow(&dest, static_cast<int32_t>(row));
      if (destRow != nullptr) to.Write(destRow, column, samples);
    };
    const ColumnOffset offset(f);
    for (int32_t row = 0; row < dest.Height; ++row) store(row, dest.Height, background.samples);
    Carry<L> carry(background, offset.weight);
    for (int32_t row = 0; row < source.Height; ++row) {
      const uint8_t *sourceRow = source.GetRow(&source, row);
      if (sourceRow == nullptr) continue;
      store(int64_t{offset.pixels} + row, shear.rows, carry.Move(from.Read(sourceRow, column)));
    }
    // This falls on the last pixel of the run and replaces it, while a sheared row has one pixel more than its run.
    store(int64_t{offset.pixels} + source.Height - 1, shear.rows, carry.Last());
    f -= shear.slope;
  }
}

// The columns row by row, in strips that are narrow enough for what they touch to stay in the cache. The samples of a
// strip's pixels stand side by side, in the order of the images where they are packed alike.
template <class L, bool kPacked>
class ColumnStrips {
 public:
  ColumnStrips(ImageClassData &source, ImageClassData &dest, const ColumnShear &shear, const Pixel<L> &background)
      : source_(source),
        dest_(dest),
        shear_(shear),
        background_(kPacked ? AsStored(background, dest) : background.samples),
        from_(ShearAccess<L>(source)),
        to_(ShearAccess<L>(dest)),
        destRows_(dest.Height) {}

  // False, with nothing done, if there is no memory to work in.
  bool Shear() {
    if (!destRows_) return false;
    for (int32_t row = 0; row < dest_.Height; ++row) destRows_[row] = dest_.GetRow(&dest_, row);
    double f = shear_.start;
    for (int32_t column = 0; column < shear_.columns; column += kColumns) {
      firstColumn_ = column;
      columns_ = std::min(kColumns, shear_.columns - column);
      f = Prepare(f);
      ShearStrip();
    }
    return true;
  }

 private:
  static constexpr int32_t kColumns = 128;
  static constexpr int32_t kCount = L::channelCount;

  // Neighbouring columns, counted from the first one of the strip, that move by the same number of whole pixels.
  struct Run {
    int32_t first;
    int32_t columns;
    int64_t offset;
  };

  int32_t SampleCount() const { return columns_ * kCount; }

  // Returns the offset of the column behind the strip.
  double Prepare(double f) {
    runCount_ = 0;
    hasFractions_ = true;
    for (int32_t column = 0; column < columns_; ++column) {
      const ColumnOffset offset(f);
      const ShareWeight weight(offset.weight);
      hasFractions_ = hasFractions_ && weight.fraction != 0;
      for (int32_t c = 0; c < kCount; ++c) {
        weights_[column * kCount + c] = weight.weight;
        fractions_[column * kCount + c] = weight.fraction;
        shares_[column * kCount + c] = ShareOf(background_[c], weight.weight);
      }
      if (runCount_ == 0 || runs_[runCount_ - 1].offset != offset.pixels) {
        runs_[runCount_++] = {column, 0, offset.pixels};
      }
      ++runs_[runCount_ - 1].columns;
      f -= shear_.slope;
    }
    return f;
  }

  void ShearStrip() {
    for (int32_t column = 0; column < columns_; ++column) Put(column, background_);
    for (int32_t row = 0; row < dest_.Height; ++row) Store({0, columns_, 0}, row, dest_.Height);
    for (int32_t row = 0; row < source_.Height; ++row) {
      const uint8_t *samples = Read(row);
      if (samples == nullptr) continue;
      if (hasFractions_) {
        ShearAcross(samples, SampleCount(), fractions_.data(), shares_.data(), made_.data());
      } else {
        ShearAcross(samples, SampleCount(), weights_.data(), shares_.data(), made_.data());
      }
      StoreRuns(row);
    }
    // These fall on the last pixels of the columns and replace them, while a sheared row has one pixel more.
    for (int32_t i = 0; i < SampleCount(); ++i) {
      made_[i] = LastSample(background_[i % kCount], shares_[i], weights_[i]);
    }
    StoreRuns(source_.Height - 1);
  }

  void Put(int32_t column, const Samples<L> &samples) {
    std::memcpy(&made_[static_cast<size_t>(column) * kCount], samples.data(), kCount);
  }

  // The samples of the strip in a row of the source; nil if the row cannot be had.
  const uint8_t *Read(int32_t row) {
    const uint8_t *sourceRow = source_.GetRow(&source_, row);
    if (sourceRow == nullptr) return nullptr;
    if constexpr (kPacked) {
      return sourceRow + L::FirstOffset(source_) + ptrdiff_t{firstColumn_} * kCount;
    } else {
      for (int32_t column = 0; column < columns_; ++column) {
        const Samples<L> samples = from_.Read(sourceRow, firstColumn_ + column);
        std::memcpy(&read_[static_cast<size_t>(column) * kCount], samples.data(), kCount);
      }
      return read_.data();
    }
  }

  void StoreRuns(int64_t row) {
    for (int32_t i = 0; i < runCount_; ++i) Store(runs_[i], row, shear_.rows);
  }

  // Stores what was made for the columns of a run, in the row of dest where `row` comes to lie, if that is less than
  // `end`.
  void Store(const Run &run, int64_t row, int32_t end) {
    const int64_t destRow = row + run.offset;
    if (destRow < 0 || destRow >= end) return;
    uint8_t *pixels = destRows_[static_cast<ptrdiff_t>(destRow)];
    if (pixels == nullptr) return;
    const uint8_t *made = &made_[static_cast<size_t>(run.first) * kCount];
    if constexpr (kPacked) {
      pixels += L::FirstOffset(dest_) + (ptrdiff_t{firstColumn_} + run.first) * kCount;
      if (run.columns >= kLongRun) {
        std::memcpy(pixels, made, static_cast<size_t>(run.columns) * kCount);
        return;
      }
      for (int32_t column = 0; column < run.columns; ++column) {
        std::memcpy(pixels + ptrdiff_t{column} * kCount, made + ptrdiff_t{column} * kCount, kCount);
      }
    } else {
      for (int32_t column = 0; column < run.columns; ++column) {
        Samples<L> samples = {};
        std::memcpy(samples.data(), made + ptrdiff_t{column} * kCount, kCount);
        to_.Write(pixels, firstColumn_ + run.first + column, samples);
      }
    }
  }

  // From here on a run is copied by the library's routine for memory.
  static constexpr int32_t kLongRun = 8;

  ImageClassData &source_;
  ImageClassData &dest_;
  const ColumnShear shear_;
  const Samples<L> background_;
  const PixelAccess<L::channelCount> from_;
  const PixelAccess<L::channelCount> to_;
  ZeroedBuffer<uint8_t *> destRows_;

  // Of the strip at hand.
  int32_t firstColumn_ = 0;
  int32_t columns_ = 0;
  int32_t runCount_ = 0;
  bool hasFractions_ = false;
  std::array<Run, kColumns> runs_ = {};
  std::array<double, kColumns *kCount> weights_ = {};
  std::array<uint16_t, kColumns *kCount> fractions_ = {};
  std::array<uint8_t, kColumns *kCount> shares_ = {};
  std::array<uint8_t, kColumns *kCount> read_ = {};
  std::array<uint8_t, kColumns *kCount> made_ = {};
};

}  // namespace shear_detail

// Moves the columns of source into the same columns of dest, each by an offset of its own. All of the rest of these
// columns becomes the background. What falls outside the result is left out.
template <class L>
void ShearColumns(ImageClassData &source, ImageClassData &dest, ColumnShear shear, const Pixel<L> &background) {
  shear.columns = std::min({shear.columns, source.Width, dest.Width});
  shear.rows = std::min(shear.rows, dest.Height);
  if (MayReorder(source, dest)) {
    const bool done = L::PackedAlike(source, dest)
                          ? shear_detail::ColumnStrips<L, true>(source, dest, shear, background).Shear()
                          : shear_detail::ColumnStrips<L, false>(source, dest, shear, background).Shear();
    if (done) return;
  }
  shear_detail::ShearColumnsByPixels(source, dest, shear, background);
}

}  // namespace zvk
