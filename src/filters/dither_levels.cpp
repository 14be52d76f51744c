#include "filters/dither_levels.h"

#include <algorithm>
#include <bit>

#include "pixels/dispatch.h"

namespace zvk::filters {

DitherLevels::DitherLevels(int32_t levels, int32_t matrixSize) : steps_(StepsFor(levels, matrixSize)) {
  std::array<uint8_t, 256> map = {};
  for (int32_t i = 0; i < levels; ++i) map[i] = static_cast<uint8_t>(i * 255 / (levels - 1));
  for (int32_t v = 0; v < 256; ++v) {
    const int32_t level = v * (levels - 1) / 256;
    results_[v] = {map[level], map[level + 1]};
    // 255 x 257 / 256, the largest, is 255.
    fractions_[v] = static_cast<uint8_t>(v * (matrixSize * matrixSize + 1) / 256);
  }
}

// Division by multiplication after Robison, "N-Bit Unsigned Division Via N-Bit Multiply-Add": of the reciprocals
// rounded up and down one is exact, the latter if the dividend is raised by 1.
DitherLevels::Steps DitherLevels::StepsFor(int32_t levels, int32_t matrixSize) {
  const auto divisor = static_cast<uint32_t>(levels - 1);
  const auto shift = static_cast<uint32_t>(std::bit_width(divisor)) - 1;
  const uint32_t one = uint32_t{1} << (16 + shift);
  const uint32_t down = one / divisor;
  const bool roundUp = !std::has_single_bit(divisor) && divisor - one % divisor <= uint32_t{1} << shift;
  // For a power of two the reciprocal is 65536, and one less will do.
  const uint32_t reciprocal = std::min(roundUp ? down + 1 : down, uint32_t{UINT16_MAX});
  return {static_cast<uint16_t>(divisor), static_cast<uint16_t>(matrixSize * matrixSize + 1),
          static_cast<uint16_t>(roundUp ? 0 : 1), static_cast<uint16_t>(reciprocal), static_cast<uint16_t>(shift)};
}

[[gnu::always_inline]] inline void DitherLevels::RunSteps(Steps steps, const uint8_t *source, const uint8_t *thresholds,
                                                          uint8_t *dest, int32_t count) {
  // Source and dest may be the same bytes, of which each is read before it is written.
#pragma GCC ivdep
  for (int32_t i = 0; i < count; ++i) {
    const uint16_t sample = source[i];
    const auto level = static_cast<uint16_t>(static_cast<uint16_t>(sample * steps.levels) >> 8);
    const auto fraction = static_cast<uint16_t>(static_cast<uint16_t>(sample * steps.fractions) >> 8);
    const auto above = static_cast<uint16_t>(fraction <= thresholds[i] ? 1 : 0);
    const auto dividend = static_cast<uint16_t>((level + above) * 255 + steps.addend);
    const auto quotient = static_cast<uint16_t>(uint32_t{dividend} * steps.reciprocal >> 16);
    dest[i] = static_cast<uint8_t>(quotient >> steps.shift);
  }
}

void DitherLevels::DitherBytes(const uint8_t *source, const uint8_t *thresholds, uint8_t *dest, int32_t count) const {
  static constexpr auto kRun = KernelOf<RunSteps>;
  kRun(steps_, source, thresholds, dest, count);
}

}  // namespace zvk::filters
