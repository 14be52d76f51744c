#include "scaling/scale_passes.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <optional>
#include <type_traits>

#include "image/channels.h"
#include "pixels/overlap.h"
#include "pixels/row_walker.h"
#include "pixels/wide_samples.h"
#include "scaling/scale_kernels.h"
#include "scaling/short_passes.h"
#include "scaling/watched_image.h"

namespace zvk::scaling {

// Each pass has two forms: one in a fixed order of reads, writes and row fetches, for images that share storage; and
// one that works on whole rows, for all others, as long as they stay so. Both give the same bytes.

int32_t SourceColumns(const ScaleJob &job) {
  int32_t columns = 0;
  for (int32_t x = 0; x < job.Width; ++x) {
    const ScaleTapList &list = job.Table[x];
    if (list.TapCount > 0) columns = std::max(columns, EndIndex(list));
  }
  return columns;
}

namespace {

template <const ScalePair &Pair>
using SampleOf = std::conditional_t<Pair.SampleSize == 2, uint16_t, uint8_t>;

template <const ScalePair &Pair>
constexpr int32_t kValues = ValueCount(Pair.Read.count, Pair.Values);

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

// The samples of one source pixel, as AddTap takes them.
template <const ScalePair &Pair>
void ReadPixel(const ImageClassData &source, const uint8_t *pixel, const uint8_t *lastByte, double *samples) {
  for (int32_t i = 0; i < Pair.Read.count; ++i) {
    const auto sample = LoadSample<SampleOf<Pair>>(pixel + source.*Pair.Read[i], lastByte);
    samples[i] = sample * SamplePart<Pair.Values>(i);
  }
}

// A whole temp pixel from its values.
template <const ScalePair &Pair>
void WriteTempPixel(uint8_t *pixel, const SampleOf<Pair> *values, const uint8_t *lastByte) {
  if constexpr (Pair.SampleSize == 2) return StoreSample(pixel, values[0], lastByte);
  uint8_t bytes[Pair.Stride] = {};
  for (int32_t i = 0; i < Pair.TempBytes.count; ++i) bytes[Pair.TempBytes[i]] = static_cast<uint8_t>(values[i]);
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

// The list for a row, without the taps from row `tempRows` of the temp image on.
ScaleTapList ListWithin(const ScaleJob &job, int32_t y, int32_t tempRows) {
  ScaleTapList list = job.Table[y];
  while (list.TapCount > 0 && EndIndex(list) > tempRows) --list.TapCount;
  return list;
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
      ReadPixel<Pair>(source, sourceRow + ptrdiff_t{tap.SourceIndex} * source.PixelSize, lastByte, samples);
      AddTap<Pair.Read.count, Pair.Values, 1>(samples, tap.Weight, sums);
    }
    const auto values = Finished<Pair>(sums, list, rounding);
    // The temp row is fetched for every pixel.
    uint8_t *tempRow = FetchRow(temp, y);
    if (tempRow == nullptr) continue;
    WriteTempPixel<Pair>(tempRow + ptrdiff_t{x} * Pair.Stride, values.data(), LastByteOf<Pair>(temp, tempRow));
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

// Rows in short arithmetic, and those that cannot be made so as told.

template <const ScalePair &Pair>
class WholeColumns {
 public:
  WholeColumns(const ScaleJob &job, double rounding) : job_(job), rounding_(rounding), short_(job, Pair, rounding) {}

  // False once rows are better made pixel by pixel.
  explicit operator bool() const { return short_ && short_.StillFits(); }

  // Makes rows from y on, up to `most`, and returns how many.
  int32_t Make(int32_t y, int32_t most) {
    const int32_t count = short_.Make(y, most);
    if (count == 0) HorizontalRow<Pair>(job_, y, rounding_);
    return std::max(count, 1);
  }

 private:
  const ScaleJob &job_;
  const double rounding_;
  ShortColumnsPass short_;
};

template <const ScalePair &Pair>
class WholeSums {
 public:
  // `tempRows`: as many as the temp image holds, looked at again for each row.
  WholeSums(const ScaleJob &job, const int32_t &tempRows)
      : job_(job), tempRows_(tempRows), short_(job, Pair, tempRows) {}

  // False once rows are better made pixel by pixel.
  explicit operator bool() const { return short_ && short_.StillFits(); }

  // Makes rows from y on, up to `most`, and returns how many.
  int32_t Make(int32_t y, int32_t most) {
    const int32_t count = short_.Make(y, most);
    if (count == 0) VerticalRow<Pair>(job_, y, tempRows_, kRoundToNearest);
    return std::max(count, 1);
  }

 private:
  const ScaleJob &job_;
  const int32_t &tempRows_;
  ShortRowsPass short_;
};

// True if no sample of `width` temp pixels can be cut by the end of a caller's storage: he may have described rows that
// are shorter than their pixels.
template <const ScalePair &Pair>
bool HasWholeSamples(const ImageClassData &temp, int32_t width) {
  return Pair.SampleSize == 1 || std::abs(int64_t{temp.RowSize}) >= int64_t{width} * Pair.Stride;
}

// The bytes of a pixel that the vertical pass writes, from the first to the last.
template <const ScalePair &Pair>
OffsetRange WrittenBytes(const ImageClassData &dest) {
  std::array<int32_t, Pair.Write.count> offsets{};
  for (int32_t i = 0; i < Pair.Write.count; ++i) offsets[i] = dest.*Pair.Write[i].channel;
  const OffsetRange samples = RangeOf(offsets);
  return {samples.lowest, samples.highest + Pair.SampleSize - 1};
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
  bool TakesWholeRows(int32_t end) const {
    const OffsetRange row{0, job_.Width * Pair.Stride - 1};
    return RowsAreApart(*job_.Temp, row, 1, end) &&
           ImagesAreApart(*job_.Source, *job_.Temp, job_.Width, end, Pair.Stride);
  }
  WholeColumns<Pair> WholeRows(double rounding) const { return WholeColumns<Pair>(job_, rounding); }
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
    const ImageClassData &dest = *job_.Dest;
    const OffsetRange written = WrittenBytes<Pair>(dest);
    return HasWholeSamples<Pair>(*job_.Temp, job_.Width) && PixelsAreApart(written, dest.PixelSize) &&
           RowsAreApart(dest, written, job_.Width, end) && ImagesAreApart(*job_.Temp, dest, job_.Width, end);
  }
  WholeSums<Pair> WholeRows(double /*rounding*/) const { return WholeSums<Pair>(job_, tempRows_); }
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
    auto wholeRows = pass.WholeRows(rounding);
    bool hostRan = false;
    while (wholeRows && y < rows.End && (!hostRan || takesWholeRows())) {
      y += wholeRows.Make(y, Yields(rows) ? 1 : rows.End - y);
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
