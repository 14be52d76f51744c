#include "scaling/scale_kernels.h"

#include <cstring>

#include "image/kernel_clones.h"

namespace zvk {

template <int32_t SampleCount, ScaleValues Values, int32_t Rows, class Sample>
ZVK_KERNEL_CLONES void SumColumns(const double *__restrict samples, int32_t firstColumn,
                                  const ScaleTapList *__restrict lists, int32_t count, double rounding,
                                  Sample *__restrict values) {
  constexpr int32_t kSums = ValueCount(SampleCount, Values) * Rows;
  for (int32_t x = 0; x < count; ++x) {
    const ScaleTapList &list = lists[x];
    double sums[kSums] = {};
    for (int32_t t = 0; t < list.TapCount; ++t) {
      const ScaleTap tap = list.Taps[t];
      const ptrdiff_t column = tap.SourceIndex - firstColumn;
      AddTap<SampleCount, Values, Rows>(samples + column * (SampleCount * Rows), tap.Weight, sums);
    }
    const double weightSum = list.WeightSum;
    for (int32_t i = 0; i < kSums; ++i) values[i] = Finish<Sample>(sums[i], weightSum, rounding);
    values += kSums;
  }
}

namespace {

// Samples summed at once: what the registers hold.
constexpr int32_t kBlock = 32;

// `count` samples at a byte offset of all rows; a count known at compile time makes the loops straight.
template <class Sample>
[[gnu::always_inline]] inline void SumBlock(const uint8_t *const *__restrict rows, const double *__restrict weights,
                                            int32_t rowCount, double weightSum, double rounding, int64_t offset,
                                            int32_t count, Sample *__restrict values) {
  double sums[kBlock] = {};
  for (int32_t k = 0; k < rowCount; ++k) {
    const uint8_t *row = rows[k] + offset;
    const double weight = weights[k];
    for (int32_t i = 0; i < count; ++i) {
      Sample sample;
      std::memcpy(&sample, row + i * sizeof(Sample), sizeof(Sample));
      sums[i] += sample * weight;
    }
  }
  for (int32_t i = 0; i < count; ++i) values[i] = Finish<Sample>(sums[i], weightSum, rounding);
}

}  // namespace

template <class Sample>
ZVK_KERNEL_CLONES void SumRows(const uint8_t *const *__restrict rows, const double *__restrict weights,
                               int32_t rowCount, double weightSum, double rounding, int64_t count,
                               Sample *__restrict values) {
  int64_t i = 0;
  for (; i + kBlock <= count; i += kBlock) {
    SumBlock(rows, weights, rowCount, weightSum, rounding, i * int64_t{sizeof(Sample)}, kBlock, values + i);
  }
  if (i < count) {
    SumBlock(rows, weights, rowCount, weightSum, rounding, i * int64_t{sizeof(Sample)}, static_cast<int32_t>(count - i),
             values + i);
  }
}

// Every form that a pair needs, by one row and by a batch.
#define ZVK_SUM_COLUMNS(sampleCount, kind, Sample)                                                                   \
  template void SumColumns<sampleCount, ScaleValues::kind, 1, Sample>(const double *, int32_t, const ScaleTapList *, \
                                                                      int32_t, double, Sample *);                    \
  template void SumColumns<sampleCount, ScaleValues::kind, kRowBatch, Sample>(                                       \
      const double *, int32_t, const ScaleTapList *, int32_t, double, Sample *)
ZVK_SUM_COLUMNS(1, kSamples, uint8_t);
ZVK_SUM_COLUMNS(2, kSamples, uint8_t);
ZVK_SUM_COLUMNS(3, kSamples, uint8_t);
ZVK_SUM_COLUMNS(4, kSamples, uint8_t);
ZVK_SUM_COLUMNS(5, kSamples, uint8_t);
ZVK_SUM_COLUMNS(3, kGrayOfColour, uint8_t);
ZVK_SUM_COLUMNS(4, kGrayOfColour, uint8_t);
ZVK_SUM_COLUMNS(1, kSamples, uint16_t);
#undef ZVK_SUM_COLUMNS

template void SumRows<uint8_t>(const uint8_t *const *, const double *, int32_t, double, double, int64_t, uint8_t *);
template void SumRows<uint16_t>(const uint8_t *const *, const double *, int32_t, double, double, int64_t, uint16_t *);

}  // namespace zvk
