// The short kernels for AVX-512.
#include <immintrin.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include "pixels/loop_steps.h"
#include "scaling/scale_kernels.h"
#include "scaling/short_kernels.h"
#include "scaling/short_lanes.h"

// The compiler's own header leaves values open that count nothing.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC target("avx2,fma,bmi,bmi2,avx512f,avx512bw,avx512dq,avx512vl")

namespace zvk::scaling {
namespace {

constexpr CpuLevel kLevel = CpuLevel::AVX512;

using Lanes = __m512;

[[gnu::always_inline]] inline Lanes All(float value) { return _mm512_set1_ps(value); }
[[gnu::always_inline]] inline Lanes Load(const float *from) { return _mm512_loadu_ps(from); }
[[gnu::always_inline]] inline void Store(float *to, Lanes lanes) { _mm512_storeu_ps(to, lanes); }
[[gnu::always_inline]] inline Lanes Plus(Lanes a, Lanes b) { return _mm512_add_ps(a, b); }
[[gnu::always_inline]] inline Lanes Times(Lanes a, Lanes b) { return _mm512_mul_ps(a, b); }
[[gnu::always_inline]] inline Lanes MultiplyAdd(Lanes sums, Lanes lanes, Lanes weights) {
  return _mm512_fmadd_ps(lanes, weights, sums);
}

// The sums of the lanes that are four apart.
[[gnu::always_inline]] inline Quarter Folded(Lanes lanes) {
  const __m256 half = _mm256_add_ps(_mm512_castps512_ps256(lanes), _mm512_extractf32x8_ps(lanes, 1));
  return _mm_add_ps(_mm256_castps256_ps128(half), _mm256_extractf128_ps(half, 1));
}

// Bytes less 128.
[[gnu::always_inline]] inline Lanes Widen(Bytes bytes) {
  return _mm512_cvtepi32_ps(_mm512_cvtepi8_epi32((__m128i)(bytes ^ 0x80)));
}

// --- whole numbers ---

using Pairs = __m512i;

[[gnu::always_inline]] inline Pairs Cut(Lanes values) { return _mm512_cvttps_epi32(values); }

// Bits that differ between the first two, and those of the third.
[[gnu::always_inline]] inline Pairs OrDifference(Pairs a, Pairs b, Pairs others) {
  constexpr int kXorThenOr = 0xF6;
  return _mm512_ternarylogic_epi32(others, a, b, kXorThenOr);
}
[[gnu::always_inline]] inline bool IsZero(Pairs bits) { return _mm512_test_epi32_mask(bits, bits) == 0; }

// Numbers cut to what a byte holds.
[[gnu::always_inline]] inline void StoreAsBytes(Pairs numbers, uint8_t *to) {
  const __m512i positive = _mm512_max_epi32(numbers, _mm512_setzero_si512());
  _mm_storeu_si128(reinterpret_cast<__m128i *>(to), _mm512_cvtusepi32_epi8(positive));
}
[[gnu::always_inline]] inline void StoreTwoAsBytes(Pairs first, Pairs second, uint8_t *to) {
  const __m512i words = _mm512_packs_epi32(first, second);
  const __m512i bytes = _mm512_packus_epi16(words, words);
  const __m512i order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 0, 4, 8, 12, 1, 5, 9, 13);
  _mm256_storeu_si256(reinterpret_cast<__m256i *>(to), _mm512_castsi512_si256(_mm512_permutexvar_epi32(order, bytes)));
}

// --- pairs of wide samples, less 32768 ---

[[gnu::always_inline]] inline Pairs AllPairs(int32_t value) { return _mm512_set1_epi32(value); }
[[gnu::always_inline]] inline Pairs LoadPairs(const int32_t *from) { return _mm512_loadu_si512(from); }
[[gnu::always_inline]] inline __m512i WidenWords(const uint8_t *samples) {
  return _mm512_cvtepu16_epi32(_mm256_loadu_si256(reinterpret_cast<const __m256i *>(samples)));
}
// Of samples that lie in two rows.
[[gnu::always_inline]] inline Pairs PairsOf(const uint8_t *even, const uint8_t *odd) {
  const __m512i pairs = _mm512_or_si512(WidenWords(even), _mm512_slli_epi32(WidenWords(odd), 16));
  return _mm512_xor_si512(pairs, _mm512_set1_epi16(-32768));
}
[[gnu::always_inline]] inline Pairs AddProducts(Pairs sums, Pairs pairs, Pairs weights) {
  return _mm512_add_epi32(sums, _mm512_madd_epi16(pairs, weights));
}

// Cuts the sums of upper digits, with those of lower ones, to words. Returns a bit for each lane that is not
// sure.
[[gnu::always_inline]] inline uint32_t FinishWords(Pairs upper, Pairs lower, int32_t shift, int32_t edge,
                                                   uint16_t *to) {
  const __m512i sum = _mm512_add_epi32(upper, _mm512_sra_epi32(lower, _mm_cvtsi32_si128(shift)));
  const __m512i whole = _mm512_max_epi32(_mm512_srai_epi32(sum, kWordPointBits), _mm512_setzero_si512());
  _mm256_storeu_si256(reinterpret_cast<__m256i *>(to), _mm512_cvtusepi32_epi16(whole));
  const __m512i part =
      _mm512_and_si512(_mm512_sub_epi32(sum, _mm512_set1_epi32(edge)), _mm512_set1_epi32((1 << kWordPointBits) - 1));
  return _mm512_cmpgt_epi32_mask(part, _mm512_set1_epi32((1 << kWordPointBits) - 2 * edge));
}

}  // namespace
}  // namespace zvk::scaling

#include "scaling/short_kernels_body.inc"
