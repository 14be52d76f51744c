// The loops of a scale in short arithmetic: samples of sixteen rows, or sixteen samples of a row, in floats at once.
// They know nothing of images, only of samples side by side. A group of sixteen values of which one is not sure is
// summed again as told, in double, before the kernel goes on; so all bytes are the told ones.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "pixels/dispatch.h"
#include "scaling/scale_taps.h"
#include "scaling/short_lists.h"
#include "scaling/word_lists.h"

namespace zvk::scaling {

inline constexpr int32_t kLanes = 16;         // rows, or samples, of a group
inline constexpr int32_t kMostValues = 5;     // of a pixel
inline constexpr int32_t kMostChains = 4;     // partial sums of a value
inline constexpr int32_t kBlockSamples = 96;  // samples of a row that the vertical sums take at once

// How many partial sums the columns of so many values take: enough to keep the multipliers busy.
constexpr int32_t ColumnChains(int32_t values) { return values == 1 ? kMostChains : 2; }

// --- from bytes to floats and back ---

// `count` bytes of kLanes rows, from the byte `first` of each on, as floats less 128: kLanes of each byte side by side.
using StageKernel = Kernel<void(const uint8_t *const *rows, ptrdiff_t first, ptrdiff_t count, float *staged)>;
extern const StageKernel StageRows;

// The bytes of one of `channels` planes of a row as floats less 128, kLanes of them beside those of the other planes:
// `count` of them, a multiple of kLanes.
struct PlaneStage {
  const uint8_t *bytes;
  ptrdiff_t count;
  float *staged;  // where the first kLanes go
  int32_t channels;
};
using PlaneKernel = Kernel<void(const PlaneStage &stage)>;
extern const PlaneKernel StagePlane;

// Bytes of kLanes rows, kLanes of each place side by side, to the rows: `count` bytes from the start of each.
using TurnKernel = Kernel<void(const uint8_t *columns, ptrdiff_t count, uint8_t *const *rows)>;
extern const TurnKernel TurnToRows;

// Gray of staged columns of `channels` bytes: float(0.3) red + float(0.59) green + float(0.11) blue, of the bytes at
// the three places of each column, as the first of `mixedChannels` of another row of columns. The second one, if there
// is one, is the byte at `alpha`.
struct GrayMix {
  const float *staged;
  int32_t channels;
  std::array<int32_t, 3> colours;
  int32_t alpha;
  float *mixed;
  int32_t mixedChannels;
  ptrdiff_t columns;
};
using MixKernel = Kernel<void(const GrayMix &mix)>;
extern const MixKernel MixGray;

// --- sums of columns ---

// Output columns `first` to `end` - 1 of kLanes rows.
struct ShortColumns {
  const ShortLists *lists;
  double rounding;
  int32_t first;
  int32_t end;
  const float *staged;  // columns of `channels` x kLanes floats
  int32_t firstColumn;  // the number of the first of these
  int32_t channels;
  std::array<int32_t, kMostValues> from;  // where in a column each value is staged
  uint8_t *values;                        // `stride` x kLanes bytes for each output column
  int32_t stride;
  std::array<int32_t, kMostValues> place;  // which of these each value is
  // For gray that is mixed, the first value: the columns that it was mixed of.
  const GrayMix *mix;
};

// `values`: of a pixel, 1 to kMostValues.
using ColumnsKernel = Kernel<void(const ShortColumns &columns, int32_t values)>;
extern const ColumnsKernel ShortColumnSums;

// The same of one row, sixteen columns at once: as many columns of it stand where those of kLanes rows do, and each
// value is one byte. The lists are made for kLanes chains and aligned to as many columns, and so is the first column.
using DotsKernel = Kernel<void(const ShortColumns &columns, int32_t values)>;
extern const DotsKernel ShortDots;

// --- sums of rows ---

// Output rows `first` to `end` - 1 of up to kBlockSamples samples of a row. Every row is widened once, into a ring.
struct ShortRows {
  const ShortLists *lists;
  int32_t first;
  int32_t end;
  const uint8_t *const *rows;  // of the temp image, from its row 0 on; those that are read must be there
  int32_t lastRow;             // that is there
  ptrdiff_t at;                // of the first byte in each
  // How samples lie in a temp row: `samples` of every `bytes` bytes, at these places. They are equal where all count.
  int32_t bytes;
  int32_t samples;
  std::array<int32_t, kMostValues> places;
  int32_t count;       // samples, a multiple of `samples`
  float *ring;         // ringRows x kBlockSamples floats
  int32_t ringRows;    // a power of two, as many as any of the lists and the ones behind it reach at once
  uint8_t *const *to;  // for each output row where its samples go; room for kBlockSamples
};
using RowsKernel = Kernel<void(const ShortRows &rows)>;
extern const RowsKernel ShortRowSums;

// --- wide samples ---

// Wide samples of kLanes rows, less 32768, from column `from` on, an even one: two columns stand in one number, the
// even one in its lower half, these of all rows side by side.
struct WordStage {
  const uint8_t *const *rows;
  ptrdiff_t first;      // byte of the first sample in each
  ptrdiff_t pixelSize;  // from one to the next
  int32_t count;        // samples; an odd one is put beside anything
  int32_t *pairs;
};
using WordStageKernel = Kernel<void(const WordStage &stage)>;
extern const WordStageKernel StageWords;

// Output columns `first` to `end` - 1 of kLanes rows.
struct WordColumns {
  const WordLists *lists;
  double rounding;
  int32_t first;
  int32_t end;
  const int32_t *pairs;
  int32_t firstColumn;  // the number of the first column of these, an even one
  uint16_t *values;     // kLanes for each output column
};
using WordColumnsKernel = Kernel<void(const WordColumns &columns)>;
extern const WordColumnsKernel SumWordColumns;

// Words of kLanes rows, kLanes of each place side by side, to the rows: `count` words from the start of each.
using WordTurnKernel = Kernel<void(const uint16_t *columns, ptrdiff_t count, uint8_t *const *rows)>;
extern const WordTurnKernel TurnWordsToRows;

// Output rows `first` to `end` - 1 of `count` samples of a row, kLanes or more.
struct WordRows {
  const WordLists *lists;
  int32_t first;
  int32_t end;
  const uint8_t *const *rows;  // of the temp image, from its row 0 on; those that are read must be there
  int32_t lastRow;             // that is there
  ptrdiff_t at;                // of the first sample's byte in each
  int32_t count;
  uint8_t *const *to;  // for each output row where its samples go
};
using WordRowsKernel = Kernel<void(const WordRows &rows)>;
extern const WordRowsKernel SumWordRows;

// --- the forms ---

// Compiled by short_kernels_<level>.cpp from one body.
template <CpuLevel kLevel>
struct ShortForms {
  static void Stage(const uint8_t *const *rows, ptrdiff_t first, ptrdiff_t count, float *staged);
  static void TurnBack(const uint8_t *columns, ptrdiff_t count, uint8_t *const *rows);
  static void Mix(const GrayMix &mix);
  static void SumColumns(const ShortColumns &columns, int32_t values);
  static void StageOnePlane(const PlaneStage &stage);
  static void SumDots(const ShortColumns &columns, int32_t values);
  static void SumRows(const ShortRows &rows);
  static void StageWideSamples(const WordStage &stage);
  static void SumWideColumns(const WordColumns &columns);
  static void TurnBackWords(const uint16_t *columns, ptrdiff_t count, uint8_t *const *rows);
  static void SumWideRows(const WordRows &rows);
};

}  // namespace zvk::scaling
