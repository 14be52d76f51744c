// Products cut to their upper halves: how loops over 16-bit numbers divide and scale many at once.
#pragma once

#include <bit>
#include <cstdint>

#include "host/layers.h"

namespace zvk::pixels {

// value x multiplier / 65536 / 2 to the power `shift`, rounded down.
struct WordProduct {
  uint16_t multiplier = 0;
  uint8_t shift = 0;

  [[gnu::always_inline]] constexpr uint16_t operator()(uint16_t value) const {
    return static_cast<uint16_t>(static_cast<uint16_t>(uint32_t{value} * multiplier >> 16) >> shift);
  }
};

// value / divisor, rounded down, for values below 65535 and divisors of 2 and more.
class WordDivision {
 public:
  constexpr explicit WordDivision(uint16_t divisor) {
    product_.shift = static_cast<uint8_t>(std::bit_width(divisor - 1u) - 1);
    const uint32_t power = uint32_t{65536} << product_.shift;
    // Where a multiplier that is rounded up errs by too much, one that is rounded down serves for the next value.
    const uint32_t above = (divisor - power % divisor) % divisor;
    increment_ = above > uint32_t{1} << product_.shift ? 1 : 0;
    product_.multiplier = static_cast<uint16_t>((power + above) / divisor - increment_);
  }

  [[gnu::always_inline]] constexpr uint16_t operator()(uint16_t value) const {
    return product_(static_cast<uint16_t>(value + increment_));
  }

 private:
  WordProduct product_;
  uint16_t increment_ = 0;
};

}  // namespace zvk::pixels
