// The 40 pixel formats: one table, and everything that is asked about a format is read from it.
#pragma once

#include <array>
#include <cstdint>

#include "image/image_record.h"

namespace zvk::image {

enum ImageFormat : int32_t {
  ImageFormatUnknown = 0,
  ImageFormatRGB,
  ImageFormatRGBA,
  ImageFormatRGBX,
  ImageFormatARGB,
  ImageFormatXRGB,
  ImageFormatBGR,
  ImageFormatBGRA,
  ImageFormatBGRX,
  ImageFormatABGR,
  ImageFormatXBGR,
  ImageFormatG,
  ImageFormatGA,
  ImageFormatAG,
  ImageFormat1of3 = 15,
  ImageFormat2of3,
  ImageFormat3of3,
  ImageFormat1of4,
  ImageFormat2of4,
  ImageFormat3of4,
  ImageFormat4of4,
  ImageFormatBuffer,
  ImageFormatCMYK,
  ImageFormatCMYKA,
  ImageFormatACMYK,
  ImageFormatCMYKX,
  ImageFormatXCMYK,
  ImageFormatKYMC,
  ImageFormatKYMCA,
  ImageFormatAKYMC,
  ImageFormatKYMCX,
  ImageFormatXKYMC,
  ImageFormatScaling1,
  ImageFormatScaling2,
  ImageFormatScaling3,
  ImageFormatScaling4,
  ImageFormatScaling5,
  ImageFormatScaling6,
  ImageFormatScaling7,
  ImageFormatScaling8,
  ImageFormatGray16,
};

// Fills the fields that a format decides: sizes, channels, flags, family. False, with only the sizes and the number
// stored, for a refused format; false with nothing written for a nil record or a size not above zero.
bool InitImageClassData(ImageClassData *record, int32_t width, int32_t height, int32_t format);

// Bytes of a row in memory: the pixels rounded up to a multiple of 64, in wrapping 32-bit arithmetic.
int32_t MemoryRowSize(const ImageClassData &record);

// Bytes that an image in memory takes; 0 for a refused format or a size not above zero.
int64_t CalculateMemory(int32_t width, int32_t height, int32_t format);

// True if CalculateMemory gives 1 to 2147483647. Allocates nothing.
uint8_t CanAllocateImage(int32_t width, int32_t height, int32_t format);

// Property getter: the format's name as ASCII; nil for numbers above 41 and from 14 to 22.
REALstring GetImageFormatString(REALobject instance, int32_t param);

// Property setters: a value outside 0 to PixelSize - 1 raises "OutOfBoundsException" and changes nothing. Only the
// offset changes, neither the Has flag nor ChannelOffsets.
void SetRedOffset(REALobject instance, int32_t param, int32_t value);
void SetGreenOffset(REALobject instance, int32_t param, int32_t value);
void SetBlueOffset(REALobject instance, int32_t param, int32_t value);
void SetGrayOffset(REALobject instance, int32_t param, int32_t value);
void SetAlphaOffset(REALobject instance, int32_t param, int32_t value);

}  // namespace zvk::image
