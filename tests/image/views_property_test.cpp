// Random chains of views over random storage, against a naive reader that knows where each sample lies in the storage.
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/image_record.h"
#include "image/image_storage.h"
#include "image/views.h"
#include "tests/naive/formats.h"
#include "tests/support/plugin_host.h"

namespace zvk::image {
namespace {

using naive::kPixelsOfFormat;
using standalone::MemoryBlock;
using standalone::Object;
using standalone::Owned;

// A number from `least` to `most`, all alike from the first case on.
int32_t Any(int32_t least, int32_t most) {
  return *rc::gen::resize(rc::kNominalSize, rc::gen::inRange(least, most + 1));
}

struct NamedChannel {
  int32_t ImageClassData::*offset;
  uint8_t ImageClassData::*has;
  REALobject (*view)(REALobject);
};

const std::map<char, NamedChannel> kNamed = {
    {'R', {&ImageClassData::RedOffset, &ImageClassData::HasRed, RedChannel}},
    {'G', {&ImageClassData::GreenOffset, &ImageClassData::HasGreen, GreenChannel}},
    {'B', {&ImageClassData::BlueOffset, &ImageClassData::HasBlue, BlueChannel}},
    {'g', {&ImageClassData::GrayOffset, &ImageClassData::HasGray, GrayChannel}},
    {'A', {&ImageClassData::AlphaOffset, &ImageClassData::HasAlpha, AlphaChannel}},
    {'C', {&ImageClassData::CyanOffset, &ImageClassData::HasCyan, CyanChannel}},
    {'M', {&ImageClassData::MagentaOffset, &ImageClassData::HasMagenta, MagentaChannel}},
    {'Y', {&ImageClassData::YellowOffset, &ImageClassData::HasYellow, YellowChannel}},
    {'K', {&ImageClassData::BlackOffset, &ImageClassData::HasBlack, BlackChannel}},
};

// Storage that is reached by plain positions, counted in bytes from its first row.
struct Storage {
  // An image in memory of its own.
  void InMemory(int32_t width, int32_t height, int32_t format) {
    ImageConstructor(image, width, height, format);
    base = RecordOf(image)->Buffer;
  }
  // An image over bytes of the test's. Rows may overlap, and run backwards.
  void OverABlock(int32_t width, int32_t height, int32_t format, int32_t pixelSize, int32_t distance) {
    const int64_t last = int64_t{height - 1} * distance;
    bytes.resize(static_cast<size_t>(std::max<int64_t>(last, -last) + width * pixelSize));
    base = bytes.data() + (last < 0 ? -last : 0);
    block = Owned<MemoryBlock>::Adopt(MemoryBlock::Over(base));
    ImageConstructorMemory(image, block, width, height, format, distance);
  }
  // An image in a temporary file, all of which is mapped here as well.
  void InAFile(int32_t width, int32_t height, int32_t format) {
    ImageConstructorFile(image, width, height, format, 0, nullptr);
    mappedBytes = static_cast<size_t>(height) * 4096;
    void *const mapping =
        mmap(nullptr, mappedBytes, PROT_READ | PROT_WRITE, MAP_SHARED, RecordOf(image)->FileHandle, 0);
    RC_ASSERT((mapping != MAP_FAILED));
    base = static_cast<uint8_t *>(mapping);
  }

  uint8_t Read(int64_t position) const { return base[position]; }
  bool IsFile() const { return mappedBytes > 0; }

  explicit Storage(PluginHost &host) : image(host.New("PictureZVK")) {}
  Storage(const Storage &) = delete;
  Storage &operator=(const Storage &) = delete;
  ~Storage() {
    if (IsFile()) munmap(base, mappedBytes);
  }

  std::vector<uint8_t> bytes;
  uint8_t *base = nullptr;
  size_t mappedBytes = 0;
  Owned<MemoryBlock> block;
  Owned<Object> image;
  int64_t rowSize = 0;
  int32_t pixelSize = 0;
  int32_t height = 0;
};

// Where the sample of a view's column 0 lies in a row of the storage.
struct Sample {
  int64_t column = 0;
  int64_t byte = 0;
};

// A view as the rules tell it: which rows of the storage it shows, and where it finds its channels.
struct Expected {
  int64_t top = 0;
  int32_t width = 0;
  int32_t height = 0;
  bool mirrored = false;
  int32_t format = 0;
  bool holdsBlock = false;
  int32_t sampleBytes = 1;
  std::map<char, Sample> flagged;    // channels whose flag is set
  std::map<char, Sample> unflagged;  // the colours of the views that set offsets and no flags
  std::vector<Sample> list;          // the channels by their place

