// Scales of images over storage of every kind, files most often, which may be over the same bytes.
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "scaling/scale_engine.h"
#include "tests/naive/scale.h"
#include "tests/scaling/scale_generators.h"
#include "tests/scenes/cases.h"
#include "tests/scenes/stored_image.h"
#include "tests/support/plugin_host.h"

namespace zvk::scaling {
namespace {

using scenes::CheckCases;
using scenes::ImageObject;
using scenes::Kind;
using scenes::StoredImage;

// A source, a temp and a destination, of which now and then two are over one storage, and all storages behind them.
struct FileScene {
  FileScene(Random &random, PluginHost &host) {
    const auto [sourceFormat, destFormat] = PairOfFormats(random);
    width = random.Side(40);
    height = random.Side(90);
    const int32_t sourceWidth = random.Side(60), sourceHeight = random.Side(40);
    source = Add(random, host, sourceWidth, sourceHeight, sourceFormat);
    dest = random.OneIn(5) && sourceWidth >= width && sourceHeight >= height && sourceFormat == destFormat
               ? Again(random, host, sourceFormat)
               : Add(random, host, width, height, destFormat);
    const auto pair = naive::PairFor(*RecordOf(source), *RecordOf(dest));
    temp = Add(random, host, width, sourceHeight, pair->tempFormat);
  }

  ImageObject Add(Random &random, PluginHost &host, int32_t columns, int32_t rows, int32_t format) {
    // A bitmap or picture has formats of its own.
    const Kind kind = random.Of({Kind::Memory, Kind::Block, Kind::Backwards, Kind::File, Kind::File, Kind::File});
    scenes::RowLayout layout = scenes::AnyRowLayout(random, kind, rows);
    // No wide sample is cut by the end of a row: what becomes of that one is a test of its own.
    layout.gap = layout.gap / 2 * 2;
    stored.push_back(std::make_unique<StoredImage>(host, kind, columns, rows, format, layout));
    stored.back()->Fill(random);
    return stored.back()->Image();
  }
  // The first image itself, or another one over its file.
  ImageObject Again(Random &random, PluginHost &host, int32_t format) const {
    const StoredImage &first = *stored.front();
    return first.Storage() == Kind::File && random.OneIn(2) ? first.Reopened(random, host, format) : first.Image();
  }

  std::vector<scenes::Bytes> Snapshot() const {
    std::vector<scenes::Bytes> bytes;
    for (const auto &each : stored) bytes.push_back(each->Bytes());
    return bytes;
  }
  void Restore(const std::vector<scenes::Bytes> &bytes) const {
    for (size_t i = 0; i < stored.size(); ++i) stored[i]->SetBytes(bytes[i]);
  }

  int32_t width = 0, height = 0;
  std::vector<std::unique_ptr<StoredImage>> stored;
  ImageObject source, dest, temp;
};

TEST(ScaleFilesProperty, ImagesInFilesGiveTheNaiveBytes) {
  PluginHost host;
  // The clock never stands still, so that whoever wants to yield does.
  static uint32_t ticks;
  ticks = 0;
  host->SetEntry(
      "TickCount", +[]() -> uint32_t { return ++ticks; });
  CheckCases([&](Random &random) {
    const FileScene scene(random, host);
    const auto before = scene.Snapshot();
    const int32_t mode = random.Between(1, 7);
    ImageClassData &source = *RecordOf(scene.source), &dest = *RecordOf(scene.dest), &temp = *RecordOf(scene.temp);
    // Threads would pull a caller's temp in a file out of each other's hands.
    const bool threaded = random.OneIn(3) && !temp.IsMapping, yields = random.OneIn(4);
    const bool onThreads = threaded && !source.IsMapping && !dest.IsMapping;
    naive::Scale(dest, source, temp, mode, scene.width, scene.height, onThreads ? 0.0 : 0.5);
    const auto expected = scene.Snapshot();
    scene.Restore(before);
    if (yields) dest.Yield.YieldTicks = 1;
    const bool scaled =
        threaded ? PictureScaleZVKMT(scene.dest, 2, scene.source, scene.temp, mode, scene.width, scene.height)
                 : PictureScaleZVK(scene.dest, scene.source, scene.temp, mode, scene.width, scene.height);
    RC_ASSERT(scaled);
    RC_ASSERT(scene.Snapshot() == expected);
  });
}

}  // namespace
}  // namespace zvk::scaling
