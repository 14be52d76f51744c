#include "filters/tone_filters.h"

#include <optional>

#include "filters/lookup_table.h"
#include "filters/tone_tables.h"
#include "host/truncate.h"
#include "pixels/filter_frame.h"
#include "pixels/layouts.h"

namespace zvk::filters {

namespace {

using enum ColourFamily;

ToneTable TableOf(double gamma) { return GammaTable(gamma); }
ToneTable TableOf(REALarray array) { return TransferTable(array); }

// What a filter's tables are made of: a curve for gray images, one for each colour of the others, and one for alpha or
// none, in which case alpha is not written.
template <class Curve>
struct ToneCurves {
  Curve gray;
  std::array<Curve, 3> colours;
  std::optional<Curve> alpha = std::nullopt;
};

template <class Layout, class Curve>
void MapCurves(ImageClassData &source, ImageClassData &dest, const ToneCurves<Curve> &curves) {
  std::array<ToneTable, Layout::channelCount> tables;
  if constexpr (Layout::family == Gray) {
    tables[0] = TableOf(curves.gray);
  } else {
    for (size_t c = 0; c < 3; ++c) {
      const bool isNew = c == 0 || curves.colours[c] != curves.colours[c - 1];
      tables[c] = isNew ? TableOf(curves.colours[c]) : tables[c - 1];
    }
  }
  if constexpr (Layout::hasAlpha) tables.back() = TableOf(*curves.alpha);
  MapSamples<Layout>(source, dest, tables);
}

template <class Curve>
void ApplyCurves(ImageClassData &source, ImageClassData &dest, const ToneCurves<Curve> &curves) {
  VisitLayout<Gray, RGB>(source, [&]<class Found>(Found) {
    if (Found::hasAlpha && curves.alpha) {
      MapCurves<Layout<Found::family, true>>(source, dest, curves);
    } else {
      MapCurves<Layout<Found::family, false>>(source, dest, curves);
    }
  });
}

// The gamma of a gray image is a whole number: fractions are cut off before the gammas are blended, and after it.
double GrayGamma(double red, double green, double blue) {
  const int32_t whole = (Truncate(red) * 77 + Truncate(green) * 151 + Truncate(blue) * 28) / 256;
  return whole;
}

// --- workers: one gamma or one array for each channel that is written ---

void rbGammaFilterG(ImageClassData &source, ImageClassData &dest, double gamma) {
  ApplyCurves<double>(source, dest, {gamma, {gamma, gamma, gamma}});
}

void rbGammaFilterGA(ImageClassData &source, ImageClassData &dest, double gamma, double alphaGamma) {
  ApplyCurves<double>(source, dest, {gamma, {gamma, gamma, gamma}, alphaGamma});
}

void rbGammaFilterRGB(ImageClassData &source, ImageClassData &dest, double red, double green, double blue) {
  ApplyCurves<double>(source, dest, {GrayGamma(red, green, blue), {red, green, blue}});
}

void rbGammaFilterRGBA(ImageClassData &source, ImageClassData &dest, double red, double green, double blue,
                       double alpha) {
  ApplyCurves<double>(source, dest, {GrayGamma(red, green, blue), {red, green, blue}, alpha});
}

void rbTransferFilterG(ImageClassData &source, ImageClassData &dest, REALarray gray) {
  ApplyCurves<REALarray>(source, dest, {gray, {gray, gray, gray}});
}

void rbTransferFilterGA(ImageClassData &source, ImageClassData &dest, REALarray gray, REALarray alpha) {
  ApplyCurves<REALarray>(source, dest, {gray, {gray, gray, gray}, alpha});
}

// A gray image takes the green array as it stands, unlike the gamma of a gray image.
void rbTransferFilterRGB(ImageClassData &source, ImageClassData &dest, REALarray red, REALarray green, REALarray blue) {
  ApplyCurves<REALarray>(source, dest, {green, {red, green, blue}});
}

void rbTransferFilterRGBA(ImageClassData &source, ImageClassData &dest, REALarray red, REALarray green, REALarray blue,
                          REALarray alpha) {
  ApplyCurves<REALarray>(source, dest, {green, {red, green, blue}, alpha});
}

template <class... Curves>
REALobject RunTone(REALobject instance, REALobject dest, void (*worker)(ImageClassData &, ImageClassData &, Curves...),
                   Curves... curves) {
  return RunFilter(instance, dest, NewDest::SameSize,
                   [&](ImageClassData &source, ImageClassData &target) { worker(source, target, curves...); });
}

}  // namespace

// --- handlers ---

REALobject SolarizeFilter(REALobject instance, REALobject dest) {
  return RunFilterOn<Gray, RGB, CMYK>(instance, dest,
                                      []<class Layout>(Layout, ImageClassData &source, ImageClassData &target) {
                                        MapSamples<Layout>(source, target, kSolarizeTable);
                                      });
}

REALobject GammaFilterG(REALobject instance, REALobject dest, double gamma) {
  return RunTone(instance, dest, rbGammaFilterG, gamma);
}

REALobject GammaFilterGA(REALobject instance, REALobject dest, double gamma, double alphaGamma) {
  return RunTone(instance, dest, rbGammaFilterGA, gamma, alphaGamma);
}

REALobject GammaFilterRGB(REALobject instance, REALobject dest, double redGamma, double greenGamma, double blueGamma) {
  return RunTone(instance, dest, rbGammaFilterRGB, redGamma, greenGamma, blueGamma);
}

REALobject GammaFilterRGBA(REALobject instance, REALobject dest, double redGamma, double greenGamma, double blueGamma,
                           double alphaGamma) {
  return RunTone(instance, dest, rbGammaFilterRGBA, redGamma, greenGamma, blueGamma, alphaGamma);
}

REALobject GainFilter(REALobject instance, REALobject dest, double gain, double bias) {
  return RunFilterOn<Gray, RGB>(instance, dest,
                                [&]<class Layout>(Layout, ImageClassData &source, ImageClassData &target) {
                                  MapSamples<Layout>(source, target, GainTable(gain, bias));
                                });
}

REALobject TransferFilterG(REALobject instance, REALobject dest, REALarray gray) {
  return RunTone(instance, dest, rbTransferFilterG, gray);
}

REALobject TransferFilterGA(REALobject instance, REALobject dest, REALarray gray, REALarray alpha) {
  return RunTone(instance, dest, rbTransferFilterGA, gray, alpha);
}

REALobject TransferFilterRGB(REALobject instance, REALobject dest, REALarray red, REALarray green, REALarray blue) {
  return RunTone(instance, dest, rbTransferFilterRGB, red, green, blue);
}

REALobject TransferFilterRGBA(REALobject instance, REALobject dest, REALarray red, REALarray green, REALarray blue,
                              REALarray alpha) {
  return RunTone(instance, dest, rbTransferFilterRGBA, red, green, blue, alpha);
}

}  // namespace zvk::filters
