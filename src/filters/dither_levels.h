// What the ordered dither makes of a sample under a threshold: in tables for one at a time, and in arithmetic for many.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace zvk::filters {

// One number of levels, 2 to 256, and one size of matrix, up to 16. With L levels and a matrix of n x n, a sample v is
// on level v (L - 1) / 256 of 0 to L - 1, and v (n n + 1) / 256 is its fraction; level i stands for 255 i / (L - 1).
class DitherLevels {
 public:
  DitherLevels(int32_t levels, int32_t matrixSize);

  // A small fraction goes to the level above, as it is meant to: two levels give a negative.
  uint8_t operator()(uint8_t sample, int32_t threshold) const {
    return results_[sample][fractions_[sample] <= threshold ? 1 : 0];
  }

  // The same for `count` samples, each under the threshold of its place. Both may be the same bytes; else they may not
  // overlap.
  void DitherBytes(const uint8_t *source, const uint8_t *thresholds, uint8_t *dest, int32_t count) const;

 private:
  // The arithmetic in 16 bits. The quotient of 255 i + `addend` and `divisor` is what a multiplication with
  // `reciprocal` leaves above 16 + `shift` bits.
  struct Steps {
    uint16_t levels;     // L - 1
    uint16_t fractions;  // n n + 1
    uint16_t addend;
    uint16_t reciprocal;
    uint16_t shift;
  };

  static Steps StepsFor(int32_t levels, int32_t matrixSize);
  static void RunSteps(Steps steps, const uint8_t *source, const uint8_t *thresholds, uint8_t *dest, int32_t count);

  std::array<std::array<uint8_t, 2>, 256> results_{};  // on the sample's level, on the one above
  std::array<uint8_t, 256> fractions_{};
  Steps steps_;
};

}  // namespace zvk::filters
