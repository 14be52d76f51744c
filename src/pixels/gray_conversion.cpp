#include "pixels/gray_conversion.h"

#include <algorithm>
#include <cstddef>

#include "pixels/loop_steps.h"
#include "pixels/luma.h"
#include "pixels/overlap.h"

namespace zvk::pixels {

GrayConversion::GrayConversion(int32_t sourcePixelSize, const std::array<int32_t, 3> &colours, int32_t destPixelSize,
                               int32_t gray, const std::optional<SampleMove> &alpha)
    : colours_(colours),
      gray_(gray),
      readGray_(sourcePixelSize, colours),
      writeGray_(1, destPixelSize, std::array{SampleMove{0, gray}}),
      source_{sourcePixelSize, RangeOf(colours)},
      dest_{destPixelSize, {gray, gray}} {
  if (!alpha) return;
  alpha_ = Alpha{*alpha, SampleMover(sourcePixelSize, 1, std::array{SampleMove{alpha->from, 0, alpha->complement}}),
                 SampleMover(1, destPixelSize, std::array{SampleMove{0, alpha->to}})};
  const auto [red, green, blue] = colours;
  source_.offsets = RangeOf(std::array{red, green, blue, alpha->from});
  dest_.offsets = RangeOf(std::array{gray, alpha->to});
}

void GrayConversion::operator()(const uint8_t *source, uint8_t *dest, int32_t width) const {
  if (width < 1) return;
  // The order decides the bytes where rows overlap, and where a sample lies among those of the next pixel.
  if (RowsOverlap(source, source_, dest, dest_, width) || !PixelsAreApart(dest_.offsets, dest_.pixelSize)) {
    MoveInOrder(source, dest, width);
    return;
  }
  constexpr int32_t kMostAtOnce = 1024;
  std::array<uint8_t, kMostAtOnce> gray, alpha;
  for (int32_t left = width; left > 0;) {
    const int32_t count = std::min(left, kMostAtOnce);
    readGray_(source, gray.data(), count);
    if (alpha_) alpha_->read(source, alpha.data(), count);
    writeGray_(gray.data(), dest, count);
    if (alpha_) alpha_->write(alpha.data(), dest, count);
    source += ptrdiff_t{count} * source_.pixelSize;
    dest += ptrdiff_t{count} * dest_.pixelSize;
    left -= count;
  }
}

void GrayConversion::MoveInOrder(const uint8_t *source, uint8_t *dest, int32_t width) const {
  const ptrdiff_t sourcePixelSize = source_.pixelSize, destPixelSize = dest_.pixelSize;
  const auto [red, green, blue] = colours_;
  const ptrdiff_t gray = gray_;
  const SampleMove alphaMove = alpha_ ? alpha_->move : SampleMove{0, 0};
  for (int32_t x = 0; x < width; ++x) {
    const int32_t sample = Luma(source[red], source[green], source[blue]);
    if (alpha_) {
      const uint8_t alpha = source[alphaMove.from];
      dest[gray] = static_cast<uint8_t>(sample);
      dest[alphaMove.to] = alphaMove.complement ? static_cast<uint8_t>(~alpha) : alpha;
    } else {
      dest[gray] = static_cast<uint8_t>(sample);
    }
    source += sourcePixelSize;
    dest += destPixelSize;
    OneStepAtATime();  // the compiler cannot tell by addresses whether two mappings of a file overlap
  }
}

}  // namespace zvk::pixels
