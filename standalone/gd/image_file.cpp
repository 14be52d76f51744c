#include "standalone/gd/image_file.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

#include "standalone/files/orientation.h"
#include "standalone/files/part_file.h"

namespace standalone {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr int kDefaultJpegQuality = 90;
constexpr uint32_t kColourBits = 0xFFFFFF;
constexpr int kMaskAlpha = 0x7F000000;

// Keeps GD, and the TIFF library under it, from writing to the standard error stream. That library is GD's own
// business, so it is looked for among what is loaded and not linked.
void SilenceLibraries() {
  static const bool done = [] {
    gdSetErrorMethod([](int, const char *, va_list) {});
    using SetHandler = void *(*)(void *);
    for (const char *name : {"TIFFSetErrorHandler", "TIFFSetWarningHandler"}) {
      if (void *const function = dlsym(RTLD_DEFAULT, name)) reinterpret_cast<SetHandler>(function)(nullptr);
    }
    return true;
  }();
  static_cast<void>(done);
}

bool StartsWith(std::span<const uint8_t> bytes, std::string_view magic, size_t position = 0) {
  return bytes.size() >= position + magic.size() &&
         std::memcmp(bytes.data() + position, magic.data(), magic.size()) == 0;
}

// GD gives what there is of a JPEG or GIF file cut short and says nothing, so these two are walked through to the end
// mark.

bool IsWholeJpeg(std::span<const uint8_t> bytes) {
  size_t position = 2;
  while (position + 1 < bytes.size()) {
    const uint8_t marker = bytes[position + 1];
    const bool isMarker = bytes[position] == 0xFF && marker != 0x00 && marker != 0xFF;
    const bool isAlone = marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8);
    if (isMarker && marker == 0xD9) return true;
    if (!isMarker) {
      ++position;  // image data, which follow their header up to the next marker
    } else if (isAlone) {
      position += 2;
    } else {
      if (position + 3 >= bytes.size()) return false;
      position += 2 + (size_t{bytes[position + 2]} << 8 | bytes[position + 3]);
    }
  }
  return false;
}

// The data of the first image count; what comes behind is not read.
bool IsWholeGif(std::span<const uint8_t> bytes) {
  const auto byteAt = [&](size_t position) { return position < bytes.size() ? bytes[position] : uint8_t{0}; };
  const auto colourTable = [](uint8_t flags) { return (flags & 0x80) != 0 ? size_t{6} << (flags & 7) : size_t{0}; };
  size_t position = 13 + colourTable(byteAt(10));
  bool inImage = false;
  while (position < bytes.size()) {
    if (byteAt(position) == 0x2C) {
      inImage = true;
      position += 11 + colourTable(byteAt(position + 9));
    } else if (byteAt(position) == 0x21) {
      position += 2;
    } else {
      return false;
    }
    while (byteAt(position) != 0) position += size_t{1} + byteAt(position);
    if (position >= bytes.size()) return false;
    ++position;
    if (inImage) return true;
  }
  return false;
}

