// The formats behind the readers and writers of rows: what each library's file offers to the two files that choose.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "standalone/rows/row_reader.h"
#include "standalone/rows/row_writer.h"

namespace standalone {

struct CloseStream {
  void operator()(std::FILE *stream) const { std::fclose(stream); }
};
using OwnedStream = std::unique_ptr<std::FILE, CloseStream>;

// Readers take over a stream at its start; `path` is for messages.
std::unique_ptr<RowReader> OpenPngRows(const std::string &path, OwnedStream stream, Interlaced interlaced);
std::unique_ptr<RowReader> OpenJpegRows(const std::string &path, OwnedStream stream, Interlaced interlaced);
std::unique_ptr<RowReader> OpenTiffRows(const std::string &path, OwnedStream stream, Interlaced interlaced);

// JPEG is never asked for alpha.
std::unique_ptr<RowWriter> CreatePngRows(const std::string &path, int32_t width, int32_t height, bool hasAlpha);
std::unique_ptr<RowWriter> CreateJpegRows(const std::string &path, int32_t width, int32_t height, bool hasAlpha);
std::unique_ptr<RowWriter> CreateTiffRows(const std::string &path, int32_t width, int32_t height, bool hasAlpha);

}  // namespace standalone
