// Random chains of views over random storage, against a naive reader that knows where each sample lies in the storage.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "image/image_formats.h"
#include "image/image_record.h"
#include "image/views.h"
#include "tests/naive/formats.h"
#include "tests/scenes/cases.h"
#include "tests/scenes/formats.h"
#include "tests/scenes/stored_image.h"
#include "tests/support/plugin_host.h"

namespace zvk::image {
namespace {

using naive::kPixelsOfFormat;
using scenes::AnyFormat;
using scenes::CheckCases;
using scenes::Kind;
using scenes::Random;
using scenes::StoredImage;
using standalone::Object;
using standalone::Owned;

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
  uint8_t Read(int64_t position) const { return base[position]; }
  bool IsFile() const { return stored.Storage() == Kind::File; }

  StoredImage stored;
  uint8_t *base;
  int64_t rowSize;
  int32_t pixelSize;
  int32_t height;
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
std::vector<int32_t> RowsOf(Random &random, int32_t height) {
  std::vector<int32_t> rows;
  if (height <= 20) {
    for (int32_t row = 0; row < height; ++row) rows.push_back(row);
  } else {
    rows = {0, height - 1, height / 2};
    for (int i = 0; i < 8; ++i) rows.push_back(random.Between(0, height - 1));
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

void ExpectPixels(Random &random, const Storage &storage, const Link &link) {
  const ImageClassData &record = link.Record();
  for (const int32_t row : RowsOf(random, link.expected.height)) {
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
  const ImageClassData &root = *RecordOf(storage.stored.Image());
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
  RC_ASSERT((record.MemoryTarget == (link.expected.holdsBlock ? storage.stored.Block().Handle() : nullptr)));
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
std::pair<int32_t, int32_t> Span(Random &random, int32_t limit) {
  return {random.Between(-4, limit + 3), random.Between(-limit - 8, limit + 8)};
}

std::optional<Link> Clip(Random &random, const Link &parent) {
  const Expected &shown = parent.expected;
  const auto [x, width] = Span(random, shown.width);
  const auto [y, height] = Span(random, shown.height);
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

std::optional<Link> Named(Random &random, const Link &parent) {
  const char letter = std::next(kNamed.begin(), random.Between(0, 8))->first;
  auto image = Adopt(kNamed.at(letter).view(parent.image));
  if (!parent.expected.flagged.contains(letter)) {
    RC_ASSERT(!image);
    return std::nullopt;
  }
  return Gray(std::move(image), parent.expected, parent.expected.flagged.at(letter));
}

std::optional<Link> Listed(Random &random, const Link &parent) {
  if (parent.expected.list.empty()) return std::nullopt;
  const int32_t index = random.Between(0, static_cast<int32_t>(parent.expected.list.size()) - 1);
  const Sample sample = parent.expected.list[static_cast<size_t>(index)];
  return Gray(Adopt(Channel(parent.image, index)), parent.expected, sample);
}

// The inks or the colours alone, in the order of the format's letters.
std::optional<Link> Colours(Random &random, const Link &parent) {
  const int32_t format = parent.expected.format;
  const bool inks = random.Between(0, 1) == 1;
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
void WriteThrough(Random &random, const Storage &storage, const Link &link) {
  if (link.expected.list.empty()) return;
  const int32_t index = random.Between(0, static_cast<int32_t>(link.expected.list.size()) - 1);
  const Sample &sample = link.expected.list[static_cast<size_t>(index)];
  const int32_t row = random.Between(0, link.expected.height - 1);
  const int32_t x = random.Between(0, link.expected.width - 1);
  const int64_t position =
      link.expected.StorageRow(row) * storage.rowSize + (sample.column + x) * storage.pixelSize + sample.byte;
  const auto value = static_cast<uint8_t>(storage.Read(position) + random.Between(1, 255));
  link.Row(row)[x * link.Record().PixelSize + link.Record().ChannelOffsets[index]] = value;
  RC_ASSERT(storage.Read(position) == value);
}

// What a chain of views begins with.
enum class Ground { Memory, Block, File, HighFile };

Storage AnyStorage(Random &random, PluginHost &host, Ground ground) {
  const int32_t format = AnyFormat(random), width = random.Between(1, 12);
  // More rows of a page than the least block has, so that it moves.
  const int32_t height = ground == Ground::HighFile ? random.Between(4090, 6000) : random.Between(1, 12);
  const auto pixelSize = static_cast<int32_t>(kPixelsOfFormat.at(format).size());
  Kind kind = ground == Ground::Memory ? Kind::Memory : Kind::File;
  scenes::RowLayout layout{.wholeLastRow = false};
  int64_t rowSize = ground == Ground::Memory ? (width * pixelSize + 63) / 64 * 64 : 4096;
  if (ground == Ground::Block) {
    // Rows may overlap, and run backwards.
    kind = random.OneIn(2) ? Kind::Block : Kind::Backwards;
    rowSize = random.Between(0, 120);
    layout.gap = static_cast<int32_t>(rowSize) - width * pixelSize;
    if (kind == Kind::Backwards) rowSize = -rowSize;
  }
  StoredImage stored(host, kind, width, height, format, layout);
  stored.Fill(random);
  uint8_t *const base = stored.All().data() + (rowSize < 0 ? -rowSize * (height - 1) : 0);
  return {.stored = std::move(stored), .base = base, .rowSize = rowSize, .pixelSize = pixelSize, .height = height};
}

void Walk(Random &random, PluginHost &host, Ground ground) {
  Storage storage = AnyStorage(random, host, ground);
  const ImageClassData &whole = storage.stored.Record();
  std::vector<Link> chain;
  chain.push_back(
      {storage.stored.Image(), WholeImage(whole.ImageFormat, whole.Width, whole.Height, ground == Ground::Block)});
  const int32_t steps = random.Between(1, 9);
  for (int32_t step = 0; step < steps; ++step) {
    const Link &parent = chain.back();
    std::optional<Link> view;
    switch (random.Between(0, 7)) {
      case 0:
        view = Named(random, parent);
        break;
      case 1:
        view = Listed(random, parent);
        break;
      case 2:
        view = Colours(random, parent);
        break;
      case 3:
      case 4:
        view = Mirror(parent);
        break;
      default:
        view = Clip(random, parent);
    }
    if (!view) continue;
    ExpectRecord(storage, *view, parent);
    ExpectPixels(random, storage, *view);
    WriteThrough(random, storage, *view);
    chain.push_back(std::move(*view));
  }
  for (const Link &link : chain) ExpectPixels(random, storage, link);

  // The last one keeps all the others, as nobody else does now.
  storage.stored.Drop();
  chain.erase(chain.begin(), chain.end() - 1);
  ExpectPixels(random, storage, chain.back());
}

void CheckOver(Ground ground) {
  PluginHost host({.fenced = true});
  CheckCases([&](Random &random) { Walk(random, host, ground); });
}

// Each: a chain of views shows the pixels of its storage, and changes them when it is written to.
TEST(ViewsProperty, ChainsOverAnImageInMemory) { CheckOver(Ground::Memory); }
TEST(ViewsProperty, ChainsOverAMemoryBlock) { CheckOver(Ground::Block); }
TEST(ViewsProperty, ChainsOverAFileInOneBlock) { CheckOver(Ground::File); }
TEST(ViewsProperty, ChainsOverAFileInSeveralBlocks) { CheckOver(Ground::HighFile); }

}  // namespace
}  // namespace zvk::image