// A palette image of the same pixels. Up to 256 colours are exact; above that GD reduces them. With `keepAlpha` pixels
// at least half clear share one clear colour.
OwnedGdImage ToPalette(gdImagePtr image, bool keepAlpha) {
  const auto isClear = [keepAlpha](int pixel) { return keepAlpha && gdTrueColorGetAlpha(pixel) > gdAlphaMax / 2; };
  bool anyClear = false;
  bool fits = true;
  std::unordered_map<uint32_t, int> indexOfColour;
  for (int y = 0; y < image->sy; ++y) {
    for (int x = 0; x < image->sx; ++x) {
      const int pixel = image->tpixels[y][x];
      if (isClear(pixel)) {
        anyClear = true;
      } else if (fits) {
        indexOfColour.try_emplace(static_cast<uint32_t>(pixel) & kColourBits, static_cast<int>(indexOfColour.size()));
        fits = indexOfColour.size() <= gdMaxColors;
      }
    }
  }
  const size_t room = gdMaxColors - (anyClear ? 1 : 0);
  fits = fits && indexOfColour.size() <= room;

  OwnedGdImage palette;
  if (fits) {
    palette.reset(gdImageCreate(image->sx, image->sy));
    if (palette == nullptr) return nullptr;
    for (const auto &[colour, index] : indexOfColour) {
      palette->red[index] = gdTrueColorGetRed(static_cast<int>(colour));
      palette->green[index] = gdTrueColorGetGreen(static_cast<int>(colour));
      palette->blue[index] = gdTrueColorGetBlue(static_cast<int>(colour));
      palette->open[index] = 0;
    }
    palette->colorsTotal = static_cast<int>(indexOfColour.size());
  } else {
    palette.reset(gdImageCreatePaletteFromTrueColor(image, 1, static_cast<int>(room)));
    if (palette == nullptr) return nullptr;
  }
  int clearIndex = -1;
  if (anyClear) {
    clearIndex = gdImageColorAllocate(palette.get(), 0, 0, 0);
    gdImageColorTransparent(palette.get(), clearIndex);
  }
  for (int y = 0; y < image->sy; ++y) {
    for (int x = 0; x < image->sx; ++x) {
      const int pixel = image->tpixels[y][x];
      if (isClear(pixel)) {
        palette->pixels[y][x] = static_cast<uint8_t>(clearIndex);
      } else if (fits) {
        palette->pixels[y][x] = static_cast<uint8_t>(indexOfColour.at(static_cast<uint32_t>(pixel) & kColourBits));
      }
    }
  }
  return palette;
}

// Leaves out the chunks of a PNG file that its decoder may pass over, as GD does not use them and the PNG library
// writes to the standard error stream what it thinks of some (a colour profile, say). What is no chunk stays as it is.
Bytes WithoutExtras(std::span<const uint8_t> bytes) {
  constexpr size_t kSignature = 8;
  constexpr size_t kChunkFrame = 12;  // length, type and check sum
  Bytes kept(bytes.begin(), bytes.begin() + std::min(kSignature, bytes.size()));
  bytes = bytes.subspan(kept.size());
  while (bytes.size() >= kChunkFrame) {
    const size_t length = size_t{bytes[0]} << 24 | size_t{bytes[1]} << 16 | size_t{bytes[2]} << 8 | size_t{bytes[3]};
    if (length > bytes.size() - kChunkFrame) break;
    const std::span<const uint8_t> chunk = bytes.first(kChunkFrame + length);
    const bool mayBePassedOver = (chunk[4] & 0x20) != 0;
    if (!mayBePassedOver || StartsWith(chunk, "tRNS", 4)) kept.insert(kept.end(), chunk.begin(), chunk.end());
    bytes = bytes.subspan(chunk.size());
  }
  kept.insert(kept.end(), bytes.begin(), bytes.end());
  return kept;
}

gdImagePtr DecodePng(int size, void *bytes) {
  Bytes kept = WithoutExtras({static_cast<const uint8_t *>(bytes), static_cast<size_t>(size)});
  return gdImageCreateFromPngPtr(static_cast<int>(kept.size()), kept.data());
}

// GD turns some TIFF files upright, as far as the TIFF library does it, and others not.
gdImagePtr DecodeTiff(int size, void *bytes) {
  ForgetOrientationOfTiff({static_cast<uint8_t *>(bytes), static_cast<size_t>(size)});
  return gdImageCreateFromTiffPtr(size, bytes);
}

void *EncodePng(gdImagePtr image, int *size, const SaveOptions &) { return gdImagePngPtr(image, size); }

void *EncodeJpeg(gdImagePtr image, int *size, const SaveOptions &options) {
  return gdImageJpegPtr(image, size, options.quality < 0 ? kDefaultJpegQuality : options.quality);
}

void *EncodeGif(gdImagePtr image, int *size, const SaveOptions &options) {
  const OwnedGdImage palette = ToPalette(image, options.alpha == AlphaPlane::Keep);
  return palette == nullptr ? nullptr : gdImageGifPtr(palette.get(), size);
}

void *EncodeWebp(gdImagePtr image, int *size, const SaveOptions &options) {
  return gdImageWebpPtrEx(image, size, options.quality < 0 ? gdWebpLossless : options.quality);
}

