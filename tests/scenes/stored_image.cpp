#include "tests/scenes/stored_image.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ostream>
#include <stdexcept>

#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/image_storage.h"
#include "pictures/picture_import.h"
#include "standalone/runtime/picture_storage.h"
#include "tests/naive/formats.h"
#include "tests/scenes/formats.h"

namespace scenes {

using zvk::image::ImageClassData;

std::ostream &operator<<(std::ostream &out, Kind kind) {
  constexpr const char *kNames[] = {"memory", "block", "backwards", "table", "picture", "file"};
  return out << kNames[static_cast<size_t>(kind)];
}

Kind AnyKind(Random &random) { return random.OneIn(3) ? Kind::File : kKinds[random.Between(0, 5)]; }

RowLayout AnyRowLayout(Random &random, Kind kind, int32_t height) {
  RowLayout layout;
  layout.gap = random.OneIn(2) ? 0 : random.Between(1, 9);
  if (kind == Kind::Table) {
    layout.order = random.OneIn(4) ? 0 : random.Bits();
    if (random.OneIn(6)) layout.missingRow = random.Between(0, height - 1);
    layout.upsideDown = random.OneIn(3);
  }
  if (kind == Kind::File) layout.blockRows = random.OneIn(4) ? 0 : random.Between(5, 8);
  return layout;
}

RowLayout AnyOverlappingRowLayout(Random &random, Kind kind, int32_t width, int32_t height, int32_t format) {
  RowLayout layout = AnyRowLayout(random, kind, height);
  if (kind != Kind::Table && random.OneIn(6)) layout.gap = -random.Between(0, width * PixelSizeOf(format));
  return layout;
}

// All of a file.
struct StoredImage::Mapping {
  Mapping(int descriptor, size_t size) : size(size) {
    void *const mapping = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (mapping == MAP_FAILED) throw std::runtime_error("the file cannot be mapped");
    bytes = static_cast<uint8_t *>(mapping);
  }
  Mapping(const Mapping &) = delete;
  Mapping &operator=(const Mapping &) = delete;
  ~Mapping() { munmap(bytes, size); }

