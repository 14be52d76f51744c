#include "image/image_formats.h"

#include <cstring>

#include "host/resources.h"
#include "image/channels.h"

namespace zvk::image {

namespace {

enum class Family : uint8_t { None, Gray, RGB, CMYK };

// One row of the format table. The layout names the bytes of a pixel in memory order: R, G, B, A, C, M, Y, K; g for
// gray, the second byte of a 16-bit sample is '+', a byte without meaning is '.'.
struct Format {
  int32_t number;
  const char *name;
  Family family;
  const char *layout;
  int32_t bits = 8;
};

// clang-format off
constexpr std::array kFormats{
    Format{ImageFormatRGB,      "RGB",     Family::RGB,  "RGB"},
    Format{ImageFormatRGBA,     "RBBA",    Family::RGB,  "RGBA"},  // the name's letters are kept: programs compare with them
    Format{ImageFormatRGBX,     "RGBX",    Family::RGB,  "RGB."},
    Format{ImageFormatARGB,     "ARGB",    Family::RGB,  "ARGB"},
    Format{ImageFormatXRGB,     "XRGB",    Family::RGB,  ".RGB"},
    Format{ImageFormatBGR,      "BGR",     Family::RGB,  "BGR"},
    Format{ImageFormatBGRA,     "BGRA",    Family::RGB,  "BGRA"},
    Format{ImageFormatBGRX,     "BGRX",    Family::RGB,  "BGR."},
    Format{ImageFormatABGR,     "ABGR",    Family::RGB,  "ABGR"},
    Format{ImageFormatXBGR,     "XBGR",    Family::RGB,  ".BGR"},
    Format{ImageFormatG,        "G",       Family::Gray, "g"},
    Format{ImageFormatGA,       "GA",      Family::Gray, "gA"},
    Format{ImageFormatAG,       "AG",      Family::Gray, "Ag"},
    Format{ImageFormat1of3,     nullptr,   Family::Gray, "g.."},
    Format{ImageFormat2of3,     nullptr,   Family::Gray, ".g."},
    Format{ImageFormat3of3,     nullptr,   Family::Gray, "..g"},
    Format{ImageFormat1of4,     nullptr,   Family::Gray, "g..."},
    Format{ImageFormat2of4,     nullptr,   Family::Gray, ".g.."},
    Format{ImageFormat3of4,     nullptr,   Family::Gray, "..g."},
    Format{ImageFormat4of4,     nullptr,   Family::Gray, "...g"},
    Format{ImageFormatBuffer,   nullptr,   Family::None, "."},
    Format{ImageFormatCMYK,     "CMYK",    Family::CMYK, "CMYK"},
    Format{ImageFormatCMYKA,    "CMYKA",   Family::CMYK, "CMYKA"},
    Format{ImageFormatACMYK,    "ACMYK",   Family::CMYK, "ACMYK"},
    Format{ImageFormatCMYKX,    "CMYKX",   Family::CMYK, "CMYK."},
    Format{ImageFormatXCMYK,    "XCMYK",   Family::CMYK, ".CMYK"},
    Format{ImageFormatKYMC,     "KYMC",    Family::CMYK, "KYMC"},
    Format{ImageFormatKYMCA,    "KYMCA",   Family::CMYK, "KYMCA"},
    Format{ImageFormatAKYMC,    "AKYMC",   Family::CMYK, "AKYMC"},
    Format{ImageFormatKYMCX,    "KYMCX",   Family::CMYK, "KYMC."},
    Format{ImageFormatXKYMC,    "XKYMC",   Family::CMYK, ".KYMC"},
    Format{ImageFormatScaling1, "Scaling", Family::None, "."},
    Format{ImageFormatScaling2, "Scaling", Family::None, ".."},
    Format{ImageFormatScaling3, "Scaling", Family::None, "..."},
    Format{ImageFormatScaling4, "Scaling", Family::None, "...."},
    Format{ImageFormatScaling5, "Scaling", Family::None, "....."},
    Format{ImageFormatScaling6, "Scaling", Family::None, "......"},
    Format{ImageFormatScaling7, "Scaling", Family::None, "......."},
    Format{ImageFormatScaling8, "Scaling", Family::None, "........"},
    Format{ImageFormatGray16,   "G16",     Family::Gray, "g+", 16},
};
// clang-format on

static_assert(kFormats.size() == 40);
static_assert([] {
  int32_t number = 0;
  for (const Format &format : kFormats) {
    number += number == ImageFormatAG ? 2 : 1;  // there is no format 14
    if (format.number != number) return false;
  }
  return number == ImageFormatGray16;
}());

const Format *FindFormat(int32_t number) {
  if (number < ImageFormatRGB || number > ImageFormatGray16 || number == ImageFormatAG + 1) return nullptr;
  return &kFormats[static_cast<size_t>(number < ImageFormatAG + 1 ? number - 1 : number - 2)];
}

}  // namespace

bool InitImageClassData(ImageClassData *record, int32_t width, int32_t height, int32_t format) {
  if (record == nullptr || width <= 0 || height <= 0) return false;

  for (const ChannelField &channel : kChannels) {
    record->*channel.offset = 0;
    record->*channel.has = false;
  }
  std::memset(record->ChannelOffsets, 0, sizeof record->ChannelOffsets);
  record->ChannelCount = 0;
  record->IsGray = record->IsRGB = record->IsCMYK = false;
  record->PixelSize = 0;
  record->RowSize = 0;
  record->Width = width;
  record->Height = record->UnclippedHeight = height;
  record->ImageFormat = format;
  record->BitsPerComponent = 8;

  const Format *entry = FindFormat(format);
  if (entry == nullptr) return false;
  record->BitsPerComponent = entry->bits;
  record->PixelSize = static_cast<int32_t>(std::strlen(entry->layout));
  record->IsGray = entry->family == Family::Gray;
  record->IsRGB = entry->family == Family::RGB;
  record->IsCMYK = entry->family == Family::CMYK;
  for (int32_t offset = 0; offset < record->PixelSize; ++offset) {
    for (const ChannelField &channel : kChannels) {
      if (channel.letter != entry->layout[offset]) continue;
      record->*channel.offset = offset;
      record->*channel.has = true;
      record->ChannelOffsets[record->ChannelCount++] = offset;
    }
  }
  return true;
}

int32_t MemoryRowSize(const ImageClassData &record) { return (record.PixelSize * record.Width + 63) & ~63; }

int64_t CalculateMemory(int32_t width, int32_t height, int32_t format) {
  ImageClassData record{};
  if (!InitImageClassData(&record, width, height, format)) return 0;
  return int64_t{MemoryRowSize(record)} * record.Height;
}

uint8_t CanAllocateImage(int32_t width, int32_t height, int32_t format) {
  const int64_t size = CalculateMemory(width, height, format);
  return size >= 1 && size <= kLargestAllocation;
}

REALstring GetImageFormatString(REALobject instance, int32_t /*param*/) {
  const ImageClassData *record = RecordOf(instance);
  if (record == nullptr) return nullptr;
  const Format *format = FindFormat(record->ImageFormat);
  const char *name = record->ImageFormat == ImageFormatUnknown ? "Unknown" : format != nullptr ? format->name : nullptr;
  if (name == nullptr) return nullptr;
  return REALBuildUnicodeString(name, static_cast<int64_t>(std::strlen(name)), kEncodingASCII);
}

namespace {

void SetOffset(REALobject instance, int32_t ImageClassData::*offset, int32_t value, const char *propertyName) {
  ImageClassData *record = RecordOf(instance);
  if (record == nullptr) return;
  if (value < 0 || value >= record->PixelSize) {
    RaiseOutOfBoundsException(value, 0, record->PixelSize, "value", propertyName);
    return;
  }
  record->*offset = value;
}

}  // namespace

void SetRedOffset(REALobject instance, int32_t /*param*/, int32_t value) {
  SetOffset(instance, &ImageClassData::RedOffset, value, "RedOffset");
}

void SetGreenOffset(REALobject instance, int32_t /*param*/, int32_t value) {
  SetOffset(instance, &ImageClassData::GreenOffset, value, "GreenOffset");
}

void SetBlueOffset(REALobject instance, int32_t /*param*/, int32_t value) {
  SetOffset(instance, &ImageClassData::BlueOffset, value, "BlueOffset");
}

void SetGrayOffset(REALobject instance, int32_t /*param*/, int32_t value) {
  SetOffset(instance, &ImageClassData::GrayOffset, value, "GrayOffset");
}

void SetAlphaOffset(REALobject instance, int32_t /*param*/, int32_t value) {
  SetOffset(instance, &ImageClassData::AlphaOffset, value, "AlphaOffset");
}

}  // namespace zvk::image
