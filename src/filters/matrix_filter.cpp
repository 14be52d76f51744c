#include "filters/matrix_filter.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "filters/matrix_filter_terms.h"
#include "filters/matrix_line_sums.h"
#include "host/integer_array.h"
#include "host/resources.h"
#include "pixels/filter_frame.h"
#include "pixels/layouts.h"
#include "pixels/neighbourhood.h"
#include "pixels/overlap.h"
#include "pixels/row_walker.h"

namespace zvk::filters {

namespace {

// One call: the first columns and rows of dest are written.
struct MatrixJob {
  ImageClassData &source;
  ImageClassData &dest;
  const MatrixTerms &terms;
  MatrixResult result;
  int32_t columns;
  int32_t rows;
};

// --- any images: pixel after pixel, a row of the source fetched for each row of the matrix ---

template <class Layout>
std::array<int32_t, Layout::channelCount> SumOfPixel(const MatrixJob &job, int32_t x, int32_t y) {
  ImageClassData &source = job.source;
  const auto offsets = Layout::OffsetsOf(source);
  std::array<int32_t, Layout::channelCount> sums = {};
  for (int32_t i = 0; i < job.terms.RowCount(); ++i) {
    const uint8_t *row = FetchRow(source, PlaceAt(y, job.terms.RowAt(i), source.Height));
    if (row == nullptr) continue;
    for (const MatrixTerm &term : job.terms.OfRow(i)) {
      const uint8_t *pixel = row + ptrdiff_t{PlaceAt(x, term.column, source.Width)} * source.PixelSize;
      for (size_t c = 0; c < sums.size(); ++c) sums[c] += pixel[offsets[c]] * term.weight;
    }
  }
  return sums;
}

template <class Layout>
void ApplyByPixel(const MatrixJob &job) {
  ImageClassData &dest = job.dest;
  const auto offsets = Layout::OffsetsOf(dest);
  for (int32_t y = 0; y < job.rows; ++y) {
    HeldRow row(dest, y, job.source);
    for (int32_t x = 0; x < job.columns && row; ++x) {
      const auto sums = SumOfPixel<Layout>(job, x, y);
      if (row.Again() == nullptr) break;
      uint8_t *pixel = row.Get() + ptrdiff_t{x} * dest.PixelSize;
      for (size_t c = 0; c < sums.size(); ++c) pixel[offsets[c]] = job.result(sums[c]);
    }
  }
}

// --- images that share nothing: lines of samples, with the edge pixels repeated as far as the matrix reaches ---

// The columns or rows of the samples that count, from the output pixel.
struct Reach {
  int32_t first;
  int32_t last;
};

Reach ReachOf(std::span<const MatrixTerm> terms, int32_t MatrixTerm::*place) {
  if (terms.empty()) return {0, 0};
  const auto [first, last] = std::ranges::minmax(terms, {}, place);
  return {first.*place, last.*place};
}

// A window of the source's rows as lines, each read once. Byte 0 of a line is the first channel of the sample that the
// leftmost column in reach meets at output column 0.
template <class Layout>
class SourceLines {
 public:
  // The terms must be those within the source.
  SourceLines(const MatrixJob &job, const MatrixTerms &terms, bool packed)
      : source_(job.source),
        samples_(source_, packed),
        rows_(ReachOf(terms.All(), &MatrixTerm::row)),
        columns_(ReachOf(terms.All(), &MatrixTerm::column)),
        pixels_(int64_t{job.columns} + columns_.last - columns_.first),
        lineCount_(std::min(rows_.last - rows_.first + 1, source_.Height)),
        bytes_(lineCount_ * pixels_ * kChannels) {}

  explicit operator bool() const { return static_cast<bool>(bytes_); }

  // Makes ready what the output row y reaches. Rows are asked for from the top.
  void MoveTo(int32_t y) {
    next_ = std::max(next_, PlaceAt(y, rows_.first, source_.Height));
    for (const int32_t last = PlaceAt(y, rows_.last, source_.Height); next_ <= last; ++next_) Load(next_);
  }

  // What lies `distance` rows from output row y.
  SourceLine LineAt(int32_t y, int32_t distance) const {
    const int32_t sourceRow = PlaceAt(y, distance, source_.Height);
    const int32_t slot = sourceRow % lineCount_;
    return {lines_[static_cast<size_t>(slot)], sourceRow, slot};
  }

  LineShape Shape() const { return {columns_.first, static_cast<int32_t>(kChannels), pixels_ * kChannels}; }
  int32_t Slots() const { return lineCount_; }

 private:
  static constexpr ptrdiff_t kChannels = SampleRows<Layout>::kChannels;

