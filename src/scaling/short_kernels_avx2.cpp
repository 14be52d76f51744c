// The short kernels for AVX2 with fused products.
#include <immintrin.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include "pixels/loop_steps.h"
#include "scaling/scale_kernels.h"
#include "scaling/short_kernels.h"
#include "scaling/short_lanes.h"

#pragma GCC target("avx2,fma,bmi,bmi2")

namespace zvk::scaling {
namespace {

constexpr CpuLevel kLevel = CpuLevel::AVX2;

struct Lanes {
  __m256 low;
  __m256 high;
};

[[gnu::always_inline]] inline Lanes All(float value) { return {_mm256_set1_ps(value), _mm256_set1_ps(value)}; }
[[gnu::always_inline]] inline Lanes Load(const float *from) {
  return {_mm256_loadu_ps(from), _mm256_loadu_ps(from + 8)};
}
[[gnu::always_inline]] inline void Store(float *to, const Lanes &lanes) {
  _mm256_storeu_ps(to, lanes.low);
  _mm256_storeu_ps(to + 8, lanes.high);
}
[[gnu::always_inline]] inline Lanes Plus(const Lanes &a, const Lanes &b) {
  return {_mm256_add_ps(a.low, b.low), _mm256_add_ps(a.high, b.high)};
}
[[gnu::always_inline]] inline Lanes Times(const Lanes &a, const Lanes &b) {
  return {_mm256_mul_ps(a.low, b.low), _mm256_mul_ps(a.high, b.high)};
}
[[gnu::always_inline]] inline Lanes MultiplyAdd(const Lanes &sums, const Lanes &lanes, const Lanes &weights) {
  return {_mm256_fmadd_ps(lanes.low, weights.low, sums.low), _mm256_fmadd_ps(lanes.high, weights.high, sums.high)};
}

// The sums of the lanes that are four apart.
[[gnu::always_inline]] inline Quarter Folded(const Lanes &lanes) {
  const __m256 half = _mm256_add_ps(lanes.low, lanes.high);
  return _mm_add_ps(_mm256_castps256_ps128(half), _mm256_extractf128_ps(half, 1));
}

// Bytes less 128.
[[gnu::always_inline]] inline Lanes Widen(Bytes bytes) {
  const __m128i less = (__m128i)(bytes ^ 0x80);
  return {_mm256_cvtepi32_ps(_mm256_cvtepi8_epi32(less)),
          _mm256_cvtepi32_ps(_mm256_cvtepi8_epi32(_mm_unpackhi_epi64(less, less)))};
}

// --- whole numbers ---

struct Pairs {
  __m256i low;
  __m256i high;
};

[[gnu::always_inline]] inline Pairs Cut(const Lanes &values) {
  return {_mm256_cvttps_epi32(values.low), _mm256_cvttps_epi32(values.high)};
}

// Bits that differ between the first two, and those of the third.
[[gnu::always_inline]] inline Pairs OrDifference(const Pairs &a, const Pairs &b, const Pairs &others) {
  return {_mm256_or_si256(_mm256_xor_si256(a.low, b.low), others.low),
          _mm256_or_si256(_mm256_xor_si256(a.high, b.high), others.high)};
}
[[gnu::always_inline]] inline bool IsZero(const Pairs &bits) {
  const __m256i both = _mm256_or_si256(bits.low, bits.high);
  return _mm256_testz_si256(both, both) != 0;
}

// Numbers cut to what a byte holds.
[[gnu::always_inline]] inline void StoreAsBytes(const Pairs &numbers, uint8_t *to) {
  const __m256i words = _mm256_permute4x64_epi64(_mm256_packs_epi32(numbers.low, numbers.high), 0xD8);
  const __m128i bytes = _mm_packus_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
  _mm_storeu_si128(reinterpret_cast<__m128i *>(to), bytes);
}
[[gnu::always_inline]] inline void StoreTwoAsBytes(const Pairs &first, const Pairs &second, uint8_t *to) {
  const __m256i bytes =
      _mm256_packus_epi16(_mm256_packs_epi32(first.low, first.high), _mm256_packs_epi32(second.low, second.high));
  const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
  _mm256_storeu_si256(reinterpret_cast<__m256i *>(to), _mm256_permutevar8x32_epi32(bytes, order));
}

// --- pairs of wide samples, less 32768 ---

[[gnu::always_inline]] inline Pairs AllPairs(int32_t value) {
  return {_mm256_set1_epi32(value), _mm256_set1_epi32(value)};
}
[[gnu::always_inline]] inline Pairs LoadPairs(const int32_t *from) {
  const auto *vectors = reinterpret_cast<const __m256i *>(from);
  return {_mm256_loadu_si256(vectors), _mm256_loadu_si256(vectors + 1)};
}
// Sixteen samples less 32768, in the order in which the machine's halves are unpacked.
[[gnu::always_inline]] inline __m256i HalvesOf(const uint8_t *samples) {
  const __m256i less =
      _mm256_xor_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i *>(samples)), _mm256_set1_epi16(-32768));
  return _mm256_permute4x64_epi64(less, 0xD8);
}

// Of samples that lie in two rows.
[[gnu::always_inline]] inline Pairs PairsOf(const uint8_t *even, const uint8_t *odd) {
  const __m256i lower = HalvesOf(even), upper = HalvesOf(odd);
  return {_mm256_unpacklo_epi16(lower, upper), _mm256_unpackhi_epi16(lower, upper)};
}
[[gnu::always_inline]] inline Pairs AddProducts(const Pairs &sums, const Pairs &pairs, const Pairs &weights) {
  return {_mm256_add_epi32(sums.low, _mm256_madd_epi16(pairs.low, weights.low)),
          _mm256_add_epi32(sums.high, _mm256_madd_epi16(pairs.high, weights.high))};
}

[[gnu::always_inline]] inline __m256i WholeWords(__m256i sums) {
  return _mm256_sub_epi32(_mm256_srai_epi32(sums, kWordPointBits), _mm256_set1_epi32(32768));
}
[[gnu::always_inline]] inline __m256i UnsureWords(__m256i sums, int32_t edge) {
  const __m256i part =
      _mm256_and_si256(_mm256_sub_epi32(sums, _mm256_set1_epi32(edge)), _mm256_set1_epi32((1 << kWordPointBits) - 1));
  return _mm256_cmpgt_epi32(part, _mm256_set1_epi32((1 << kWordPointBits) - 2 * edge));
}

// Cuts the sums of upper digits, with those of lower ones, to words. Returns a bit for each lane that is not
// sure.
[[gnu::always_inline]] inline uint32_t FinishWords(const Pairs &upper, const Pairs &lower, int32_t shift, int32_t edge,
                                                   uint16_t *to) {
  const __m128i bits = _mm_cvtsi32_si128(shift);
  const __m256i low = _mm256_add_epi32(upper.low, _mm256_sra_epi32(lower.low, bits)),
                high = _mm256_add_epi32(upper.high, _mm256_sra_epi32(lower.high, bits));
  const __m256i words = _mm256_permute4x64_epi64(_mm256_packs_epi32(WholeWords(low), WholeWords(high)), 0xD8);
  _mm256_storeu_si256(reinterpret_cast<__m256i *>(to), _mm256_xor_si256(words, _mm256_set1_epi16(-32768)));
  return static_cast<uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(UnsureWords(low, edge))) |
                               _mm256_movemask_ps(_mm256_castsi256_ps(UnsureWords(high, edge))) << 8);
}

}  // namespace
}  // namespace zvk::scaling

#include "scaling/short_kernels_body.inc"
