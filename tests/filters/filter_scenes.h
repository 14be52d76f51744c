// Random images and dests for filters: every format and view over every kind of storage, with and without bytes in
// common, and the comparison of all their bytes with those of a naive filter.
#pragma once

#include <rapidcheck.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <span>
#include <tuple>
#include <utility>
#include <vector>

#include "image/file_storage.h"
#include "tests/filters/filter_testing.h"
#include "tests/naive/filters.h"

namespace filter_testing {

// A number from `least` to `most`, all alike from the first case on.
inline int32_t Any(int32_t least, int32_t most) {
  return *rc::gen::resize(rc::kNominalSize, rc::gen::inRange(least, most + 1));
}

inline int32_t AnyFormat() {
  const int32_t format = Any(1, 40);
  return format == 14 ? 41 : format;
}

// Mostly the formats that filters serve.
inline int32_t LikelyFormat() {
  return Any(0, 9) == 0 ? AnyFormat()
                        : *rc::gen::element(1, 2, 3, 4, 7, 8, 10, 11, 12, 13, 15, 19, 23, 24, 25, 27, 28, 32);
}

enum class Kind : uint8_t { Own, Block, Table, File };

// How large a source may be. Most are small; some are as wide as that, for loops that do much at once. A file is
// narrower, as its block is moved about all the time.
struct Limits {
  int32_t width = 300;
  int32_t height = 9;
  // The last row of a source's block is as long as the others are apart, pixels or not.
  bool wholeRows = false;
};

inline int32_t AnyWidth(Kind kind, const Limits &limits) {
  const int32_t most = *rc::gen::element(3, 12, 45, 300);
  return Any(1, std::min({most, limits.width, kind == Kind::File ? 20 : 300}));
}

// The bytes under one or more images.
class Storage {
 public:
  Storage() = default;
  Storage(const Storage &) = delete;
  Storage &operator=(const Storage &) = delete;
  virtual ~Storage() = default;
  std::span<uint8_t> All() const { return all_; }
  bool Holds(const uint8_t *first, const uint8_t *end) const {
    return first >= all_.data() && end <= all_.data() + all_.size();
  }

 protected:
  std::span<uint8_t> all_;
};

// A block of the caller's between unreadable pages. Rows may overlap, lie apart, and run backwards.
class BlockStorage : public Storage {
 public:
  BlockStorage(PluginHost &host, const Image &image, int32_t width, int32_t height, int32_t format, bool wholeRows) {
    ImageClassData pixel{};
    InitImageClassData(&pixel, 1, 1, format);
    const int32_t tight = width * pixel.PixelSize;
    int32_t distance = tight + Any(0, 1) * Any(0, 9);
    if (Any(0, 9) == 0) distance = Any(0, tight);
    if (Any(0, 3) == 0) distance = -distance;
    const int32_t lastRow = wholeRows ? std::max(tight, std::abs(distance)) : tight;
    block_ = host.NewMemoryBlock((height - 1) * std::abs(distance) + lastRow);
    all_ = {block_->Data(), static_cast<size_t>(block_->Size())};
    ImageConstructorMemory(image, block_, width, height, format, distance);
    if (distance < 0) Record(image).Buffer -= ptrdiff_t{height - 1} * distance;
  }

 private:
  Owned<standalone::MemoryBlock> block_;
};

class OwnStorage : public Storage {
 public:
  OwnStorage(const Image &image, int32_t width, int32_t height, int32_t format) {
    ImageConstructor(image, width, height, format);
    all_ = {Record(image).Buffer, static_cast<size_t>(Record(image).TotalSize)};
  }
};

// Rows of a bitmap in any order, one of them perhaps missing.
class TableStorage : public Storage {
 public:
  TableStorage(const Image &image, int32_t width, int32_t height, int32_t format) {
    ImageClassData &record = Record(image);
    InitImageClassData(&record, width, height, format);
    record.RowSize = width * record.PixelSize;
    bytes_.resize(static_cast<size_t>(height) * static_cast<size_t>(record.RowSize));
    all_ = bytes_;
    for (int32_t y = 0; y < height; ++y) rows_.push_back(bytes_.data() + ptrdiff_t{y} * record.RowSize);
    std::minstd_rand random(static_cast<uint32_t>(Any(1, 1000)));
    std::shuffle(rows_.begin(), rows_.end(), random);
    if (Any(0, 5) == 0) rows_[static_cast<size_t>(Any(0, height - 1))] = nullptr;
    record.RowTable = rows_.data();
    record.GetRow = GetRowGDImage;
    record.Valid = true;
  }