  int64_t StorageRow(int32_t row) const { return mirrored ? top + height - 1 - row : top + row; }
};

// One image of a chain.
struct Link {
  Owned<Object> image;
  Expected expected;

  ImageClassData &Record() const { return *RecordOf(image); }
  uint8_t *Row(int32_t row) const { return Record().GetRow(&Record(), row); }
};

Expected WholeImage(int32_t format, int32_t width, int32_t height, bool holdsBlock) {
  Expected whole;
  whole.width = width;
  whole.height = height;
  whole.format = format;
  whole.holdsBlock = holdsBlock;
  whole.sampleBytes = format == 41 ? 2 : 1;
  const std::string &pixel = kPixelsOfFormat.at(format);
  for (size_t byte = 0; byte < pixel.size(); ++byte) {
    if (!kNamed.contains(pixel[byte])) continue;
    const Sample sample{0, static_cast<int64_t>(byte)};
    whole.flagged[pixel[byte]] = sample;
    whole.list.push_back(sample);
  }
  return whole;
}

// The rows of a chain that are looked at: all of a low image, some of a high one.
std::vector<int32_t> RowsOf(int32_t height) {
  std::vector<int32_t> rows;
  if (height <= 20) {
    for (int32_t row = 0; row < height; ++row) rows.push_back(row);
  } else {
    rows = {0, height - 1, height / 2};
    for (int i = 0; i < 8; ++i) rows.push_back(Any(0, height - 1));
  }
  return rows;
}

// The pixels of the one channel, and what the record says of where they are.
void ExpectSamples(const Storage &storage, const Link &link, int32_t row, int32_t offset, const Sample &sample) {
  const uint8_t *const pixels = link.Row(row);
  for (int32_t x = 0; x < link.expected.width; ++x) {
    for (int32_t byte = 0; byte < link.expected.sampleBytes; ++byte) {
      const int64_t position = link.expected.StorageRow(row) * storage.rowSize +
                               (sample.column + x) * storage.pixelSize + sample.byte + byte;
      RC_ASSERT(pixels[x * link.Record().PixelSize + offset + byte] == storage.Read(position));
    }
  }
}

void ExpectPixels(const Storage &storage, const Link &link) {
  const ImageClassData &record = link.Record();
  for (const int32_t row : RowsOf(link.expected.height)) {
    for (const auto &[letter, channel] : kNamed) {
      if (link.expected.flagged.contains(letter)) {
        ExpectSamples(storage, link, row, record.*channel.offset, link.expected.flagged.at(letter));
      } else if (link.expected.unflagged.contains(letter)) {
        ExpectSamples(storage, link, row, record.*channel.offset, link.expected.unflagged.at(letter));
      }
    }
    for (size_t i = 0; i < link.expected.list.size(); ++i) {
      ExpectSamples(storage, link, row, record.ChannelOffsets[i], link.expected.list[i]);
    }
    // No clip moves the row itself.
    RC_ASSERT(link.Row(row)[0] == storage.Read(link.expected.StorageRow(row) * storage.rowSize));
  }
}

void ExpectRecord(const Storage &storage, const Link &link, const Link &parent) {
  const ImageClassData &record = link.Record();
  const ImageClassData &root = *RecordOf(storage.image);
  RC_ASSERT(record.Valid);
  RC_ASSERT((record.Parent == parent.image.Handle()));
  RC_ASSERT(record.Width == link.expected.width);
  RC_ASSERT(record.Height == link.expected.height);
  RC_ASSERT(record.RowOffset == link.expected.top);
  RC_ASSERT(record.ImageFormat == link.expected.format);
  RC_ASSERT(record.UnclippedHeight == storage.height);
  RC_ASSERT(record.PixelSize == storage.pixelSize);
  RC_ASSERT(record.RowSize == storage.rowSize);
  RC_ASSERT(record.TotalSize == storage.rowSize * storage.height);
  RC_ASSERT(record.BitsPerComponent == 8 * link.expected.sampleBytes);
  RC_ASSERT(record.ChannelCount == static_cast<int32_t>(link.expected.list.size()));
  for (const auto &[letter, channel] : kNamed) {
    RC_ASSERT((record.*channel.has) == (link.expected.flagged.contains(letter) ? 1 : 0));
    if (!link.expected.flagged.contains(letter) && !link.expected.unflagged.contains(letter)) {
      RC_ASSERT((record.*channel.offset) == 0);
    }
  }
  RC_ASSERT(!record.OwnsBuffer && !record.RemoveFile);
  RC_ASSERT(!record.FilePath && !record.FileItem && !record.Target);
  RC_ASSERT((record.MemoryTarget == (link.expected.holdsBlock ? storage.block.Handle() : nullptr)));
  RC_ASSERT(record.IsMapping == storage.IsFile());
  if (storage.IsFile()) {
    RC_ASSERT(record.FileHandle == root.FileHandle);
    RC_ASSERT(record.MappingBlockSize == root.MappingBlockSize);
    RC_ASSERT(record.MappedRowCount == root.MappedRowCount);
    RC_ASSERT(record.IsMapped && record.Buffer != parent.Record().Buffer);
  } else {
    RC_ASSERT((record.Buffer == root.Buffer));
    RC_ASSERT(!record.MappingBase && record.MappedRowCount == 0);
  }
}

// --- the kinds of view ---

// The positions from 0 to limit - 1 that a caller's span covers: first, and how many.
std::pair<int32_t, int32_t> Covered(int32_t position, int32_t size, int32_t limit) {
  int32_t first = 0;
  int32_t count = 0;
  for (int32_t i = 0; i < limit; ++i) {
    const bool inside = size < 0 ? i >= position + size && i < position : i >= position && i < position + size;
    if (!inside) continue;
    if (count == 0) first = i;
    ++count;
  }
  return {first, count};
}

// A span near an image, or a row or two of it.
std::pair<int32_t, int32_t> Span(int32_t limit) { return {Any(-4, limit + 3), Any(-limit - 8, limit + 8)}; }

std::optional<Link> Clip(const Link &parent) {
  const Expected &shown = parent.expected;
  const auto [x, width] = Span(shown.width);
  const auto [y, height] = Span(shown.height);
  const auto [column, columns] = Covered(x, width, shown.width);
  const auto [row, rows] = Covered(y, height, shown.height);
  Link clip{Adopt(ClipImage5(parent.image, x, y, width, height)), shown};
  RC_ASSERT(static_cast<bool>(clip.image));
  if (columns == 0 || rows == 0) {
    RC_ASSERT(columns > 0 || clip.Record().Width <= 0);
    RC_ASSERT(rows > 0 || clip.Record().Height <= 0);
    return std::nullopt;
  }
  clip.expected.top += row;
  clip.expected.width = columns;
  clip.expected.height = rows;
  for (auto &[letter, sample] : clip.expected.flagged) sample.column += column;
  clip.expected.unflagged.clear();
  return clip;
}

std::optional<Link> Mirror(const Link &parent) {
  Link view{Adopt(GetMirroredView(parent.image)), parent.expected};
  RC_ASSERT(static_cast<bool>(view.image));
  view.expected.mirrored = !view.expected.mirrored;
  view.expected.unflagged.clear();
  return view;
}

Link Gray(Owned<Object> image, const Expected &shown, const Sample &sample) {
  RC_ASSERT(static_cast<bool>(image));
  Link view{std::move(image), shown};
  view.expected.flagged = {{'g', sample}};
  view.expected.unflagged.clear();
  view.expected.list = {sample};
  view.expected.format = shown.sampleBytes == 2 ? 41 : 11;
  view.expected.holdsBlock = false;
  return view;
}

std::optional<Link> Named(const Link &parent) {
  const char letter = std::next(kNamed.begin(), Any(0, 8))->first;
  auto image = Adopt(kNamed.at(letter).view(parent.image));
  if (!parent.expected.flagged.contains(letter)) {
    RC_ASSERT(!image);
    return std::nullopt;
  }
  return Gray(std::move(image), parent.expected, parent.expected.flagged.at(letter));
}

std::optional<Link> Listed(const Link &parent) {
  if (parent.expected.list.empty()) return std::nullopt;
  const int32_t index = Any(0, static_cast<int32_t>(parent.expected.list.size()) - 1);
  const Sample sample = parent.expected.list[static_cast<size_t>(index)];
  return Gray(Adopt(Channel(parent.image, index)), parent.expected, sample);
}

// The inks or the colours alone, in the order of the format's letters.
std::optional<Link> Colours(const Link &parent) {
  const int32_t format = parent.expected.format;
  const bool inks = Any(0, 1) == 1;
  std::string letters;
  int32_t packed = 0;
  if (inks && format >= 23 && format <= 32) {
    letters = format <= 27 ? "CMYK" : "KYMC";
    packed = format <= 27 ? 23 : 28;
  } else if (!inks && format >= 1 && format <= 10) {
    letters = format <= 5 ? "RGB" : "BGR";
    packed = format <= 5 ? 1 : 6;
  }
  auto image = Adopt(inks ? CMYKChannel(parent.image) : RGBChannel(parent.image));
  if (packed == 0) {
    RC_ASSERT(!image);
    return std::nullopt;
  }
  RC_ASSERT(static_cast<bool>(image));
  Link view{std::move(image), parent.expected};
  view.expected.flagged.clear();
  view.expected.unflagged.clear();
  view.expected.list.clear();
  for (const char letter : letters) {
    Sample sample;  // offset 0 in a clip of such a view, which had no flags to go by
    if (parent.expected.flagged.contains(letter)) sample = parent.expected.flagged.at(letter);
    if (parent.expected.unflagged.contains(letter)) sample = parent.expected.unflagged.at(letter);
    view.expected.unflagged[letter] = sample;
    view.expected.list.push_back(sample);
  }
  view.expected.format = packed;
  view.expected.holdsBlock = false;
  return view;
}

// --- the walk ---

// Writes one sample through the view and looks for it in the storage.
void WriteThrough(const Storage &storage, const Link &link) {
  if (link.expected.list.empty()) return;
  const int32_t index = Any(0, static_cast<int32_t>(link.expected.list.size()) - 1);
  const Sample &sample = link.expected.list[static_cast<size_t>(index)];
  const int32_t row = Any(0, link.expected.height - 1);
  const int32_t x = Any(0, link.expected.width - 1);
  const int64_t position =
      link.expected.StorageRow(row) * storage.rowSize + (sample.column + x) * storage.pixelSize + sample.byte;
  const auto value = static_cast<uint8_t>(storage.Read(position) + Any(1, 255));
  link.Row(row)[x * link.Record().PixelSize + link.Record().ChannelOffsets[index]] = value;
  RC_ASSERT(storage.Read(position) == value);
}

enum class Kind { Memory, Block, File, HighFile };

void Walk(PluginHost &host, Kind kind) {
  const int32_t format = std::next(kPixelsOfFormat.begin(), Any(0, 39))->first;
  const int32_t width = Any(1, 12);
  // More rows of a page than the least block has, so that it moves.
  const int32_t height = kind == Kind::HighFile ? Any(4090, 6000) : Any(1, 12);

  Storage storage(host);
  storage.pixelSize = static_cast<int32_t>(kPixelsOfFormat.at(format).size());
  storage.height = height;
  switch (kind) {
    case Kind::Memory:
      storage.InMemory(width, height, format);
      storage.rowSize = (width * storage.pixelSize + 63) / 64 * 64;
      break;
    case Kind::Block:
      storage.rowSize = Any(-120, 120);
      storage.OverABlock(width, height, format, storage.pixelSize, static_cast<int32_t>(storage.rowSize));
      break;
    case Kind::File:
    case Kind::HighFile:
      storage.InAFile(width, height, format);
      storage.rowSize = 4096;
  }
  RC_ASSERT(RecordOf(storage.image)->Valid);
  const auto seed = static_cast<uint32_t>(Any(0, 1000000));
  for (int32_t row = 0; row < height; ++row) {
    for (int32_t byte = 0; byte < width * storage.pixelSize; ++byte) {
      const uint32_t mixed = (seed + static_cast<uint32_t>(row * 131 + byte)) * 2654435761u;
      storage.base[row * storage.rowSize + byte] = static_cast<uint8_t>(mixed >> 24);
    }
  }

  std::vector<Link> chain;
  chain.push_back({storage.image, WholeImage(format, width, height, kind == Kind::Block)});
  const int32_t steps = Any(1, 9);
  for (int32_t step = 0; step < steps; ++step) {
    const Link &parent = chain.back();
    std::optional<Link> view;
    switch (Any(0, 7)) {
      case 0:
        view = Named(parent);
        break;
      case 1:
        view = Listed(parent);
        break;
      case 2:
        view = Colours(parent);
        break;
      case 3:
      case 4:
        view = Mirror(parent);
        break;
      default:
        view = Clip(parent);
    }
    if (!view) continue;
    ExpectRecord(storage, *view, parent);
    ExpectPixels(storage, *view);
    WriteThrough(storage, *view);
    chain.push_back(std::move(*view));
  }
  for (const Link &link : chain) ExpectPixels(storage, link);

  // The last one keeps all the others, as nobody else does now.
  storage.image.Reset();
  chain.erase(chain.begin(), chain.end() - 1);
  ExpectPixels(storage, chain.back());
}

void CheckOver(Kind kind) {
  PluginHost host;
  EXPECT_TRUE(rc::check([&] { Walk(host, kind); }));
}

// Each: a chain of views shows the pixels of its storage, and changes them when it is written to.
TEST(ViewsProperty, ChainsOverAnImageInMemory) { CheckOver(Kind::Memory); }
TEST(ViewsProperty, ChainsOverAMemoryBlock) { CheckOver(Kind::Block); }
TEST(ViewsProperty, ChainsOverAFileInOneBlock) { CheckOver(Kind::File); }
TEST(ViewsProperty, ChainsOverAFileInSeveralBlocks) { CheckOver(Kind::HighFile); }

}  // namespace
}  // namespace zvk::image
