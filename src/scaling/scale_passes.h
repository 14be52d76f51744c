// The two passes of the resampler, compiled for each pair. Each has two forms: one in a fixed order of reads, writes
// and row fetches, for files that are mapped block by block and for images that share storage; and one that works on
// whole rows, for all others, as long as they stay so. Both give the same bytes.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <optional>
#include <type_traits>
#include <utility>

#include "host/resources.h"
#include "image/image_record.h"
#include "image/rows.h"
#include "pixels/wide_samples.h"
#include "scaling/scale_kernels.h"
#include "scaling/scale_pairs.h"
#include "scaling/scale_taps.h"
#include "scaling/watched_image.h"

namespace zvk::scaling {

// What the passes work on. Each reads what it needs.
struct ScaleJob {
  ImageClassData *Source;     // horizontal pass
  ImageClassData *Dest;       // vertical pass
  int32_t Height;             // output rows
  int32_t Width;              // output columns
  ImageClassData *Temp;       // written by the horizontal pass, read by the vertical one
  const ScaleTapList *Table;  // of the pass: a list for each output column or row
};

// The rows that one run of a pass makes, and who is given time after each.
struct ScaleRows {
  int32_t First;
  const int32_t &End;          // one beyond the last row; looked at again for each row
  ImageClassData *YieldImage;  // nil: nobody

