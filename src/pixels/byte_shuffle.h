// The machine's shuffles of 16 and of 64 bytes, by which the row kernels move several pixels at once. Hosts of the
// plug-in run on x86 machines; the oldest of them have no such instruction, and there the portable loops do all the
// work.
#pragma once

#include <immintrin.h>

#include <cstdint>

#include "host/layers.h"
#include "pixels/dispatch.h"

// Put before the definition of a function that may only be called where HasByteShuffle() says so.
#define ZVK_BYTE_SHUFFLE [[gnu::target("ssse3")]]
// The same for HasWideShuffle().
#define ZVK_WIDE_SHUFFLE [[gnu::target("avx2,bmi,bmi2,avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi")]]

namespace zvk::pixels {

inline constexpr int32_t kShuffleBytes = 16;
inline constexpr int32_t kWideShuffleBytes = 64;

inline bool HasByteShuffle() { return ChosenLevel() >= CpuLevel::SSSE3; }
inline bool HasWideShuffle() { return ChosenLevel() >= CpuLevel::AVX512 && __builtin_cpu_supports("avx512vbmi"); }

// The bytes of the widest shuffle; 0 for none.
int32_t WidestShuffle();

inline __m128i LoadBytes(const uint8_t *bytes) { return _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes)); }
inline void StoreBytes(uint8_t *bytes, __m128i value) { _mm_storeu_si128(reinterpret_cast<__m128i *>(bytes), value); }

}  // namespace zvk::pixels
