// From sums of products to bytes: delta, scale and cut, in the shortest arithmetic that gives the told bytes. The inner
// loops are here, so that each kernel has them as a part of itself.
#pragma once

#include <algorithm>
#include <cstdint>

#include "filters/matrix_filter_terms.h"
#include "pixels/word_product.h"

namespace zvk::filters {

// Settled once for a matrix.
struct MatrixScaling {
  // None: the scale is 1. Words, Single: the product is reckoned in 16 bits or in single precision, which has been
  // tried at every step of the result. Double: 32 bits hold whatever the product gives. Any: they need not.
  enum class Way : uint8_t { None, Words, Single, Double, Any };

  // For sums from `lowest` to `highest`, of which not all may occur. Narrow ones lie within 65536 values, so that 16
  // bits tell them apart: they are raised by `start`, and none is negative. Only these may be scaled as words.
  MatrixScaling(const MatrixResult &told, int64_t lowest, int64_t highest, bool narrow);

  MatrixResult result;  // of sums that are raised by start
  uint16_t start;
  Way way = Way::Any;
  float factor = 0;
  float bias = 0;
  // Of Words: a sum below the floor gives 0; the others are moved by the offset.
  uint16_t floor = 0;
  uint16_t offset = 0;
  WordProduct product = {};

 private:
  bool ServeWords(int64_t highest);
  bool ServeSingle(int64_t highest, double farthest);
};

[[gnu::always_inline]] inline int32_t ScaledSingle(const MatrixScaling &scaling, int32_t value) {
  return static_cast<int32_t>(static_cast<float>(value) * scaling.factor + scaling.bias);
}

// What the result of a sum is before it is cut to a byte. All sums wrap.
template <MatrixScaling::Way kWay>
[[gnu::always_inline]] inline int32_t Scaled(const MatrixScaling &scaling, int32_t sum) {
  using enum MatrixScaling::Way;
  const int32_t value = sum + scaling.result.delta;
  if constexpr (kWay == None) return value;
  if constexpr (kWay == Single) return ScaledSingle(scaling, value);
  if constexpr (kWay == Double) return static_cast<int32_t>(value * scaling.result.scale);
  return scaling.result.Scaled(sum);
}

// Each byte is made of a sum.
template <MatrixScaling::Way kWay, int32_t kCount, class Sum>
[[gnu::always_inline]] inline void FinishSums(const MatrixScaling &scaling, const Sum (&sums)[kCount],
                                              uint8_t (&bytes)[kCount]) {
  // The detour over numbers of the sums' width keeps each loop to one width.
  if constexpr (kWay == MatrixScaling::Way::Words) {
    uint16_t whole[kCount] = {};
    for (int32_t i = 0; i < kCount; ++i) {
      const auto value = static_cast<uint16_t>(std::max(sums[i], scaling.floor) + scaling.offset);
      whole[i] = std::min<uint16_t>(scaling.product(value), 255);
    }
    for (int32_t i = 0; i < kCount; ++i) bytes[i] = static_cast<uint8_t>(whole[i]);
  } else {
    int32_t whole[kCount] = {};
    for (int32_t i = 0; i < kCount; ++i) whole[i] = std::clamp(Scaled<kWay>(scaling, sums[i]), 0, 255);
    for (int32_t i = 0; i < kCount; ++i) bytes[i] = static_cast<uint8_t>(whole[i]);
  }
}

}  // namespace zvk::filters