  // While true, other code of the host may run after each row, so no work on the next one can be done ahead.
  bool Yields() const { return YieldImage != nullptr && YieldImage->Yield.YieldTicks != 0; }
  // True if such code may have run: it may have closed an image and constructed it anew, in a file say.
  bool AfterRow() const {
    if (!Yields()) return false;
    YieldOn(*YieldImage);
    return true;
  }
  // An image as it is before the rows are made; none if nobody can change it while they are.
  std::optional<WatchedImage> Watch(ImageClassData &image, int32_t promisedRows = 0) const {
    return YieldImage != nullptr ? std::optional<WatchedImage>(std::in_place, image, promisedRows) : std::nullopt;
  }
};

// Bytes that each column of an image must have room for. One that was constructed anew may have pixels that are smaller
// than a sample.
inline int32_t ColumnSize(const ImageClassData &image, int32_t sampleSize) {
  return std::max(image.PixelSize, sampleSize);
}

// What is added to a quotient before it is truncated.
inline constexpr double kRoundToNearest = 0.5;
inline constexpr double kRoundTowardZero = 0.0;

namespace scale_detail {

template <const ScalePair &Pair>
using SampleOf = std::conditional_t<Pair.SampleSize == 2, uint16_t, uint8_t>;

template <const ScalePair &Pair>
inline constexpr int32_t kValues = ValueCount(Pair.Read.count, Pair.Values);

template <const ScalePair &Pair>
inline constexpr int32_t kRowBatch = RowBatch(Pair.Read.count, Pair.Values);

// The last byte of the storage of a row of wide samples; nil for samples of a byte.
template <const ScalePair &Pair>
const uint8_t *LastByteOf(const ImageClassData &image, const uint8_t *row) {
  if constexpr (Pair.SampleSize == 1) return nullptr;
  return LastByte(image, row);
}

template <class Sample>
Sample LoadSample(const uint8_t *address, const uint8_t *lastByte) {
  if constexpr (sizeof(Sample) == 1) return *address;
  return static_cast<Sample>(LoadWideSample(address, lastByte));
}
template <class Sample>
void StoreSample(uint8_t *address, Sample sample, const uint8_t *lastByte) {
  if constexpr (sizeof(Sample) == 1) {
    *address = sample;
  } else {
    StoreWideSample(address, sample, lastByte);
  }
}

// The samples of one source pixel, as AddTap takes them, each `step` doubles from the one before.
template <const ScalePair &Pair>
void ReadPixel(const ImageClassData &source, const uint8_t *pixel, const uint8_t *lastByte, double *samples,
               ptrdiff_t step) {
  for (int32_t i = 0; i < Pair.Read.count; ++i) {
    const auto sample = LoadSample<SampleOf<Pair>>(pixel + source.*Pair.Read[i], lastByte);
    samples[i * step] = sample * SamplePart<Pair.Values>(i);
  }
}

// A whole temp pixel from its values, each `step` from the one before.
template <const ScalePair &Pair>
void WriteTempPixel(uint8_t *pixel, const SampleOf<Pair> *values, ptrdiff_t step, const uint8_t *lastByte) {
  if constexpr (Pair.SampleSize == 2) return StoreSample(pixel, values[0], lastByte);
  uint8_t bytes[Pair.Stride] = {};
  for (int32_t i = 0; i < Pair.TempBytes.count; ++i) bytes[Pair.TempBytes[i]] = static_cast<uint8_t>(values[i * step]);
  std::memcpy(pixel, bytes, Pair.Stride);
}

// --- pixel by pixel ---

// A row that cannot be had, of a block that cannot be mapped, is left out.

template <const ScalePair &Pair>
void HorizontalRow(const ScaleJob &job, int32_t y, double rounding) {
  ImageClassData &source = *job.Source;
  ImageClassData &temp = *job.Temp;
  const uint8_t *sourceRow = source.GetRow(&source, y);
  if (sourceRow == nullptr) return;
  const uint8_t *lastByte = LastByteOf<Pair>(source, sourceRow);
  for (int32_t x = 0; x < job.Width; ++x) {
    const ScaleTapList &list = job.Table[x];
    double sums[kValues<Pair>] = {};
    for (int32_t t = 0; t < list.TapCount; ++t) {
      const ScaleTap tap = list.Taps[t];
      if (tap.Weight == 0.0f) continue;
      double samples[Pair.Read.count] = {};
      ReadPixel<Pair>(source, sourceRow + ptrdiff_t{tap.SourceIndex} * source.PixelSize, lastByte, samples, 1);
      AddTap<Pair.Read.count, Pair.Values, 1>(samples, tap.Weight, sums);
    }
    SampleOf<Pair> values[kValues<Pair>] = {};
    for (int32_t i = 0; i < kValues<Pair>; ++i) values[i] = Finish<SampleOf<Pair>>(sums[i], list.WeightSum, rounding);
    // The temp row is fetched for every pixel.
    uint8_t *tempRow = temp.GetRow(&temp, y);
    if (tempRow == nullptr) continue;
    WriteTempPixel<Pair>(tempRow + ptrdiff_t{x} * Pair.Stride, values, 1, LastByteOf<Pair>(temp, tempRow));
  }
}

// The list for a row, without the taps from row `tempRows` of the temp image on.
inline ScaleTapList ListWithin(const ScaleJob &job, int32_t y, int32_t tempRows) {
  ScaleTapList list = job.Table[y];
  while (list.TapCount > 0 && list.Taps[list.TapCount - 1].SourceIndex >= tempRows) --list.TapCount;
  return list;
}

template <const ScalePair &Pair>
void VerticalRow(const ScaleJob &job, int32_t y, int32_t tempRows) {
  ImageClassData &temp = *job.Temp;
  ImageClassData &dest = *job.Dest;
  const ScaleTapList list = ListWithin(job, y, tempRows);
  for (int32_t x = 0; x < job.Width; ++x) {
    double sums[kValues<Pair>] = {};
    for (int32_t t = 0; t < list.TapCount; ++t) {
      const ScaleTap tap = list.Taps[t];
      if (tap.Weight == 0.0f) continue;
      // The temp row is fetched for every tap of every pixel.
      const uint8_t *tempRow = temp.GetRow(&temp, tap.SourceIndex);
      if (tempRow == nullptr) continue;
      const uint8_t *pixel = tempRow + ptrdiff_t{x} * Pair.Stride;
      const uint8_t *lastByte = LastByteOf<Pair>(temp, tempRow);
      for (int32_t i = 0; i < kValues<Pair>; ++i) {
        sums[i] += LoadSample<SampleOf<Pair>>(pixel + Pair.TempBytes[i], lastByte) * double{tap.Weight};
      }
    }
    SampleOf<Pair> values[kValues<Pair>] = {};
    for (int32_t i = 0; i < kValues<Pair>; ++i) {
      values[i] = Finish<SampleOf<Pair>>(sums[i], list.WeightSum, kRoundToNearest);
    }
    uint8_t *destRow = dest.GetRow(&dest, y);
    if (destRow == nullptr) continue;
    uint8_t *pixel = destRow + ptrdiff_t{x} * dest.PixelSize;
    const uint8_t *lastByte = LastByteOf<Pair>(dest, destRow);
    for (const ScaleWrite &write : Pair.Write) StoreSample(pixel + dest.*write.channel, values[write.value], lastByte);
  }
}

// --- whole rows ---

// The horizontal pass over staged columns: the samples of a stretch of source columns stand ready as doubles, for one
// row or side by side for a batch of rows.
template <const ScalePair &Pair>
class StagedColumns {
 public:
  explicit StagedColumns(const ScaleJob &job)
      : job_(job),
        columns_(std::max(kStretch, WidestList(job))),
        samples_(columns_ * Pair.Read.count * kRowBatch<Pair>),
        values_(int64_t{job.Width} * kValues<Pair> * kRowBatch<Pair>) {}

