#include "scaling/digit_kernels.h"

#include <immintrin.h>

#include <algorithm>
#include <cstring>

#include "pixels/loop_steps.h"
#include "scaling/scale_kernels.h"
#include "scaling/short_lanes.h"

namespace zvk::scaling {

bool HasDigitSums() {
  return ChosenLevel() == CpuLevel::AVX512 && __builtin_cpu_supports("avx512vnni") &&
         __builtin_cpu_supports("avx512vbmi");
}

}  // namespace zvk::scaling

// The compiler's own header leaves values open that count nothing.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC target("avx2,fma,bmi,bmi2,avx512f,avx512bw,avx512dq,avx512vl,avx512vnni,avx512vbmi")

namespace zvk::scaling {

namespace {

// Sixteen rows of sixteen numbers turned.
[[gnu::always_inline]] inline void Turn(__m512i (&rows)[kLanes]) {
  __m512i turned[kLanes];
#pragma GCC unroll 8
  for (int i = 0; i < kLanes; i += 2) {
    turned[i] = _mm512_unpacklo_epi32(rows[i], rows[i + 1]);
    turned[i + 1] = _mm512_unpackhi_epi32(rows[i], rows[i + 1]);
  }
#pragma GCC unroll 4
  for (int i = 0; i < kLanes; i += 4) {
    rows[i] = _mm512_unpacklo_epi64(turned[i], turned[i + 2]);
    rows[i + 1] = _mm512_unpackhi_epi64(turned[i], turned[i + 2]);
    rows[i + 2] = _mm512_unpacklo_epi64(turned[i + 1], turned[i + 3]);
    rows[i + 3] = _mm512_unpackhi_epi64(turned[i + 1], turned[i + 3]);
  }
  // Quarter q of vector 4r + c holds number 4q + c of rows 4r to 4r + 3.
#pragma GCC unroll 4
  for (int c = 0; c < 4; ++c) {
    constexpr int kEven = 0x88, kOdd = 0xDD;
    const __m512i upperEven = _mm512_shuffle_i32x4(rows[c], rows[4 + c], kEven),
                  upperOdd = _mm512_shuffle_i32x4(rows[c], rows[4 + c], kOdd),
                  lowerEven = _mm512_shuffle_i32x4(rows[8 + c], rows[12 + c], kEven),
                  lowerOdd = _mm512_shuffle_i32x4(rows[8 + c], rows[12 + c], kOdd);
    turned[c] = _mm512_shuffle_i32x4(upperEven, lowerEven, kEven);
    turned[8 + c] = _mm512_shuffle_i32x4(upperEven, lowerEven, kOdd);
    turned[4 + c] = _mm512_shuffle_i32x4(upperOdd, lowerOdd, kEven);
    turned[12 + c] = _mm512_shuffle_i32x4(upperOdd, lowerOdd, kOdd);
  }
#pragma GCC unroll 16
  for (int i = 0; i < kLanes; ++i) rows[i] = turned[i];
}

uint8_t ByteOf(const uint32_t *quads, ptrdiff_t column, int32_t samples, int32_t row) {
  const ptrdiff_t quad = column / kColumnsOfQuad;
  return static_cast<uint8_t>(quads[quad * samples * kLanes + row] >> 8 * (column % kColumnsOfQuad));
}

// A group that is not sure, in double and in the told order. Of flat areas, where every group may lie on an edge, one
// lane is summed for all.
[[gnu::noinline]] void RedoColumn(const DigitColumns &columns, int32_t x, const uint32_t *quads, int32_t samples,
                                  uint8_t *values) {
  const ScaleTapList &told = columns.lists->Told(x);
  double sums[kLanes] = {};
  bool isFlat = true;
  const uint8_t first = told.TapCount > 0 ? ByteOf(quads, FirstIndex(told) - columns.firstColumn, samples, 0) : 0;
  const __m512i flat = _mm512_set1_epi32(first), low = _mm512_set1_epi32(255);
  for (int32_t t = 0; t < told.TapCount && isFlat; ++t) {
    const ptrdiff_t column = told.Taps[t].SourceIndex - columns.firstColumn;
    const __m512i four = _mm512_loadu_si512(quads + column / kColumnsOfQuad * samples * kLanes);
    const auto shift = static_cast<unsigned>(8 * (column % kColumnsOfQuad));
    const __m512i bytes = _mm512_and_si512(_mm512_srli_epi32(four, shift), low);
    isFlat = _mm512_cmpneq_epi32_mask(bytes, flat) == 0;
  }
  if (isFlat) {
    double sum = 0.0;
    for (int32_t t = 0; t < told.TapCount; ++t) sum += static_cast<double>(first) * double{told.Taps[t].Weight};
    std::memset(values, Finish<uint8_t>(sum, told.WeightSum, columns.rounding), kLanes);
    return;
  }
  for (int32_t t = 0; t < told.TapCount; ++t) {
    OneStepAtATime();
    const ptrdiff_t column = told.Taps[t].SourceIndex - columns.firstColumn;
    const uint32_t *four = quads + column / kColumnsOfQuad * samples * kLanes;
    const auto shift = static_cast<int32_t>(8 * (column % kColumnsOfQuad));
    const double weight = told.Taps[t].Weight;
    for (int32_t i = 0; i < kLanes; ++i)
      sums[i] += static_cast<double>(static_cast<int32_t>(four[i] >> shift & 255)) * weight;
  }
  FinishAll<kLanes>(sums, kLanes, told.WeightSum, columns.rounding, values);
}

// Adds the sums of products of four bytes. The empty statement ties the sums to their register, or the compiler moves
// them back and forth in every step.
[[gnu::always_inline]] inline void AddProducts(__m512i &sums, __m512i four, __m512i digits) {
  sums = _mm512_dpbusd_epi32(sums, four, digits);
#ifndef __clang__  // which checks this file and does not know its registers
  asm("" : "+v"(sums));
#endif
}

template <int32_t kSamples>
void SumColumnsOf(const DigitColumns &columns) {
  const __m512i fraction = _mm512_set1_epi32((1 << kDigitBits) - 1);
  const int32_t firstQuad = columns.firstColumn / kColumnsOfQuad;
  ptrdiff_t places[kSamples];
  for (int32_t s = 0; s < kSamples; ++s) places[s] = ptrdiff_t{columns.place[s]} * kLanes;
  uint8_t *values = columns.values;
  for (int32_t x = columns.first; x < columns.end; ++x, values += ptrdiff_t{columns.stride} * kLanes) {
    const DigitList list = (*columns.lists)[x];
    const int32_t *digits = columns.lists->WeightsOf(list);
    const uint32_t *quads = columns.quads + ptrdiff_t{list.quad - firstQuad} * kSamples * kLanes;
    // One sample has too few sums to keep the multipliers busy, so its groups take turns with two sets of them.
    constexpr int32_t kSets = kSamples == 1 ? 2 : 1;
    __m512i sums[kSets * kSamples][kDigits];
#pragma GCC unroll 5
    for (int32_t s = 0; s < kSets * kSamples; ++s) {
      sums[s][0] = s < kSamples ? _mm512_set1_epi32(list.start) : _mm512_setzero_si512();
      sums[s][1] = sums[s][2] = _mm512_setzero_si512();
    }
    const auto addQuad = [&](int32_t set) __attribute__((always_inline)) {
#pragma GCC unroll 5
      for (int32_t s = 0; s < kSamples; ++s) {
        const __m512i four = _mm512_loadu_si512(quads + ptrdiff_t{s} * kLanes);
#pragma GCC unroll 3
        for (int32_t d = 0; d < kDigits; ++d)
          AddProducts(sums[set * kSamples + s][d], four, _mm512_set1_epi32(digits[d]));
      }
      quads += ptrdiff_t{kSamples} * kLanes;
      digits += kDigits;
    };
    int32_t q = 0;
    for (; q + kSets <= list.quads; q += kSets) {
      for (int32_t set = 0; set < kSets; ++set) addQuad(set);
    }
    if (q < list.quads) addQuad(0);
    if constexpr (kSets == 2) {
      for (int32_t d = 0; d < kDigits; ++d) sums[0][d] = _mm512_add_epi32(sums[0][d], sums[1][d]);
    }
    const __m512i edge = _mm512_set1_epi32(list.edge), sure = _mm512_set1_epi32((1 << kDigitBits) - 2 * list.edge);
    __mmask16 unsure[kSamples];
    uint32_t anyUnsure = 0;
#pragma GCC unroll 5
    for (int32_t s = 0; s < kSamples; ++s) {
      const __m512i upper = _mm512_add_epi32(sums[s][1], _mm512_slli_epi32(sums[s][2], 8));
      const __m512i sum = _mm512_add_epi32(sums[s][0], _mm512_slli_epi32(upper, 8));
      const __m512i whole = _mm512_max_epi32(_mm512_srai_epi32(sum, kDigitBits), _mm512_setzero_si512());
      _mm_storeu_si128(reinterpret_cast<__m128i *>(values + places[s]), _mm512_cvtusepi32_epi8(whole));
      unsure[s] = _mm512_cmpgt_epi32_mask(_mm512_and_si512(_mm512_sub_epi32(sum, edge), fraction), sure);
      anyUnsure |= unsure[s];
    }
    if (anyUnsure == 0) [[likely]]
      continue;
    for (int32_t s = 0; s < kSamples; ++s) {
      if (unsure[s] != 0) RedoColumn(columns, x, columns.quads + ptrdiff_t{s} * kLanes, kSamples, values + places[s]);
    }
  }
}

}  // namespace

void StageQuads(const QuadStage &stage) {
  const int32_t pixelSize = stage.pixelSize;
  // As many groups of four pixels as a vector holds, and as their samples fill.
  const int32_t quads = std::min(kMostStaged / pixelSize / kColumnsOfQuad, kLanes / stage.samples);
  const int32_t pixels = quads * kColumnsOfQuad;
  const int32_t numbers = quads * stage.samples;
  alignas(64) std::array<uint8_t, 64> index{};
  for (int32_t i = 0; i < numbers * kColumnsOfQuad; ++i) {
    const int32_t number = i / kColumnsOfQuad, column = number / stage.samples * kColumnsOfQuad + i % kColumnsOfQuad;
    index[i] = static_cast<uint8_t>(column * pixelSize + stage.places[number % stage.samples]);
  }
  const __m512i order = _mm512_load_si512(index.data());
  constexpr ptrdiff_t kAhead = 512;
  uint32_t *to = stage.quads;
  for (int32_t x = stage.from; x < stage.end; x += pixels) {
    const int64_t there = int64_t{std::min(pixels, stage.end - x) - 1} * pixelSize + stage.span;
    const __mmask64 mask = there >= 64 ? ~uint64_t{0} : (uint64_t{1} << there) - 1;
    const ptrdiff_t at = stage.first + ptrdiff_t{x} * pixelSize;
    __m512i rows[kLanes];
#pragma GCC unroll 16
    for (int i = 0; i < kLanes; ++i) {
      rows[i] = _mm512_permutexvar_epi8(order, _mm512_maskz_loadu_epi8(mask, stage.rows[i] + at));
    }
#pragma GCC unroll 16
    for (int i = 0; i < kLanes; ++i) __builtin_prefetch(stage.rows[i] + at + kAhead);
    Turn(rows);
#pragma GCC unroll 16
    for (int i = 0; i < kLanes; ++i) {
      if (i < numbers) _mm512_storeu_si512(to + ptrdiff_t{i} * kLanes, rows[i]);
    }
    to += ptrdiff_t{numbers} * kLanes;
  }
}

void SumDigitColumns(const DigitColumns &columns, int32_t samples) {
  WithValues(samples, [&](auto count) { SumColumnsOf<count()>(columns); });
}

}  // namespace zvk::scaling
