#include "scaling/scale_kernels.h"

#include <cstring>

#include "pixels/loop_steps.h"

namespace zvk::scaling {

namespace {

// Finishes up to `Most` sums. The detour over whole numbers keeps each of its loops to one width of numbers.
template <int32_t Most, class Sample>
[[gnu::always_inline]] inline void FinishAll(const double *__restrict sums, int32_t count, double weightSum,
                                             double rounding, Sample *__restrict values) {
  int32_t whole[Most];
  for (int32_t i = 0; i < count; ++i) whole[i] = Finish<Sample>(sums[i], weightSum, rounding);
  for (int32_t i = 0; i < count; ++i) values[i] = static_cast<Sample>(whole[i]);
}

}  // namespace

// --- columns ---

namespace {

template <int32_t SampleCount, ScaleValues Values, int32_t Rows, class Sample>
[[gnu::always_inline]] inline void SumColumns(const ColumnSums<Sample> &columns) {
  constexpr int32_t kSums = ValueCount(SampleCount, Values) * Rows;
  constexpr ptrdiff_t kColumn = ptrdiff_t{SampleCount} * Rows;
  Sample *__restrict values = columns.values;
  for (int32_t x = 0; x < columns.count; ++x) {
    const ScaleTapList list = columns.lists[x];
    double sums[kSums] = {};
    // A weight that is 0 as a float is not skipped: it adds nothing.
    for (int32_t t = 0; t < list.TapCount; ++t) {
      OneStepAtATime();
      const ScaleTap tap = list.Taps[t];
      const ptrdiff_t column = tap.SourceIndex - columns.firstColumn;
      AddTap<SampleCount, Values, Rows>(columns.samples + column * kColumn, tap.Weight, sums);
    }
    FinishAll<kSums>(sums, kSums, list.WeightSum, columns.rounding, values);
    values += kSums;
  }
}

using enum ScaleValues;

// The kernels for each of these numbers of samples.
template <class Sample, ScaleValues Values, int32_t... SampleCounts>
constexpr ColumnKernel<Sample> kForOneRow[] = {KernelOf<SumColumns<SampleCounts, Values, 1, Sample>>...};
template <class Sample, ScaleValues Values, int32_t... SampleCounts>
constexpr ColumnKernel<Sample> kForBatch[] = {
    KernelOf<SumColumns<SampleCounts, Values, RowBatch(SampleCounts, Values), Sample>>...};

}  // namespace

template <>
const ColumnKernel<uint8_t> &ColumnSummation(int32_t sampleCount, ScaleValues values, int32_t rows) {
  if (values == kGrayOfColour) {
    constexpr auto &kRow = kForOneRow<uint8_t, kGrayOfColour, 3, 4>, &kBatch = kForBatch<uint8_t, kGrayOfColour, 3, 4>;
    return (rows == 1 ? kRow : kBatch)[sampleCount - 3];
  }
  constexpr auto &kRow = kForOneRow<uint8_t, kSamples, 1, 2, 3, 4, 5>,
                 &kBatch = kForBatch<uint8_t, kSamples, 1, 2, 3, 4, 5>;
  return (rows == 1 ? kRow : kBatch)[sampleCount - 1];
}

template <>
const ColumnKernel<uint16_t> &ColumnSummation(int32_t /*sampleCount*/, ScaleValues /*values*/, int32_t rows) {
  return (rows == 1 ? kForOneRow<uint16_t, kSamples, 1> : kForBatch<uint16_t, kSamples, 1>)[0];
}

// --- rows ---

namespace {

// Samples summed at once: what the registers hold.
constexpr int32_t kBlock = 32;

// `count` samples, at most kBlock, at a byte offset of all rows. A constant count makes straight code.
template <class Sample>
[[gnu::always_inline]] inline void SumBlock(const uint8_t *const *__restrict rows, const double *__restrict weights,
                                            int32_t rowCount, double weightSum, double rounding, int64_t offset,
                                            int32_t count, Sample *__restrict values) {
  double sums[kBlock] = {};
  for (int32_t k = 0; k < rowCount; ++k) {
    OneStepAtATime();
    const uint8_t *row = rows[k] + offset;
    const double weight = weights[k];
    for (int32_t i = 0; i < count; ++i) {
      Sample sample;
      std::memcpy(&sample, row + i * sizeof(Sample), sizeof(Sample));
      sums[i] += sample * weight;
    }
  }
  FinishAll<kBlock>(sums, count, weightSum, rounding, values);
}

template <class Sample>
[[gnu::always_inline]] inline void SumRows(const uint8_t *const *__restrict rows, const double *__restrict weights,
                                           int32_t rowCount, double weightSum, double rounding, int64_t count,
                                           Sample *__restrict values) {
  constexpr int64_t kSampleSize = sizeof(Sample);
  int64_t i = 0;
  for (; i + kBlock <= count; i += kBlock) {
    SumBlock(rows, weights, rowCount, weightSum, rounding, i * kSampleSize, kBlock, values + i);
  }
  if (i < count) {
    const auto rest = static_cast<int32_t>(count - i);
    SumBlock(rows, weights, rowCount, weightSum, rounding, i * kSampleSize, rest, values + i);
  }
}

}  // namespace

template <class Sample>
const RowKernel<Sample> &RowSummation() {
  return KernelOf<SumRows<Sample>>;
}

template const RowKernel<uint8_t> &RowSummation<uint8_t>();
template const RowKernel<uint16_t> &RowSummation<uint16_t>();

}  // namespace zvk::scaling
