// The three shears of a free rotation in one go: the rows of the source are sheared as the columns take them, and the
// rows of the result are made of what the columns give, part by part. The images between the shears hold what nobody
// sees, and are not written.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "geometry/column_shear.h"
#include "geometry/shear.h"
#include "geometry/shear_kernels.h"
#include "host/resources.h"
#include "host/truncate.h"
#include "image/image_record.h"
#include "pixels/row_walker.h"
#include "pixels/sample_mover.h"

namespace zvk::geometry {

// How far a row is moved to the right: by whole pixels, and by a part of one.
struct RowSkew {
  explicit RowSkew(double skew) : offset(Truncate(std::floor(skew))), weight(skew - offset) {}

  int32_t offset;
  ShareWeight weight;
};

namespace shear_detail {

// Columns of an image from first up to, not including, end.
struct ColumnRange {
  // Those of `count` columns from x on that a row of `width` has.
  ColumnRange(int64_t x, int64_t count, int32_t width)
      : first(std::clamp<int64_t>(x, 0, width)), end(std::clamp<int64_t>(x + count, 0, width)) {}

  int64_t first;
  int64_t end;
};

// A strip steps from row to row, which no machine foresees: its parts of the rows are asked for so many rows ahead.
inline constexpr int32_t kRowsAhead = 3;

// Asks for these columns of a row, if there is one.
inline void Prefetch(ImageClassData &image, int32_t row, const ColumnRange &columns) {
  constexpr ptrdiff_t kCacheLine = 64;
  const uint8_t *pixels = FetchRow(image, row);
  if (pixels == nullptr) return;
  const ptrdiff_t end = columns.end * image.PixelSize;
  for (ptrdiff_t i = columns.first * image.PixelSize; i < end; i += kCacheLine) __builtin_prefetch(pixels + i);
}

// The rows of an image, sheared.
template <size_t kCount>
class SkewedStripSource final : public StripSource {
 public:
  // `skews` has one for each row.
  SkewedStripSource(ImageClassData &image, const SampleMover &intoRun, const RowSkew *skews,
                    const std::array<uint8_t, kCount> &background)
      : image_(image), intoRun_(intoRun), skews_(skews), background_(background) {}

  bool Read(int32_t row, int32_t first, int32_t columns, uint8_t *samples) override {
    const int32_t ahead = row + kRowsAhead;
    if (ahead < image_.Height) Prefetch(image_, ahead, ColumnsFor(ahead, first, columns));
    const uint8_t *source = FetchRow(image_, row);
    if (source == nullptr) {
      // The row of the image between the shears stays as it was made.
      std::memset(samples, 0, columns * kCount);
      return true;
    }
    const ColumnRange read = ColumnsFor(row, first, columns);
    intoRun_(source + read.first * image_.PixelSize, read_.data(), static_cast<int32_t>(read.end - read.first));
    const SkewedRow<kCount> line{image_.Width, skews_[row].offset, skews_[row].weight, background_};
    line.Make(read_.data(), read.first, first, int64_t{first} + columns, samples);
    return true;
  }

 private:
  // Those of which a part of a sheared row is made: its own, and the one before them.
  ColumnRange ColumnsFor(int32_t row, int32_t first, int32_t columns) const {
    return {int64_t{first} - skews_[row].offset - 1, int64_t{columns} + 1, image_.Width};
  }

  ImageClassData &image_;
  const SampleMover intoRun_;
  const RowSkew *skews_;
  const std::array<uint8_t, kCount> background_;
  std::array<uint8_t, (size_t{kStripColumns} + 1) *kCount> read_ = {};
};

// The rows of an image in memory, into which rows of `columns` pixels are sheared.
template <size_t kCount>
class SkewingStripDest final : public StripDest {
 public:
  // `skews` has one for each row, `carried` room for a pixel of each.
  SkewingStripDest(ImageClassData &image, const SampleMover &outOfRun, const RowSkew *skews, uint8_t *carried,
                   int32_t columns, const std::array<uint8_t, kCount> &background)
      : image_(image),
        outOfRun_(outOfRun),
        skews_(skews),
        carried_(carried),
        columns_(columns),
        background_(background) {
    for (int32_t i = 0; i < kStripColumns; ++i) std::memcpy(&backgrounds_[i * kCount], background.data(), kCount);
  }

