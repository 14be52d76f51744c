#include "standalone/rows/row_reader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <utility>

#include "standalone/rows/row_codecs.h"

namespace standalone {
namespace {

using namespace std::literals;

constexpr uint8_t kOpaque = 255;

struct ReadableFormat {
  std::string_view magic;  // at the start of a file
  std::unique_ptr<RowReader> (*open)(const std::string &path, OwnedStream stream, Interlaced interlaced);
};

// TIFF in either byte order, and with offsets of 64 bits.
constexpr std::array<ReadableFormat, 6> kFormats = {{
    {"\x89PNG\r\n\x1A\n"sv, OpenPngRows},
    {"\xFF\xD8\xFF"sv, OpenJpegRows},
    {"II*\0"sv, OpenTiffRows},
    {"MM\0*"sv, OpenTiffRows},
    {"II+\0"sv, OpenTiffRows},
    {"MM\0+"sv, OpenTiffRows},
}};

}  // namespace

void RowReader::SetHeader(std::string_view format, uint32_t width, uint32_t height, bool isGray, bool hasAlpha) {
  header_.format = format;
  if (width == 0 || height == 0) FailOnDamage();
  if (std::max(width, height) > static_cast<uint32_t>(kLargestRowSide)) {
    throw NotByRowsError(path_ + ": has " + std::to_string(width) + " x " + std::to_string(height) +
                         " pixels; take a picture of at most " + std::to_string(kLargestRowSide) + " each way");
  }
  header_ = {format, static_cast<int32_t>(width), static_cast<int32_t>(height), isGray, hasAlpha};
}

void RowReader::PutPixels(std::span<const uint8_t> pixels, std::span<uint8_t> row) {
  const uint8_t *from = pixels.data();
  uint8_t *to = row.data();
  uint8_t everyAlpha = kOpaque;
  for (int32_t x = 0; x < header_.width; ++x, from += 4, to += PixelBytes()) {
    std::copy_n(from, 3, to);
    if (keepsAlpha_) to[3] = from[3];
    everyAlpha &= from[3];
  }
  hasSeenTransparency_ |= everyAlpha != kOpaque;
}

std::unique_ptr<RowReader> OpenRows(const std::string &path, Interlaced interlaced) {
  if (SizeOfFile(path) == 0) FailOnFile(path, "is empty; name an image file");
  OwnedStream stream(std::fopen(path.c_str(), "rbe"));
  if (stream == nullptr) FailOnFile(path, "cannot be opened (" + SystemError(errno) + "); check who may read it");
  std::array<char, 8> start = {};
  const size_t count = std::fread(start.data(), 1, start.size(), stream.get());
  std::rewind(stream.get());
  for (const ReadableFormat &format : kFormats) {
    if (std::string_view(start.data(), count).starts_with(format.magic)) {
      return format.open(path, std::move(stream), interlaced);
    }
  }
  throw NotByRowsError(path + ": is not an image that can be read row by row; take a PNG, JPEG or TIFF file");
}

}  // namespace standalone