 private:
  Bytes bytes_;
  std::vector<uint8_t *> rows_;
};

class FileStorage : public Storage {
 public:
  FileStorage(const Image &image, int32_t width, int32_t height, int32_t format) : image_(image) {
    ImageConstructorFile(image, width, height, format, 0, nullptr);
    const auto size = static_cast<size_t>(Record(image).TotalSize);
    void *const mapping = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, Record(image).FileHandle, 0);
    RC_ASSERT((mapping != MAP_FAILED));
    all_ = {static_cast<uint8_t *>(mapping), size};
    ShrinkBlock(image);
  }
  ~FileStorage() override { munmap(all_.data(), all_.size()); }

 private:
  Image image_;
};

// An image over a storage of its own, full of noise.
struct Stored {
  Stored(PluginHost &host, Kind kind, int32_t width, int32_t height, int32_t format, bool wholeRows = false)
      : image(host.New("PictureZVK")), kind(kind) {
    switch (kind) {
      case Kind::Own:
        storage = std::make_shared<OwnStorage>(image, width, height, format);
        break;
      case Kind::Block:
        storage = std::make_shared<BlockStorage>(host, image, width, height, format, wholeRows);
        break;
      case Kind::Table:
        storage = std::make_shared<TableStorage>(image, width, height, format);
        break;
      case Kind::File:
        storage = std::make_shared<FileStorage>(image, width, height, format);
    }
    FillNoise(storage->All().data(), storage->All().size(), static_cast<uint32_t>(Any(0, 1000000)));
  }

  Image image;
  Kind kind;
  std::shared_ptr<Storage> storage;
};

inline Kind AnyKind() { return *rc::gen::element(Kind::Own, Kind::Block, Kind::Block, Kind::Table, Kind::File); }

// A view of the image as chance has it, or the image itself.
inline Image AnyView(Image image, Kind kind) {
  if (kind == Kind::Table) return image;
  const auto look = [&](Image view) {
    if (!view || !Record(view).Valid || Record(view).Width < 1 || Record(view).Height < 1) return;
    if (kind == Kind::File && Any(0, 1) == 0) ShrinkBlock(view);
    image = view;
  };
  if (Any(0, 1) == 0) {
    const int32_t x = Any(0, Record(image).Width - 1), y = Any(0, Record(image).Height - 1);
    look(Adopt(ClipImage5(image, x, y, Any(1, Record(image).Width), Any(1, Record(image).Height))));
  }
  if (Any(0, 2) == 0) look(Adopt(GetMirroredView(image)));
  if (Any(0, 4) == 0) {
    // Picked by number, as pointers to functions cannot be shown.
    REALobject (*const views[])(REALobject) = {RGBChannel, CMYKChannel, AlphaChannel, GreenChannel, BlackChannel};
    look(Adopt(views[Any(0, 4)](image)));
  }
  // A moved offset puts a channel where another one is.
  if (Any(0, 5) == 0) {
    const auto offset = *rc::gen::element(&ImageClassData::RedOffset, &ImageClassData::BlueOffset,
                                          &ImageClassData::AlphaOffset, &ImageClassData::GrayOffset);
    Record(image).*offset = Any(0, Record(image).PixelSize - 1);
  }
  return image;
}

// True if the storage holds every byte that a filter over columns x rows pixels may touch of the image.
inline bool Holds(const Stored &stored, const Image &image, int32_t columns, int32_t rows) {
  ImageClassData &record = Record(image);
  const bool isFile = stored.kind == Kind::File;
  if (isFile && record.Height < rows) return false;
  for (int32_t y = 0; y < rows; ++y) {
    const uint8_t *const row = record.GetRow(&record, y);
    if (row == nullptr) continue;
    for (const char channel : {'g', 'R', 'G', 'B', 'C', 'M', 'Y', 'K', 'A'}) {
      const ptrdiff_t offset = naive::OffsetOf(record, channel);
      const ptrdiff_t last = ptrdiff_t{columns - 1} * record.PixelSize + offset;
      if (isFile ? last >= record.RowSize : !stored.storage->Holds(row + offset, row + last + 1)) return false;
      // The rows of a table are storages by themselves.
      if (stored.kind == Kind::Table && last >= record.RowSize) return false;
    }
  }
  return true;
}

