// The kernels of short_kernels.h, written once over a set of primitives. Included by one source file for each set of
// instructions, behind the pragma that chooses it, with the primitives as `Lanes`: kLanes floats and what can be done
// with them.

#define ZVK_INLINE [[gnu::always_inline]] inline

namespace zvk::scaling {
namespace {

// --- lines of the cache ---

// So far ahead that a line is there when its turn comes. A hint may lead behind the end of a row.
constexpr ptrdiff_t kLine = 64, kReadsAhead = 512, kWritesAhead = 256;
constexpr int32_t kRowsAhead = 8;

// Asks for a part of a row of 65 to 128 bytes that is to be read or, if kWrites, to be written, without the line that
// the part to its left has had.
template <bool kWrites>
ZVK_INLINE void AskForTwoLines(const uint8_t *bytes, ptrdiff_t size) {
  __builtin_prefetch(bytes + size - kLine - 1, kWrites ? 1 : 0);
  __builtin_prefetch(bytes + size - 1, kWrites ? 1 : 0);
}

// --- finishing ---

// Cuts values to bytes, of which `low` are the lowest that they can be and `spread` more the highest. False if one of
// them is not sure.
ZVK_INLINE bool FinishSure(const Lanes &low, const Lanes &spread, uint8_t *to) {
  const Pairs numbers = Cut(low);
  StoreAsBytes(numbers, to);
  return IsZero(OrDifference(numbers, Cut(Plus(low, spread)), AllPairs(0)));
}

// The same for several groups with one spread.
template <int32_t kGroups>
ZVK_INLINE bool FinishSure(const Lanes (&low)[kGroups], const Lanes &spread, uint8_t *to) {
  Pairs differing = AllPairs(0);
  Pairs numbers[kGroups];
  for (int32_t g = 0; g < kGroups; ++g) {
    numbers[g] = Cut(low[g]);
    differing = OrDifference(numbers[g], Cut(Plus(low[g], spread)), differing);
  }
  for (int32_t g = 0; g + 1 < kGroups; g += 2) StoreTwoAsBytes(numbers[g], numbers[g + 1], to + g * kLanes);
  if (kGroups % 2 != 0) StoreAsBytes(numbers[kGroups - 1], to + (kGroups - 1) * kLanes);
  return IsZero(differing);
}

// --- the told sums of a group ---

// kLanes values of one list, in double and in the told order. samplesOf(position) is the address of that tap's
// samples, less 128.
template <class SamplesOf>
ZVK_INLINE void SumAsTold(const ScaleTapList &list, double rounding, SamplesOf samplesOf, uint8_t *values) {
  double sums[kLanes] = {};
  for (int32_t t = 0; t < list.TapCount; ++t) {
    OneStepAtATime();
    const double weight = list.Taps[t].Weight;
    const float *samples = samplesOf(list.Taps[t].SourceIndex);
    for (int32_t i = 0; i < kLanes; ++i) sums[i] += (static_cast<double>(samples[i]) + 128.0) * weight;
  }
  FinishAll<kLanes>(sums, kLanes, list.WeightSum, rounding, values);
}

// The same of gray out of three samples each.
ZVK_INLINE void SumGrayAsTold(const ScaleTapList &list, double rounding, const GrayMix &mix, int32_t firstColumn,
                              uint8_t *values) {
  using enum ScaleValues;
  double sums[kLanes] = {};
  for (int32_t t = 0; t < list.TapCount; ++t) {
    OneStepAtATime();
    const ScaleTap tap = list.Taps[t];
    const float *column = mix.staged + ptrdiff_t{tap.SourceIndex - firstColumn} * mix.channels * kLanes;
    double samples[3 * kLanes];
    for (int32_t c = 0; c < 3; ++c) {
      const float *sample = column + ptrdiff_t{mix.colours[c]} * kLanes;
      for (int32_t i = 0; i < kLanes; ++i) {
        samples[c * kLanes + i] = (static_cast<double>(sample[i]) + 128.0) * SamplePart<kGrayOfColour>(c);
      }
    }
    AddTap<3, kGrayOfColour, kLanes>(samples, tap.Weight, sums);
  }
  FinishAll<kLanes>(sums, kLanes, list.WeightSum, rounding, values);
}

// --- sixteen rows of sixteen bytes turned ---

ZVK_INLINE void Turn(Bytes (&rows)[kLanes]) {
#pragma GCC unroll 4
  for (int step = 0; step < 4; ++step) {
    Bytes turned[kLanes];
#pragma GCC unroll 8
    for (int i = 0; i < 8; ++i) {
      turned[2 * i] =
          __builtin_shufflevector(rows[i], rows[i + 8], 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
      turned[2 * i + 1] =
          __builtin_shufflevector(rows[i], rows[i + 8], 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    }
#pragma GCC unroll 16
    for (int i = 0; i < kLanes; ++i) rows[i] = turned[i];
  }
}

}  // namespace

template <>
void ShortForms<kLevel>::Stage(const uint8_t *const *rows, ptrdiff_t first, ptrdiff_t count, float *staged) {
  ptrdiff_t i = 0;
  for (; i + kLanes <= count; i += kLanes) {
    Bytes turned[kLanes];
#pragma GCC unroll 16
    for (int row = 0; row < kLanes; ++row) turned[row] = LoadBytes16(rows[row] + first + i);
    if (i % kLine == 0) {
#pragma GCC unroll 16
      for (int row = 0; row < kLanes; ++row) __builtin_prefetch(rows[row] + first + i + kReadsAhead);
    }
    Turn(turned);
#pragma GCC unroll 16
    for (int byte = 0; byte < kLanes; ++byte) Store(staged + (i + byte) * kLanes, Widen(turned[byte]));
  }
  for (; i < count; ++i) {
    for (int row = 0; row < kLanes; ++row) staged[i * kLanes + row] = static_cast<float>(rows[row][first + i] - 128);
  }
}

template <>
void ShortForms<kLevel>::TurnBack(const uint8_t *columns, ptrdiff_t count, uint8_t *const *rows) {
  ptrdiff_t i = 0;
  for (; i + kLanes <= count; i += kLanes) {
    Bytes turned[kLanes];
#pragma GCC unroll 16
    for (int byte = 0; byte < kLanes; ++byte) turned[byte] = LoadBytes16(columns + (i + byte) * kLanes);
    if (i % kLine == 0) {
#pragma GCC unroll 16
      for (int row = 0; row < kLanes; ++row) __builtin_prefetch(rows[row] + i + kWritesAhead, 1);
    }
    Turn(turned);
#pragma GCC unroll 16
    for (int row = 0; row < kLanes; ++row) StoreBytes16(rows[row] + i, turned[row]);
  }
  for (; i < count; ++i) {
    for (int row = 0; row < kLanes; ++row) rows[row][i] = columns[i * kLanes + row];
  }
}

template <>
void ShortForms<kLevel>::Mix(const GrayMix &mix) {
  const float *column = mix.staged;
  float *mixed = mix.mixed;
  for (ptrdiff_t i = 0; i < mix.columns; ++i) {
    const auto sample = [&](int32_t place) { return Load(column + ptrdiff_t{place} * kLanes); };
    Lanes gray = Times(sample(mix.colours[0]), All(0.3F));
    gray = MultiplyAdd(gray, sample(mix.colours[1]), All(0.59F));
    gray = MultiplyAdd(gray, sample(mix.colours[2]), All(0.11F));
    Store(mixed, gray);
    if (mix.mixedChannels == 2) Store(mixed + kLanes, sample(mix.alpha));
    column += ptrdiff_t{mix.channels} * kLanes;
    mixed += ptrdiff_t{mix.mixedChannels} * kLanes;
  }
}

// --- columns ---

namespace {

// True if all samples of the list's columns are the same byte.
[[gnu::noinline]] bool IsFlat(const float *samples, ptrdiff_t step, int32_t count) {
  bool isFlat = true;
  for (int32_t t = 0; t < count && isFlat; ++t) {
    for (int32_t i = 0; i < kLanes; ++i) isFlat = isFlat && samples[t * step + i] == samples[0];
  }
  return isFlat;
}

// A group that is not sure. Of flat areas, where every group may lie on an edge, one lane is summed for all.
[[gnu::noinline]] void RedoColumn(const ShortColumns &columns, const ShortList &list, int32_t x, int32_t value,
                                  uint8_t *values) {
  const ScaleTapList &told = columns.lists->Told(x);
  if (columns.mix != nullptr && value == 0) {
    SumGrayAsTold(told, columns.rounding, *columns.mix, columns.firstColumn, values);
    return;
  }
  const ptrdiff_t step = ptrdiff_t{columns.channels} * kLanes;
  const float *first = columns.staged + ptrdiff_t{columns.from[value]} * kLanes;
  const float *samples = first + ptrdiff_t{list.source - columns.firstColumn} * step;
  if (list.count > 0 && IsFlat(samples, step, list.count)) {
    double sum = 0.0;
    const double sample = static_cast<double>(*samples) + 128.0;
    for (int32_t t = 0; t < told.TapCount; ++t) sum += sample * double{told.Taps[t].Weight};
    std::memset(values, Finish<uint8_t>(sum, told.WeightSum, columns.rounding), kLanes);
    return;
  }
  SumAsTold(
      told, columns.rounding, [&](int32_t column) { return first + ptrdiff_t{column - columns.firstColumn} * step; },
      values);
}

template <int32_t kValues>
void SumColumnsOf(const ShortColumns &columns) {
  constexpr int32_t kChains = ColumnChains(kValues);
  const ptrdiff_t step = ptrdiff_t{columns.channels} * kLanes;
  ptrdiff_t from[kValues], place[kValues];
  for (int32_t v = 0; v < kValues; ++v) {
    from[v] = ptrdiff_t{columns.from[v]} * kLanes;
    place[v] = ptrdiff_t{columns.place[v]} * kLanes;
  }
  uint8_t *values = columns.values;
  for (int32_t x = columns.first; x < columns.end; ++x, values += ptrdiff_t{columns.stride} * kLanes) {
    const ShortList &list = (*columns.lists)[x];
    const float *weights = columns.lists->WeightsOf(list);
    const float *column = columns.staged + ptrdiff_t{list.source - columns.firstColumn} * step;
    Lanes sums[kChains][kValues];
    for (int32_t chain = 0; chain < kChains; ++chain) {
      for (int32_t v = 0; v < kValues; ++v) sums[chain][v] = All(0.0F);
    }
    for (int32_t t = 0; t < list.count; t += kChains) {
#pragma GCC unroll 4
      for (int32_t chain = 0; chain < kChains; ++chain) {
        for (int32_t v = 0; v < kValues; ++v) {
          sums[chain][v] = MultiplyAdd(sums[chain][v], Load(column + from[v]), All(weights[chain]));
        }
        column += step;
      }
      weights += kChains;
    }
    for (int32_t v = 0; v < kValues; ++v) {
      for (int32_t chain = 1; chain < kChains; ++chain) sums[0][v] = Plus(sums[0][v], sums[chain][v]);
      const Lanes value = Plus(sums[0][v], All(list.start));
      if (!FinishSure(value, All(list.spread), values + place[v])) [[unlikely]] {
        RedoColumn(columns, list, x, v, values + place[v]);
      }
    }
  }
}

}  // namespace

template <>
void ShortForms<kLevel>::SumColumns(const ShortColumns &columns, int32_t values) {
  WithValues(values, [&](auto count) { SumColumnsOf<count()>(columns); });
}

// --- columns of one row ---

template <>
void ShortForms<kLevel>::StageOnePlane(const PlaneStage &stage) {
  float *staged = stage.staged;
  for (ptrdiff_t i = 0; i < stage.count; i += kLanes, staged += ptrdiff_t{stage.channels} * kLanes) {
    Store(staged, Widen(LoadBytes16(stage.bytes + i)));
  }
}

namespace {

// One value as told.
[[gnu::noinline]] uint8_t RedoDot(const ShortColumns &columns, int32_t x, int32_t value) {
  using enum ScaleValues;
  const ScaleTapList &told = columns.lists->Told(x);
  const bool isMixed = columns.mix != nullptr && value == 0;
  const float *staged = columns.mix != nullptr ? columns.mix->staged : columns.staged;
  const int32_t channels = columns.mix != nullptr ? columns.mix->channels : columns.channels;
  const int32_t place = columns.mix != nullptr ? columns.mix->alpha : columns.from[value];
  double sums[1] = {};
  for (int32_t t = 0; t < told.TapCount; ++t) {
    const ptrdiff_t column = told.Taps[t].SourceIndex - columns.firstColumn;
    const auto sample = [&](int32_t channel) {
      return static_cast<double>(staged[(column / kLanes * channels + channel) * kLanes + column % kLanes]) + 128.0;
    };
    if (isMixed) {
      double samples[3];
      for (int32_t c = 0; c < 3; ++c) {
        samples[c] = sample(columns.mix->colours[c]) * SamplePart<kGrayOfColour>(c);
      }
      AddTap<3, kGrayOfColour, 1>(samples, told.Taps[t].Weight, sums);
    } else {
      sums[0] += sample(place) * double{told.Taps[t].Weight};
    }
  }
  return static_cast<uint8_t>(Finish<uint8_t>(sums[0], told.WeightSum, columns.rounding));
}

template <int32_t kValues>
void SumDotsOf(const ShortColumns &columns) {
  const ptrdiff_t step = ptrdiff_t{columns.channels} * kLanes;
  for (int32_t first = columns.first; first < columns.end; first += kLanes) {
    const int32_t count = std::min(kLanes, columns.end - first);
    Quarter folded[kValues][kLanes];
    float starts[kLanes] = {}, spreads[kLanes] = {};
    for (int32_t i = 0; i < kLanes; ++i) {
      const ShortList &list = (*columns.lists)[first + std::min(i, count - 1)];
      starts[i] = list.start;
      spreads[i] = list.spread;
      const float *weights = columns.lists->WeightsOf(list);
      const float *column = columns.staged + ptrdiff_t{list.source - columns.firstColumn} / kLanes * step;
      Lanes sums[kValues];
      for (int32_t v = 0; v < kValues; ++v) sums[v] = All(0.0F);
      for (int32_t t = 0; t < list.count; t += kLanes, column += step) {
        const Lanes ofColumns = Load(weights + t);
        for (int32_t v = 0; v < kValues; ++v) {
          sums[v] = MultiplyAdd(sums[v], Load(column + ptrdiff_t{columns.from[v]} * kLanes), ofColumns);
        }
      }
      for (int32_t v = 0; v < kValues; ++v) folded[v][i] = Folded(sums[v]);
    }
    uint8_t *values = columns.values + ptrdiff_t{first - columns.first} * columns.stride;
    for (int32_t v = 0; v < kValues; ++v) {
      alignas(64) Quarter sums[kLanes / 4];
      for (int32_t i = 0; i < kLanes; i += 4) {
        sums[i / 4] = SumOfEach(folded[v][i], folded[v][i + 1], folded[v][i + 2], folded[v][i + 3]);
      }
      alignas(16) uint8_t made[kLanes];
      const Lanes value = Plus(Load(reinterpret_cast<const float *>(sums)), Load(starts));
      const bool areSure = FinishSure(value, Load(spreads), made);
      uint8_t *to = values + columns.place[v];
      for (int32_t i = 0; i < count; ++i) {
        to[ptrdiff_t{i} * columns.stride] = areSure ? made[i] : RedoDot(columns, first + i, v);
      }
    }
  }
}

}  // namespace

template <>
void ShortForms<kLevel>::SumDots(const ShortColumns &columns, int32_t values) {
  WithValues(values, [&](auto count) { SumDotsOf<count()>(columns); });
}

// --- rows ---

namespace {

// One row's samples of the block as floats less 128.
ZVK_INLINE void WidenRow(const ShortRows &rows, const uint8_t *row, float *widened) {
  const int32_t pixels = rows.count / rows.samples;
  int32_t done = 0;
  if (rows.samples == rows.bytes) {
    for (; done + kLanes <= rows.count; done += kLanes) Store(widened + done, Widen(LoadBytes16(row + done)));
    for (; done < rows.count; ++done) widened[done] = static_cast<float>(row[done] - 128);
    return;
  }
  for (int32_t pixel = 0; pixel < pixels; ++pixel) {
    for (int32_t s = 0; s < rows.samples; ++s) *widened++ = static_cast<float>(row[rows.places[s]] - 128);
    row += rows.bytes;
  }
}

// A whole block of pixels of four bytes, of which the first three count.
ZVK_INLINE void WidenThreeOfFour(const uint8_t *row, float *widened) {
  constexpr int32_t kVectors = kBlockSamples / 12;
  alignas(64) uint8_t samples[kBlockSamples + kLanes];
#pragma GCC unroll 8
  for (int32_t i = 0; i < kVectors; ++i) StoreBytes16(samples + 12 * i, ThreeOfFour(LoadBytes16(row + 16 * i)));
#pragma GCC unroll 6
  for (int32_t i = 0; i < kBlockSamples; i += kLanes) Store(widened + i, Widen(LoadBytes16(samples + i)));
}

// A whole block of samples side by side.
ZVK_INLINE void WidenBlock(const uint8_t *row, float *widened) {
#pragma GCC unroll 6
  for (int32_t i = 0; i < kBlockSamples; i += kLanes) Store(widened + i, Widen(LoadBytes16(row + i)));
}

[[gnu::noinline]] void RedoRow(const ShortRows &rows, int32_t y, int32_t group, uint8_t *values) {
  const float *ring = rows.ring + ptrdiff_t{group} * kLanes;
  SumAsTold(
      rows.lists->Told(y), 0.5,
      [&](int32_t row) { return ring + ptrdiff_t{row & (rows.ringRows - 1)} * kBlockSamples; }, values);
}

template <int32_t kGroups>
ZVK_INLINE void SumRingRows(const ShortRows &rows, int32_t y, int32_t firstGroup, uint8_t *to) {
  const ShortList &list = (*rows.lists)[y];
  const float *weights = rows.lists->WeightsOf(list);
  const int32_t mask = rows.ringRows - 1;
  const float *ring = rows.ring + ptrdiff_t{firstGroup} * kLanes;
  Lanes sums[kGroups];
  for (int32_t g = 0; g < kGroups; ++g) sums[g] = All(0.0F);
  for (int32_t t = 0; t < list.count; ++t) {
    const float *row = ring + ptrdiff_t{(list.source + t) & mask} * kBlockSamples;
    for (int32_t g = 0; g < kGroups; ++g) sums[g] = MultiplyAdd(sums[g], Load(row + g * kLanes), All(weights[t]));
  }
  // The start comes last: a sum that began with it could be larger than the bound allows for on its way.
  for (int32_t g = 0; g < kGroups; ++g) sums[g] = Plus(sums[g], All(list.start));
  const Lanes spread = All(list.spread);
  if (FinishSure(sums, spread, to)) [[likely]]
    return;
  for (int32_t g = 0; g < kGroups; ++g) {
    if (!FinishSure(sums[g], spread, to + g * kLanes)) RedoRow(rows, y, firstGroup + g, to + g * kLanes);
  }
}

}  // namespace

template <>
void ShortForms<kLevel>::SumRows(const ShortRows &rows) {
  constexpr int32_t kGroups = kBlockSamples / kLanes;
  const ptrdiff_t size = ptrdiff_t{rows.count} / rows.samples * rows.bytes;
  const bool isWhole = rows.count == kBlockSamples;
  const bool isSideBySide = rows.samples == rows.bytes;
  const bool isThreeOfFour =
      rows.bytes == 4 && rows.samples == 3 && rows.places[0] == 0 && rows.places[1] == 1 && rows.places[2] == 2;
  // A list may begin above the one before it.
  int32_t ready = INT32_MAX;
  for (int32_t y = rows.first; y < rows.end; ++y) {
    const ShortList &list = (*rows.lists)[y];
    if (list.count > 0) ready = std::min(ready, list.source);
  }
  const int32_t groups = (rows.count + kLanes - 1) / kLanes;
  for (int32_t y = rows.first; y < rows.end; ++y) {
    const ShortList &list = (*rows.lists)[y];
    for (; ready < list.source + list.count; ++ready) {
      const uint8_t *row = rows.rows[ready] + rows.at;
      float *widened = rows.ring + ptrdiff_t{ready & (rows.ringRows - 1)} * kBlockSamples;
      const uint8_t *ahead = rows.rows[std::min(ready + kRowsAhead, rows.lastRow)] + rows.at;
      AskForTwoLines<false>(ahead, size);
      if (isWhole && isThreeOfFour) {
        WidenThreeOfFour(row, widened);
      } else if (isWhole && isSideBySide) {
        WidenBlock(row, widened);
      } else {
        WidenRow(rows, row, widened);
      }
    }
    uint8_t *to = rows.to[y - rows.first];
    const uint8_t *written = rows.to[std::min(y + kRowsAhead, rows.end - 1) - rows.first];
    AskForTwoLines<true>(written, rows.count);
    if (groups == kGroups) {
      SumRingRows<kGroups>(rows, y, 0, to);
    } else {
      for (int32_t g = 0; g < groups; ++g) SumRingRows<1>(rows, y, g, to + g * kLanes);
    }
  }
}

// --- wide samples ---

namespace {

using Words = uint16_t __attribute__((vector_size(16)));
using FourPairs = int32_t __attribute__((vector_size(16)));

ZVK_INLINE Words LoadWords(const void *words) {
  Words loaded;
  std::memcpy(&loaded, words, sizeof loaded);
  return loaded;
}

// A wide sample less 32768.
ZVK_INLINE int32_t WideSample(const uint8_t *address) {
  uint16_t sample;
  std::memcpy(&sample, address, sizeof sample);
  return sample - 32768;
}

// Eight rows of eight words turned.
ZVK_INLINE void Turn(Words (&rows)[8]) {
#pragma GCC unroll 3
  for (int step = 0; step < 3; ++step) {
    Words turned[8];
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i) {
      turned[2 * i] = __builtin_shufflevector(rows[i], rows[i + 4], 0, 8, 1, 9, 2, 10, 3, 11);
      turned[2 * i + 1] = __builtin_shufflevector(rows[i], rows[i + 4], 4, 12, 5, 13, 6, 14, 7, 15);
    }
#pragma GCC unroll 8
    for (int i = 0; i < 8; ++i) rows[i] = turned[i];
  }
}

// Four rows of four pairs turned.
ZVK_INLINE void Turn(FourPairs (&rows)[4]) {
  const FourPairs even = __builtin_shufflevector(rows[0], rows[2], 0, 4, 1, 5),
                  evenBehind = __builtin_shufflevector(rows[0], rows[2], 2, 6, 3, 7),
                  odd = __builtin_shufflevector(rows[1], rows[3], 0, 4, 1, 5),
                  oddBehind = __builtin_shufflevector(rows[1], rows[3], 2, 6, 3, 7);
  rows[0] = __builtin_shufflevector(even, odd, 0, 4, 1, 5);
  rows[1] = __builtin_shufflevector(even, odd, 2, 6, 3, 7);
  rows[2] = __builtin_shufflevector(evenBehind, oddBehind, 0, 4, 1, 5);
  rows[3] = __builtin_shufflevector(evenBehind, oddBehind, 2, 6, 3, 7);
}

}  // namespace

template <>
void ShortForms<kLevel>::StageWideSamples(const WordStage &stage) {
  constexpr int32_t kAtOnce = 8;
  int32_t done = 0;
  for (; stage.pixelSize == 2 && done + kAtOnce <= stage.count; done += kAtOnce) {
    const ptrdiff_t at = stage.first + ptrdiff_t{done} * 2;
    int32_t *to = stage.pairs + ptrdiff_t{done / 2} * kLanes;
#pragma GCC unroll 4
    for (int32_t row = 0; row < kLanes; row += 4) {
      FourPairs pairs[4];
      for (int32_t i = 0; i < 4; ++i) {
        pairs[i] = (FourPairs)(LoadWords(stage.rows[row + i] + at) ^ 0x8000);
        __builtin_prefetch(stage.rows[row + i] + at + kReadsAhead);
      }
      Turn(pairs);
      for (int32_t i = 0; i < 4; ++i) std::memcpy(to + ptrdiff_t{i} * kLanes + row, &pairs[i], sizeof pairs[i]);
    }
  }
  for (; done < stage.count; done += 2) {
    const ptrdiff_t at = stage.first + ptrdiff_t{done} * stage.pixelSize;
    for (int32_t row = 0; row < kLanes; ++row) {
      const int32_t even = WideSample(stage.rows[row] + at);
      const int32_t odd = done + 1 < stage.count ? WideSample(stage.rows[row] + at + stage.pixelSize) : 0;
      stage.pairs[ptrdiff_t{done / 2} * kLanes + row] =
          static_cast<int32_t>(uint32_t{static_cast<uint16_t>(even)} | static_cast<uint32_t>(odd) << 16);
    }
  }
}

namespace {

// The lanes of a group that are not sure, each as told. sampleOf(position, lane) is a sample less 32768.
template <class SampleOf>
ZVK_INLINE void RedoWords(const ScaleTapList &told, double rounding, uint32_t unsure, SampleOf sampleOf,
                          uint16_t *values) {
  for (; unsure != 0; unsure &= unsure - 1) {
    const auto lane = static_cast<int32_t>(std::countr_zero(unsure));
    double sum = 0.0;
    for (int32_t t = 0; t < told.TapCount; ++t) {
      sum += static_cast<double>(sampleOf(told.Taps[t].SourceIndex, lane) + 32768) * double{told.Taps[t].Weight};
    }
    values[lane] = static_cast<uint16_t>(Finish<uint16_t>(sum, told.WeightSum, rounding));
  }
}

[[gnu::noinline]] void RedoWordColumn(const WordColumns &columns, int32_t x, uint32_t unsure, uint16_t *values) {
  RedoWords(
      columns.lists->Told(x), columns.rounding, unsure,
      [&](int32_t position, int32_t lane) {
        const int32_t column = position - columns.firstColumn;
        return columns.pairs[ptrdiff_t{column / 2} * kLanes + lane] << (column % 2 != 0 ? 0 : 16) >> 16;
      },
      values);
}

}  // namespace

template <>
void ShortForms<kLevel>::SumWideColumns(const WordColumns &columns) {
  uint16_t *values = columns.values;
  for (int32_t x = columns.first; x < columns.end; ++x, values += kLanes) {
    const WordList &list = (*columns.lists)[x];
    const WordWeights *weights = columns.lists->WeightsOf(list);
    const int32_t *pairs = columns.pairs + ptrdiff_t{list.pair - columns.firstColumn / 2} * kLanes;
    Pairs upper = AllPairs(list.start), lower = AllPairs(0);
    for (int32_t p = 0; p < list.pairs; ++p, pairs += kLanes) {
      const Pairs samples = LoadPairs(pairs);
      upper = AddProducts(upper, samples, AllPairs(weights[p].upper));
      lower = AddProducts(lower, samples, AllPairs(weights[p].lower));
    }
    const uint32_t unsure = FinishWords(upper, lower, list.shift, list.edge, values);
    if (unsure != 0) [[unlikely]]
      RedoWordColumn(columns, x, unsure, values);
  }
}

template <>
void ShortForms<kLevel>::TurnBackWords(const uint16_t *columns, ptrdiff_t count, uint8_t *const *rows) {
  constexpr int kAtOnce = 8;
  ptrdiff_t i = 0;
  for (; i + kAtOnce <= count; i += kAtOnce) {
    for (int row = 0; row < kLanes; row += kAtOnce) {
      Words turned[kAtOnce];
#pragma GCC unroll 8
      for (int word = 0; word < kAtOnce; ++word) turned[word] = LoadWords(columns + (i + word) * kLanes + row);
      if (i % (kLine / 2) == 0) {
#pragma GCC unroll 8
        for (int word = 0; word < kAtOnce; ++word) __builtin_prefetch(rows[row + word] + 2 * i + kWritesAhead, 1);
      }
      Turn(turned);
#pragma GCC unroll 8
      for (int word = 0; word < kAtOnce; ++word) std::memcpy(rows[row + word] + 2 * i, &turned[word], sizeof(Words));
    }
  }
  for (; i < count; ++i) {
    for (int row = 0; row < kLanes; ++row) std::memcpy(rows[row] + 2 * i, columns + i * kLanes + row, 2);
  }
}

namespace {

[[gnu::noinline]] void RedoWordRow(const WordRows &rows, int32_t y, ptrdiff_t at, uint32_t unsure, uint16_t *values) {
  RedoWords(
      rows.lists->Told(y), kRoundToNearest, unsure,
      [&](int32_t row, int32_t lane) { return WideSample(rows.rows[row] + at + ptrdiff_t{lane} * 2); }, values);
}

// kGroups times kLanes samples of an output row.
template <int32_t kGroups>
ZVK_INLINE void SumWideGroups(const WordRows &rows, int32_t y, int32_t sample) {
  const WordList &list = (*rows.lists)[y];
  const WordWeights *weights = rows.lists->WeightsOf(list);
  const ptrdiff_t at = rows.at + ptrdiff_t{sample} * 2;
  Pairs upper[kGroups], lower[kGroups];
  for (int32_t g = 0; g < kGroups; ++g) {
    upper[g] = AllPairs(list.start);
    lower[g] = AllPairs(0);
  }
  for (int32_t p = 0; p < list.pairs; ++p) {
    // A row behind the last one counts nothing.
    const uint8_t *even = rows.rows[2 * (list.pair + p)] + at;
    const uint8_t *odd = rows.rows[std::min(2 * (list.pair + p) + 1, rows.lastRow)] + at;
    for (int32_t g = 0; g < kGroups; ++g) {
      const Pairs samples = PairsOf(even + ptrdiff_t{g} * kLanes * 2, odd + ptrdiff_t{g} * kLanes * 2);
      upper[g] = AddProducts(upper[g], samples, AllPairs(weights[p].upper));
      lower[g] = AddProducts(lower[g], samples, AllPairs(weights[p].lower));
    }
  }
  for (int32_t g = 0; g < kGroups; ++g) {
    const ptrdiff_t from = ptrdiff_t{sample + g * kLanes} * 2;
    uint8_t *to = rows.to[y - rows.first] + from;
    alignas(32) uint16_t values[kLanes];
    const uint32_t unsure = FinishWords(upper[g], lower[g], list.shift, list.edge, values);
    if (unsure != 0) [[unlikely]]
      RedoWordRow(rows, y, rows.at + from, unsure, values);
    std::memcpy(to, values, sizeof values);
  }
}

}  // namespace

template <>
void ShortForms<kLevel>::SumWideRows(const WordRows &rows) {
  constexpr int32_t kGroups = 2;
  int32_t asked = INT32_MAX;
  for (int32_t y = rows.first; y < rows.end; ++y) {
    const WordList &list = (*rows.lists)[y];
    if (list.pairs > 0) asked = std::min(asked, 2 * list.pair);
  }
  for (int32_t y = rows.first; y < rows.end; ++y) {
    const WordList &list = (*rows.lists)[y];
    const int32_t reach = std::min(2 * (list.pair + list.pairs) + kRowsAhead, rows.lastRow + 1);
    const uint8_t *written = rows.to[std::min(y + kRowsAhead, rows.end - 1) - rows.first];
    for (ptrdiff_t line = kLine; line <= ptrdiff_t{rows.count} * 2; line += 2 * kLine) {
      for (int32_t row = asked; row < reach; ++row)
        AskForTwoLines<false>(rows.rows[row] + rows.at + line - kLine, 2 * kLine);
      AskForTwoLines<true>(written + line - kLine, 2 * kLine);
    }
    asked = std::max(asked, reach);
    int32_t sample = 0;
    for (; sample + kGroups * kLanes <= rows.count; sample += kGroups * kLanes) SumWideGroups<kGroups>(rows, y, sample);
    for (; sample + kLanes <= rows.count; sample += kLanes) SumWideGroups<1>(rows, y, sample);
    // The last group takes in samples of the one before it again.
    if (sample < rows.count) SumWideGroups<1>(rows, y, rows.count - kLanes);
  }
}

}  // namespace zvk::scaling

#undef ZVK_INLINE
