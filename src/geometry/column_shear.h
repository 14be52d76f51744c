// The middle step of a free rotation: every column of an image moved up or down by an offset of its own, in the two
// forms of a shear.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "geometry/shear.h"
#include "pixels/overlap.h"
#include "pixels/row_walker.h"

namespace zvk::geometry {

// Column 0 moves by `start` pixels downwards, every further one by `slope` (-1 to 1) less.
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
      uint8_t *destRow = FetchRow(dest, static_cast<int32_t>(row));
      if (destRow != nullptr) to.Write(destRow, column, samples);
    };
    const ColumnOffset offset(f);
    for (int32_t row = 0; row < dest.Height; ++row) store(row, dest.Height, background.samples);
    Carry<L> carry(background, offset.weight);
    ForEachRow(source, source.Height, [&](const uint8_t *sourceRow, int32_t row) {
      store(int64_t{offset.pixels} + row, shear.rows, carry.Move(from.Read(sourceRow, column)));
    });
    // This falls on the last pixel of the run and replaces it, while a sheared row has one pixel more than its run.
    store(int64_t{offset.pixels} + source.Height - 1, shear.rows, carry.Last());
    f -= shear.slope;
  }
}

// The columns row by row, in strips that are narrow enough for what they touch to stay in the cache. A strip passes
// through a window of as many rows as the offsets of its columns lie apart: every pixel that is made goes to the row to
// which its column moves it, and a row that no further pixel can reach goes to dest.
template <class L>
class ColumnStrips {
 public:
  ColumnStrips(ImageClassData &source, ImageClassData &dest, const ColumnShear &shear, const Pixel<L> &background)
      : source_(source),
        dest_(dest),
        shear_(shear),
        background_(background.samples),
        intoRun_(IntoRun<L>(source)),
        outOfRun_(OutOfRun<L>(dest)),
        window_(WindowSize(shear)) {}

  // False, with nothing done, if there is no memory to work in.
  bool Shear() {
    if (!window_) return false;
    double f = shear_.start;
    for (firstColumn_ = 0; firstColumn_ < shear_.columns; firstColumn_ += kColumns) {
      columns_ = std::min(kColumns, shear_.columns - firstColumn_);
      f = Prepare(f);
      ShearStrip();
    }
    return true;
  }

 private:
  static constexpr int32_t kColumns = 256;
  static constexpr int32_t kMostRows = kColumns + 2;
  static constexpr int32_t kCount = L::channelCount;
  template <class T>
  using PerSample = std::array<T, size_t{kColumns} * kCount>;

  // Bytes of the window of the widest strip. Offsets that lie by less than a pixel apart may fall into two rows.
  static int64_t WindowSize(const ColumnShear &shear) {
    const int64_t columns = std::min(kColumns, shear.columns);
    return (Truncate(std::fabs(shear.slope) * columns) + 2) * columns * kCount;
  }

  int32_t SampleCount() const { return columns_ * kCount; }

  // Returns the offset of the column behind the strip.
  double Prepare(double f) {
    hasFractions_ = true;
    for (int32_t column = 0; column < columns_; ++column) {
      const ColumnOffset offset(f);
      const ShareWeight weight(offset.weight);
      offsets_[column] = offset.pixels;
      hasFractions_ = hasFractions_ && weight.fraction != 0;
      for (int32_t c = 0; c < kCount; ++c) {
        const int32_t i = column * kCount + c;
        weights_[i] = weight.weight;
        fractions_[i] = weight.fraction;
        backgrounds_[i] = background_[c];
        shares_[i] = ShareOf(background_[c], weight.weight);
      }
      f -= shear_.slope;
    }
    windowRows_ = std::abs(offsets_[columns_ - 1] - offsets_[0]) + 1;
    lowest_ = std::min(offsets_[0], offsets_[columns_ - 1]);
    for (int32_t column = 0; column < columns_; ++column) offsets_[column] -= lowest_;
    for (int32_t row = 0; row < windowRows_; ++row) {
      rows_[row] = rows_[row + windowRows_] = window_.Get() + ptrdiff_t{row} * SampleCount();
      ClearRow(row);
    }
    return f;
  }

