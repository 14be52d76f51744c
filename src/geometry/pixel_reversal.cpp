#include "geometry/pixel_reversal.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <utility>

namespace zvk::geometry {

namespace {

constexpr int32_t kVectorBytes = 16;
using ByteVector [[gnu::vector_size(kVectorBytes)]] = uint8_t;

// As many whole pixels as a vector holds lie at its end; they come out in reverse order at its start.
template <int32_t kPixelSize>
[[gnu::always_inline]] inline ByteVector ReversedVector(ByteVector bytes) {
  constexpr int32_t kPixels = kVectorBytes / kPixelSize;
  constexpr auto kFrom = [](int32_t byte) {
    const int32_t pixel = byte / kPixelSize;
    return pixel < kPixels ? kVectorBytes - (pixel + 1) * kPixelSize + byte % kPixelSize : 0;
  };
  return [&]<int32_t... kByte>(std::integer_sequence<int32_t, kByte...>) {
    return __builtin_shufflevector(bytes, bytes, kFrom(kByte)...);
  }
  (std::make_integer_sequence<int32_t, kVectorBytes>{});
}

template <int32_t kPixelSize>
[[gnu::always_inline]] inline void ReverseSized(const uint8_t *__restrict source, uint8_t *__restrict dest,
                                                int32_t count) {
  constexpr int32_t kPixels = kVectorBytes / kPixelSize;
  const uint8_t *end = source + ptrdiff_t{count} * kPixelSize;
  // A vector may hold bytes of one pixel more, which must be there: it is loaded before that pixel's turn, and written
  // over in its turn.
  while (end - source >= kVectorBytes) {
    ByteVector bytes;
    std::memcpy(&bytes, end - kVectorBytes, kVectorBytes);
    bytes = ReversedVector<kPixelSize>(bytes);
    std::memcpy(dest, &bytes, kVectorBytes);
    end -= ptrdiff_t{kPixels} * kPixelSize;
    dest += ptrdiff_t{kPixels} * kPixelSize;
  }
  while (end != source) {
    end -= kPixelSize;
    std::memcpy(dest, end, kPixelSize);
    dest += kPixelSize;
  }
}

}  // namespace

const ReversalKernel &ReversalOf(int32_t pixelSize) {
  static constexpr std::array<ReversalKernel, kLargestPixel> kKernels = {
      KernelOf<ReverseSized<1>>, KernelOf<ReverseSized<2>>, KernelOf<ReverseSized<3>>, KernelOf<ReverseSized<4>>,
      KernelOf<ReverseSized<5>>};
  return kKernels[static_cast<size_t>(pixelSize) - 1];
}

}  // namespace zvk::geometry