void *EncodeTiff(gdImagePtr image, int *size, const SaveOptions &) { return gdImageTiffPtr(image, size); }

void *EncodeBmp(gdImagePtr image, int *size, const SaveOptions &) { return gdImageBmpPtr(image, size, 0); }

bool IsLeftToDecoder(std::span<const uint8_t>) { return true; }

struct Format {
  const char *name;
  std::array<std::string_view, 2> extensions;  // an unused one is empty
  std::array<std::string_view, 2> magics;      // at the start of a file; an unused one is empty
  bool (*isWhole)(std::span<const uint8_t> bytes);
  gdImagePtr (*decode)(int size, void *bytes);
  void *(*encode)(gdImagePtr image, int *size, const SaveOptions &options);
  int largestSide;  // pixels that the format can hold in one direction
  bool holdsAlpha;
};

using namespace std::literals;

constexpr std::array<Format, 6> kFormats = {{
    {"PNG", {"png"}, {"\x89PNG\r\n\x1A\n"sv}, IsLeftToDecoder, DecodePng, EncodePng, INT_MAX, true},
    {"JPEG", {"jpg", "jpeg"}, {"\xFF\xD8\xFF"sv}, IsWholeJpeg, gdImageCreateFromJpegPtr, EncodeJpeg, 65500, false},
    {"GIF", {"gif"}, {"GIF87a"sv, "GIF89a"sv}, IsWholeGif, gdImageCreateFromGifPtr, EncodeGif, 65535, false},
    {"WebP", {"webp"}, {"RIFF"sv}, IsLeftToDecoder, gdImageCreateFromWebpPtr, EncodeWebp, 16383, true},
    {"TIFF", {"tif", "tiff"}, {"II*\0"sv, "MM\0*"sv}, IsLeftToDecoder, DecodeTiff, EncodeTiff, INT_MAX, true},
    {"BMP", {"bmp"}, {"BM"sv}, IsLeftToDecoder, gdImageCreateFromBmpPtr, EncodeBmp, INT_MAX, false},
}};

const Format *RecogniseFormat(std::span<const uint8_t> bytes) {
  for (const Format &format : kFormats) {
    for (const std::string_view magic : format.magics) {
      if (magic.empty() || !StartsWith(bytes, magic)) continue;
      if (magic == "RIFF" && !StartsWith(bytes, "WEBP", 8)) continue;
      return &format;
    }
  }
  return nullptr;
}

const Format *FormatOfExtension(const std::string &path) {
  std::string extension = std::filesystem::path(path).extension().string();
  if (extension.empty()) return nullptr;
  extension.erase(0, 1);
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](char letter) { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter; });
  for (const Format &format : kFormats) {
    if (extension.empty()) break;
    if (extension == format.extensions[0] || extension == format.extensions[1]) return &format;
  }
  return nullptr;
}

std::string FormatNames() {
  std::string names;
  for (const Format &format : kFormats) {
    names += (names.empty() ? "" : &format == &kFormats.back() ? " and " : ", ") + std::string(format.name);
  }
  return names;
}

Bytes ReadFile(const std::string &path) {
  const int64_t size = SizeOfFile(path);
  if (size > INT_MAX) FailOnFile(path, "is too large; image files may have up to 2 GiB");
  std::ifstream file(path, std::ios::binary);
  if (!file) FailOnFile(path, "cannot be opened (" + SystemError(errno) + "); check who may read it");
  Bytes bytes(static_cast<size_t>(size));
  file.read(reinterpret_cast<char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!file) FailOnFile(path, "cannot be read whole; get a new copy of it");
  if (bytes.empty()) FailOnFile(path, "is empty; name an image file");
  return bytes;
}

// Turns the transparent colour of a true-colour file into alpha.
void ResolveColourKey(gdImagePtr image) {
  if (image->transparent >= 0) {
    const uint32_t key = static_cast<uint32_t>(image->transparent) & kColourBits;
    for (int y = 0; y < image->sy; ++y) {
      for (int x = 0; x < image->sx; ++x) {
        int &pixel = image->tpixels[y][x];
        if ((static_cast<uint32_t>(pixel) & kColourBits) == key) pixel |= kMaskAlpha;
      }
    }
  }
  image->transparent = -1;
}

