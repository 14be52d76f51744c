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

// Rows as a column shear reads and writes them: a part at a time, as a run of samples without gaps in the order of the
// shear. No part is wider than kStripColumns.
inline constexpr int32_t kStripColumns = 256;

class StripSource {
 public:
  // The samples of `columns` pixels of a row from column `first` on. False if the row cannot be had.
  virtual bool Read(int32_t row, int32_t first, int32_t columns, uint8_t *samples) = 0;

 protected:
  ~StripSource() = default;
};

class StripDest {
 public:
  // Is given all of a row, part after part from the left. A row that cannot be had is left out.
  virtual void Write(int32_t row, int32_t first, int32_t columns, const uint8_t *samples) = 0;

 protected:
  ~StripDest() = default;
};

// The rows of an image as they are.
class ImageStripSource final : public StripSource {
 public:
  ImageStripSource(ImageClassData &image, const SampleMover &intoRun) : image_(image), intoRun_(intoRun) {}

  bool Read(int32_t row, int32_t first, int32_t columns, uint8_t *samples) override {
    const uint8_t *source = FetchRow(image_, row);
    if (source != nullptr) intoRun_(source + ptrdiff_t{first} * image_.PixelSize, samples, columns);
    return source != nullptr;
  }

 private:
  ImageClassData &image_;
  const SampleMover intoRun_;
};

class ImageStripDest final : public StripDest {
 public:
  ImageStripDest(ImageClassData &image, const SampleMover &outOfRun) : image_(image), outOfRun_(outOfRun) {}

  void Write(int32_t row, int32_t first, int32_t columns, const uint8_t *samples) override {
    uint8_t *dest = FetchRow(image_, row);
    if (dest != nullptr) outOfRun_(samples, dest + ptrdiff_t{first} * image_.PixelSize, columns);
  }

 private:
  ImageClassData &image_;
  const SampleMover outOfRun_;
};

// The columns row by row, in strips that are narrow enough for what they touch to stay in the cache. A strip passes
// through a window of as many rows as the offsets of its columns lie apart: every pixel that is made goes to the row to
// which its column moves it, and a row that no further pixel can reach goes to dest.
template <size_t kChannels>
class ColumnStrips {
 public:
  // For a slope of -1 to 1.
  ColumnStrips(const ColumnShear &shear, const std::array<uint8_t, kChannels> &background)
      : shear_(shear), background_(background), window_(WindowSize(shear)) {}

  // False if there is no memory to work in; nothing may be sheared then.
  explicit operator bool() const { return static_cast<bool>(window_); }

  // Both sides have the columns of the shear, and so many rows.
  void Shear(StripSource &source, int32_t sourceRows, StripDest &dest, int32_t destRows) {
    source_ = &source;
    sourceRows_ = sourceRows;
    dest_ = &dest;
    destRows_ = destRows;
    double f = shear_.start;
    for (firstColumn_ = 0; firstColumn_ < shear_.columns; firstColumn_ += kColumns) {
      columns_ = std::min(kColumns, shear_.columns - firstColumn_);
      f = Prepare(f);
      ShearStrip();
    }
  }

 private:
  static constexpr int32_t kColumns = kStripColumns;
  static constexpr int32_t kMostRows = kColumns + 2;
  static constexpr int32_t kCount = kChannels;
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
    for (int32_t row = 0; row < sourceRows_; ++row) {
      if (source_->Read(row, firstColumn_, columns_, read_.data())) {
        if (hasFractions_) {
          ShearAcrossByFractions(read_.data(), SampleCount(), fractions_.data(), shares_.data(), made_.data());
        } else {
          ShearAcrossByWeights(read_.data(), SampleCount(), weights_.data(), shares_.data(), made_.data());
        }
        Store(row);
      }
      if (row < sourceRows_ - 1) Finish(row);
    }
    // This falls on the last pixels of the columns and replaces them, while a sheared row has one pixel more.
    for (int32_t i = 0; i < SampleCount(); ++i) made_[i] = LastSample(backgrounds_[i], shares_[i], weights_[i]);
    Store(sourceRows_ - 1);
    for (int32_t i = 0; i < windowRows_; ++i) Finish(int64_t{sourceRows_} - 1 + i);
    while (nextRow_ < destRows_) Write(backgrounds_.data());
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
  void Write(const uint8_t *samples) { dest_->Write(nextRow_++, firstColumn_, columns_, samples); }

  const ColumnShear shear_;
  const std::array<uint8_t, kChannels> background_;
  const ZeroedBuffer<uint8_t> window_;
  StripSource *source_ = nullptr;
  int32_t sourceRows_ = 0;
  StripDest *dest_ = nullptr;
  int32_t destRows_ = 0;

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
  if (fitsStrips) {
    shear_detail::ColumnStrips<L::channelCount> strips(shear, background.samples);
    if (strips) {
      shear_detail::ImageStripSource from(source, shear_detail::IntoRun<L>(source));
      shear_detail::ImageStripDest to(dest, shear_detail::OutOfRun<L>(dest));
      strips.Shear(from, source.Height, to, dest.Height);
      return;
    }
  }
  shear_detail::ShearColumnsByPixels(source, dest, shear, background);
}

}  // namespace zvk::geometry
