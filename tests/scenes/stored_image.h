// Images over every kind of storage, of which a test sees and sets every byte.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <span>
#include <vector>

#include "image/image_record.h"
#include "tests/scenes/random.h"
#include "tests/support/plugin_host.h"

namespace scenes {

using standalone::Owned;
using ImageObject = Owned<standalone::Object>;

enum class Kind {
  Memory,     // of the image's own
  Block,      // a caller's block
  Backwards,  // the same with the rows in reverse order
  Table,      // rows of a bitmap, which the image reaches through a table
  Picture,    // the rows of a console host's picture: BGRX, or BGRA for a format with alpha
  File,       // mapped block by block
};
inline constexpr Kind kKinds[] = {Kind::Memory, Kind::Block, Kind::Backwards, Kind::Table, Kind::Picture, Kind::File};
std::ostream &operator<<(std::ostream &out, Kind kind);
// Every kind, files most often: what an operation does depends on whether its images are mapped, and on which files.
Kind AnyKind(Random &random);

// How the rows lie in their storage, as far as its kind leaves that open.
struct RowLayout {
  int32_t gap = 0;           // bytes from the end of a row's pixels to the next row; below 0: rows overlap
  bool wholeLastRow = true;  // a block goes on for a gap behind the last row; else it ends with the last pixel
  uint32_t order = 0;        // of a table: rows in an order by this seed; 0: one after the other
  int32_t missingRow = -1;   // of a table: the row that is nil
  bool upsideDown = false;   // of a table: the last row is on top
  int32_t blockRows = 0;     // of a file: rows that are mapped at a time; 0: what the constructor takes
};
// Layouts that operations meet: rows apart, in any order, with one missing, in small blocks.
RowLayout AnyRowLayout(Random &random, Kind kind, int32_t height);
// The same; now and then rows overlap.
RowLayout AnyOverlappingRowLayout(Random &random, Kind kind, int32_t width, int32_t height, int32_t format);

// An image with its storage, which is zero at first. On a fenced host, blocks, tables and pictures lie between pages
// that nobody may touch.
class StoredImage {
 public:
  StoredImage(PluginHost &host, Kind kind, int32_t width, int32_t height, int32_t format, const RowLayout &layout = {});
  StoredImage(PluginHost &host, Kind kind, int32_t width, int32_t height, int32_t format, int32_t gap)
      : StoredImage(host, kind, width, height, format, RowLayout{.gap = gap}) {}

  const ImageObject &Image() const { return image_; }
  operator REALobject() const { return image_.Handle(); }
  zvk::image::ImageClassData &Record() const { return *zvk::image::RecordOf(image_); }
  // Gives the image back, of which views may be left; they still show the storage.
  void Drop() { image_.Reset(); }
  Kind Storage() const { return kind_; }
  // The image cannot be seen through views.
  bool HasRowTable() const { return kind_ == Kind::Table || kind_ == Kind::Picture; }

  // All bytes of the storage.
  scenes::Bytes Bytes() const;
  void SetBytes(const scenes::Bytes &bytes) const;
  // The same bytes where they are; of a file by a mapping of its own. Not for pictures, whose rows lie apart.
  std::span<uint8_t> All() const;
  void Fill(Random &random) const;
  void Fill(uint32_t seed) const;

  // The caller's block that begins with the image's first row; of blocks alone.
  const Owned<standalone::MemoryBlock> &Block() const { return target_; }

  // Another image over the image's file, which it opens by its name once more, with pixels of a format whose rows are
  // as long; of files alone. It must not be closed before the last look at the bytes, as that empties the file.
  ImageObject Reopened(Random &random, PluginHost &host, int32_t format) const;

  // Bytes from the address of a row (of the image or of a view of it) to the end of the storage it lies in; 0 or less
  // if it does not lie there. Of a file and of a row table a row is a storage by itself.
  int64_t BytesFrom(const uint8_t *row) const;

 private:
  struct Mapping;

  Kind kind_;
  std::shared_ptr<Mapping> mapping_;
  std::vector<uint8_t *> rows_;
  Owned<standalone::MemoryBlock> block_;
  Owned<standalone::MemoryBlock> target_;
  Owned<standalone::Picture> picture_;
  ImageObject image_;
};

// An image of noise.
StoredImage NoisyImage(PluginHost &host, Kind kind, int32_t width, int32_t height, int32_t format,
                       const RowLayout &layout = {}, uint32_t seed = 1);

// An image of noise over storage of any kind; no row is missing.
StoredImage AnyStoredImage(Random &random, PluginHost &host, int32_t width, int32_t height, int32_t format);

// Lets an image in a file see that many rows at a time, so that its block moves though it is low. The least is five.
// Views take that over.
void UseBlocksOf(zvk::image::ImageClassData &record, int32_t rows);

}  // namespace scenes