// A source with a dest (empty: nil), and the storages behind them.
struct Scene {
  Image source;
  Image dest;
  std::vector<Stored> stored;

  std::vector<Bytes> Snapshot() const {
    std::vector<Bytes> bytes;
    for (const Stored &each : stored) bytes.emplace_back(each.storage->All().begin(), each.storage->All().end());
    return bytes;
  }
  void Restore(const std::vector<Bytes> &bytes) const {
    for (size_t i = 0; i < stored.size(); ++i) std::ranges::copy(bytes[i], stored[i].storage->All().begin());
  }
};

// Two clips of one size that are a few pixels apart.
inline std::pair<Image, Image> Neighbours(const Image &image) {
  const int32_t columns = std::min(Any(0, 3), Record(image).Width - 1);
  const int32_t rows = std::min(Any(0, 2), Record(image).Height - 1);
  const auto clip = [&] {
    return Adopt(
        ClipImage5(image, Any(0, columns), Any(0, rows), Record(image).Width - columns, Record(image).Height - rows));
  };
  const Image first = clip();
  return {first, clip()};
}

// Another record over the bytes of an image in memory, which sees pixels of another format there.
inline Image OtherReading(PluginHost &host, const Stored &stored) {
  const ImageClassData &record = Record(stored.image);
  const auto bytes = Owned<standalone::MemoryBlock>::Adopt(standalone::MemoryBlock::Over(record.Buffer));
  Image image = host.New("PictureZVK");
  ImageConstructorMemory(image, bytes, record.Width, record.Height, LikelyFormat(), record.RowSize);
  return image;
}

// A scene for filters that write as many pixels as the source has.
inline Scene AnyScene(PluginHost &host, const Limits &limits = {}) {
  Scene scene;
  const Kind kind = AnyKind();
  const Stored under(host, kind, AnyWidth(kind, limits), Any(1, limits.height), LikelyFormat(), limits.wholeRows);
  scene.stored.push_back(under);
  scene.source = AnyView(under.image, under.kind);
  const int32_t width = Record(scene.source).Width, height = Record(scene.source).Height;
  switch (Any(0, 7)) {
    case 0:  // nil
      return scene;
    case 1:
      scene.dest = scene.source;
      return scene;
    case 2:  // a view of the same storage
      scene.dest = AnyView(under.image, under.kind);
      if (!Holds(under, scene.dest, width, height)) scene.dest = scene.source;
      return scene;
    case 3:  // two parts of one image, close by
      if (kind != Kind::Table) std::tie(scene.source, scene.dest) = Neighbours(under.image);
      if (!scene.dest) scene.dest = scene.source;
      return scene;
    case 4:  // two records over one block
      if (kind == Kind::Own || kind == Kind::Block) scene.dest = OtherReading(host, under);
      // All of it, as it is no smaller than the source.
      if (!scene.dest || !Holds(under, scene.dest, Record(scene.dest).Width, Record(scene.dest).Height)) {
        scene.dest = scene.source;
      }
      return scene;
    default: {  // another storage, mostly of the same format
      const int32_t format = Any(0, 2) == 0 ? LikelyFormat() : Record(under.image).ImageFormat;
      const Stored other(host, AnyKind(), width + Any(0, 3), height + Any(0, 3), format);
      scene.stored.push_back(other);
      // The view may be smaller than what is written, as long as that stays within the storage.
      const Image view = AnyView(other.image, other.kind);
      scene.dest = Holds(other, view, width, height) ? view : other.image;
      RC_PRE(Holds(other, scene.dest, width, height));
      return scene;
    }
  }
}

using Filter = std::function<REALobject(REALobject instance, REALobject dest)>;
using NaiveFilter = std::function<void(ImageClassData &source, ImageClassData &dest, bool isNew)>;

// The filter must give every byte that the naive one gives, and dest, or a new image, with a reference.
// `exchanged` says that a new image has the source's sides exchanged.
inline void CheckFilter(PluginHost &host, const Filter &filter, const NaiveFilter &naive, bool exchanged = false,
                        const Limits &limits = {}) {
  const Scene scene = AnyScene(host, limits);
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
