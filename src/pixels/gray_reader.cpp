#include "pixels/gray_reader.h"

#include <cstddef>

#include "pixels/byte_shuffle.h"
#include "pixels/luma.h"

namespace zvk::pixels {

GrayReader::GrayReader(int32_t pixelSize, const std::array<int32_t, 3> &offsets)
    : offsets_(offsets), reach_{pixelSize, RangeOf(offsets)} {}

void GrayReader::operator()(const uint8_t *source, uint8_t *gray, int32_t width) const {
  const ptrdiff_t read = ReadShuffled(source, gray, width);
  ReadPlain(source + read * reach_.pixelSize, gray + read, width - read);
}

void GrayReader::ReadPlain(const uint8_t *source, uint8_t *gray, int32_t width) const {
  const ptrdiff_t pixelSize = reach_.pixelSize;
  const uint8_t *red = source + offsets_[0], *green = source + offsets_[1], *blue = source + offsets_[2];
  for (int32_t x = 0; x < width; ++x) {
    gray[x] = static_cast<uint8_t>(Luma(*red, *green, *blue));
    red += pixelSize;
    green += pixelSize;
    blue += pixelSize;
  }
}

int32_t GrayReader::ReadShuffled(const uint8_t *source, uint8_t *gray, int32_t width) const {
  // The second four pixels of a step reach further than the first.
  const int32_t last = reach_.LastShuffle(width) - kPixelsPerShuffle;
  if (reach_.PixelsPerShuffle() < kPixelsPerShuffle || last < 0 || !HasByteShuffle()) return 0;
  const int32_t steps = last / (2 * kPixelsPerShuffle) + 1;
  RunShuffles(source + reach_.First(), gray, steps);
  return steps * 2 * kPixelsPerShuffle;
}

// The products are of an unsigned with a signed byte and are summed in pairs of signed 16 bits. So green comes twice,
// its weight divided such that no weight exceeds 127 and no pair of them 128; 255 x 128 still fits.
ZVK_BYTE_SHUFFLE void GrayReader::RunShuffles(const uint8_t *source, uint8_t *gray, int32_t steps) const {
  static_assert(4 * kPixelsPerShuffle == kShuffleBytes);
  constexpr int8_t kRed = 77, kGreen = 51, kBlue = 28, kMoreGreen = 100;
  alignas(16) std::array<uint8_t, kShuffleBytes> order;
  auto next = order.begin();
  for (int32_t pixel = 0; pixel < kPixelsPerShuffle; ++pixel) {
    for (const int32_t offset : {offsets_[0], offsets_[1], offsets_[2], offsets_[1]}) {
      *next++ = static_cast<uint8_t>(pixel * reach_.pixelSize + offset - reach_.offsets.lowest);
    }
  }
  const __m128i colours = LoadBytes(order.data());
  const __m128i weights = _mm_setr_epi8(kRed, kGreen, kBlue, kMoreGreen, kRed, kGreen, kBlue, kMoreGreen, kRed, kGreen,
                                        kBlue, kMoreGreen, kRed, kGreen, kBlue, kMoreGreen);
  const ptrdiff_t half = ptrdiff_t{reach_.pixelSize} * kPixelsPerShuffle;
  for (int32_t step = 0; step < steps; ++step) {
    const __m128i low = _mm_maddubs_epi16(_mm_shuffle_epi8(LoadBytes(source), colours), weights);
    const __m128i high = _mm_maddubs_epi16(_mm_shuffle_epi8(LoadBytes(source + half), colours), weights);
    // Up to 255 x 256, unsigned; the sum wraps into exactly that.
    const __m128i sums = _mm_srli_epi16(_mm_hadd_epi16(low, high), 8);
    _mm_storel_epi64(reinterpret_cast<__m128i *>(gray), _mm_packus_epi16(sums, sums));
    source += 2 * half;
    gray += ptrdiff_t{2} * kPixelsPerShuffle;
  }
}

}  // namespace zvk::pixels