  // False if there is no memory to work in.
  explicit operator bool() const { return samples_ && values_; }

  template <int32_t Rows>
  void MakeRows(int32_t y, double rounding) {
    const uint8_t *rows[Rows];
    for (int32_t row = 0; row < Rows; ++row) rows[row] = job_.Source->GetRow(job_.Source, y + row);
    if (std::ranges::find(rows, nullptr) != std::end(rows)) {
      // That one is left out, so the others are made singly.
      if constexpr (Rows > 1) {
        for (int32_t row = 0; row < Rows; ++row) MakeRows<1>(y + row, rounding);
      }
      return;
    }
    for (int32_t x = 0; x < job_.Width;) {
      const Stretch stretch = StretchFrom(x);
      Stage<Rows>(rows, stretch);
      SumColumns<Pair.Read.count, Pair.Values, Rows, Sample>({samples_.Get(), stretch.firstColumn, job_.Table + x,
                                                              stretch.lists, rounding,
                                                              values_.Get() + int64_t{x} * kValues<Pair> * Rows});
      x += stretch.lists;
    }
    for (int32_t row = 0; row < Rows; ++row) WriteRow<Rows>(y + row, row);
  }

 private:
  using Sample = SampleOf<Pair>;

  // Output columns that the source columns from firstColumn to endColumn - 1 serve.
  struct Stretch {
    int32_t firstColumn;
    int32_t endColumn;
    int32_t lists;
  };

  // Source columns staged at once, unless a list is wider: a batch of them stays in the cache.
  static constexpr int64_t kStretch = 256;

  static int64_t WidestList(const ScaleJob &job) {
    int64_t widest = 0;
    for (int32_t x = 0; x < job.Width; ++x) {
      const ScaleTapList &list = job.Table[x];
      if (list.TapCount == 0) continue;
      widest = std::max(widest, int64_t{list.Taps[list.TapCount - 1].SourceIndex} - list.Taps[0].SourceIndex + 1);
    }
    return widest;
  }

  // As many lists from x on as the staged columns can serve. A list may begin left of the one before it.
  Stretch StretchFrom(int32_t x) const {
    Stretch stretch{0, 0, 0};
    for (; x + stretch.lists < job_.Width; ++stretch.lists) {
      const ScaleTapList &list = job_.Table[x + stretch.lists];
      if (list.TapCount == 0) continue;
      int32_t first = list.Taps[0].SourceIndex;
      int32_t end = list.Taps[list.TapCount - 1].SourceIndex + 1;
      if (stretch.endColumn != 0) {
        first = std::min(first, stretch.firstColumn);
        end = std::max(end, stretch.endColumn);
      }
      if (end - first > columns_) break;
      stretch.firstColumn = first;
      stretch.endColumn = end;
    }
    return stretch;
  }

  template <int32_t Rows>
  void Stage(const uint8_t *const *rows, const Stretch &stretch) {
    const ImageClassData &source = *job_.Source;
    double *samples = samples_.Get();
    const uint8_t *lastBytes[Rows];
    for (int32_t row = 0; row < Rows; ++row) lastBytes[row] = LastByteOf<Pair>(source, rows[row]);
    for (int32_t column = stretch.firstColumn; column < stretch.endColumn; ++column) {
      const ptrdiff_t position = ptrdiff_t{column} * source.PixelSize;
      for (int32_t row = 0; row < Rows; ++row) {
        ReadPixel<Pair>(source, rows[row] + position, lastBytes[row], samples + row, Rows);
      }
      samples += ptrdiff_t{Pair.Read.count} * Rows;
    }
  }

