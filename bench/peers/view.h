// Pixels wherever a library keeps them, the picture that all work on, and what is compared of their results.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace zvk::peers {

struct Size {
  int32_t width;
  int32_t height;
};

// Channels in their order in a pixel; the 16-bit samples are in the order of the machine.
enum class Layout : uint8_t { Gray, Gray16, RGB, RGBA, BGRA };
constexpr int32_t SampleBytes(Layout layout) { return layout == Layout::Gray16 ? 2 : 1; }
constexpr int32_t Channels(Layout layout) {
  return layout == Layout::Gray || layout == Layout::Gray16 ? 1 : layout == Layout::RGB ? 3 : 4;
}
constexpr int32_t PixelBytes(Layout layout) { return SampleBytes(layout) * Channels(layout); }

// Rows of pixels, interleaved or in planes. What `row` gives is used up before the next row is asked for.
struct View {
  Size size;
  int32_t sampleBytes;
  ptrdiff_t pixelStep;
  std::vector<ptrdiff_t> channels;  // gray, or red, green, blue and, if it takes part, alpha: from the row's start
  std::function<uint8_t *(int32_t y)> row;
};

// Interleaved rows that lie `stride` bytes apart.
View PackedView(void *pixels, size_t stride, Size size, Layout layout);

// Fills all channels: soft waves and some noise, as in a photograph.
void DrawTestPicture(const View &view);

// Mean levels, 0 to 255, of each tile of a grid of 5 x 5: row by row, in each tile the channels. A view of one row has
// one row of tiles.
std::vector<double> TileLevels(const View &view);

}  // namespace zvk::peers
