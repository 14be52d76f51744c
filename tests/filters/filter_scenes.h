// Random scenes for filters: a source and a dest of every format and view over every kind of storage, with and without
// bytes in common, and the comparison of all their bytes with those of a naive filter.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/filters/filter_testing.h"
#include "tests/naive/filters.h"
#include "tests/scenes/cases.h"
#include "tests/scenes/formats.h"
#include "tests/scenes/stored_image.h"
#include "tests/scenes/views.h"

namespace filter_testing {

using scenes::AnyKind;
using scenes::AnyLikelyFormat;
using scenes::AnyOddView;
using scenes::CheckCases;
using scenes::Kind;
using scenes::Random;
using scenes::StoredImage;

// How large a source may be. Most are small; some are as wide as that, for loops that do much at once. A file is
// narrower, as its block is moved about all the time.
struct Limits {
  int32_t width = 300;
  int32_t height = 9;
  // The last row of a source's block is as long as the others are apart, pixels or not.
  bool wholeRows = false;
};

// An image of noise; a row of a table may be missing, and rows of a block may overlap.
inline std::shared_ptr<const StoredImage> AnyStored(Random &random, PluginHost &host, Kind kind, int32_t width,
                                                    int32_t height, int32_t format, bool wholeRows = false) {
  scenes::RowLayout layout = scenes::AnyOverlappingRowLayout(random, kind, width, height, format);
  layout.wholeLastRow = wholeRows;
  auto stored = std::make_shared<const StoredImage>(host, kind, width, height, format, layout);
  stored->Fill(random);
  return stored;
}

// True if the storage holds every byte that a filter over columns x rows pixels may touch of the image.
inline bool Holds(const StoredImage &stored, const Image &image, int32_t columns, int32_t rows) {
  ImageClassData &record = Record(image);
  if (stored.Storage() == Kind::File && record.Height < rows) return false;
  for (int32_t y = 0; y < rows; ++y) {
    const uint8_t *const row = record.GetRow(&record, y);
    if (row == nullptr) continue;
    for (const char channel : std::string("gRGBCMYKA")) {
      const ptrdiff_t last = ptrdiff_t{columns - 1} * record.PixelSize + naive::OffsetOf(record, channel);
      if (last >= stored.BytesFrom(row)) return false;
    }
  }
  return true;
}

// A source with a dest (empty: nil), and the storages behind them.
struct Scene {
  Image source;
  Image dest;
  std::vector<std::shared_ptr<const StoredImage>> stored;

