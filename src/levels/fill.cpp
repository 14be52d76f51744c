#include "levels/fill.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>

#include "image/channels.h"
#include "pixels/in_place.h"
#include "pixels/layouts.h"
#include "pixels/pixel_watch.h"
#include "pixels/row_samples.h"
#include "pixels/whole_image.h"

namespace zvk::levels {

namespace {

using enum ColourFamily;

bool HasFamily(const ImageClassData &image) { return image.IsGray || image.IsRGB || image.IsCMYK; }

// Where the first byte of a pixel lies whose bytes are all channels, so that a row can be filled as one run. The flags
// decide, and those of the inks are not among them: images of inks, and the views that set no flags, are not packed.
// Nor is a mapped image.
std::optional<int32_t> PackedOffset(const ImageClassData &image) {
  if (image.IsMapping) return std::nullopt;
  int32_t count = 0;
  int32_t lowest = INT32_MAX;
  for (const ChannelField &channel : kChannels) {
    constexpr std::string_view kInks = "CMYK";
    if (kInks.find(channel.letter) != kInks.npos || !(image.*channel.has)) continue;
    ++count;
    lowest = std::min(lowest, image.*channel.offset);
  }
  return count == image.PixelSize ? std::optional(lowest) : std::nullopt;
}

}  // namespace

// --- one value ---

void FillRect1(REALobject instance, int32_t value) { OnWholeImage(FillRect5, instance, value); }

void FillRect5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height, int32_t value) {
  ImageClassData *image = RecordOf(instance);
  const auto rectangle = BeginInPlace(image, {x, y, width, height});
  if (!rectangle || !HasFamily(*image)) return;
  ForEachRow(*image, *rectangle, RowYield::AfterEachRow, [&](const RowPart &part) {
    if (const auto offset = PackedOffset(*image)) {
      const auto bytes = PixelBytes(*image, part.row, *offset, part.x, part.width);
      std::fill(bytes.begin(), bytes.end(), static_cast<uint8_t>(value));
      return;
    }
    VisitLayout<Gray, RGB, CMYK>(*image, [&]<class Layout>(Layout) {
      std::array<uint8_t, Layout::channelCount> values;
      values.fill(static_cast<uint8_t>(value));
      PaintSamples(part.PixelsOf(*image), Layout::OffsetsOf(*image), values);
    });
  });
}

// --- one colour ---

namespace {

bool HasColours(const ImageClassData &image) { return image.HasRed && image.HasGreen && image.HasBlue; }

template <bool kAlpha>
void FillColour(ImageClassData *image, const Rectangle &callers,
                const std::array<uint8_t, Layout<RGB, kAlpha>::channelCount> &colour) {
  if (image == nullptr || !HasColours(*image)) return;
  const auto rectangle = BeginInPlace(image, callers);
  if (!rectangle) return;
  ForEachRow(*image, *rectangle, RowYield::AfterEachRow, [&](const RowPart &part) {
    PaintSamples(part.PixelsOf(*image), Layout<RGB, kAlpha>::OffsetsOf(*image), colour);
  });
}

}  // namespace

void FillRectRGB1(REALobject instance, int32_t red, int32_t green, int32_t blue) {
  OnWholeImage(FillRectRGB5, instance, red, green, blue);
}

void FillRectRGB5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height, int32_t red, int32_t green,
                  int32_t blue) {
  FillColour<false>(RecordOf(instance), {x, y, width, height},
                    {static_cast<uint8_t>(red), static_cast<uint8_t>(green), static_cast<uint8_t>(blue)});
}

void FillRectRGBc1(REALobject instance, uint32_t colour) {
  const auto [red, green, blue] = PartsOf(colour);
  FillRectRGB1(instance, red, green, blue);
}

void FillRectRGBc5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height, uint32_t colour) {
  const auto [red, green, blue] = PartsOf(colour);
  FillRectRGB5(instance, x, y, width, height, red, green, blue);
}

void FillRectRGBA1(REALobject instance, int32_t red, int32_t green, int32_t blue, int32_t alpha) {
  OnWholeImage(FillRectRGBA5, instance, red, green, blue, alpha);
}