  template <int32_t Rows>
  void WriteRow(int32_t y, int32_t row) {
    uint8_t *tempRow = job_.Temp->GetRow(job_.Temp, y);
    if (tempRow == nullptr) return;
    const Sample *values = values_.Get() + row;
    const int32_t width = job_.Width;
    const uint8_t *lastByte = LastByteOf<Pair>(*job_.Temp, tempRow);
    for (int32_t x = 0; x < width; ++x) {
      WriteTempPixel<Pair>(tempRow + ptrdiff_t{x} * Pair.Stride, values, Rows, lastByte);
      values += ptrdiff_t{kValues<Pair>} * Rows;
    }
  }

  const ScaleJob &job_;
  int64_t columns_;
  ZeroedBuffer<double> samples_;
  ZeroedBuffer<Sample> values_;
};

// The vertical pass over whole temp rows, pixels as they lie there: all that differs between the pairs is what of the
// finished row goes where.
template <const ScalePair &Pair>
class SummedRows {
 public:
  explicit SummedRows(const ScaleJob &job)
      : job_(job),
        samples_(int64_t{job.Width} * (Pair.Stride / Pair.SampleSize)),
        rows_(LongestList(job)),
        weights_(LongestList(job)),
        values_(samples_) {}

  // False if there is no memory to work in.
  explicit operator bool() const { return rows_ && weights_ && values_; }

  void MakeRow(int32_t y, int32_t tempRows) {
    uint8_t *destRow = job_.Dest->GetRow(job_.Dest, y);
    if (destRow == nullptr) return;
    const ScaleTapList list = ListWithin(job_, y, tempRows);
    int32_t rowCount = 0;
    for (int32_t t = 0; t < list.TapCount; ++t) {
      const uint8_t *tempRow = job_.Temp->GetRow(job_.Temp, list.Taps[t].SourceIndex);
      if (tempRow == nullptr) continue;
      rows_[rowCount] = tempRow;
      weights_[rowCount] = list.Taps[t].Weight;
      ++rowCount;
    }
    SumRows(rows_.Get(), weights_.Get(), rowCount, list.WeightSum, kRoundToNearest, samples_, values_.Get());
    Write(destRow);
  }

 private:
  using Sample = SampleOf<Pair>;

  // At least 1, for a table that holds no tap at all.
  static int64_t LongestList(const ScaleJob &job) {
    int32_t longest = 1;
    for (int32_t y = 0; y < job.Height; ++y) longest = std::max(longest, job.Table[y].TapCount);
    return longest;
  }

  void Write(uint8_t *destRow) const {
    // Copies, as the compiler must take every byte that is written for a change of the record.
    const ImageClassData dest = *job_.Dest;
    const int32_t width = job_.Width;
    const Sample *pixelValues = values_.Get();
    const uint8_t *lastByte = LastByteOf<Pair>(dest, destRow);
    for (int32_t x = 0; x < width; ++x) {
      for (const ScaleWrite &write : Pair.Write) {
        StoreSample(destRow + dest.*write.channel, pixelValues[Pair.TempBytes[write.value] / Pair.SampleSize],
                    lastByte);
      }
      destRow += dest.PixelSize;
      pixelValues += Pair.Stride / Pair.SampleSize;
    }
  }