  void Write(int32_t row, int32_t first, int32_t columns, const uint8_t *samples) override {
    const int32_t ahead = row + kRowsAhead;
    if (ahead < image_.Height) Prefetch(image_, ahead, {int64_t{skews_[ahead].offset} + first, columns, image_.Width});
    uint8_t *dest = FetchRow(image_, row);
    const RowSkew &skew = skews_[row];
    // The last pixel of the part before gives to the first one of this.
    uint8_t *carried = carried_ + row * ptrdiff_t{kCount};
    if (first == 0) {
      std::memcpy(carried, background_.data(), kCount);
      Fill(dest, 0, skew.offset);
    }
    std::memcpy(run_.data(), carried, kCount);
    std::memcpy(run_.data() + kCount, samples, columns * kCount);
    std::memcpy(carried, run_.data() + columns * kCount, kCount);
    ShearAlong(run_.data() + kCount, kCount, columns * ptrdiff_t{kCount}, skew.weight, made_.data());
    Put(dest, int64_t{skew.offset} + first, columns, made_.data());
    if (first + columns < columns_) return;
    for (size_t c = 0; c < kCount; ++c) {
      made_[c] = LastSample(background_[c], ShareOf(carried[c], skew.weight.weight), skew.weight.weight);
    }
    const int64_t end = int64_t{skew.offset} + columns_;
    Put(dest, end, 1, made_.data());
    Fill(dest, end + 1, image_.Width);
  }

 private:
  // Those of the pixels that lie in the row.
  void Put(uint8_t *dest, int64_t x, int32_t count, const uint8_t *samples) const {
    const ColumnRange inside(x, count, image_.Width);
    if (inside.first >= inside.end) return;
    outOfRun_(samples + (inside.first - x) * ptrdiff_t{kCount}, dest + inside.first * image_.PixelSize,
              static_cast<int32_t>(inside.end - inside.first));
  }
  void Fill(uint8_t *dest, int64_t first, int64_t end) const {
    const ColumnRange inside(first, end - first, image_.Width);
    for (int64_t x = inside.first; x < inside.end; x += kStripColumns) {
      Put(dest, x, static_cast<int32_t>(std::min<int64_t>(inside.end - x, kStripColumns)), backgrounds_.data());
    }
  }

  ImageClassData &image_;
  const SampleMover outOfRun_;
  const RowSkew *skews_;
  uint8_t *carried_;
  const int32_t columns_;
  const std::array<uint8_t, kCount> background_;
  std::array<uint8_t, size_t{kStripColumns} *kCount> backgrounds_ = {};
  std::array<uint8_t, (size_t{kStripColumns} + 1) *kCount> run_ = {};
  std::array<uint8_t, size_t{kStripColumns} *kCount> made_ = {};
};

}  // namespace shear_detail

// Shears the rows of an image, then the columns of the result, then the rows of that, into another image.
template <size_t kCount>
class ThreeShears {
 public:
  // `sourceRows` are those of the image, `shear` has the columns of what lies between the shears.
  ThreeShears(int32_t sourceRows, const ColumnShear &shear, const std::array<uint8_t, kCount> &background)
      : sourceRows_(sourceRows),
        shear_(shear),
        background_(background),
        strips_(shear, background),
        sourceSkews_(sourceRows),
        destSkews_(shear.rows),
        carried_(int64_t{shear.rows} * int64_t{kCount}) {}

  // False if there is no memory to work in; nothing else may be called then.
  explicit operator bool() const { return strips_ && sourceSkews_ && destSkews_ && carried_; }

  // How far row `row` of the source is moved, and one of the result.
  void SetFirst(int32_t row, double skew) { sourceSkews_[row] = RowSkew(skew); }
  void SetThird(int32_t row, double skew) { destSkews_[row] = RowSkew(skew); }

  // Fills dest, which must have the rows of the shear and share nothing with the source.
  void Shear(ImageClassData &source, const SampleMover &intoRun, ImageClassData &dest, const SampleMover &outOfRun) {
    shear_detail::SkewedStripSource<kCount> from(source, intoRun, sourceSkews_.Get(), background_);
    shear_detail::SkewingStripDest<kCount> to(dest, outOfRun, destSkews_.Get(), carried_.Get(), shear_.columns,
                                              background_);
    strips_.Shear(from, sourceRows_, to, shear_.rows);
  }

 private:
  const int32_t sourceRows_;
  const ColumnShear shear_;
  const std::array<uint8_t, kCount> background_;
  shear_detail::ColumnStrips<kCount> strips_;
  const ZeroedBuffer<RowSkew> sourceSkews_;
  const ZeroedBuffer<RowSkew> destSkews_;
  const ZeroedBuffer<uint8_t> carried_;
};

}  // namespace zvk::geometry
