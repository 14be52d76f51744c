#include "levels/auto_level.h"

#include <algorithm>
#include <array>
#include <span>

#include "host/truncate.h"
#include "pixels/dispatch.h"
#include "pixels/in_place.h"
#include "pixels/layouts.h"
#include "pixels/whole_image.h"

namespace zvk::levels {

namespace {

using Counts = std::array<uint32_t, 256>;
using RGBLayout = Layout<ColourFamily::RGB, false>;

bool CanBeLevelled(const ImageClassData *image) {
  return image != nullptr && image->BitsPerComponent != 16 && image->IsRGB && IsUsable(*image);
}

// --- brightness ---

// The share of each value of a channel in the brightness. The weights are this operation's own: green is nearly all.
constexpr std::array<double, 256> Shares(double weight) {
  std::array<double, 256> shares{};
  for (int32_t value = 0; value < 256; ++value) shares[value] = value * weight;
  return shares;
}
constexpr std::array<double, 256> kRedShares = Shares(0.177);
constexpr std::array<double, 256> kGreenShares = Shares(0.813);
constexpr std::array<double, 256> kBlueShares = Shares(0.01);

// Brightness of `count` pixels, rounded down.
[[gnu::always_inline]] inline void BrightnessBody(const uint8_t *pixel, ptrdiff_t pixelSize, int32_t red, int32_t green,
                                                  int32_t blue, ptrdiff_t count, int32_t *__restrict brightness) {
  for (ptrdiff_t i = 0; i < count; ++i) {
    // The sum is to be made in this grouping.
    const double sum = kBlueShares[pixel[blue]] + (kGreenShares[pixel[green]] + kRedShares[pixel[red]]);
    brightness[i] = static_cast<int32_t>(sum);
    pixel += pixelSize;
  }
}
constexpr auto Brightness = KernelOf<BrightnessBody>;

// Counts of brightness. Neighbours, which are often alike, are counted in different tables, so that none has to wait
// for the count before it.
class Histogram {
 public:
  void CountRow(const ImageClassData &image, const RowPart &part) {
    constexpr ptrdiff_t kAtOnce = 512;
    std::array<int32_t, kAtOnce> brightness{};
    const PixelRow pixels = part.PixelsOf(image);
    const auto [red, green, blue] = RGBLayout::OffsetsOf(image);
    for (ptrdiff_t x = 0; x < pixels.count; x += kAtOnce) {
      const ptrdiff_t count = std::min(kAtOnce, pixels.count - x);
      Brightness(pixels.first + x * pixels.pixelSize, pixels.pixelSize, red, green, blue, count, brightness.data());
      Count(std::span(brightness).first(static_cast<size_t>(count)));
    }
  }

  // How many pixels are of a brightness or darker. The counts wrap in 32 bits.
  Counts RunningSum() const {
    Counts sums{};
    uint32_t sum = 0;
    for (size_t i = 0; i < sums.size(); ++i) {
      for (const Counts &counts : counts_) sum += counts[i];
      sums[i] = sum;
    }
    return sums;
  }

 private:
  void Count(std::span<const int32_t> brightness) {
    size_t i = 0;
    for (; i + kTables <= brightness.size(); i += kTables) {
      for (size_t table = 0; table < kTables; ++table) ++counts_[table][static_cast<size_t>(brightness[i + table])];
    }
    for (; i < brightness.size(); ++i) ++counts_[0][static_cast<size_t>(brightness[i])];
  }

  static constexpr size_t kTables = 4;
  std::array<Counts, kTables> counts_{};
};

// --- levels ---

// The last brightness up to which there are no more pixels than that share of all; 0 if there is none. The threshold
// is taken in single precision.
int32_t LevelAt(float share, const Counts &sums) {
  const auto threshold = static_cast<int64_t>(static_cast<float>(sums[255]) * share);
  int32_t level = 255;
  while (level > 0 && sums[static_cast<size_t>(level)] > threshold) --level;
  return level;
}

std::array<uint8_t, 256> LevelTable(int32_t low, int32_t high) {
  std::array<uint8_t, 256> table{};
  // Infinite where both levels are the same: the one value between them then makes no number, which ends as 0.
  const double scale = 255.0 / (high - low);
  for (int32_t value = 0; value < 256; ++value) {
    table[static_cast<size_t>(value)] = value < low    ? uint8_t{0}
                                        : value > high ? uint8_t{255}
                                                       : static_cast<uint8_t>(Truncate((value - low) * scale));
  }
  return table;
}

void LevelRow(const ImageClassData &image, const RowPart &part, const std::array<uint8_t, 256> &table) {
  const PixelRow pixels = part.PixelsOf(image);
  const auto offsets = RGBLayout::OffsetsOf(image);
  uint8_t *pixel = pixels.first;
  for (ptrdiff_t i = 0; i < pixels.count; ++i) {
    for (const int32_t offset : offsets) pixel[offset] = table[pixel[offset]];
    pixel += pixels.pixelSize;
  }
}

}  // namespace

uint8_t AutoLevel1(REALobject instance) { return OnWholeImage(AutoLevel5, instance); }

uint8_t AutoLevel5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height) {
  ImageClassData *image = RecordOf(instance);
  if (!CanBeLevelled(image)) return false;
  const auto rectangle = BeginInPlace(image, {x, y, width, height});
  if (!rectangle) return false;
  Histogram histogram;
  const bool hasPixels = ForEachRow(*image, *rectangle, RowYield::AfterEachRow,
                                    [&](const RowPart &part) { histogram.CountRow(*image, part); });
  // Other code of the host may have closed the image or constructed it anew.
  if (!hasPixels || !CanBeLevelled(image)) return false;
  const Counts sums = histogram.RunningSum();
  const auto table = LevelTable(LevelAt(0.005F, sums), LevelAt(0.995F, sums));
  ForEachRow(*image, *rectangle, RowYield::None, [&](const RowPart &part) { LevelRow(*image, part, table); });
  return true;
}

}  // namespace zvk::levels
