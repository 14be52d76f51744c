#include "exchange/row_conversion.h"

#include "exchange/exchange_rows.h"
#include "image/image_formats.h"
#include "image/image_record.h"
#include "image/rows.h"
#include "pixels/row_walker.h"

namespace zvk::exchange {

namespace {

// False, after an exception, for an index that is not one of the image's rows. The two forms of the method differ in
// the exception.
bool CheckIndex(const ImageClassData &image, int32_t index, bool invertAlpha) {
  if (index >= 0 && index < image.Height) return true;
  if (invertAlpha) {
    RaiseException("UnsupportedOperationException", "Index is out of bounds.");
  } else {
    RaiseOutOfBoundsException(index, 0, image.Height, "index", "RowInFormat");
  }
  return false;
}

REALobject GetRowInFormat(REALobject instance, int32_t index, int32_t format, bool invertAlpha) {
  ImageClassData *image = ConvertibleRecord(instance);
  if (image == nullptr || !CheckIndex(*image, index, invertAlpha)) return nullptr;
  const uint8_t *row = FetchRow(*image, index);
  if (row == nullptr) return nullptr;
  ImageClassData packed{};
  if (!InitImageClassData(&packed, image->Width, 1, format)) return nullptr;

  constexpr uint32_t kLargestSize = 2147483646;
  const int32_t size = PackedRowSize(packed);
  const bool tooLarge = static_cast<uint32_t>(size) > kLargestSize || PackedRowSizeWraps(packed);
  NewBlock result = tooLarge ? NewBlock{} : MakeBlock(size);
  if (result.bytes == nullptr) {
    RaiseNoMemoryForRow(size);
    return nullptr;
  }
  const auto conversion = ConversionBetween(*image, packed, {.complementsAlpha = invertAlpha});
  if (!conversion) return nullptr;
  conversion->ConvertRow(row, result.bytes, image->Width);
  return result.block.Release();
}

void SetRowInFormat(REALobject instance, int32_t index, int32_t format, bool invertAlpha, REALobject block) {
  ImageClassData *image = ConvertibleRecord(instance);
  if (image == nullptr || !CheckIndex(*image, index, invertAlpha)) return;
  const uint8_t *bytes = BytesOfBlock(block);
  if (bytes == nullptr) {
    RaiseException("NilObjectException", "Memoryblock is nil.");
    return;
  }
  uint8_t *row = FetchRow(*image, index);
  if (row == nullptr) return;
  ImageClassData packed{};
  if (!InitImageClassData(&packed, image->Width, 1, format)) return;
  // The block may be another mapping of the image's file.
  const auto conversion =
      ConversionBetween(packed, *image, {.complementsAlpha = invertAlpha, .alwaysInOrder = !HasFixedRows(*image)});
  if (conversion) conversion->ConvertRow(bytes, row, image->Width);
}

}  // namespace

REALobject rbGetRowF(REALobject instance, int32_t index, int32_t format) {
  return GetRowInFormat(instance, index, format, false);
}

REALobject rbGetRowFI(REALobject instance, int32_t index, int32_t format, uint8_t invertAlpha) {
  return GetRowInFormat(instance, index, format, invertAlpha != 0);
}

void rbSetRowF(REALobject instance, int32_t index, int32_t format, REALobject block) {
  if (block == nullptr) {
    RaiseException("NilObjectException", "Memoryblock is nil.");
    return;
  }
  SetRowInFormat(instance, index, format, false, block);
}

void rbSetRowFI(REALobject instance, int32_t index, int32_t format, uint8_t invertAlpha, REALobject block) {
  if (block == nullptr) {
    RaiseException("NilObjectException", "memoryblock is nil");  // not the words of the other form
    return;
  }
  SetRowInFormat(instance, index, format, invertAlpha != 0, block);
}

}  // namespace zvk::exchange