  void Load(int32_t sourceRow) {
    const int32_t slot = sourceRow % lineCount_;
    const uint8_t *row = FetchRow(source_, sourceRow);
    uint8_t *line = bytes_.Get() + slot * pixels_ * kChannels;
    lines_[static_cast<size_t>(slot)] = row != nullptr ? line : nullptr;
    if (row == nullptr) return;

    const auto count = static_cast<int32_t>(pixels_);
    const int32_t left = std::min(count, std::max(0, -columns_.first));
    const int64_t behind = int64_t{source_.Width} - columns_.first;  // of the widest images more than 32 bits hold
    const int32_t inside = std::max(0, static_cast<int32_t>(std::min<int64_t>(count, behind)) - left);
    line = Repeat(row, left, line);
    samples_.Copy(row + ptrdiff_t{PlaceAt(columns_.first, left, source_.Width)} * source_.PixelSize, inside, line);
    Repeat(row + ptrdiff_t{source_.Width - 1} * source_.PixelSize, count - left - inside, line + inside * kChannels);
  }

  // Copies one pixel over and over; the end of the copies.
  uint8_t *Repeat(const uint8_t *pixel, int32_t count, uint8_t *line) const {
    for (int32_t i = 0; i < count; ++i, line += kChannels) samples_.Copy(pixel, 1, line);
    return line;
  }

  ImageClassData &source_;
  SampleRows<Layout> samples_;
  Reach rows_;
  Reach columns_;
  int64_t pixels_;
  int32_t lineCount_;
  ZeroedBuffer<uint8_t> bytes_;
  std::array<const uint8_t *, MatrixTerms::kMostRows> lines_ = {};
  int32_t next_ = 0;
};

// False, with nothing written, if there is no memory for the lines.
template <class Layout>
bool ApplyByLines(const MatrixJob &job) {
  ImageClassData &dest = job.dest;
  const bool packed = Layout::PackedAlike(job.source, dest);
  const int64_t count = job.columns * int64_t{Layout::channelCount};
  const MatrixTerms terms = job.terms.Within(job.source.Width, job.source.Height);
  SourceLines<Layout> source(job, terms, packed);
  const LineSums sum(terms, job.result, source.Shape(), count, source.Slots());
  const SampleRows<Layout> results(dest, packed);
  const ZeroedBuffer<uint8_t> buffer(count);
  if (!source || !sum || !buffer) return false;

  std::array<SourceLine, MatrixTerms::kMostRows> lines = {};
  const auto used = std::span(lines).first(static_cast<size_t>(terms.RowCount()));
  ForEachRow(dest, job.rows, [&](uint8_t *row, int32_t y) {
    source.MoveTo(y);
    for (int32_t i = 0; i < terms.RowCount(); ++i) {
      if (!terms.OfRow(i).empty()) lines[static_cast<size_t>(i)] = source.LineAt(y, terms.OfRow(i).front().row);
    }
    results.Write(row, job.columns, buffer.Get(), [&](uint8_t *bytes) { sum(used, bytes); });
  });
  return true;
}

template <class Layout>
void Apply(const MatrixJob &job) {
  const bool apart = job.columns > 0 && ImagesAreApart(job.source, job.dest, job.columns, job.rows);
  if (!apart || !ApplyByLines<Layout>(job)) ApplyByPixel<Layout>(job);
}

}  // namespace

// --- handlers ---

REALobject PictureMatrix5(REALobject instance, REALobject dest, int32_t dimension, REALarray matrix, int32_t delta,
                          double scaleFactor) {
  std::array<int32_t, MatrixTerms::kMostEntries> entries = {};
  ReadIntegerArray(matrix, entries);
  // A new dest has the source's sides exchanged, while the loops run by the source's: all of a square image is written,
  // and of another one what lies within both.
  const bool isNew = dest == nullptr;
  return RunFilter(instance, dest, NewDest::ExchangedSides, [&](ImageClassData &source, ImageClassData &target) {
    const MatrixTerms terms(entries, dimension);
    const int32_t columns = isNew ? std::min(source.Width, target.Width) : source.Width;
    const int32_t rows = isNew ? std::min(source.Height, target.Height) : source.Height;
    const MatrixJob job{source, target, terms, {delta, scaleFactor}, columns, rows};
    using enum ColourFamily;
    VisitLayout<Gray, RGB, CMYK>(source, [&]<class Layout>(Layout) { Apply<Layout>(job); });
  });
}

REALobject PictureMatrix4(REALobject instance, REALobject dest, int32_t dimension, REALarray matrix, int32_t delta) {
  return PictureMatrix5(instance, dest, dimension, matrix, delta, 1.0);
}

REALobject PictureMatrix3(REALobject instance, REALobject dest, int32_t dimension, REALarray matrix) {
  return PictureMatrix4(instance, dest, dimension, matrix, 0);
}

}  // namespace zvk::filters
