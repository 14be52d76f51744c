#include "filters/lookup_table.h"

#include <immintrin.h>

#include <algorithm>

namespace zvk::filters {

namespace {

void MapBytesPlain(const ToneTable &table, const uint8_t *source, uint8_t *dest, ptrdiff_t count) {
  constexpr ptrdiff_t kAtOnce = 8;
  ptrdiff_t i = 0;
  for (; count - i >= kAtOnce; i += kAtOnce) {
    std::array<uint8_t, kAtOnce> samples = {};
    for (ptrdiff_t k = 0; k < kAtOnce; ++k) samples[k] = table[source[i + k]];
    for (ptrdiff_t k = 0; k < kAtOnce; ++k) dest[i + k] = samples[k];
  }
  for (; i < count; ++i) dest[i] = table[source[i]];
}

// The whole table lies in four registers, and 64 bytes at once look themselves up in it.
[[gnu::target("avx512f,avx512bw,avx512vbmi")]] void LookUpInRegisters(const ToneTable &table, const uint8_t *source,
                                                                      uint8_t *dest, ptrdiff_t count) {
  constexpr ptrdiff_t kBytes = 64;
  const __m512i first = _mm512_loadu_si512(table.data());
  const __m512i second = _mm512_loadu_si512(table.data() + kBytes);
  const __m512i third = _mm512_loadu_si512(table.data() + 2 * kBytes);
  const __m512i fourth = _mm512_loadu_si512(table.data() + 3 * kBytes);
  // A step is never longer than what is left: rows may be as long as an address can tell.
  for (ptrdiff_t i = 0, now = 0; i < count; i += now) {
    now = std::min(kBytes, count - i);
    const __mmask64 there = now == kBytes ? ~__mmask64{0} : (__mmask64{1} << now) - 1;
    const __m512i samples = _mm512_maskz_loadu_epi8(there, source + i);
    const __m512i lower = _mm512_permutex2var_epi8(first, samples, second);
    const __m512i upper = _mm512_permutex2var_epi8(third, samples, fourth);
    const __mmask64 isUpper = _mm512_movepi8_mask(samples);
    _mm512_mask_storeu_epi8(dest + i, there, _mm512_mask_mov_epi8(lower, isUpper, upper));
  }
}

void MapBytesInRegisters(const ToneTable &table, const uint8_t *source, uint8_t *dest, ptrdiff_t count) {
  if (__builtin_cpu_supports("avx512vbmi")) {
    LookUpInRegisters(table, source, dest, count);
  } else {
    MapBytesPlain(table, source, dest, count);
  }
}

}  // namespace

constexpr Kernel<MapFunction> MapBytes({MapBytesPlain, MapBytesPlain, MapBytesPlain, MapBytesInRegisters});

}  // namespace zvk::filters