  void ShearStrip() {
    nextRow_ = 0;
    for (int32_t row = 0; row < source_.Height; ++row) {
      const uint8_t *sourceRow = FetchRow(source_, row);
      if (sourceRow != nullptr) {
        intoRun_(sourceRow + ptrdiff_t{firstColumn_} * source_.PixelSize, read_.data(), columns_);
        if (hasFractions_) {
          ShearAcrossByFractions(read_.data(), SampleCount(), fractions_.data(), shares_.data(), made_.data());
        } else {
          ShearAcrossByWeights(read_.data(), SampleCount(), weights_.data(), shares_.data(), made_.data());
        }
        Store(row);
      }
      if (row < source_.Height - 1) Finish(row);
    }
    // This falls on the last pixels of the columns and replaces them, while a sheared row has one pixel more.
    for (int32_t i = 0; i < SampleCount(); ++i) made_[i] = LastSample(backgrounds_[i], shares_[i], weights_[i]);
    Store(source_.Height - 1);
    for (int32_t i = 0; i < windowRows_; ++i) Finish(int64_t{source_.Height} - 1 + i);
    while (nextRow_ < dest_.Height) Write(backgrounds_.data());
  }

  // Puts what was made of a row of the source into the window.
  void Store(int32_t row) {
    uint8_t *const *rows = &rows_[row % windowRows_];
    const uint8_t *made = made_.data();
    const int32_t *offsets = offsets_.data();
    const int32_t columns = columns_;
    for (int32_t column = 0; column < columns; ++column) {
      const ptrdiff_t place = ptrdiff_t{column} * kCount;
      std::memcpy(rows[offsets[column]] + place, made + place, kCount);
    }
  }

  // Takes the row of the window to which the lowest offset moves `row` out of it.
  void Finish(int64_t row) {
    const auto slot = static_cast<int32_t>(row % windowRows_);
    if (row + lowest_ >= 0 && row + lowest_ < shear_.rows) {
      while (nextRow_ < row + lowest_) Write(backgrounds_.data());
      Write(rows_[slot]);
    }
    ClearRow(slot);
  }

  void ClearRow(int32_t slot) { std::memcpy(rows_[slot], backgrounds_.data(), static_cast<size_t>(SampleCount())); }

  // Fills the strip in the next row of dest.
  void Write(const uint8_t *samples) {
    uint8_t *row = FetchRow(dest_, nextRow_++);
    if (row != nullptr) outOfRun_(samples, row + ptrdiff_t{firstColumn_} * dest_.PixelSize, columns_);
  }

  ImageClassData &source_;
  ImageClassData &dest_;
  const ColumnShear shear_;
  const Samples<L> background_;
  const SampleMover intoRun_;
  const SampleMover outOfRun_;
  ZeroedBuffer<uint8_t> window_;

  // Of the strip at hand.
  int32_t firstColumn_ = 0;
  int32_t columns_ = 0;
  int32_t lowest_ = 0;  // offset of a column
  int32_t windowRows_ = 0;
  int32_t nextRow_ = 0;  // of dest
  bool hasFractions_ = false;
  std::array<uint8_t *, size_t{2} *kMostRows> rows_ = {};  // of the window, twice, so that no index need be wrapped
  std::array<int32_t, kColumns> offsets_ = {};             // beyond the lowest one
  PerSample<double> weights_ = {};
  PerSample<uint16_t> fractions_ = {};
  PerSample<uint8_t> backgrounds_ = {};
  PerSample<uint8_t> shares_ = {};
  PerSample<uint8_t> read_ = {};
  PerSample<uint8_t> made_ = {};
};

}  // namespace shear_detail

// Moves the columns of source into the same columns of dest, each by an offset of its own. All of the rest of these
// columns becomes the background. What falls outside the result is left out.
template <class L>
void ShearColumns(ImageClassData &source, ImageClassData &dest, ColumnShear shear, const Pixel<L> &background) {
  shear.columns = std::min({shear.columns, source.Width, dest.Width});
  shear.rows = std::min(shear.rows, dest.Height);
  const bool fitsStrips =
      std::fabs(shear.slope) <= 1.0 && OrderIsUnobservable<L>(source, dest, dest.Width, dest.Height);
  if (fitsStrips && shear_detail::ColumnStrips<L>(source, dest, shear, background).Shear()) return;
  shear_detail::ShearColumnsByPixels(source, dest, shear, background);
}

}  // namespace zvk::geometry
