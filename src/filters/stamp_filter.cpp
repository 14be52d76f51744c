#include "filters/stamp_filter.h"

#include <array>
#include <cstddef>

#include "filters/box_blur.h"
#include "filters/lookup_table.h"
#include "filters/tone_tables.h"
#include "host/resources.h"
#include "host/truncate.h"
#include "pixels/filter_frame.h"
#include "pixels/layouts.h"

namespace zvk::filters {

namespace {

// From 0 to 1 over a softness around a threshold: t x t x (3 - 2 t) in between.
class StampCurve {
 public:
  StampCurve(double threshold, double softness)
      : low_((threshold - softness * 0.5) * 255), high_((threshold + softness * 0.5) * 255) {}

  ToneTable Between(uint8_t black, uint8_t white) const {
    ToneTable table = {};
    for (size_t i = 0; i < table.size(); ++i) {
      table[i] = static_cast<uint8_t>(Truncate(At(static_cast<double>(i)) * (white - black) + black));
    }
    return table;
  }

 private:
  double At(double sample) const {
    if (sample < low_) return 0;
    if (sample >= high_) return 1;
    const double t = (sample - low_) / (high_ - low_);
    return (t * -2 + 3) * t * t;
  }

  double low_;
  double high_;
};

// The bit at which the part of a host's colour begins that a channel goes by; gray goes by green.
constexpr int32_t ColourShift(ChannelOffset channel) {
  if (channel == &ImageClassData::RedOffset) return 16;
  return channel == &ImageClassData::BlueOffset ? 0 : 8;
}

constexpr uint8_t PartOf(uint32_t colour, ChannelOffset channel) {
  return static_cast<uint8_t>(colour >> ColourShift(channel));
}

template <class Colours>
void Stamp(ImageClassData &source, ImageClassData &dest, const StampCurve &curve, uint32_t black, uint32_t white) {
  std::array<ToneTable, Colours::channelCount> tables = {};
  for (size_t c = 0; c < tables.size(); ++c) {
    tables[c] = curve.Between(PartOf(black, Colours::channels[c]), PartOf(white, Colours::channels[c]));
  }
  MapSamples<Colours>(source, dest, tables);
}

}  // namespace

REALobject StampFilter(REALobject instance, REALobject dest, double radius, double threshold, double softness,
                       uint32_t black, uint32_t white) {
  const ObjectReference blurred(BoxBlurFilter2(instance, dest, radius / 3.0, 3, true, true));
  if (!blurred) return nullptr;
  // What dest was given is a by-product; the result is new, and only the colours of it are written.
  return RunFilter(blurred.Get(), nullptr, NewDest::SameSize, [&](ImageClassData &source, ImageClassData &target) {
    const StampCurve curve(threshold, softness);
    using enum ColourFamily;
    VisitLayout<Gray, RGB>(
        source, [&]<class Found>(Found) { Stamp<Layout<Found::family, false>>(source, target, curve, black, white); });
  });
}

}  // namespace zvk::filters
