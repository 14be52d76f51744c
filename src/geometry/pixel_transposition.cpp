#include "geometry/pixel_transposition.h"

#include <array>
#include <cstring>
#include <utility>

namespace zvk::geometry {

namespace {

constexpr int32_t kVectorBytes = 16;
using ByteVector [[gnu::vector_size(kVectorBytes)]] = uint8_t;
using WordPair [[gnu::vector_size(kVectorBytes)]] = uint64_t;

// The upper or the lower halves of two vectors, interleaved pixel by pixel.
template <int32_t kPixelSize, int32_t kFirstByte>
[[gnu::always_inline]] inline ByteVector Interleaved(ByteVector a, ByteVector b) {
  constexpr auto kFrom = [](int32_t byte) {
    const int32_t pixel = byte / kPixelSize;
    return kFirstByte + pixel / 2 * kPixelSize + byte % kPixelSize + pixel % 2 * kVectorBytes;
  };
  return [&]<int32_t... kByte>(std::integer_sequence<int32_t, kByte...>) {
    return __builtin_shufflevector(a, b, kFrom(kByte)...);
  }
  (std::make_integer_sequence<int32_t, kVectorBytes>{});
}

// As many vectors as each of them holds pixels. Interleaving the first half of the vectors with the second one, again
// and again, exchanges rows and columns.
template <int32_t kPixelSize, size_t kPixels>
[[gnu::always_inline]] inline void Transpose(std::array<ByteVector, kPixels> &rows) {
  for (size_t step = 1; step < kPixels; step *= 2) {
    const std::array<ByteVector, kPixels> before = rows;
    for (size_t i = 0; i < kPixels / 2; ++i) {
      rows[2 * i] = Interleaved<kPixelSize, 0>(before[i], before[i + kPixels / 2]);
      rows[2 * i + 1] = Interleaved<kPixelSize, kVectorBytes / 2>(before[i], before[i + kPixels / 2]);
    }
  }
}

// Pixels of kPixelSize bytes in memory, kLaneSize bytes in a vector.
template <int32_t kPixelSize>
struct Lanes {
  static constexpr int32_t kLaneSize = kPixelSize;
  static constexpr int32_t kPixels = kVectorBytes / kLaneSize;

  [[gnu::always_inline]] static ByteVector Load(const uint8_t *pixels) {
    ByteVector vector;
    std::memcpy(&vector, pixels, kVectorBytes);
    return vector;
  }
  [[gnu::always_inline]] static void Store(uint8_t *pixels, ByteVector vector) {
    std::memcpy(pixels, &vector, kVectorBytes);
  }
};

// Four pixels of three bytes, which are spread to four in the vector. No byte beyond them is touched.
template <>
struct Lanes<3> {
  static constexpr int32_t kLaneSize = 4;
  static constexpr int32_t kPixels = 4;

  [[gnu::always_inline]] static ByteVector Load(const uint8_t *pixels) {
    uint64_t first;
    uint32_t rest;
    std::memcpy(&first, pixels, sizeof first);
    std::memcpy(&rest, pixels + sizeof first, sizeof rest);
    const auto vector = reinterpret_cast<ByteVector>(WordPair{first, rest});
    return __builtin_shufflevector(vector, vector, 0, 1, 2, 15, 3, 4, 5, 15, 6, 7, 8, 15, 9, 10, 11, 15);
  }
  [[gnu::always_inline]] static void Store(uint8_t *pixels, ByteVector vector) {
    const auto words = reinterpret_cast<WordPair>(
        __builtin_shufflevector(vector, vector, 0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 3, 3, 3, 3));
    const uint64_t first = words[0];
    const auto rest = static_cast<uint32_t>(words[1]);
    std::memcpy(pixels, &first, sizeof first);
    std::memcpy(pixels + sizeof first, &rest, sizeof rest);
  }
};

template <int32_t kPixelSize>
[[gnu::always_inline]] inline void MovePixels(const PixelBlock &block, int32_t firstX, int32_t endX, int32_t firstY,
                                              int32_t endY) {
  for (int32_t x = firstX; x < endX; ++x) {
    uint8_t *destRow = block.destRows[x];
    for (int32_t y = firstY; y < endY; ++y) {
      std::memcpy(destRow + ptrdiff_t{y} * kPixelSize, block.sourceRows[y] + ptrdiff_t{x} * kPixelSize, kPixelSize);
    }
  }
}

template <int32_t kPixelSize>
[[gnu::always_inline]] inline void TransposeSized(const PixelBlock &block) {
  using Lane = Lanes<kPixelSize>;
  constexpr int32_t kPixels = Lane::kPixels;
  const int32_t width = block.width / kPixels * kPixels;
  const int32_t height = block.height / kPixels * kPixels;
  for (int32_t y = 0; y < height; y += kPixels) {
    for (int32_t x = 0; x < width; x += kPixels) {
      std::array<ByteVector, kPixels> rows;
      for (int32_t i = 0; i < kPixels; ++i) {
        rows[i] = Lane::Load(block.sourceRows[y + i] + ptrdiff_t{x} * kPixelSize);
      }
      Transpose<Lane::kLaneSize>(rows);
      for (int32_t i = 0; i < kPixels; ++i) Lane::Store(block.destRows[x + i] + ptrdiff_t{y} * kPixelSize, rows[i]);
    }
  }
  MovePixels<kPixelSize>(block, width, block.width, 0, height);
  MovePixels<kPixelSize>(block, 0, block.width, height, block.height);
}

// Five bytes fit no lane.
template <>
[[gnu::always_inline]] inline void TransposeSized<5>(const PixelBlock &block) {
  MovePixels<5>(block, 0, block.width, 0, block.height);
}

}  // namespace

const TranspositionKernel &TranspositionOf(int32_t pixelSize) {
  static constexpr std::array<TranspositionKernel, 5> kKernels = {
      KernelOf<TransposeSized<1>>, KernelOf<TransposeSized<2>>, KernelOf<TransposeSized<3>>,
      KernelOf<TransposeSized<4>>, KernelOf<TransposeSized<5>>};
  return kKernels[static_cast<size_t>(pixelSize) - 1];
}

}  // namespace zvk::geometry
