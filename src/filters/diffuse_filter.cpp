#include "filters/diffuse_filter.h"

#include <array>
#include <cstddef>
#include <cstdlib>

#include "pixels/filter_frame.h"
#include "pixels/layouts.h"
#include "pixels/neighbourhood.h"
#include "pixels/row_walker.h"

namespace zvk::filters {

namespace {

using enum ColourFamily;

// Distances from -level to level. `count` is odd, so never 0; like every sum here it wraps.
struct RandomDistance {
  int32_t level;
  int32_t count;

  explicit RandomDistance(int32_t callersLevel) : level(callersLevel), count(2 * callersLevel + 1) {}
  int32_t operator()() const { return std::rand() % count - level; }
};

template <class Layout>
void Diffuse(ImageClassData &source, ImageClassData &dest, int32_t level) {
  const RandomDistance distance(level);
  const auto from = Layout::OffsetsOf(source);
  const auto to = Layout::OffsetsOf(dest);
  for (int32_t y = 0; y < source.Height; ++y) {
    HeldRow destRow(dest, y, source);
    for (int32_t x = 0; x < source.Width; ++x) {
      const int32_t dx = distance();
      const int32_t dy = distance();
      const uint8_t *sourceRow = FetchRow(source, PlaceAt(y, dy, source.Height));
      if (sourceRow == nullptr) continue;
      const uint8_t *pixel = sourceRow + ptrdiff_t{PlaceAt(x, dx, source.Width)} * source.PixelSize;
      std::array<uint8_t, Layout::channelCount> samples = {};
      for (size_t c = 0; c < samples.size(); ++c) samples[c] = pixel[from[c]];
      if (destRow.Again() == nullptr) continue;
      uint8_t *destPixel = destRow.Get() + ptrdiff_t{x} * dest.PixelSize;
      for (size_t c = 0; c < samples.size(); ++c) destPixel[to[c]] = samples[c];
    }
  }
}

}  // namespace

REALobject DifuseFilter(REALobject instance, REALobject dest, int32_t level) {
  return RunFilterOn<Gray, RGB>(instance, dest,
                                [&]<class Layout>(Layout, ImageClassData &source, ImageClassData &target) {
                                  Diffuse<Layout>(source, target, level);
                                });
}

}  // namespace zvk::filters
