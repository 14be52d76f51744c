// Image files read one row at a time, whatever their size: PNG, JPEG and TIFF as packed rows of red, green and blue,
// and of alpha where it is wanted.
//
//   const std::unique_ptr<RowReader> reader = OpenRows("large.tif");
//   std::vector<uint8_t> row(size_t{3} * reader->Width());
//   for (int32_t y = 0; y < reader->Height(); ++y) reader->ReadRow(row);
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "standalone/files/file_error.h"

namespace standalone {

// Pixels in one direction. A row of four bytes a pixel, five times over, is still a size of 32 bits.
constexpr int32_t kLargestRowSide = 100'000'000;

// A file that may well be a whole image, but not one that can be read row by row.
class NotByRowsError : public ImageFileError {
 public:
  using ImageFileError::ImageFileError;
};

// What the beginning of a file tells.
struct RowsHeader {
  std::string_view format;  // "PNG", "JPEG" or "TIFF"
  int32_t width;            // 1 to kLargestRowSide pixels
  int32_t height;           // likewise
  bool isGray;              // no pixel has a colour
  bool hasAlpha;            // pixels have alpha, or one colour counts as clear
};

class RowReader {
 public:
  RowReader(const RowReader &) = delete;
  RowReader &operator=(const RowReader &) = delete;
  virtual ~RowReader() = default;

  const RowsHeader &Header() const { return header_; }
  int32_t Width() const { return header_.width; }
  int32_t Height() const { return header_.height; }

  // Lets the rows of a file with alpha have it as a fourth byte, 0 (clear) to 255 (opaque). To be called before the
  // first row is read; otherwise alpha is dropped.
  void KeepAlpha() { keepsAlpha_ = header_.hasAlpha; }
  // Bytes of a pixel in a row: 4 where alpha is kept, else 3.
  int32_t PixelBytes() const { return keepsAlpha_ ? 4 : 3; }

  // The next row as they are stored (StoredOrientation tells where it is seen): Width() pixels of PixelBytes() into
  // `row`, which has room for them. Each of the Height() rows is read once. 16 bits a sample become 8. The colours stay
  // as they are, but for those that have been multiplied by an alpha which is kept: they are divided by it. Throws
  // ImageFileError if the file is damaged; with the last row all of it has been looked at.
  virtual void ReadRow(std::span<uint8_t> row) = 0;

  // True if a pixel read so far was not opaque.
  bool HasSeenTransparency() const { return hasSeenTransparency_; }

 protected:
  explicit RowReader(std::string path) : path_(std::move(path)) {}

  // To be called by the constructor. Throws NotByRowsError for a size out of range.
  void SetHeader(std::string_view format, uint32_t width, uint32_t height, bool isGray, bool hasAlpha);

  // Puts pixels of red, green, blue and alpha into `row`, without alpha unless that is kept, and looks at it.
  void PutPixels(std::span<const uint8_t> pixels, std::span<uint8_t> row);

  [[noreturn]] void FailOnDamage() const { standalone::FailOnDamage(path_, std::string(header_.format)); }

  const std::string path_;
  RowsHeader header_ = {};
  bool keepsAlpha_ = false;
  bool hasSeenTransparency_ = false;
};

// Whether a picture whose rows are not stored one after another may be held whole in memory. That is done for
// interlaced PNG files only.
enum class Interlaced : uint8_t { Refuse, HoldWhole };

// Opens an image file by its content, whatever its name. Throws NotByRowsError if only the whole picture could be read,
// or nothing; the message says what helps. Throws ImageFileError if the file is not to be read at all.
std::unique_ptr<RowReader> OpenRows(const std::string &path, Interlaced interlaced = Interlaced::Refuse);

}  // namespace standalone