  std::vector<Bytes> Snapshot() const {
    std::vector<Bytes> bytes;
    for (const auto &each : stored) bytes.push_back(each->Bytes());
    return bytes;
  }
  void Restore(const std::vector<Bytes> &bytes) const {
    for (size_t i = 0; i < stored.size(); ++i) stored[i]->SetBytes(bytes[i]);
  }
};

// Two clips of one size that are a few pixels apart.
inline std::pair<Image, Image> Neighbours(Random &random, const Image &image) {
  const int32_t columns = std::min(random.Between(0, 3), Record(image).Width - 1);
  const int32_t rows = std::min(random.Between(0, 2), Record(image).Height - 1);
  const auto clip = [&] {
    const int32_t x = random.Between(0, columns), y = random.Between(0, rows);
    return Adopt(ClipImage5(image, x, y, Record(image).Width - columns, Record(image).Height - rows));
  };
  const Image first = clip();
  return {first, clip()};
}

// Another record over the bytes of an image in memory, which sees pixels of another format there.
inline Image OtherReading(Random &random, PluginHost &host, const StoredImage &stored) {
  const ImageClassData &record = stored.Record();
  const auto bytes = Owned<standalone::MemoryBlock>::Adopt(standalone::MemoryBlock::Over(record.Buffer));
  Image image = host.New("PictureZVK");
  ImageConstructorMemory(image, bytes, record.Width, record.Height, AnyLikelyFormat(random), record.RowSize);
  return image;
}

// A scene for filters that write as many pixels as the source has.
inline Scene AnyScene(Random &random, PluginHost &host, const Limits &limits = {}) {
  Scene scene;
  const Kind kind = AnyKind(random);
  const int32_t wide = random.Side(std::min(limits.width, kind == Kind::File ? 20 : 300));
  const int32_t high = random.Between(1, limits.height);
  scene.stored.push_back(AnyStored(random, host, kind, wide, high, AnyLikelyFormat(random), limits.wholeRows));
  const StoredImage &under = *scene.stored.front();
  scene.source = AnyOddView(random, under);
  const int32_t width = Record(scene.source).Width, height = Record(scene.source).Height;
  switch (random.Between(0, 7)) {
    case 0:  // nil
      return scene;
    case 1:
      scene.dest = scene.source;
      return scene;
    case 2:  // a view of the same storage
      scene.dest = AnyOddView(random, under);
      if (!Holds(under, scene.dest, width, height)) scene.dest = scene.source;
      return scene;
    case 3:  // two parts of one image, close by
      if (!under.HasRowTable()) std::tie(scene.source, scene.dest) = Neighbours(random, under.Image());
      if (!scene.dest) scene.dest = scene.source;
      return scene;
    case 4:  // two records over one block or one file
      if (kind == Kind::File) {
        scene.dest = under.Reopened(random, host, AnyLikelyFormat(random));
      } else if (!under.HasRowTable()) {
        scene.dest = OtherReading(random, host, under);
      }
      // All of it, as it is no smaller than the source.
      if (!scene.dest || !Holds(under, scene.dest, Record(scene.dest).Width, Record(scene.dest).Height)) {
        scene.dest = scene.source;
      }
      return scene;
    default: {  // another storage, mostly of the same format
      const int32_t format = random.OneIn(3) ? AnyLikelyFormat(random) : under.Record().ImageFormat;
      scene.stored.push_back(AnyStored(random, host, AnyKind(random), width + random.Between(0, 3),
                                       height + random.Between(0, 3), format));
      const StoredImage &other = *scene.stored.back();
      // The view may be smaller than what is written, as long as that stays within the storage.
      const Image view = AnyOddView(random, other);
      scene.dest = Holds(other, view, width, height) ? view : other.Image();
      RC_PRE(Holds(other, scene.dest, width, height));
      return scene;
    }
  }
}

using Filter = std::function<REALobject(REALobject instance, REALobject dest)>;
using NaiveFilter = std::function<void(ImageClassData &source, ImageClassData &dest, bool isNew)>;

// The filter must give every byte that the naive one gives, and dest, or a new image, with a reference.
// `exchanged` says that a new image has the source's sides exchanged.
inline void CheckFilter(Random &random, PluginHost &host, const Filter &filter, const NaiveFilter &naive,
                        bool exchanged = false, const Limits &limits = {}) {
  const Scene scene = AnyScene(random, host, limits);
  ImageClassData &source = Record(scene.source);
  const std::vector<Bytes> before = scene.Snapshot();

  Image expectedDest = scene.dest;
  if (!expectedDest) {
    expectedDest = host.New("PictureZVK");
    ImageConstructor(expectedDest, exchanged ? source.Height : source.Width, exchanged ? source.Width : source.Height,
                     source.ImageFormat);
  }
  const bool refused = source.BitsPerComponent == 16;
  if (!refused) naive(source, Record(expectedDest), !scene.dest);
  const std::vector<Bytes> expected = scene.Snapshot();
  scene.Restore(before);

  const int32_t references = scene.dest ? scene.dest->References() : 0;
  const Image result = Adopt(filter(scene.source, scene.dest));
  RC_ASSERT(!host.TakeException());
  RC_ASSERT(static_cast<bool>(result) == !refused);
  RC_ASSERT(scene.Snapshot() == expected);
  if (refused) return;
  if (scene.dest) {
    RC_ASSERT((result.Handle() == scene.dest.Handle()));
    RC_ASSERT(result->References() == references + 1);
    return;
  }
  const ImageClassData &made = Record(result), &wanted = Record(expectedDest);
  RC_ASSERT(made.Width == wanted.Width && made.Height == wanted.Height && made.ImageFormat == wanted.ImageFormat);
  RC_ASSERT(result->References() == 1);
  RC_ASSERT(made.TotalSize == wanted.TotalSize);
  RC_ASSERT(std::memcmp(made.Buffer, wanted.Buffer, static_cast<size_t>(wanted.TotalSize)) == 0);
}

}  // namespace filter_testing
