#include "exchange/exchange_rows.h"

#include <cstdio>
#include <new>
#include <utility>

namespace zvk::exchange {

ImageClassData *ReadableRecord(REALobject instance) {
  ImageClassData *image = RecordOf(instance);
  return image != nullptr && image->Valid && HasRows(*image) ? image : nullptr;
}

ImageClassData *ConvertibleRecord(REALobject instance) {
  ImageClassData *image = RecordOf(instance);
  return image != nullptr && image->Valid && HasPixels(*image) ? image : nullptr;
}

uint8_t *BytesOfBlock(REALobject block) {
  return block != nullptr ? static_cast<uint8_t *>(REALMemoryBlockGetPtr(block)) : nullptr;
}

NewBlock MakeBlock(int32_t size) {
  try {
    ObjectReference block(REALNewMemoryBlockOriginal(size));
    uint8_t *bytes = BytesOfBlock(block.Get());
    if (bytes == nullptr) return {};
    return {std::move(block), bytes};
  } catch (const std::bad_alloc &) {
    return {};
  }
}

std::optional<PixelConversion> ConversionBetween(const ImageClassData &source, const ImageClassData &dest,
                                                 const ConversionRules &rules) {
  const auto from = PixelLayoutOf<ColourFamily::CMYK, ColourFamily::RGB, ColourFamily::Gray>(source);
  const auto to = PixelLayoutOf<ColourFamily::CMYK, ColourFamily::RGB, ColourFamily::Gray>(dest);
  if (!from || !to) return std::nullopt;
  const auto conversion = PixelConversion::Between(*from, *to, rules);
  if (!conversion) {
    RaiseException("UnsupportedOperationException", from->family == ColourFamily::RGB
                                                        ? "Conversion from RGB to CMYK is not supported."
                                                        : "Conversion from CMYK to RGB is not supported.");
  }
  return conversion;
}

void RaiseOutOfMemory(const char *text, int64_t size) {
  char message[200];
  std::snprintf(message, sizeof message, text, static_cast<long long>(size));
  RaiseException("OutOfMemoryException", message);
}

}  // namespace zvk::exchange
