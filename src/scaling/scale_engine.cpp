#include "scaling/scale_engine.h"

#include <algorithm>
#include <optional>

#include "host/resources.h"
#include "image/image_factory.h"
#include "image/image_record.h"
#include "image/pixel_work.h"
#include "scaling/scale_filters.h"
#include "scaling/scale_pairs.h"
#include "scaling/scale_passes.h"
#include "scaling/scale_taps.h"
#include "scaling/short_passes.h"
#include "scaling/thread_runner.h"
#include "scaling/thread_workers.h"
#include "scaling/watched_image.h"

namespace zvk::scaling {

namespace {

// What is asked for. The images are watched from before the host first has time.
struct Request {
  const ScaleFilter &filter;
  const WatchedImage &dest;
  const WatchedImage &source;
  int32_t width;
  int32_t height;
  std::optional<int32_t> threads;  // empty: the calling thread, with time for the host after each list and row
};

// --- from a temp image on ---

// True if an image can be worked on; it is then given time.
bool IsReady(ImageClassData &image) {
  if (!IsUsable(image)) return false;
  YieldOn(image);
  return true;
}

bool RunPasses(const ScalePair &pair, const Request &request, const WatchedImage &watchedTemp) {
  const auto [filter, watchedDest, watchedSource, width, height, threads] = request;
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

  const ScalePasses &passes = PassesOf(pair);
  ScaleTapTable table;
  ScaleJob job{&source, &dest, height, width, &temp, nullptr};
  const auto runPass = [&](const ThreadedPass &pass, const int32_t &rowCount, const ImageClassData &read,
                           const ImageClassData &written) {
    if (!request.threads) return pass.Pass(job, {0, rowCount, yieldImage}, kRoundToNearest);
    // Whoever would take the pixels of these images away waits.
    const PixelWork work(read, written, AwaitThreads, &pass);
    RunThreads(*request.threads, rowCount, &pass, PassWorker);
  };

  const int32_t sourceColumns = source.Width;
  if (!table.Build(filter, kHorizontalAxis, width, xscale, sourceColumns, yieldImage)) return false;
  const int32_t sourceRows = std::min(watchedSource.RowsOf(sourceColumns, ColumnSize(source, pair.SampleSize)),
                                      watchedTemp.RowsOf(width, pair.Stride));
  job.Table = table.Lists();
  const bool rowByRow = yieldImage != nullptr && yieldImage->Yield.YieldTicks != 0;
  const ShortTable columns = ShortenColumns(job, pair, threads ? kRoundTowardZero : kRoundToNearest, rowByRow);
  job.Short = &columns;
  // A source that grows in a yield is read to its new end, unless something has been left out already.
  runPass(HorizontalOnThreads(passes, job), sourceRows < source.Height ? sourceRows : source.Height, source, temp);

  // A temp image of more rows than the source gives taps on rows that the horizontal pass has not written.
  if (!table.Build(filter, kVerticalAxis, height, yscale, temp.Height, yieldImage)) return false;
  job.Table = table.Lists();
  const ShortTable rows = ShortenRows(job, pair);
  job.Short = &rows;
  const bool hasTemp = watchedTemp.RowsOf(width, pair.Stride) > 0;
  const int32_t destRows = hasTemp ? std::min(height, watchedDest.RowsOf(width, ColumnSize(dest, pair.SampleSize))) : 0;
  runPass(VerticalOnThreads(passes, job), destRows, temp, dest);
  return true;
}

// By way of a temp image, wherever that has come from.
bool ScaleThrough(const Request &request, const WatchedImage &temp) {
  const ImageClassData &dest = request.dest.Record(), &source = request.source.Record();
  if (!temp.Record().Valid || !dest.Valid || !source.Valid) return false;
  const ScalePair *pair = FindScalePair(source, dest);
  return pair != nullptr && RunPasses(*pair, request, temp);
}

// By way of a temp image from the source's factories.
bool ScaleThroughNew(const Request &request) {
  const ImageClassData &dest = request.dest.Record(), &source = request.source.Record();
  for (;;) {
    if (!dest.Valid || !source.Valid) return false;
    const ScalePair *pair = FindScalePair(source, dest);
    if (pair == nullptr) return false;

    const int32_t format = pair->ScaleTempFormat;
    const int32_t tempRows = source.Height;
    const ObjectReference created = CreatePicture(&source, request.width, tempRows, format);
    if (!created) return false;
    const WatchedImage watchedTemp(*RecordOf(created.Get()), tempRows);
    const ImageClassData &temp = watchedTemp.Record();
    // A factory may answer with any format, and with a file, whose one mapped block threads cannot share. For them one
    // thread does the work, as though the caller had given that image.
    if (request.threads && (temp.ImageFormat != format || temp.IsMapping)) {
      Request onOneThread = request;
      onOneThread.threads.reset();
      return ScaleThrough(onOneThread, watchedTemp);
    }
    // On one thread all begins anew, as often as the format is another one.
    if (temp.ImageFormat != format) continue;
    if (temp.IsMapping) return false;
    return RunPasses(*pair, request, watchedTemp);
  }
}

// Both methods.
bool Scale(REALobject dest, REALobject source, REALobject temp, int32_t mode, int32_t width, int32_t height,
           std::optional<int32_t> threads) {
  if (dest == nullptr || source == nullptr || height < 1 || width < 1) return false;
  const ScaleFilter *filter = FindScaleFilter(mode);
  if (filter == nullptr) return false;
  const WatchedImage watchedDest(*RecordOf(dest), height), watchedSource(*RecordOf(source));
  Request request{*filter, watchedDest, watchedSource, width, height, threads};
  // Threads cannot share the one mapped block of a file.
  if (watchedSource.Record().IsMapping || watchedDest.Record().IsMapping) request.threads.reset();
  if (temp == nullptr) return ScaleThroughNew(request);
  // The caller's own is taken as it is.
  return ScaleThrough(request, WatchedImage(*RecordOf(temp), watchedSource.Record().Height));
}

}  // namespace

uint8_t PictureScaleZVK(REALobject dest, REALobject source, REALobject temp, int32_t mode, int32_t width,
                        int32_t height) {
  return Scale(dest, source, temp, mode, width, height, {});
}

uint8_t PictureScaleZVKMT(REALobject dest, int32_t threads, REALobject source, REALobject temp, int32_t mode,
                          int32_t width, int32_t height) {
  return Scale(dest, source, temp, mode, width, height, threads);
}

}  // namespace zvk::scaling
