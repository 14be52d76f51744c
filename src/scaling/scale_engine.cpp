#include "scaling/scale_engine.h"

#include <algorithm>

#include "host/resources.h"
#include "image/image_factory.h"
#include "image/image_record.h"
#include "scaling/scale_filters.h"
#include "scaling/scale_pairs.h"
#include "scaling/scale_passes.h"
#include "scaling/scale_taps.h"

namespace zvk {

namespace {

// --- from two ready images and a temp image on ---

struct PairPasses {
  void (*horizontal)(const ScaleJob &job, const ScaleRows &rows, double rounding);
  void (*vertical)(const ScaleJob &job, const ScaleRows &rows);
};

// True if an image can be worked on; it is then given time.
bool IsReady(ImageClassData &image) {
  if (!IsUsable(image)) return false;
  YieldOn(image);
  return true;
}

bool RunPasses(const PairPasses &passes, const ScaleFilter &filter, ImageClassData &dest, ImageClassData &source,
               ImageClassData &temp, int32_t width, int32_t height) {
  if (!temp.Valid || !dest.Valid || !source.Valid) return false;
  if (!IsReady(source) || !IsReady(dest) || !IsReady(temp)) return false;

  // A source without columns makes this infinite, and all windows empty.
  const double xscale = static_cast<double>(width) / source.Width;
  const double yscale = static_cast<double>(height) / source.Height;
  ScaleTapTable table(width);
  if (!table) return false;
  table.Build(filter, kHorizontalAxis, width, xscale, source.Width, &dest);
  ScaleJob job{&source, &dest, height, width, &temp, table.Lists()};
  passes.horizontal(job, {0, source.Height, &dest}, kRoundToNearest);
  table.FreeTaps();

  if (height > width) {
    table.Replace(height);
    if (!table) return false;
    job.Table = table.Lists();
  }
  // A temp image of more rows than the source gives taps on rows that the horizontal pass has not written.
  table.Build(filter, kVerticalAxis, height, yscale, temp.Height, &dest);
  passes.vertical(job, {0, height, &dest});
  return true;
}

// --- pairs ---

template <const ScalePair &Pair>
bool ScalePictures(const ScaleFilter &filter, ImageClassData &dest, ImageClassData &source, ImageClassData &temp,
                   int32_t width, int32_t height) {
  return RunPasses({HorizontalPass<Pair>, VerticalPass<Pair>}, filter, dest, source, temp, width, height);
}

constexpr auto CMYK_to_CMYK_Scale = ScalePictures<CMYK_to_CMYK>;
constexpr auto CMYK_to_G_Scale = ScalePictures<CMYK_to_G>;
constexpr auto RGB_to_RGB_Scale = ScalePictures<RGB_to_RGB>;
constexpr auto RGB_to_G_Scale = ScalePictures<RGB_to_G>;
constexpr auto G_to_CMYK_Scale = ScalePictures<G_to_CMYK>;
constexpr auto G_to_RGB_Scale = ScalePictures<G_to_RGB>;
constexpr auto G_to_G_Scale = ScalePictures<G_to_G>;

struct PairEntry {
  const ScalePair *pair;
  bool (*scale)(const ScaleFilter &filter, ImageClassData &dest, ImageClassData &source, ImageClassData &temp,
                int32_t width, int32_t height);
};

constexpr PairEntry kPairEntries[] = {
    {&CMYKA_to_CMYKA, ScalePictures<CMYKA_to_CMYKA>},
    {&CMYKA_to_GA, ScalePictures<CMYKA_to_GA>},
    {&RGBA_to_RGBA, ScalePictures<RGBA_to_RGBA>},
    {&RGBA_to_GA, ScalePictures<RGBA_to_GA>},
    {&GA_to_CMYKA, ScalePictures<GA_to_CMYKA>},
    {&GA_to_RGBA, ScalePictures<GA_to_RGBA>},
    {&GA_to_GA, ScalePictures<GA_to_GA>},
    {&G16_to_G16, ScalePictures<G16_to_G16>},
    {&CMYK_to_CMYK, CMYK_to_CMYK_Scale},
    {&CMYK_to_G, CMYK_to_G_Scale},
    {&RGB_to_RGB, RGB_to_RGB_Scale},
    {&RGB_to_G, RGB_to_G_Scale},
    {&G_to_CMYK, G_to_CMYK_Scale},
    {&G_to_RGB, G_to_RGB_Scale},
    {&G_to_G, G_to_G_Scale},
};

// The entry for two images; nil where the system converts nothing.
const PairEntry *FindPairEntry(const ImageClassData &source, const ImageClassData &dest) {
  const ScalePair *pair = FindScalePair(source, dest);
  if (pair == nullptr) return nullptr;
  return std::ranges::find(kPairEntries, pair, &PairEntry::pair);
}

// --- filters ---

uint8_t Scale(const ScaleFilter &filter, REALobject dest, REALobject source, REALobject temp, int32_t width,
              int32_t height) {
  ImageClassData &destRecord = *RecordOf(dest);
  ImageClassData &sourceRecord = *RecordOf(source);
  for (;;) {
    if (temp != nullptr && !RecordOf(temp)->Valid) return false;
    if (!destRecord.Valid || !sourceRecord.Valid) return false;
    const PairEntry *entry = FindPairEntry(sourceRecord, destRecord);
    if (entry == nullptr) return false;
    // The caller's own is taken as it is.
    if (temp != nullptr) return entry->scale(filter, destRecord, sourceRecord, *RecordOf(temp), width, height);

    const ObjectReference created =
        CreatePicture(&sourceRecord, width, sourceRecord.Height, entry->pair->ScaleTempFormat);
    if (!created) return false;
    ImageClassData &tempRecord = *RecordOf(created.Get());
    // A factory may answer with any format: then all begins anew, as often as it does so.
    if (tempRecord.ImageFormat != entry->pair->ScaleTempFormat) continue;
    if (tempRecord.IsMapping) return false;
    return entry->scale(filter, destRecord, sourceRecord, tempRecord, width, height);
  }
}

}  // namespace

uint8_t trianglePictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height) {
  return Scale(kTriangleFilter, dest, source, temp, width, height);
}

uint8_t boxPictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height) {
  return Scale(kBoxFilter, dest, source, temp, width, height);
}

uint8_t lanczos3PictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height) {
  return Scale(kLanczos3Filter, dest, source, temp, width, height);
}

uint8_t lanczos8PictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height) {
  return Scale(kLanczos8Filter, dest, source, temp, width, height);
}

uint8_t mitchellPictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height) {
  return Scale(kMitchellFilter, dest, source, temp, width, height);
}

uint8_t poly3PictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height) {
  return Scale(kPoly3Filter, dest, source, temp, width, height);
}

uint8_t cubicPictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height) {
  return Scale(kCubicFilter, dest, source, temp, width, height);
}

uint8_t PictureScaleZVK(REALobject dest, REALobject source, REALobject temp, int32_t mode, int32_t width,
                        int32_t height) {
  constexpr decltype(&trianglePictureScale) kModes[] = {
      trianglePictureScale, boxPictureScale,   lanczos3PictureScale, lanczos8PictureScale,
      mitchellPictureScale, poly3PictureScale, cubicPictureScale};
  if (dest == nullptr || source == nullptr || height < 1 || width < 1) return false;
  if (mode < 1 || mode > static_cast<int32_t>(std::size(kModes))) return false;
  return kModes[mode - 1](dest, source, temp, width, height);
}

}  // namespace zvk
