#include "standalone/rows/row_writer.h"

#include <algorithm>
#include <array>
#include <climits>
#include <filesystem>
#include <string_view>

#include "standalone/rows/row_codecs.h"

namespace standalone {
namespace {

struct WritableFormat {
  std::string_view extension;
  const char *name;
  bool hasAlpha;
  int32_t largestSide;  // pixels that the format can hold in one direction
  std::unique_ptr<RowWriter> (*create)(const std::string &path, int32_t width, int32_t height, bool hasAlpha);
};

constexpr std::array<WritableFormat, 5> kFormats = {{
    {"png", "PNG", true, INT_MAX, CreatePngRows},
    {"jpg", "JPEG", false, 65500, CreateJpegRows},
    {"jpeg", "JPEG", false, 65500, CreateJpegRows},
    {"tif", "TIFF", true, INT_MAX, CreateTiffRows},
    {"tiff", "TIFF", true, INT_MAX, CreateTiffRows},
}};

const WritableFormat *FormatOf(const std::string &path) {
  std::string extension = std::filesystem::path(path).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](char letter) { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter; });
  for (const WritableFormat &format : kFormats) {
    if (!extension.empty() && extension.substr(1) == format.extension) return &format;
  }
  return nullptr;
}

}  // namespace

std::unique_ptr<RowWriter> CreateRows(const std::string &path, int32_t width, int32_t height, bool hasAlpha) {
  const WritableFormat *const format = FormatOf(path);
  if (format == nullptr) {
    FailOnFile(path, "no image extension that can be written row by row; use one of " + KnownRowExtensions());
  }
  if (std::max(width, height) > format->largestSide) {
    FailOnFile(path, "a " + std::string(format->name) + " file holds up to " + std::to_string(format->largestSide) +
                         " pixels in each direction; use another format or a smaller image");
  }
  if (hasAlpha && !format->hasAlpha) {
    FailOnFile(path, "a " + std::string(format->name) + " file holds no transparency; use PNG or TIFF");
  }
  return format->create(path, width, height, hasAlpha);
}

bool HasKnownRowExtension(const std::string &path) { return FormatOf(path) != nullptr; }

bool HasRowAlpha(const std::string &path) {
  const WritableFormat *const format = FormatOf(path);
  return format != nullptr && format->hasAlpha;
}

std::string KnownRowExtensions() {
  std::string list;
  for (const WritableFormat &format : kFormats) list += (list.empty() ? "" : ", ") + std::string(format.extension);
  return list;
}

}  // namespace standalone
