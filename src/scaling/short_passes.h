// The two passes of a scale in short arithmetic, for images that share no storage.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <utility>

#include "host/resources.h"
#include "image/channels.h"
#include "pixels/row_window.h"
#include "pixels/sample_mover.h"
#include "scaling/digit_lists.h"
#include "scaling/scale_pairs.h"
#include "scaling/scale_passes.h"
#include "scaling/short_kernels.h"
#include "scaling/short_lists.h"
#include "scaling/word_lists.h"

namespace zvk::scaling {

// Zero-filled elements that begin at a line of the cache.
template <class T>
class LineBuffer {
 public:
  LineBuffer() = default;
  explicit LineBuffer(int64_t count) : bytes_(count * static_cast<int64_t>(sizeof(T)) + kLine) {}

  T *Get() const {
    const auto address = reinterpret_cast<uintptr_t>(bytes_.Get());
    return reinterpret_cast<T *>((address + kLine - 1) / kLine * kLine);
  }
  explicit operator bool() const { return static_cast<bool>(bytes_); }

 private:
  static constexpr int64_t kLine = 64;

  ZeroedBuffer<uint8_t> bytes_;
};

// The lists of one pass in the forms that its kernels take, made once for all its rows and threads. Which of them there
// are says how its rows are made: one of them, or none.
struct ShortTable {
  std::optional<ShortLists> floats;
  std::optional<ShortLists> dots;  // floats for one row at a time
  std::optional<DigitLists> digits;
  std::optional<WordLists> words;
};

// For columns, whose pass makes many rows at once unless `rowByRow`, and adds `rounding` before it cuts.
ShortTable ShortenColumns(const ScaleJob &job, const ScalePair &pair, double rounding, bool rowByRow);
ShortTable ShortenRows(const ScaleJob &job, const ScalePair &pair);

// From rows of the source to rows of the temp image.
class ShortColumnsPass {
 public:
  ShortColumnsPass(const ScaleJob &job, const ScalePair &pair, double rounding);

  // False if there are no lists, if the samples of the source's pixels lie too far apart, or if there is no memory to
  // work in.
  explicit operator bool() const { return isReady_; }

  // False once the source has other pixels than it had at first, or the rows of the temp image do not stay where they
  // are any more, or do so now.
  bool StillFits() const { return layout_ == LayoutOf(*job_.Source) && tempIsFixed_ == HasFixedRows(*job_.Temp); }

  // Makes rows from y on, up to `most`, and returns how many: 0, with nothing written, if one of them cannot be had.
  int32_t Make(int32_t y, int32_t most);

 private:
  using Places = std::array<int32_t, kMostValues>;
  using SourceRows = std::array<const uint8_t *, kLanes>;

  // Where samples lie.
  struct Layout {
    int32_t pixelSize;
    int32_t rowSize;
    bool hasFixedRows;
    Places offsets;
    bool operator==(const Layout &) const = default;
  };
  Layout LayoutOf(const ImageClassData &source) const;

  // Output columns x to end - 1, and the source columns that serve them.
  struct Stretch {
    int32_t x;
    int32_t end;
    int32_t firstColumn;
    int32_t endColumn;
  };

  bool Prepare();
  bool PrepareDots();
  bool PrepareWords();
  int32_t MakeDots(int32_t y);
  void TurnInto(int32_t y, int32_t count);
  void SumFloats(const SourceRows &rows);
  void SumDigits(const SourceRows &rows);
  void SumWords(const SourceRows &rows);
  // Each stretch takes as many lists as `columns` source columns can serve. False if there is no memory.
  bool CutIntoStretches(int64_t columns);
  template <class Stage, class Sum>
  void ForEachStretch(int32_t alignment, const Stage &stage, const Sum &sum) const;
  GrayMix MixOf(const Places &places, int32_t channels) const;

  const ScaleJob &job_;
  const ScalePair &pair_;
  const double rounding_;
  const int32_t values_;  // of a pixel
  const Layout layout_;
  const OffsetRange range_;  // of the samples that are read
  const bool tempIsFixed_;
  ZeroedBuffer<Stretch> stretches_;
  int32_t stretchCount_ = 0;
  LineBuffer<float> staged_;
  LineBuffer<float> mixed_;
  LineBuffer<uint32_t> groups_;  // of columns, for sums of whole numbers
  LineBuffer<uint8_t> made_;     // for each output column the temp pixel of all rows
  LineBuffer<uint8_t> plane_;
  LineBuffer<uint8_t> turned_;  // temp rows, where those of the temp image do not stay where they are
  pixels::RowWindow sourceRows_;
  std::array<std::optional<SampleMover>, kMostValues> toPlane_;
  bool isReady_;
};

// From rows of the temp image to rows of the destination.
class ShortRowsPass {
 public:
  static constexpr int32_t kBand = 64;  // rows that are made at once

  // `tempRows`: as many as the temp image holds, looked at again for each row.
  ShortRowsPass(const ScaleJob &job, const ScalePair &pair, const int32_t &tempRows);

  // False if there are no lists, or if there is no memory to work in.
  explicit operator bool() const { return isReady_; }

  // False once the rows of one of the images do not stay where they are any more, or do so now.
  bool StillFits() const {
    return tempIsFixed_ == HasFixedRows(*job_.Temp) && destIsFixed_ == HasFixedRows(*job_.Dest);
  }

  // Makes rows from y on, up to `most`, and returns how many: 0, with nothing written, if one of them needs temp rows
  // that cannot be had, or is to have samples that the destination has no room for. A row that the destination does not
  // have is left out.
  int32_t Make(int32_t y, int32_t most);

 private:
  bool Prepare();
  int32_t MostRowsOfABand() const;
  bool FetchTempRows(int32_t y, int32_t count);
  bool WritesWhole(const ImageClassData &dest) const;
  void SumBlocks(int32_t y, int32_t count, uint8_t *const *made);
  // The temp rows that a list reaches, the second one beyond the last; both 0 for none.
  std::pair<int32_t, int32_t> Reach(int32_t y) const;

  const ScaleJob &job_;
  const ScalePair &pair_;
  const int32_t &tempRowCount_;
  const int32_t values_;   // of a pixel
  const int64_t samples_;  // of a row
  const int32_t tempHeight_;
  const bool tempIsFixed_, destIsFixed_;
  int32_t ringRows_ = 1;
  pixels::RowWindow window_;  // of temp rows
  LineBuffer<float> ring_;
  ZeroedBuffer<const uint8_t *> tempRows_;
  LineBuffer<uint8_t> band_;
  int64_t bandStride_ = 0;
  int32_t lastTempRow_ = 0;  // of those that have been fetched
  bool lastWasSingle_ = false;
  bool isReady_;
};

}  // namespace zvk::scaling
