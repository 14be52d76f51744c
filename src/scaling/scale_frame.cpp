#include "scaling/scale_frame.h"

#include <algorithm>

#include "host/resources.h"
#include "image/image_factory.h"
#include "image/image_record.h"
#include "image/pixel_work.h"
#include "scaling/scale_pairs.h"
#include "scaling/scale_passes.h"
#include "scaling/scale_taps.h"
#include "scaling/thread_runner.h"
#include "scaling/thread_workers.h"
#include "scaling/watched_image.h"

namespace zvk::scaling {

namespace {

// --- from a temp image on ---

struct PairPasses {
  int32_t stride;  // of a temp pixel
  int32_t sampleSize;
  void (*horizontal)(const ScaleJob &job, const ScaleRows &rows, double rounding);
  void (*vertical)(const ScaleJob &job, const ScaleRows &rows);
  RowWorker horizontalWorker;
  RowWorker verticalWorker;
};

// True if an image can be worked on; it is then given time.
bool IsReady(ImageClassData &image) {
  if (!IsUsable(image)) return false;
  YieldOn(image);
  return true;
}

// A pass on threads, for which everyone waits who would take the pixels of its images away.
void RunOnThreads(int32_t threads, int32_t rowCount, const ScaleJob &job, const ImageClassData &read,
                  const ImageClassData &written, RowWorker worker) {
  const PixelWork work(read, written, AwaitThreads, &job);
  RunThreads(threads, rowCount, &job, worker);
}

// The images are watched from before the host first has time.
bool RunPasses(const PairPasses &passes, const ScaleFilter &filter, const WatchedImage &watchedDest,
               std::optional<int32_t> threads, const WatchedImage &watchedSource, const WatchedImage &watchedTemp,
               int32_t width, int32_t height) {
  ImageClassData &dest = watchedDest.Record();
  ImageClassData &source = watchedSource.Record();
  ImageClassData &temp = watchedTemp.Record();
  if (!temp.Valid || !dest.Valid || !source.Valid) return false;
  if (!IsReady(source) || !IsReady(dest) || !IsReady(temp)) return false;

  // A source without columns makes this infinite, and all windows empty.
  const double xscale = static_cast<double>(width) / source.Width;
  const double yscale = static_cast<double>(height) / source.Height;
  // With threads the host gets time in RunThreads alone, not while a table is built.
  ImageClassData *const yieldImage = threads ? nullptr : &dest;

  ScaleTapTable table;
  const int32_t sourceColumns = source.Width;
  if (!table.Build(filter, kHorizontalAxis, width, xscale, sourceColumns, yieldImage)) return false;
  ScaleJob job{&source, &dest, height, width, &temp, table.Lists()};
  const int32_t sourceRows = std::min(watchedSource.RowsOf(sourceColumns, ColumnSize(source, passes.sampleSize)),
                                      watchedTemp.RowsOf(width, passes.stride));
  if (threads) {
    RunOnThreads(*threads, sourceRows, job, source, temp, passes.horizontalWorker);
  } else {
    // A source that grows in a yield is read to its new end, unless something has been left out already.
    passes.horizontal(job, {0, sourceRows < source.Height ? sourceRows : source.Height, yieldImage}, kRoundToNearest);
  }

  // A temp image of more rows than the source gives taps on rows that the horizontal pass has not written.
  if (!table.Build(filter, kVerticalAxis, height, yscale, temp.Height, yieldImage)) return false;
  job.Table = table.Lists();
  const bool hasTemp = watchedTemp.RowsOf(width, passes.stride) > 0;
  const int32_t destRows =
      hasTemp ? std::min(height, watchedDest.RowsOf(width, ColumnSize(dest, passes.sampleSize))) : 0;
  if (threads) {
    RunOnThreads(*threads, destRows, job, temp, dest, passes.verticalWorker);
  } else {
    passes.vertical(job, {0, destRows, yieldImage});
  }
  return true;
}

// --- pairs ---

template <const ScalePair &Pair, RowWorker Horizontal, RowWorker Vertical>
bool ScalePictures(const ScaleFilter &filter, const WatchedImage &dest, std::optional<int32_t> threads,
                   const WatchedImage &source, const WatchedImage &temp, int32_t width, int32_t height) {
  return RunPasses({Pair.Stride, Pair.SampleSize, HorizontalPass<Pair>, VerticalPass<Pair>, Horizontal, Vertical},
                   filter, dest, threads, source, temp, width, height);
}

constexpr auto CMYK_to_CMYK_Scale = ScalePictures<CMYK_to_CMYK, CMYK_to_CMYK_Scale3mt, CMYK_to_CMYK_Scale6mt>;
constexpr auto CMYK_to_G_Scale = ScalePictures<CMYK_to_G, CMYK_to_G_Scale3mt, CMYK_to_G_Scale6mt>;
constexpr auto RGB_to_RGB_Scale = ScalePictures<RGB_to_RGB, RGB_to_RGB_Scale3mt, RGB_to_RGB_Scale6mt>;
constexpr auto RGB_to_G_Scale = ScalePictures<RGB_to_G, RGB_to_G_Scale3mt, RGB_to_G_Scale6mt>;
constexpr auto G_to_CMYK_Scale = ScalePictures<G_to_CMYK, G_to_CMYK_Scale3mt, G_to_CMYK_Scale6mt>;
constexpr auto G_to_RGB_Scale = ScalePictures<G_to_RGB, G_to_RGB_Scale3mt, G_to_RGB_Scale6mt>;
constexpr auto G_to_G_Scale = ScalePictures<G_to_G, G_to_G_Scale3mt, G_to_G_Scale6mt>;

struct PairEntry {
  const ScalePair *pair;
  decltype(G_to_G_Scale) scale;
};

constexpr PairEntry kPairEntries[] = {
    {&CMYKA_to_CMYKA, ScalePictures<CMYKA_to_CMYKA, CMYKA_to_CMYKA_Scale3mt, CMYKA_to_CMYKA_Scale6mt>},
    {&CMYKA_to_GA, ScalePictures<CMYKA_to_GA, CMYKA_to_GA_Scale3mt, CMYKA_to_GA_Scale6mt>},
    {&RGBA_to_RGBA, ScalePictures<RGBA_to_RGBA, RGBA_to_RGBA_Scale3mt, RGBA_to_RGBA_Scale6mt>},
    {&RGBA_to_GA, ScalePictures<RGBA_to_GA, RGBA_to_GA_Scale3mt, RGBA_to_GA_Scale6mt>},
    {&GA_to_CMYKA, ScalePictures<GA_to_CMYKA, GA_to_CMYKA_Scale3mt, GA_to_CMYKA_Scale6mt>},
    {&GA_to_RGBA, ScalePictures<GA_to_RGBA, GA_to_RGBA_Scale3mt, GA_to_RGBA_Scale6mt>},
    {&GA_to_GA, ScalePictures<GA_to_GA, GA_to_GA_Scale3mt, GA_to_GA_Scale6mt>},
    {&G16_to_G16, ScalePictures<G16_to_G16, G16_to_G16_Scale3mt, G16_to_G16_Scale6mt>},
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

// By way of a temp image, wherever that has come from.
bool ScaleThrough(const ScaleFilter &filter, const WatchedImage &dest, std::optional<int32_t> threads,
                  const WatchedImage &source, const WatchedImage &temp, int32_t width, int32_t height) {
  if (!temp.Record().Valid || !dest.Record().Valid || !source.Record().Valid) return false;
  const PairEntry *entry = FindPairEntry(source.Record(), dest.Record());
  return entry != nullptr && entry->scale(filter, dest, threads, source, temp, width, height);
}

}  // namespace

// --- a temp image ---

uint8_t ScalePicture(const ScaleFilter &filter, REALobject dest, std::optional<int32_t> threads, REALobject source,
                     REALobject temp, int32_t width, int32_t height) {
  const WatchedImage watchedDest(*RecordOf(dest), height), watchedSource(*RecordOf(source));
  const ImageClassData &destRecord = watchedDest.Record(), &sourceRecord = watchedSource.Record();
  // The caller's own is taken as it is.
  if (temp != nullptr) {
    const WatchedImage watchedTemp(*RecordOf(temp), sourceRecord.Height);
    return ScaleThrough(filter, watchedDest, threads, watchedSource, watchedTemp, width, height);
  }
  for (;;) {
    if (!destRecord.Valid || !sourceRecord.Valid) return false;
    const PairEntry *entry = FindPairEntry(sourceRecord, destRecord);
    if (entry == nullptr) return false;

    const int32_t format = entry->pair->ScaleTempFormat;
    const int32_t tempRows = sourceRecord.Height;
    const ObjectReference created = CreatePicture(&sourceRecord, width, tempRows, format);
    if (!created) return false;
    const WatchedImage watchedTemp(*RecordOf(created.Get()), tempRows);
    const ImageClassData &tempRecord = watchedTemp.Record();
    // A factory may answer with any format, and with a file, whose one mapped block threads cannot share. For them one
    // thread does the work, as though the caller had given that image.
    if (threads && (tempRecord.ImageFormat != format || tempRecord.IsMapping)) {
      return ScaleThrough(filter, watchedDest, {}, watchedSource, watchedTemp, width, height);
    }
    // On one thread all begins anew, as often as the format is another one.
    if (tempRecord.ImageFormat != format) continue;
    if (tempRecord.IsMapping) return false;
    return entry->scale(filter, watchedDest, threads, watchedSource, watchedTemp, width, height);
  }
}

}  // namespace zvk::scaling
