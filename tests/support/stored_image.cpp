#include "tests/support/stored_image.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <ostream>
#include <stdexcept>

#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/image_storage.h"
#include "image/views.h"
#include "pictures/picture_import.h"
#include "standalone/runtime/picture_storage.h"

namespace stored_image {

using zvk::image::ImageClassData;

std::ostream &operator<<(std::ostream &out, Kind kind) {
  constexpr const char *kNames[] = {"memory", "block", "backwards", "table", "file"};
  return out << kNames[static_cast<size_t>(kind)];
}

namespace {

int32_t PixelSizeOf(int32_t format) {
  ImageClassData record{};
  zvk::image::InitImageClassData(&record, 1, 1, format);
  return record.PixelSize;
}

bool HasAlpha(int32_t format) {
  ImageClassData record{};
  zvk::image::InitImageClassData(&record, 1, 1, format);
  return record.HasAlpha;
}

}  // namespace

StoredImage::StoredImage(PluginHost &host, Kind kind, int32_t width, int32_t height, int32_t format, int32_t spare)
    : kind_(kind), image_(host.New("PictureZVK")) {
  const int32_t rowSize = PixelSizeOf(format) * width + spare;
  switch (kind) {
    case Kind::Memory:
      zvk::image::ImageConstructor(image_, width, height, format);
      break;
    case Kind::Block:
      block_ = host.NewMemoryBlock(rowSize * height);
      zvk::image::ImageConstructorMemory(image_, block_, width, height, format, rowSize);
      break;
    case Kind::Backwards:
      block_ = host.NewMemoryBlock(rowSize * height);
      lastRow_ = Owned<standalone::MemoryBlock>::Adopt(
          standalone::MemoryBlock::Over(block_->Data() + static_cast<ptrdiff_t>(rowSize) * (height - 1)));
      zvk::image::ImageConstructorMemory(image_, lastRow_, width, height, format, -rowSize);
      break;
    case Kind::Table:
      picture_ = host.NewPicture(std::make_unique<standalone::GDStorage>(width, height, true));
      zvk::pictures::ImageConstructorPicture(image_, picture_, HasAlpha(format));
      break;
    case Kind::File:
      zvk::image::ImageConstructorFile(image_, width, height, format, 0, nullptr);
      break;
  }
  if (!Record().Valid) throw std::runtime_error("the image cannot be made");
}

std::vector<uint8_t> StoredImage::Bytes() const {
  const ImageClassData &record = Record();
  if (block_) return {block_->Data(), block_->Data() + block_->Size()};
  std::vector<uint8_t> bytes(static_cast<size_t>(record.TotalSize));
  if (picture_) {
    const auto rowBytes = static_cast<size_t>(record.RowSize);
    for (int32_t y = 0; y < record.Height; ++y) {
      std::memcpy(bytes.data() + static_cast<size_t>(y) * rowBytes, picture_->Storage().Row(y), rowBytes);
    }
  } else if (kind_ == Kind::File) {
    if (pread(record.FileHandle, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
      throw std::runtime_error("the file cannot be read");
    }
  } else {
    std::memcpy(bytes.data(), record.Buffer, bytes.size());
  }
  return bytes;
}

void StoredImage::SetBytes(const std::vector<uint8_t> &bytes) {
  const ImageClassData &record = Record();
  if (block_) {
    std::copy(bytes.begin(), bytes.end(), block_->Data());
  } else if (picture_) {
    const auto rowBytes = static_cast<size_t>(record.RowSize);
    for (int32_t y = 0; y < record.Height; ++y) {
      std::memcpy(picture_->Storage().Row(y), bytes.data() + static_cast<size_t>(y) * rowBytes, rowBytes);
    }
  } else if (kind_ == Kind::File) {
    if (pwrite(record.FileHandle, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
      throw std::runtime_error("the file cannot be written");
    }
  } else {
    std::memcpy(record.Buffer, bytes.data(), bytes.size());
  }
}

void StoredImage::Fill(std::mt19937 &random) {
  std::vector<uint8_t> bytes = Bytes();
  std::generate(bytes.begin(), bytes.end(), [&] { return RandomByte(random); });
  SetBytes(bytes);
}

void StoredImage::Fill(uint32_t seed) {
  std::mt19937 random(seed);
  Fill(random);
}

int64_t StoredImage::BytesFrom(const uint8_t *row) const {
  if (block_) return block_->Data() + block_->Size() - row;
  if (picture_) return Record().RowSize;
  return Record().Buffer + Record().TotalSize - row;
}

uint8_t RandomByte(std::mt19937 &random) {
  const auto value = static_cast<uint32_t>(random());
  return value % 8 == 0 ? 0 : value % 8 == 1 ? 255 : static_cast<uint8_t>(value >> 8);
}

int32_t Between(std::mt19937 &random, int32_t least, int32_t most) {
  return std::uniform_int_distribution<int32_t>(least, most)(random);
}

int32_t AnyFormat(std::mt19937 &random) {
  const int32_t format = Between(random, 1, 40);
  return format < 14 ? format : format + 1;
}

Owned<standalone::Object> AnyView(std::mt19937 &random, const StoredImage &stored) {
  Owned<standalone::Object> image = stored.Image();
  if (stored.Storage() == Kind::Table) return image;
  const auto turnInto = [&](REALobject view) {
    auto owned = Adopt(view);
    if (owned) image = owned;
  };
  for (int32_t steps = Between(random, 0, 2); steps > 0; --steps) {
    const ImageClassData &record = *zvk::image::RecordOf(image);
    switch (Between(random, 0, 4)) {
      case 0:
      case 1: {
        const int32_t x = Between(random, 0, record.Width - 1), y = Between(random, 0, record.Height - 1);
        turnInto(zvk::image::ClipImage5(image, x, y, Between(random, 1, record.Width - x),
                                        Between(random, 1, record.Height - y)));
        break;
      }
      case 2:
        turnInto(zvk::image::GetMirroredView(image));
        break;
      case 3:
        turnInto(record.ChannelCount > 0 ? zvk::image::Channel(image, Between(random, 0, record.ChannelCount - 1))
                                         : nullptr);
        break;
      default:
        turnInto(record.IsRGB ? zvk::image::RGBChannel(image) : zvk::image::CMYKChannel(image));
        break;
    }
  }
  return image;
}

}  // namespace stored_image
