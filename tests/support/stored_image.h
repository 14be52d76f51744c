// Images over every kind of storage, of which a test sees and sets every byte, and plain ways to reach their samples.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <random>
#include <vector>

#include "image/image_record.h"
#include "tests/support/plugin_host.h"

namespace stored_image {

using standalone::Owned;

enum class Kind {
  Memory,     // of the image's own
  Block,      // a caller's block that ends with the last row, whose rows are `spare` bytes longer than the pixels
  Backwards,  // the same with the rows in reverse order
  Table,      // the rows of a console host's picture: BGRX, or BGRA for a format with alpha
  File,       // mapped block by block
};
inline constexpr Kind kKinds[] = {Kind::Memory, Kind::Block, Kind::Backwards, Kind::Table, Kind::File};
std::ostream &operator<<(std::ostream &out, Kind kind);

// An image with its storage, which is zero at first. Made on a fenced host, blocks and pictures lie between pages that
// nobody may touch.
class StoredImage {
 public:
  StoredImage(PluginHost &host, Kind kind, int32_t width, int32_t height, int32_t format, int32_t spare = 0);

  const Owned<standalone::Object> &Image() const { return image_; }
  operator REALobject() const { return image_.Handle(); }
  zvk::image::ImageClassData &Record() const { return *zvk::image::RecordOf(image_); }
  Kind Storage() const { return kind_; }

  // All bytes of the storage.
  std::vector<uint8_t> Bytes() const;
  void SetBytes(const std::vector<uint8_t> &bytes);
  // Random bytes, 0 and 255 more often than the others.
  void Fill(std::mt19937 &random);
  void Fill(uint32_t seed);

  // Bytes from the address of a row (of the image or of a view of it) to the end of the storage it lies in. Not for
  // files.
  int64_t BytesFrom(const uint8_t *row) const;

 private:
  Kind kind_;
  Owned<standalone::MemoryBlock> block_;
  Owned<standalone::MemoryBlock> lastRow_;
  Owned<standalone::Picture> picture_;
  Owned<standalone::Object> image_;
};

// A random byte, 0 and 255 more often than the others.
uint8_t RandomByte(std::mt19937 &random);
// A random number from `least` to `most`.
int32_t Between(std::mt19937 &random, int32_t least, int32_t most);
// A random format with a number from 1 to 41.
int32_t AnyFormat(std::mt19937 &random);

// The address of a sample; asks the image for the row each time, as its block may have moved.
inline uint8_t *SampleAt(zvk::image::ImageClassData &image, int32_t x, int32_t y, int32_t offset) {
  return image.GetRow(&image, y) + static_cast<ptrdiff_t>(x) * image.PixelSize + offset;
}

// A view of an image, at random: the image itself, a clip, a mirrored view, one channel, the colours alone, or several
// of these in turn. Never an empty one, nor a view of a row table, which has no rows.
Owned<standalone::Object> AnyView(std::mt19937 &random, const StoredImage &stored);

}  // namespace stored_image
