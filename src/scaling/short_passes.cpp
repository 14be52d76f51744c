#include "scaling/short_passes.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <span>

#include "pixels/overlap.h"
#include "pixels/row_walker.h"
#include "scaling/digit_kernels.h"
#include "scaling/scale_kernels.h"

namespace zvk::scaling {

namespace {

constexpr int32_t kLargestPixel = 8;     // bytes of a pixel that are staged as they lie
constexpr int64_t kStagedColumns = 512;  // of each row, as whole numbers
constexpr int64_t kStagedBytes = 512;    // of each row, unless a list is wider: as floats they stay in the first cache
constexpr int32_t kColumnsOfPair = 2;

bool IsMixed(const ScalePair &pair) { return pair.Values == ScaleValues::kGrayOfColour; }

// --- lists ---

std::span<const ScaleTapList> ColumnLists(const ScaleJob &job) { return {job.Table, static_cast<size_t>(job.Width)}; }
std::span<const ScaleTapList> RowLists(const ScaleJob &job) { return {job.Table, static_cast<size_t>(job.Height)}; }

}  // namespace

ShortTable ShortenColumns(const ScaleJob &job, const ScalePair &pair, double rounding, bool rowByRow) {
  const std::span lists = ColumnLists(job);
  const int32_t roundingsOfSample = IsMixed(pair) ? kRoundingsOfGray : 0;
  ShortTable table;
  if (pair.SampleSize == 2) {
    table.words.emplace(lists, rounding);
  } else if (rowByRow) {
    table.dots.emplace(lists, ShortSums{rounding, kLanes, roundingsOfSample, kLanes});
  } else if (HasDigitSums() && !IsMixed(pair)) {
    table.digits.emplace(lists, rounding);
  } else {
    const int32_t values = ValueCount(pair.Read.count, pair.Values);
    table.floats.emplace(lists, ShortSums{rounding, ColumnChains(values), roundingsOfSample});
  }
  return table;
}

ShortTable ShortenRows(const ScaleJob &job, const ScalePair &pair) {
  ShortTable table;
  if (pair.SampleSize == 2) {
    table.words.emplace(RowLists(job), kRoundToNearest);
  } else {
    table.floats.emplace(RowLists(job), ShortSums{kRoundToNearest, 1});
  }
  return table;
}

// --- stretches ---

namespace {

// Columns of the source from the first to the last tap of a list, at the most.
int64_t WidestList(const ScaleJob &job) {
  int64_t widest = 0;
  for (int32_t x = 0; x < job.Width; ++x) {
    const ScaleTapList &list = job.Table[x];
    if (list.TapCount > 0) widest = std::max(widest, int64_t{EndIndex(list)} - FirstIndex(list));
  }
  return widest;
}

}  // namespace

// --- columns ---

namespace {

// The bytes of a pixel that are read, with those between.
OffsetRange BytesRead(const ScalePair &pair, const OffsetRange &samples) {
  return {samples.lowest, samples.highest + pair.SampleSize - 1};
}

}  // namespace

ShortColumnsPass::Layout ShortColumnsPass::LayoutOf(const ImageClassData &source) const {
  Layout layout{source.PixelSize, source.RowSize, HasFixedRows(source), {}};
  for (int32_t i = 0; i < pair_.Read.count; ++i) layout.offsets[i] = source.*pair_.Read[i];
  return layout;
}

ShortColumnsPass::ShortColumnsPass(const ScaleJob &job, const ScalePair &pair, double rounding)
    : job_(job),
      pair_(pair),
      rounding_(rounding),
      values_(ValueCount(pair.Read.count, pair.Values)),
      layout_(LayoutOf(*job.Source)),
      range_(RangeOf(std::span(layout_.offsets).first(static_cast<size_t>(pair.Read.count)))),
      tempIsFixed_(HasFixedRows(*job.Temp)),
      sourceRows_(*job.Source, BytesRead(pair, range_), std::max(SourceColumns(job), 1), kLanes),
      isReady_(job.Short != nullptr && layout_.pixelSize > 0 && Prepare()) {}

bool ShortColumnsPass::Prepare() {
  const ShortTable &lists = *job_.Short;
  if (!sourceRows_) return false;
  if (!tempIsFixed_ && !lists.dots) {
    turned_ = LineBuffer<uint8_t>(int64_t{job_.Width} * pair_.Stride * kLanes);
    if (!turned_) return false;
  }
  if (lists.words) return *lists.words && PrepareWords();
  if (lists.dots) return *lists.dots && PrepareDots();
  // Pixels are staged as they lie.
  const int32_t pixelSize = layout_.pixelSize;
  if (pixelSize > kLargestPixel || range_.Span() > pixelSize) return false;
  made_ = LineBuffer<uint8_t>(int64_t{job_.Width} * pair_.Stride * kLanes);
  if (lists.digits) {
    const int64_t columns = std::max(kStagedColumns, WidestList(job_));
    groups_ = LineBuffer<uint32_t>((columns + kColumnsOfQuad + kMostStaged) / kColumnsOfQuad * values_ * kLanes);
    return *lists.digits && made_ && groups_ && CutIntoStretches(columns);
  }
  const int64_t columns = std::max(kStagedBytes / pixelSize, WidestList(job_));
  // A list that is padded reads columns behind its own, which count nothing.
  const int64_t floats = (columns + kMostChains) * kLanes;
  staged_ = LineBuffer<float>(floats * pixelSize);
  if (IsMixed(pair_)) mixed_ = LineBuffer<float>(floats * values_);
  return lists.floats && *lists.floats && made_ && staged_ && (mixed_ || !IsMixed(pair_)) && CutIntoStretches(columns);
}

bool ShortColumnsPass::PrepareDots() {
  const int64_t columns = std::max(kStagedColumns, WidestList(job_));
  const int64_t room = columns + int64_t{2} * kLanes;  // from a multiple of kLanes to another one
  staged_ = LineBuffer<float>(room * pair_.Read.count);
  if (IsMixed(pair_)) mixed_ = LineBuffer<float>(room * values_);
  plane_ = LineBuffer<uint8_t>(room);
  made_ = LineBuffer<uint8_t>(int64_t{job_.Width} * pair_.Stride);
  for (int32_t i = 0; i < pair_.Read.count; ++i) {
    const SampleMove move{layout_.offsets[i], 0};
    toPlane_[i].emplace(layout_.pixelSize, 1, std::span(&move, 1));
  }
  return staged_ && plane_ && made_ && (mixed_ || !IsMixed(pair_)) && CutIntoStretches(columns);
}

bool ShortColumnsPass::PrepareWords() {
  constexpr int32_t kSampleSize = 2;
  const int64_t end = std::max(SourceColumns(job_), 1);
  // A caller may have described rows that are shorter than their pixels, whose last sample is cut by the storage's end.
  if (std::abs(int64_t{layout_.rowSize}) < (end - 1) * layout_.pixelSize + layout_.offsets[0] + kSampleSize) {
    return false;
  }
  const int64_t columns = std::max(kStagedColumns, WidestList(job_));
  groups_ = LineBuffer<uint32_t>((columns + int64_t{2} * kColumnsOfPair) / kColumnsOfPair * kLanes);
  made_ = LineBuffer<uint8_t>(int64_t{job_.Width} * kSampleSize * kLanes);
  return groups_ && made_ && CutIntoStretches(columns);
}

int32_t ShortColumnsPass::Make(int32_t y, int32_t most) {
  const ShortTable &lists = *job_.Short;
  if (lists.dots) return MakeDots(y);
  // What is missing at the end repeats the last row, and is written over it once more.
  const int32_t count = std::min(most, kLanes);
  SourceRows rows{};
  for (int32_t i = 0; i < kLanes; ++i) {
    const int32_t row = y + std::min(i, count - 1);
    rows[i] = sourceRows_.Row(row);
    if (rows[i] == nullptr || (tempIsFixed_ && FetchRow(*job_.Temp, row) == nullptr)) return 0;
  }
  if (lists.words) {
    // A caller's temp image too may have rows that cut its last sample.
    if (std::abs(int64_t{job_.Temp->RowSize}) < int64_t{job_.Width} * pair_.Stride) return 0;
    SumWords(rows);
  } else if (lists.digits) {
    SumDigits(rows);
  } else {
    SumFloats(rows);
  }
  TurnInto(y, count);
  return count;
}

// From columns of rows that have been made to the rows of the temp image.
void ShortColumnsPass::TurnInto(int32_t y, int32_t count) {
  const ptrdiff_t size = ptrdiff_t{job_.Width} * pair_.Stride;
  std::array<uint8_t *, kLanes> rows{};
  for (int32_t i = 0; i < kLanes; ++i) {
    rows[i] = turned_ ? turned_.Get() + i * size : FetchRow(*job_.Temp, y + std::min(i, count - 1));
  }
  if (pair_.SampleSize == 2) {
    TurnWordsToRows(reinterpret_cast<const uint16_t *>(made_.Get()), job_.Width, rows.data());
  } else {
    TurnToRows(made_.Get(), size, rows.data());
  }
  if (!turned_) return;
  for (int32_t i = 0; i < count; ++i) {
    uint8_t *tempRow = FetchRow(*job_.Temp, y + i);
    if (tempRow != nullptr) std::memcpy(tempRow, rows[i], static_cast<size_t>(size));
  }
}

bool ShortColumnsPass::CutIntoStretches(int64_t columns) {
  stretches_ = ZeroedBuffer<Stretch>(job_.Width);
  if (!stretches_) return false;
  for (int32_t x = 0; x < job_.Width;) {
    Stretch &stretch = stretches_[stretchCount_++];
    stretch.x = x;
    for (; x < job_.Width; ++x) {
      const ScaleTapList &list = job_.Table[x];
      if (list.TapCount == 0) continue;
      int32_t first = FirstIndex(list);
      int32_t end = EndIndex(list);
      // A list may begin left of the one before it.
      if (stretch.endColumn != 0) {
        first = std::min(first, stretch.firstColumn);
        end = std::max(end, stretch.endColumn);
      }
      if (end - first > columns) break;
      stretch.firstColumn = first;
      stretch.endColumn = end;
    }
    stretch.end = x;
  }
  return true;
}

// Calls stage(first, end) with the source columns of a stretch, from a multiple of `alignment` on, unless there are
// none; then sum(x, end, first) with the output columns that they serve.
template <class Stage, class Sum>
void ShortColumnsPass::ForEachStretch(int32_t alignment, const Stage &stage, const Sum &sum) const {
  for (int32_t i = 0; i < stretchCount_; ++i) {
    const Stretch &stretch = stretches_[i];
    const int32_t first = stretch.firstColumn / alignment * alignment;
    if (stretch.endColumn > stretch.firstColumn) stage(first, stretch.endColumn);
    sum(stretch.x, stretch.end, first);
  }
}

GrayMix ShortColumnsPass::MixOf(const Places &places, int32_t channels) const {
  return {.staged = staged_.Get(),
          .channels = channels,
          .colours = {places[0], places[1], places[2]},
          .alpha = places[3],
          .mixed = mixed_ ? mixed_.Get() : nullptr,
          .mixedChannels = values_,
          .columns = 0};
}

void ShortColumnsPass::SumFloats(const SourceRows &rows) {
  const int32_t pixelSize = layout_.pixelSize;
  const auto lowest = static_cast<int32_t>(range_.lowest);
  // The bytes of a pixel that are behind its last sample may be behind the storage.
  const auto span = static_cast<ptrdiff_t>(range_.Span());
  Places from = layout_.offsets;
  for (int32_t &offset : from) offset -= lowest;
  const bool isMixed = IsMixed(pair_);
  GrayMix mix = MixOf(from, pixelSize);
  ShortColumns columns{.lists = &*job_.Short->floats,
                       .rounding = rounding_,
                       .first = 0,
                       .end = 0,
                       .staged = isMixed ? mix.mixed : mix.staged,
                       .firstColumn = 0,
                       .channels = isMixed ? values_ : pixelSize,
                       .from = isMixed ? Places{0, 1} : from,
                       .values = nullptr,
                       .stride = pair_.Stride,
                       .place = pair_.TempBytes.items,
                       .mix = isMixed ? &mix : nullptr};
  ForEachStretch(
      1,
      [&](int32_t first, int32_t end) {
        mix.columns = end - first;
        StageRows(rows.data(), ptrdiff_t{first} * pixelSize + lowest, (mix.columns - 1) * pixelSize + span,
                  staged_.Get());
        if (isMixed) MixGray(mix);
      },
      [&](int32_t x, int32_t end, int32_t firstColumn) {
        columns.first = x;
        columns.end = end;
        columns.firstColumn = firstColumn;
        columns.values = made_.Get() + int64_t{x} * pair_.Stride * kLanes;
        ShortColumnSums(columns, values_);
      });
}

int32_t ShortColumnsPass::MakeDots(int32_t y) {
  // The host may have written to the source since the row before.
  sourceRows_.Forget();
  const uint8_t *row = sourceRows_.Row(y);
  if (row == nullptr) return 0;
  const bool isMixed = IsMixed(pair_);
  GrayMix mix = MixOf({0, 1, 2, 3}, pair_.Read.count);
  ShortColumns columns{.lists = &*job_.Short->dots,
                       .rounding = rounding_,
                       .first = 0,
                       .end = 0,
                       .staged = isMixed ? mix.mixed : mix.staged,
                       .firstColumn = 0,
                       .channels = isMixed ? values_ : pair_.Read.count,
                       .from = {0, 1, 2, 3, 4},
                       .values = nullptr,
                       .stride = pair_.Stride,
                       .place = pair_.TempBytes.items,
                       .mix = isMixed ? &mix : nullptr};
  ForEachStretch(
      kLanes,
      [&](int32_t first, int32_t end) {
        const ptrdiff_t blocks = (end - first + kLanes - 1) / kLanes;
        for (int32_t i = 0; i < pair_.Read.count; ++i) {
          (*toPlane_[i])(row + ptrdiff_t{first} * layout_.pixelSize, plane_.Get(), end - first);
          StagePlane({plane_.Get(), blocks * kLanes, staged_.Get() + ptrdiff_t{i} * kLanes, pair_.Read.count});
        }
        mix.columns = blocks;
        if (isMixed) MixGray(mix);
      },
      [&](int32_t x, int32_t end, int32_t firstColumn) {
        columns.first = x;
        columns.end = end;
        columns.firstColumn = firstColumn;
        columns.values = made_.Get() + int64_t{x} * pair_.Stride;
        ShortDots(columns, values_);
      });
  uint8_t *tempRow = FetchRow(*job_.Temp, y);
  if (tempRow != nullptr) {
    std::memcpy(tempRow, made_.Get(), static_cast<size_t>(job_.Width) * static_cast<size_t>(pair_.Stride));
  }
  return 1;
}

void ShortColumnsPass::SumDigits(const SourceRows &rows) {
  QuadStage stage{.rows = rows.data(),
                  .first = static_cast<ptrdiff_t>(range_.lowest),
                  .pixelSize = layout_.pixelSize,
                  .span = static_cast<int32_t>(range_.Span()),
                  .samples = values_,
                  .places = layout_.offsets,
                  .from = 0,
                  .end = 0,
                  .quads = groups_.Get()};
  for (int32_t &place : stage.places) place -= static_cast<int32_t>(range_.lowest);
  DigitColumns columns{.lists = &*job_.Short->digits,
                       .rounding = rounding_,
                       .first = 0,
                       .end = 0,
                       .quads = groups_.Get(),
                       .firstColumn = 0,
                       .values = nullptr,
                       .stride = pair_.Stride,
                       .place = pair_.TempBytes.items};
  ForEachStretch(
      kColumnsOfQuad,
      [&](int32_t first, int32_t end) {
        stage.from = first;
        stage.end = end;
        StageQuads(stage);
      },
      [&](int32_t x, int32_t end, int32_t firstColumn) {
        columns.first = x;
        columns.end = end;
        columns.firstColumn = firstColumn;
        columns.values = made_.Get() + int64_t{x} * pair_.Stride * kLanes;
        SumDigitColumns(columns, values_);
      });
}

void ShortColumnsPass::SumWords(const SourceRows &rows) {
  auto *pairs = reinterpret_cast<int32_t *>(groups_.Get());
  auto *values = reinterpret_cast<uint16_t *>(made_.Get());
  const ptrdiff_t pixelSize = layout_.pixelSize;
  ForEachStretch(
      kColumnsOfPair,
      [&](int32_t first, int32_t end) {
        StageWords({rows.data(), first * pixelSize + layout_.offsets[0], pixelSize, end - first, pairs});
      },
      [&](int32_t x, int32_t end, int32_t firstColumn) {
        SumWordColumns({&*job_.Short->words, rounding_, x, end, pairs, firstColumn, values + ptrdiff_t{x} * kLanes});
      });
}

// --- rows ---

ShortRowsPass::ShortRowsPass(const ScaleJob &job, const ScalePair &pair, const int32_t &tempRows)
    : job_(job),
      pair_(pair),
      tempRowCount_(tempRows),
      values_(pair.TempBytes.count),
      samples_(int64_t{job.Width} * pair.TempBytes.count),
      tempHeight_(job.Temp->Height),
      tempIsFixed_(HasFixedRows(*job.Temp)),
      destIsFixed_(HasFixedRows(*job.Dest)),
      window_(*job.Temp, {0, job.Width * pair.Stride - 1}, 1, tempIsFixed_ ? 1 : MostRowsOfABand()),
      isReady_(job.Short != nullptr && Prepare()) {}

std::pair<int32_t, int32_t> ShortRowsPass::Reach(int32_t y) const {
  const ScaleTapList &list = job_.Table[y];
  return list.TapCount == 0 ? std::pair{0, 0} : std::pair{FirstIndex(list), EndIndex(list)};
}

// Temp rows that any rows of the destination, as many as are made at once, can reach.
int32_t ShortRowsPass::MostRowsOfABand() const {
  int32_t most = 1;
  for (int32_t y = 0; y < job_.Height; ++y) {
    int32_t first = INT32_MAX, end = 0;
    for (int32_t i = y; i < std::min(y + kBand, job_.Height); ++i) {
      const auto [firstOfList, endOfList] = Reach(i);
      if (endOfList == 0) continue;
      first = std::min(first, firstOfList / 2 * 2);
      end = std::max(end, endOfList);
    }
    most = std::max(most, end - std::min(first, end));
  }
  return most;
}

bool ShortRowsPass::Prepare() {
  const ShortTable &lists = *job_.Short;
  if (!window_) return false;
  tempRows_ = ZeroedBuffer<const uint8_t *>(std::max(tempHeight_, 1));
  if (lists.words) {
    bandStride_ = samples_ * pair_.SampleSize;
    band_ = LineBuffer<uint8_t>(bandStride_ * kBand);
    return samples_ >= kLanes && *lists.words && tempRows_ && band_;
  }
  // The ring holds all rows from the first one that may still be needed to the last one that has been.
  int32_t reach = 0, held = 1;
  for (int32_t y = 0; y < job_.Height; ++y) {
    const auto [first, end] = Reach(y);
    reach = std::max(reach, end);
    if (end > 0) held = std::max(held, reach - first);
  }
  ringRows_ = static_cast<int32_t>(std::bit_ceil(static_cast<uint32_t>(held)));
  ring_ = LineBuffer<float>(int64_t{ringRows_} * kBlockSamples);
  bandStride_ = samples_ + kBlockSamples;
  band_ = LineBuffer<uint8_t>(bandStride_ * kBand);
  return lists.floats && *lists.floats && ring_ && tempRows_ && band_;
}

bool ShortRowsPass::FetchTempRows(int32_t y, int32_t count) {
  int32_t first = INT32_MAX, end = 0;
  for (int32_t i = 0; i < count; ++i) {
    const auto [firstOfList, endOfList] = Reach(y + i);
    if (endOfList == 0) continue;
    first = std::min(first, firstOfList);
    end = std::max(end, endOfList);
  }
  if (end > std::min(tempRowCount_, tempHeight_)) return false;
  // Pairs begin at even rows.
  if (job_.Short->words) first = first / 2 * 2;
  for (int32_t row = first; row < end; ++row) {
    tempRows_[row] = window_.Row(row);
    if (tempRows_[row] == nullptr) return false;
  }
  lastTempRow_ = std::max(end - 1, 0);
  return true;
}

// True if no sample is cut by the storage's end. A caller may have described rows that are shorter than their pixels.
bool ShortRowsPass::WritesWhole(const ImageClassData &dest) const {
  if (pair_.SampleSize == 1) return true;
  return std::abs(int64_t{dest.RowSize}) >=
         int64_t{job_.Width - 1} * dest.PixelSize + dest.*pair_.Write[0].channel + pair_.SampleSize;
}

int32_t ShortRowsPass::Make(int32_t y, int32_t most) {
  const int32_t count = std::min(most, kBand);
  // Behind a single row the host may have written to the temp image.
  if (count == 1 || lastWasSingle_) window_.Forget();
  lastWasSingle_ = count == 1;
  // Copies, as the compiler must take every byte that is written for a change of the record.
  const ImageClassData dest = *job_.Dest;
  if (!WritesWhole(dest) || !FetchTempRows(y, count)) return 0;
  const int32_t size = pair_.SampleSize;
  // The moves of bytes from a pixel of finished samples, and whether they are the pixel as it is.
  std::array<SampleMove, kMostValues> moves{};
  int32_t bytes = 0;
  const int32_t first = dest.*pair_.Write[0].channel;
  bool isPacked = dest.PixelSize == pair_.Write.count * size && values_ == pair_.Write.count;
  for (const ScaleWrite &write : pair_.Write) {
    for (int32_t byte = 0; byte < size; ++byte) {
      moves[bytes] = {write.value * size + byte, dest.*write.channel + byte};
      isPacked = isPacked && moves[bytes].from == bytes && moves[bytes].to == first + bytes;
      ++bytes;
    }
  }
  // Whole blocks alone are written where they belong, as a block is never written in part.
  const bool direct = isPacked && destIsFixed_ && (size == 2 || samples_ >= kBlockSamples);
  std::array<uint8_t *, kBand> made{};
  for (int32_t i = 0; i < count; ++i) {
    uint8_t *destRow = direct ? FetchRow(*job_.Dest, y + i) : nullptr;
    made[i] = destRow != nullptr ? destRow + first : band_.Get() + i * bandStride_;
  }
  SumBlocks(y, count, made.data());
  if (direct) return count;
  const SampleMover move(values_ * size, dest.PixelSize, std::span(moves).first(static_cast<size_t>(bytes)));
  for (int32_t i = 0; i < count; ++i) {
    uint8_t *destRow = FetchRow(*job_.Dest, y + i);
    if (destRow != nullptr) move(made[i], destRow, job_.Width);
  }
  return count;
}

void ShortRowsPass::SumBlocks(int32_t y, int32_t count, uint8_t *const *made) {
  std::array<uint8_t *, kBand> to{};
  if (job_.Short->words) {
    // So many that the rows of a list stay in the first cache.
    constexpr int64_t kBlockWords = 128;
    WordRows rows{&*job_.Short->words, y, y + count, tempRows_.Get(), lastTempRow_, 0, 0, to.data()};
    for (int64_t sample = 0; sample < samples_; sample += kBlockWords) {
      // The last block takes in samples of the one before it again.
      const int64_t begin = samples_ >= kBlockWords ? std::min(sample, samples_ - kBlockWords) : 0;
      rows.count = static_cast<int32_t>(std::min(samples_, kBlockWords));
      rows.at = begin * pair_.SampleSize;
      for (int32_t i = 0; i < count; ++i) to[i] = made[i] + begin * pair_.SampleSize;
      SumWordRows(rows);
    }
    return;
  }
  const bool allCount = values_ == pair_.Stride;
  ShortRows rows{.lists = &*job_.Short->floats,
                 .first = y,
                 .end = y + count,
                 .rows = tempRows_.Get(),
                 .lastRow = lastTempRow_,
                 .at = 0,
                 .bytes = allCount ? 1 : pair_.Stride,
                 .samples = allCount ? 1 : values_,
                 .places = pair_.TempBytes.items,
                 .count = 0,
                 .ring = ring_.Get(),
                 .ringRows = ringRows_,
                 .to = to.data()};
  const int64_t most = int64_t{kBlockSamples / rows.samples} * rows.samples;
  for (int64_t sample = 0; sample < samples_; sample += most) {
    // The last block takes in samples of the one before it again.
    const int64_t begin = samples_ >= most ? std::min(sample, samples_ - most) : 0;
    rows.count = static_cast<int32_t>(std::min(samples_, most));
    rows.at = begin / rows.samples * rows.bytes;
    for (int32_t i = 0; i < count; ++i) to[i] = made[i] + begin;
    ShortRowSums(rows);
  }
}

}  // namespace zvk::scaling
