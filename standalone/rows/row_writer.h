// Image files written one row at a time, whatever their size: PNG, JPEG and TIFF of 8-bit red, green and blue,
// PNG and TIFF of alpha as well.
//
//   const std::unique_ptr<RowWriter> writer = CreateRows("large.tif", 60000, 60000);
//   for (int32_t y = 0; y < 60000; ++y) writer->WriteRow(row);
//   writer->Finish();
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "standalone/files/file_error.h"

namespace standalone {

class RowWriter {
 public:
  RowWriter() = default;
  RowWriter(const RowWriter &) = delete;
  RowWriter &operator=(const RowWriter &) = delete;
  // A file that is not finished goes away, and what was there before stays.
  virtual ~RowWriter() = default;

  // The next row from the top, 3 bytes a pixel, or 4 with alpha. Throws ImageFileError.
  virtual void WriteRow(std::span<const uint8_t> row) = 0;

  // Puts the file in its place; all rows have been written. Throws ImageFileError.
  virtual void Finish() = 0;
};

// Starts a file in the format that the path's extension names; sizes are 1 to kLargestRowSide. The file appears at the
// end, whole or not at all: it is written beside the target, then renamed. JPEG has a quality of 90, PNG and TIFF lose
// nothing. Alpha is kept as it is, 0 (clear) to 255 (opaque), with colours not multiplied by it. Throws ImageFileError,
// also if the format cannot hold the size or alpha.
std::unique_ptr<RowWriter> CreateRows(const std::string &path, int32_t width, int32_t height, bool hasAlpha = false);

// True if the path's extension, in any case, is one that can be written.
bool HasKnownRowExtension(const std::string &path);

// True if the path's extension is one of a format that can be written with alpha.
bool HasRowAlpha(const std::string &path);

// The extensions that can be written, as a list for people: "png, jpg, jpeg, tif, tiff".
std::string KnownRowExtensions();

}  // namespace standalone