void FillRectRGBA5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height, int32_t red, int32_t green,
                   int32_t blue, int32_t alpha) {
  ImageClassData *image = RecordOf(instance);
  if (image == nullptr) return;
  if (!image->HasAlpha) {
    // The rectangle is handed on as it has been fitted, and is fitted there once more.
    const Rectangle fitted = FitRectangle({x, y, width, height}, image->Width, image->Height);
    FillRectRGB5(instance, fitted.x, fitted.y, fitted.width, fitted.height, red, green, blue);
    return;
  }
  FillColour<true>(image, {x, y, width, height},
                   {static_cast<uint8_t>(red), static_cast<uint8_t>(green), static_cast<uint8_t>(blue),
                    static_cast<uint8_t>(alpha)});
}

void FillRectRGBcA1(REALobject instance, uint32_t colour, int32_t alpha) {
  const auto [red, green, blue] = PartsOf(colour);
  FillRectRGBA1(instance, red, green, blue, alpha);
}

void FillRectRGBcA5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height, uint32_t colour,
                    int32_t alpha) {
  const auto [red, green, blue] = PartsOf(colour);
  FillRectRGBA5(instance, x, y, width, height, red, green, blue, alpha);
}

// --- random bytes ---

namespace {

uint8_t RandomByte() { return static_cast<uint8_t>(std::rand()); }

// The channels of a layout in the order in which they get their random bytes: alpha comes first beside gray and beside
// inks, but last beside red, green and blue.
template <class Layout>
std::array<int32_t, Layout::channelCount> RandomOrder(const ImageClassData &image) {
  auto offsets = Layout::OffsetsOf(image);
  if constexpr (Layout::hasAlpha && Layout::family != RGB)
    std::rotate(offsets.begin(), offsets.end() - 1, offsets.end());
  return offsets;
}

// The run of a packed row is set to end at the column that is the rectangle's width, wherever it begins: it is as many
// pixels short as x, and empty with x at or beyond the width.
constexpr int32_t RandomRunWidth(const RowPart &part) { return part.width - part.x; }

}  // namespace

void FillRectRandom1(REALobject instance) { OnWholeImage(FillRectRandom5, instance); }

void FillRectRandom5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height) {
  ImageClassData *image = RecordOf(instance);
  const auto rectangle = BeginInPlace(image, {x, y, width, height});
  if (!rectangle || !HasFamily(*image)) return;
  ForEachRow(*image, *rectangle, RowYield::AfterEachRow, [&](const RowPart &part) {
    if (const auto offset = PackedOffset(*image)) {
      for (uint8_t &byte : PixelBytes(*image, part.row, *offset, part.x, RandomRunWidth(part))) byte = RandomByte();
      return;
    }
    VisitLayout<Gray, RGB, CMYK>(*image, [&]<class Layout>(Layout) {
      const auto offsets = RandomOrder<Layout>(*image);
      const PixelRow pixels = part.PixelsOf(*image);
      for (ptrdiff_t i = 0; i < pixels.count; ++i) {
        for (const int32_t channel : offsets) pixels.first[i * pixels.pixelSize + channel] = RandomByte();
      }
    });
  });
}

// --- zero ---

void ClearRect1(REALobject instance) {
  ImageClassData *image = RecordOf(instance);
  if (image == nullptr || !IsUsable(*image)) return;
  const PixelWatch watch(*image);
  YieldOn(*image);
  if (!watch.HasStorage()) return;
  // Whole rows of the storage, also through a view that shows a part of them. An image without width has rows, too.
  ForEachRow(*image, {0, 0, image->Width, image->Height}, RowYield::AfterEachRow, [&](const RowPart &part) {
    if (image->RowSize > 0) std::memset(part.row, 0, static_cast<size_t>(image->RowSize));
  });
}

void ClearRect5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height) {
  ImageClassData *image = RecordOf(instance);
  const auto rectangle = BeginInPlace(image, {x, y, width, height});
  if (!rectangle) return;
  // No channel is asked where it lies: a view clears its neighbours' samples, and a horizontal clip, which lives in the
  // offsets, the columns at the left edge of its parent.
  ForEachRow(*image, *rectangle, RowYield::AfterEachRow, [&](const RowPart &part) {
    const auto bytes = PixelBytes(*image, part.row, 0, part.x, part.width);
    std::fill(bytes.begin(), bytes.end(), uint8_t{0});
  });
}

}  // namespace zvk::levels