  uint8_t *bytes;
  size_t size;
};

StoredImage::StoredImage(PluginHost &host, Kind kind, int32_t width, int32_t height, int32_t format,
                         const RowLayout &layout)
    : kind_(kind), image_(host.New("PictureZVK")) {
  const int32_t pixels = PixelSizeOf(format) * width;
  const int32_t distance = pixels + layout.gap;
  const int32_t lastRow = layout.wholeLastRow ? std::max(pixels, distance) : pixels;
  switch (kind) {
    case Kind::Memory:
      zvk::image::ImageConstructor(image_, width, height, format);
      break;
    case Kind::Block:
    case Kind::Backwards: {
      const bool forwards = kind == Kind::Block;
      block_ = host.NewMemoryBlock(distance * (height - 1) + lastRow);
      target_ = forwards ? block_
                         : Owned<standalone::MemoryBlock>::Adopt(standalone::MemoryBlock::Over(
                               block_->Data() + static_cast<ptrdiff_t>(distance) * (height - 1)));
      zvk::image::ImageConstructorMemory(image_, target_, width, height, format, forwards ? distance : -distance);
      break;
    }
    case Kind::Table: {
      block_ = host.NewMemoryBlock(distance * (height - 1) + pixels);
      for (int32_t y = 0; y < height; ++y) rows_.push_back(block_->Data() + static_cast<ptrdiff_t>(distance) * y);
      if (layout.order != 0) std::shuffle(rows_.begin(), rows_.end(), std::mt19937(layout.order));
      if (layout.missingRow >= 0) rows_[static_cast<size_t>(layout.missingRow)] = nullptr;
      ImageClassData &record = Record();
      zvk::image::InitImageClassData(&record, width, height, format);
      record.RowTable = rows_.data();
      record.RowSize = pixels;
      record.TotalSize = int64_t{pixels} * height;
      record.GetRow = layout.upsideDown ? zvk::image::GetRowGDImageMirrored : zvk::image::GetRowGDImage;
      record.Valid = true;
      break;
    }
    case Kind::Picture: {
      const bool hasAlpha = naive::kPixelsOfFormat.at(format).find('A') != std::string::npos;
      picture_ = host.NewPicture(std::make_unique<standalone::GDStorage>(width, height, true));
      zvk::pictures::ImageConstructorPicture(image_, picture_, hasAlpha);
      break;
    }
    case Kind::File:
      zvk::image::ImageConstructorFile(image_, width, height, format, 0, nullptr);
      if (Record().Valid) {
        mapping_ = std::make_shared<Mapping>(Record().FileHandle, static_cast<size_t>(Record().TotalSize));
        if (layout.blockRows > 0) UseBlocksOf(Record(), layout.blockRows);
      }
      break;
  }
  if (!Record().Valid) throw std::runtime_error("the image cannot be made");
}

std::span<uint8_t> StoredImage::All() const {
  if (picture_) throw std::logic_error("the rows of a picture lie apart");
  if (block_) return {block_->Data(), static_cast<size_t>(block_->Size())};
  if (mapping_) return {mapping_->bytes, mapping_->size};
  return {Record().Buffer, static_cast<size_t>(Record().TotalSize)};
}

Bytes StoredImage::Bytes() const {
  if (!picture_) return {All().begin(), All().end()};
  scenes::Bytes bytes;
  for (int32_t y = 0; y < Record().Height; ++y) {
    const uint8_t *const row = picture_->Storage().Row(y);
    bytes.insert(bytes.end(), row, row + Record().RowSize);
  }
  return bytes;
}

void StoredImage::SetBytes(const scenes::Bytes &bytes) const {
  if (!picture_) {
    std::copy(bytes.begin(), bytes.end(), All().begin());
    return;
  }
  const auto rowBytes = static_cast<size_t>(Record().RowSize);
  for (int32_t y = 0; y < Record().Height; ++y) {
    std::memcpy(picture_->Storage().Row(y), bytes.data() + static_cast<size_t>(y) * rowBytes, rowBytes);
  }
}

void StoredImage::Fill(Random &random) const {
  scenes::Bytes bytes = Bytes();
  FillNoise(bytes.data(), bytes.size(), random);
  SetBytes(bytes);
}

void StoredImage::Fill(uint32_t seed) const {
  Random random(seed);
  Fill(random);
}

ImageObject StoredImage::Reopened(Random &random, PluginHost &host, int32_t format) const {
  const scenes::Bytes bytes = Bytes();
  ImageObject image = host.New("PictureZVK");
  zvk::image::ImageConstructorFile(image, Record().Width, Record().Height, format, 0,
                                   host.NewFolderItem(Record().FilePath));
  ImageClassData &record = *zvk::image::RecordOf(image);
  if (!record.Valid || record.RowSize != Record().RowSize) throw std::logic_error("the file is not as large");
  SetBytes(bytes);
  if (random.OneIn(2)) UseBlocksOf(record, random.Between(5, 8));
  return image;
}

int64_t StoredImage::BytesFrom(const uint8_t *row) const {
  if (HasRowTable() || kind_ == Kind::File) return Record().RowSize;
  const std::span<uint8_t> all = All();
  return row < all.data() ? 0 : all.data() + all.size() - row;
}

StoredImage NoisyImage(PluginHost &host, Kind kind, int32_t width, int32_t height, int32_t format,
                       const RowLayout &layout, uint32_t seed) {
  StoredImage image(host, kind, width, height, format, layout);
  image.Fill(seed);
  return image;
}

StoredImage AnyStoredImage(Random &random, PluginHost &host, int32_t width, int32_t height, int32_t format) {
  const Kind kind = AnyKind(random);
  RowLayout layout = AnyRowLayout(random, kind, height);
  layout.missingRow = -1;
  StoredImage image(host, kind, width, height, format, layout);
  image.Fill(random);
  return image;
}

void UseBlocksOf(ImageClassData &record, int32_t rows) {
  munmap(record.MappingBase, static_cast<size_t>(record.MappingBlockSize));
  record.MappingBase = record.Buffer = nullptr;
  record.IsMapped = false;
  record.MappedFirstRow = record.MappedLastRow = -1;
  record.MappedRowCount = rows;
  record.MappingBlockSize = rows * record.RowSize;
  record.GetRow(&record, 0);
}

}  // namespace scenes
