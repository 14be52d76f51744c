#include "scaling/scale_passes.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <optional>
#include <type_traits>

#include "host/resources.h"
#include "pixels/overlap.h"
#include "pixels/row_walker.h"
#include "pixels/wide_samples.h"
#include "scaling/scale_kernels.h"
#include "scaling/watched_image.h"

namespace zvk::scaling {

// Each pass has two forms: one in a fixed order of reads, writes and row fetches, for files that are mapped block by
// block and for images that share storage; and one that works on whole rows, for all others, as long as they stay so.
// Both give the same bytes.

namespace {

template <const ScalePair &Pair>
using SampleOf = std::conditional_t<Pair.SampleSize == 2, uint16_t, uint8_t>;

template <const ScalePair &Pair>
constexpr int32_t kValues = ValueCount(Pair.Read.count, Pair.Values);

template <const ScalePair &Pair>
constexpr int32_t kRowBatch = RowBatch(Pair.Read.count, Pair.Values);

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

// The values of one pixel from its sums.
template <const ScalePair &Pair>
std::array<SampleOf<Pair>, kValues<Pair>> Finished(const double *sums, const ScaleTapList &list, double rounding) {
  std::array<SampleOf<Pair>, kValues<Pair>> values{};
  for (int32_t i = 0; i < kValues<Pair>; ++i) values[i] = Finish<SampleOf<Pair>>(sums[i], list.WeightSum, rounding);
  return values;
}

// --- tables ---

int32_t FirstIndex(const ScaleTapList &list) { return list.Taps[0].SourceIndex; }
// One beyond the last.
int32_t EndIndex(const ScaleTapList &list) { return list.Taps[list.TapCount - 1].SourceIndex + 1; }

// How many columns of the source the lists of a job reach.
int32_t SourceColumns(const ScaleJob &job) {
  int32_t columns = 0;
  for (int32_t x = 0; x < job.Width; ++x) {
    const ScaleTapList &list = job.Table[x];
    if (list.TapCount > 0) columns = std::max(columns, EndIndex(list));
  }
  return columns;
}

// Columns of the source from the first to the last tap of a list, at the most.
int64_t WidestList(const ScaleJob &job) {
  int64_t widest = 0;
  for (int32_t x = 0; x < job.Width; ++x) {
    const ScaleTapList &list = job.Table[x];
    if (list.TapCount > 0) widest = std::max(widest, int64_t{EndIndex(list)} - FirstIndex(list));
  }
  return widest;
}

// At least 1, for a table that holds no tap at all.
int64_t LongestList(const ScaleJob &job) {
  int32_t longest = 1;
  for (int32_t y = 0; y < job.Height; ++y) longest = std::max(longest, job.Table[y].TapCount);
  return longest;
}

// The list for a row, without the taps from row `tempRows` of the temp image on.
ScaleTapList ListWithin(const ScaleJob &job, int32_t y, int32_t tempRows) {
  ScaleTapList list = job.Table[y];
  while (list.TapCount > 0 && EndIndex(list) > tempRows) --list.TapCount;
  return list;
}

// Output columns that the source columns from firstColumn to endColumn - 1 serve.
struct Stretch {
  int32_t firstColumn;
  int32_t endColumn;
  int32_t lists;
};

// As many lists from x on as `columns` source columns can serve. A list may begin left of the one before it.
Stretch StretchFrom(const ScaleJob &job, int32_t x, int64_t columns) {
  Stretch stretch{0, 0, 0};
  for (; x + stretch.lists < job.Width; ++stretch.lists) {
    const ScaleTapList &list = job.Table[x + stretch.lists];
    if (list.TapCount == 0) continue;
    int32_t first = FirstIndex(list);
    int32_t end = EndIndex(list);
    if (stretch.endColumn != 0) {
      first = std::min(first, stretch.firstColumn);
      end = std::max(end, stretch.endColumn);
    }
    if (end - first > columns) break;
    stretch.firstColumn = first;
    stretch.endColumn = end;
  }
  return stretch;
}

// --- pixel by pixel ---

// A row that cannot be had, of a block that cannot be mapped, is left out.

template <const ScalePair &Pair>
void HorizontalRow(const ScaleJob &job, int32_t y, double rounding) {
  ImageClassData &source = *job.Source;
  ImageClassData &temp = *job.Temp;
  const uint8_t *sourceRow = FetchRow(source, y);
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
    const auto values = Finished<Pair>(sums, list, rounding);
    // The temp row is fetched for every pixel.
    uint8_t *tempRow = FetchRow(temp, y);
    if (tempRow == nullptr) continue;
    WriteTempPixel<Pair>(tempRow + ptrdiff_t{x} * Pair.Stride, values.data(), 1, LastByteOf<Pair>(temp, tempRow));
  }
}

template <const ScalePair &Pair>
void VerticalRow(const ScaleJob &job, int32_t y, int32_t tempRows, double rounding) {
  ImageClassData &temp = *job.Temp;
  ImageClassData &dest = *job.Dest;
  const ScaleTapList list = ListWithin(job, y, tempRows);
  for (int32_t x = 0; x < job.Width; ++x) {
    double sums[kValues<Pair>] = {};
    for (int32_t t = 0; t < list.TapCount; ++t) {
      const ScaleTap tap = list.Taps[t];
      if (tap.Weight == 0.0f) continue;
      // The temp row is fetched for every tap of every pixel.
      const uint8_t *tempRow = FetchRow(temp, tap.SourceIndex);
      if (tempRow == nullptr) continue;
      const uint8_t *pixel = tempRow + ptrdiff_t{x} * Pair.Stride;
      const uint8_t *lastByte = LastByteOf<Pair>(temp, tempRow);
      for (int32_t i = 0; i < kValues<Pair>; ++i) {
        sums[i] += LoadSample<SampleOf<Pair>>(pixel + Pair.TempBytes[i], lastByte) * double{tap.Weight};
      }
    }
    const auto values = Finished<Pair>(sums, list, rounding);
    uint8_t *destRow = FetchRow(dest, y);
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

  // Makes as many rows from y on as it takes at once, of `most` that it may, and returns how many.
  int32_t Make(int32_t y, int32_t most, double rounding) {
    if (most < kRowBatch<Pair>) {
      MakeRows<1>(y, rounding);
      return 1;
    }
    MakeRows<kRowBatch<Pair>>(y, rounding);
    return kRowBatch<Pair>;
  }

 private:
  using Sample = SampleOf<Pair>;

  // Source columns staged at once, unless a list is wider: a batch of them stays in the cache.
  static constexpr int64_t kStretch = 256;

  template <int32_t Rows>
  void MakeRows(int32_t y, double rounding) {
    const uint8_t *rows[Rows];
    for (int32_t row = 0; row < Rows; ++row) rows[row] = FetchRow(*job_.Source, y + row);
    if (std::ranges::find(rows, nullptr) != std::end(rows)) {
      // That one is left out, so the others are made singly.
      if constexpr (Rows > 1) {
        for (int32_t row = 0; row < Rows; ++row) MakeRows<1>(y + row, rounding);
      }
      return;
    }
    for (int32_t x = 0; x < job_.Width;) {
      const Stretch stretch = StretchFrom(job_, x, columns_);
      Stage<Rows>(rows, stretch);
      ColumnSummation<Sample>(Pair.Read.count, Pair.Values,
                              Rows)({samples_.Get(), stretch.firstColumn, job_.Table + x, stretch.lists, rounding,
                                     values_.Get() + int64_t{x} * kValues<Pair> * Rows});
      x += stretch.lists;
    }
    for (int32_t row = 0; row < Rows; ++row) WriteRow<Rows>(y + row, row);
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
    uint8_t *tempRow = FetchRow(*job_.Temp, y);
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
  // `tempRows`: as many as the temp image holds, looked at again for each row.
  SummedRows(const ScaleJob &job, const int32_t &tempRows)
      : job_(job),
        tempRows_(tempRows),
        samples_(int64_t{job.Width} * (Pair.Stride / Pair.SampleSize)),
        rows_(LongestList(job)),
        weights_(LongestList(job)),
        values_(samples_) {}

  // False if there is no memory to work in.
  explicit operator bool() const { return rows_ && weights_ && values_; }

  // Makes one row, however many it may, and returns their number.
  int32_t Make(int32_t y, int32_t /*most*/, double rounding) {
    uint8_t *destRow = FetchRow(*job_.Dest, y);
    if (destRow == nullptr) return 1;
    const ScaleTapList list = ListWithin(job_, y, tempRows_);
    int32_t rowCount = 0;
    for (int32_t t = 0; t < list.TapCount; ++t) {
      const uint8_t *tempRow = FetchRow(*job_.Temp, list.Taps[t].SourceIndex);
      if (tempRow == nullptr) continue;
      rows_[rowCount] = tempRow;
      weights_[rowCount] = list.Taps[t].Weight;
      ++rowCount;
    }
    RowSummation<Sample>()(rows_.Get(), weights_.Get(), rowCount, list.WeightSum, rounding, samples_, values_.Get());
    Write(destRow);
    return 1;
  }

 private:
  using Sample = SampleOf<Pair>;

  void Write(uint8_t *destRow) const {
    // Copies, as the compiler must take every byte that is written for a change of the record.
    const ImageClassData dest = *job_.Dest;
    const int32_t width = job_.Width;
    const Sample *pixelValues = values_.Get();
    if constexpr (Pair.Stride == 1) {
      // A finished row is the row of the destination.
      if (dest.PixelSize == 1) {
        std::memcpy(destRow + dest.*Pair.Write[0].channel, pixelValues, static_cast<size_t>(width));
        return;
      }
    }
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
  const int32_t &tempRows_;
  int64_t samples_;  // of a temp row
  ZeroedBuffer<const uint8_t *> rows_;
  ZeroedBuffer<double> weights_;
  ZeroedBuffer<Sample> values_;
};

// True if no sample of `width` temp pixels can be cut by the end of a caller's storage: he may have described rows that
// are shorter than their pixels.
template <const ScalePair &Pair>
bool HasWholeSamples(const ImageClassData &temp, int32_t width) {
  return Pair.SampleSize == 1 || std::abs(int64_t{temp.RowSize}) >= int64_t{width} * Pair.Stride;
}

// --- the course of a pass ---

// While true, other code of the host may run after each row, so no work on the next one can be done ahead.
bool Yields(const ScaleRows &rows) { return rows.YieldImage != nullptr && rows.YieldImage->Yield.YieldTicks != 0; }

// An image as it is before the rows are made; none if nobody can change it while they are.
std::optional<WatchedImage> Watch(const ScaleRows &rows, ImageClassData &image, int32_t promisedRows = 0) {
  if (rows.YieldImage == nullptr) return {};
  return WatchedImage(image, promisedRows);
}

// What the two passes differ in, besides their rows: which images they need, and how much of them.

template <const ScalePair &Pair>
class Horizontal {
 public:
  Horizontal(const ScaleJob &job, const ScaleRows &rows)
      : job_(job),
        source_(Watch(rows, *job.Source)),
        temp_(Watch(rows, *job.Temp, rows.End)),
        sourceColumns_(source_ ? SourceColumns(job) : 0) {}

  // Rows that both images hold after a yield.
  int32_t HeldRows() {
    return std::min(source_->RowsOf(sourceColumns_, ColumnSize(*job_.Source, Pair.SampleSize)),
                    temp_->RowsOf(job_.Width, Pair.Stride));
  }
  // True if the rows up to `end` may be made whole: nobody can notice in what order pixels are read and written.
  bool TakesWholeRows(int32_t end) const { return AreDisjoint(*job_.Source, *job_.Temp, job_.Width, end, Pair.Stride); }
  StagedColumns<Pair> WholeRows() const { return StagedColumns<Pair>(job_); }
  void MakeRow(int32_t y, double rounding) const { HorizontalRow<Pair>(job_, y, rounding); }

 private:
  const ScaleJob &job_;
  std::optional<WatchedImage> source_;
  std::optional<WatchedImage> temp_;
  int32_t sourceColumns_;
};

template <const ScalePair &Pair>
class Vertical {
 public:
  Vertical(const ScaleJob &job, const ScaleRows &rows)
      : job_(job),
        tempRows_(job.Temp->Height),
        temp_(Watch(rows, *job.Temp, tempRows_)),
        dest_(Watch(rows, *job.Dest, rows.End)) {}

  // Rows that the destination holds after a yield, if there is any temp row to make them of.
  int32_t HeldRows() {
    tempRows_ = temp_->RowsOf(job_.Width, Pair.Stride);
    return tempRows_ > 0 ? dest_->RowsOf(job_.Width, ColumnSize(*job_.Dest, Pair.SampleSize)) : 0;
  }
  bool TakesWholeRows(int32_t end) const {
    return HasWholeSamples<Pair>(*job_.Temp, job_.Width) && AreDisjoint(*job_.Temp, *job_.Dest, job_.Width, end);
  }
  SummedRows<Pair> WholeRows() const { return SummedRows<Pair>(job_, tempRows_); }
  void MakeRow(int32_t y, double rounding) const { VerticalRow<Pair>(job_, y, tempRows_, rounding); }

 private:
  const ScaleJob &job_;
  int32_t tempRows_;
  std::optional<WatchedImage> temp_;
  std::optional<WatchedImage> dest_;
};

template <class Pass>
void RunPass(const ScaleJob &job, const ScaleRows &rows, double rounding) {
  Pass pass(job, rows);
  int32_t heldRows = INT32_MAX;
  // True if other code of the host may have run: it may have closed an image and constructed it anew, in a file say.
  const auto afterRow = [&] {
    if (!Yields(rows)) return false;
    YieldOn(*rows.YieldImage);
    heldRows = pass.HeldRows();
    return true;
  };
  const auto takesWholeRows = [&] { return heldRows >= rows.End && pass.TakesWholeRows(rows.End); };
  int32_t y = rows.First;
  if (y < rows.End && takesWholeRows()) {
    auto wholeRows = pass.WholeRows();
    bool hostRan = false;
    while (wholeRows && y < rows.End && (!hostRan || takesWholeRows())) {
      y += wholeRows.Make(y, Yields(rows) ? 1 : rows.End - y, rounding);
      hostRan = afterRow();
    }
  }
  for (; y < rows.End; ++y) {
    if (y < heldRows) pass.MakeRow(y, rounding);
    afterRow();
  }
}

template <const ScalePair &Pair>
constexpr ScalePasses kPassesOf{&Pair, RunPass<Horizontal<Pair>>, RunPass<Vertical<Pair>>};

constexpr ScalePasses kPasses[] = {
    kPassesOf<CMYKA_to_CMYKA>, kPassesOf<CMYKA_to_GA>, kPassesOf<RGBA_to_RGBA>, kPassesOf<RGBA_to_GA>,
    kPassesOf<GA_to_RGBA>,     kPassesOf<GA_to_GA>,    kPassesOf<G16_to_G16>,   kPassesOf<CMYK_to_CMYK>,
    kPassesOf<CMYK_to_G>,      kPassesOf<RGB_to_RGB>,  kPassesOf<RGB_to_G>,     kPassesOf<G_to_RGB>,
    kPassesOf<G_to_G>,
};

}  // namespace

const ScalePasses &PassesOf(const ScalePair &pair) { return *std::ranges::find(kPasses, &pair, &ScalePasses::Pair); }

}  // namespace zvk::scaling