bool HasTransparency(gdImagePtr image) {
  for (int y = 0; y < image->sy; ++y) {
    const int *const row = image->tpixels[y];
    if (std::any_of(row, row + image->sx, [](int pixel) { return (pixel & kMaskAlpha) != 0; })) return true;
  }
  return false;
}

// A copy with all pixels opaque; nil if there is no memory.
OwnedGdImage OpaqueCopy(gdImagePtr image) {
  OwnedGdImage copy(gdImageCreateTrueColor(image->sx, image->sy));
  if (copy == nullptr) return nullptr;
  for (int y = 0; y < image->sy; ++y) {
    std::transform(image->tpixels[y], image->tpixels[y] + image->sx, copy->tpixels[y],
                   [](int pixel) { return static_cast<int>(static_cast<uint32_t>(pixel) & kColourBits); });
  }
  return copy;
}

}  // namespace

LoadedImage LoadImageFile(const std::string &path) {
  SilenceLibraries();
  Bytes bytes = ReadFile(path);
  const Format *const format = RecogniseFormat(bytes);
  if (format == nullptr) FailOnFile(path, "is not an image that can be read; known are " + FormatNames());
  OwnedGdImage image;
  if (format->isWhole(bytes)) image.reset(format->decode(static_cast<int>(bytes.size()), bytes.data()));
  if (image == nullptr) FailOnDamage(path, format->name);
  if (image->trueColor == 0) {
    if (gdImagePaletteToTrueColor(image.get()) == 0) FailOnFile(path, "there is not enough memory for its pixels");
    image->transparent = -1;
  }
  ResolveColourKey(image.get());
  const bool hasTransparency = HasTransparency(image.get());
  return {std::move(image), format->name, hasTransparency};
}

void SaveImageFile(gdImagePtr image, const std::string &path, const SaveOptions &options) {
  SilenceLibraries();
  const Format *const format = FormatOfExtension(path);
  if (format == nullptr) FailOnFile(path, "no known image extension; use one of " + KnownImageExtensions());
  if (options.quality != -1 && (options.quality < 1 || options.quality > 100)) {
    FailOnFile(path, "a quality of " + std::to_string(options.quality) + " is out of range; use 1 to 100");
  }
  if (std::max(image->sx, image->sy) > format->largestSide) {
    FailOnFile(path, "a " + std::string(format->name) + " file holds up to " + std::to_string(format->largestSide) +
                         " pixels in each direction; use another format or a smaller image");
  }
  PartFile file(path);

  const bool hasTransparency = HasTransparency(image);
  const bool keepAlpha = hasTransparency && options.alpha == AlphaPlane::Keep;
  const OwnedGdImage opaque = hasTransparency && !keepAlpha ? OpaqueCopy(image) : nullptr;
  if (hasTransparency && !keepAlpha && opaque == nullptr) FailOnFile(path, "there is not enough memory to write it");
  gdImagePtr const pixels = opaque != nullptr ? opaque.get() : image;
  const int savedFlag = std::exchange(pixels->saveAlphaFlag, keepAlpha ? 1 : 0);
  int size = 0;
  const std::unique_ptr<void, void (*)(void *)> encoded(format->encode(pixels, &size, options), gdFree);
  pixels->saveAlphaFlag = savedFlag;
  if (encoded == nullptr || size <= 0) {
    FailOnFile(path, "could not be put into the " + std::string(format->name) + " format; use another one");
  }

  file.Write({static_cast<const uint8_t *>(encoded.get()), static_cast<size_t>(size)});
  file.Commit();
}

bool HasKnownImageExtension(const std::string &path) { return FormatOfExtension(path) != nullptr; }

bool HoldsAlpha(const std::string &path) {
  const Format *const format = FormatOfExtension(path);
  return format != nullptr && format->holdsAlpha;
}

std::string KnownImageExtensions() {
  std::string list;
  for (const Format &format : kFormats) {
    for (const std::string_view extension : format.extensions) {
      if (!extension.empty()) list += (list.empty() ? "" : ", ") + std::string(extension);
    }
  }
  return list;
}

}  // namespace standalone
