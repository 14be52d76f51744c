// The short kernels for SSE2, which every x86 machine of 64 bits has and the 32-bit build asks for.
#include <immintrin.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include "pixels/loop_steps.h"
#include "scaling/scale_kernels.h"
#include "scaling/short_kernels.h"
#include "scaling/short_lanes.h"

namespace zvk::scaling {
namespace {

constexpr CpuLevel kLevel = CpuLevel::Baseline;

struct Lanes {
  __m128 quarters[4];
};

template <class Make>
[[gnu::always_inline]] inline Lanes EachQuarter(Make make) {
  return {{make(0), make(1), make(2), make(3)}};
}

[[gnu::always_inline]] inline Lanes All(float value) {
  return EachQuarter([=](int) { return _mm_set1_ps(value); });
}
[[gnu::always_inline]] inline Lanes Load(const float *from) {
  return EachQuarter([=](int i) { return _mm_loadu_ps(from + ptrdiff_t{4} * i); });
}
[[gnu::always_inline]] inline void Store(float *to, const Lanes &lanes) {
  for (int i = 0; i < 4; ++i) _mm_storeu_ps(to + ptrdiff_t{4} * i, lanes.quarters[i]);
}
[[gnu::always_inline]] inline Lanes Plus(const Lanes &a, const Lanes &b) {
  return EachQuarter([&](int i) { return _mm_add_ps(a.quarters[i], b.quarters[i]); });
}
[[gnu::always_inline]] inline Lanes Times(const Lanes &a, const Lanes &b) {
  return EachQuarter([&](int i) { return _mm_mul_ps(a.quarters[i], b.quarters[i]); });
}
[[gnu::always_inline]] inline Lanes MultiplyAdd(const Lanes &sums, const Lanes &lanes, const Lanes &weights) {
  return Plus(sums, Times(lanes, weights));
}

// The sums of the lanes that are four apart.
[[gnu::always_inline]] inline Quarter Folded(const Lanes &lanes) {
  return (lanes.quarters[0] + lanes.quarters[2]) + (lanes.quarters[1] + lanes.quarters[3]);
}

// Bytes less 128.
[[gnu::always_inline]] inline Lanes Widen(Bytes bytes) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i low = _mm_unpacklo_epi8((__m128i)bytes, zero), high = _mm_unpackhi_epi8((__m128i)bytes, zero);
  const auto less = [](__m128i words) { return _mm_sub_ps(_mm_cvtepi32_ps(words), _mm_set1_ps(128.0F)); };
  return {{less(_mm_unpacklo_epi16(low, zero)), less(_mm_unpackhi_epi16(low, zero)),
           less(_mm_unpacklo_epi16(high, zero)), less(_mm_unpackhi_epi16(high, zero))}};
}

// --- whole numbers ---

struct Pairs {
  __m128i quarters[4];
};

template <class Make>
[[gnu::always_inline]] inline Pairs EachPairs(Make make) {
  return {{make(0), make(1), make(2), make(3)}};
}

[[gnu::always_inline]] inline Pairs Cut(const Lanes &values) {
  return EachPairs([&](int i) { return _mm_cvttps_epi32(values.quarters[i]); });
}

// Bits that differ between the first two, and those of the third.
[[gnu::always_inline]] inline Pairs OrDifference(const Pairs &a, const Pairs &b, const Pairs &others) {
  return EachPairs(
      [&](int i) { return _mm_or_si128(_mm_xor_si128(a.quarters[i], b.quarters[i]), others.quarters[i]); });
}
[[gnu::always_inline]] inline bool IsZero(const Pairs &bits) {
  const __m128i all =
      _mm_or_si128(_mm_or_si128(bits.quarters[0], bits.quarters[1]), _mm_or_si128(bits.quarters[2], bits.quarters[3]));
  return _mm_movemask_epi8(_mm_cmpeq_epi32(all, _mm_setzero_si128())) == 0xFFFF;
}

// Numbers cut to what a byte holds.
[[gnu::always_inline]] inline void StoreAsBytes(const Pairs &numbers, uint8_t *to) {
  const __m128i bytes = _mm_packus_epi16(_mm_packs_epi32(numbers.quarters[0], numbers.quarters[1]),
                                         _mm_packs_epi32(numbers.quarters[2], numbers.quarters[3]));
  _mm_storeu_si128(reinterpret_cast<__m128i *>(to), bytes);
}
[[gnu::always_inline]] inline void StoreTwoAsBytes(const Pairs &first, const Pairs &second, uint8_t *to) {
  StoreAsBytes(first, to);
  StoreAsBytes(second, to + kLanes);
}

// --- pairs of wide samples, less 32768 ---

[[gnu::always_inline]] inline Pairs AllPairs(int32_t value) {
  return EachPairs([=](int) { return _mm_set1_epi32(value); });
}
[[gnu::always_inline]] inline Pairs LoadPairs(const int32_t *from) {
  return EachPairs([=](int i) { return _mm_loadu_si128(reinterpret_cast<const __m128i *>(from) + i); });
}
// Of samples that lie in two rows.
[[gnu::always_inline]] inline Pairs PairsOf(const uint8_t *even, const uint8_t *odd) {
  const auto half = [](const uint8_t *samples, int i) {
    return _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i *>(samples) + i), _mm_set1_epi16(-32768));
  };
  return {{_mm_unpacklo_epi16(half(even, 0), half(odd, 0)), _mm_unpackhi_epi16(half(even, 0), half(odd, 0)),
           _mm_unpacklo_epi16(half(even, 1), half(odd, 1)), _mm_unpackhi_epi16(half(even, 1), half(odd, 1))}};
}
[[gnu::always_inline]] inline Pairs AddProducts(const Pairs &sums, const Pairs &pairs, const Pairs &weights) {
  return EachPairs(
      [&](int i) { return _mm_add_epi32(sums.quarters[i], _mm_madd_epi16(pairs.quarters[i], weights.quarters[i])); });
}

// Cuts the sums of upper digits, with those of lower ones, to words. Returns a bit for each lane that is not
// sure.
[[gnu::always_inline]] inline uint32_t FinishWords(const Pairs &upper, const Pairs &lower, int32_t shift, int32_t edge,
                                                   uint16_t *to) {
  uint32_t unsure = 0;
  const Pairs whole = EachPairs([&](int i) {
    const __m128i sum = _mm_add_epi32(upper.quarters[i], _mm_sra_epi32(lower.quarters[i], _mm_cvtsi32_si128(shift)));
    const __m128i part =
        _mm_and_si128(_mm_sub_epi32(sum, _mm_set1_epi32(edge)), _mm_set1_epi32((1 << kWordPointBits) - 1));
    const __m128i beyond = _mm_cmpgt_epi32(part, _mm_set1_epi32((1 << kWordPointBits) - 2 * edge));
    unsure |= static_cast<uint32_t>(_mm_movemask_ps(_mm_castsi128_ps(beyond))) << 4 * i;
    return _mm_sub_epi32(_mm_srai_epi32(sum, kWordPointBits), _mm_set1_epi32(32768));
  });
  const __m128i highest = _mm_set1_epi16(-32768);
  auto *const halves = reinterpret_cast<__m128i *>(to);
  _mm_storeu_si128(halves, _mm_xor_si128(_mm_packs_epi32(whole.quarters[0], whole.quarters[1]), highest));
  _mm_storeu_si128(halves + 1, _mm_xor_si128(_mm_packs_epi32(whole.quarters[2], whole.quarters[3]), highest));
  return unsure;
}

}  // namespace
}  // namespace zvk::scaling

#include "scaling/short_kernels_body.inc"