  const ScaleJob &job_;
  int64_t samples_;  // of a temp row
  ZeroedBuffer<const uint8_t *> rows_;
  ZeroedBuffer<double> weights_;
  ZeroedBuffer<Sample> values_;
};

// True if nobody can notice in what order the rows of the one are read and those of the other written.
inline bool MayWorkOnWholeRows(const ImageClassData &from, const ImageClassData &to) {
  return HasFixedRows(from) && HasFixedRows(to) && !SharesStorage(from, to);
}

// How many columns of the source the lists of a job reach.
inline int32_t SourceColumns(const ScaleJob &job) {
  int32_t columns = 0;
  for (int32_t x = 0; x < job.Width; ++x) {
    const ScaleTapList &list = job.Table[x];
    if (list.TapCount > 0) columns = std::max(columns, list.Taps[list.TapCount - 1].SourceIndex + 1);
  }
  return columns;
}

// True if no sample of `width` temp pixels can be cut by the end of a caller's storage: he may have described rows that
// are shorter than their pixels.
template <const ScalePair &Pair>
bool HasWholeSamples(const ImageClassData &temp, int32_t width) {
  return Pair.SampleSize == 1 || std::abs(int64_t{temp.RowSize}) >= int64_t{width} * Pair.Stride;
}

// True if `height` rows of `width` pixels, `pixelSize` bytes each, lie inside the image.
inline bool Holds(const ImageClassData &image, int32_t width, int32_t pixelSize, int32_t height) {
  return int64_t{width} * pixelSize <= int64_t{image.Width} * image.PixelSize && height <= image.Height;
}

}  // namespace scale_detail

// Resamples rows of the source to the job's width, into the temp rows of the same numbers. `rounding` is added to each
// quotient before it is truncated. Both images must have the rows at first; those that one of them does not hold any
// more after a yield are left out.
template <const ScalePair &Pair>
void HorizontalPass(const ScaleJob &job, const ScaleRows &rows, double rounding) {
  const std::optional<WatchedImage> source = rows.Watch(*job.Source), temp = rows.Watch(*job.Temp, rows.End);
  const int32_t sourceColumns = source ? scale_detail::SourceColumns(job) : 0;
  int32_t heldRows = INT32_MAX;
  const auto afterRow = [&] {
    if (!rows.AfterRow()) return false;
    heldRows = std::min(source->RowsOf(sourceColumns, ColumnSize(*job.Source, Pair.SampleSize)),
                        temp->RowsOf(job.Width, Pair.Stride));
    return true;
  };
  const auto mayWorkOnWholeRows = [&] {
    return heldRows >= rows.End && scale_detail::Holds(*job.Temp, job.Width, Pair.Stride, rows.End) &&
           scale_detail::MayWorkOnWholeRows(*job.Source, *job.Temp);
  };
  int32_t y = rows.First;
  if (y < rows.End && mayWorkOnWholeRows()) {
    scale_detail::StagedColumns<Pair> columns(job);
    bool hostRan = false;
    while (columns && y < rows.End && (!hostRan || mayWorkOnWholeRows())) {
      if (!rows.Yields() && rows.End - y >= scale_detail::kRowBatch<Pair>) {
        columns.template MakeRows<scale_detail::kRowBatch<Pair>>(y, rounding);
        y += scale_detail::kRowBatch<Pair>;
        hostRan = false;
      } else {
        columns.template MakeRows<1>(y++, rounding);
        hostRan = afterRow();
      }
    }
  }
  for (; y < rows.End; ++y) {
    if (y < heldRows) scale_detail::HorizontalRow<Pair>(job, y, rounding);
    afterRow();
  }
}

// Resamples temp rows into rows of the destination, which must have them at first. After a yield, rows of the
// destination that it does not hold any more are left out, and so are taps on temp rows that there are no more; without
// any temp row nothing is written.
template <const ScalePair &Pair>
void VerticalPass(const ScaleJob &job, const ScaleRows &rows) {
  int32_t tempRows = job.Temp->Height;
  const std::optional<WatchedImage> temp = rows.Watch(*job.Temp, tempRows), dest = rows.Watch(*job.Dest, rows.End);
  int32_t heldRows = INT32_MAX;
  const auto afterRow = [&] {
    if (!rows.AfterRow()) return false;
    tempRows = temp->RowsOf(job.Width, Pair.Stride);
    heldRows = tempRows > 0 ? dest->RowsOf(job.Width, ColumnSize(*job.Dest, Pair.SampleSize)) : 0;
    return true;
  };
  const auto mayWorkOnWholeRows = [&] {
    return heldRows >= rows.End && scale_detail::Holds(*job.Dest, job.Width, job.Dest->PixelSize, rows.End) &&
           scale_detail::HasWholeSamples<Pair>(*job.Temp, job.Width) &&
           scale_detail::MayWorkOnWholeRows(*job.Temp, *job.Dest);
  };
  int32_t y = rows.First;
  if (y < rows.End && mayWorkOnWholeRows()) {
    scale_detail::SummedRows<Pair> summed(job);
    bool hostRan = false;
    while (summed && y < rows.End && (!hostRan || mayWorkOnWholeRows())) {
      summed.MakeRow(y++, tempRows);
      hostRan = afterRow();
    }
  }
  for (; y < rows.End; ++y) {
    if (y < heldRows) scale_detail::VerticalRow<Pair>(job, y, tempRows);
    afterRow();
  }
}

}  // namespace zvk::scaling
