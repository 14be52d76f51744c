#include "exchange/row_strings.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "exchange/exchange_rows.h"
#include "host/host_services.h"
#include "host/resources.h"
#include "image/image_formats.h"
#include "image/image_record.h"
#include "pixels/row_walker.h"

namespace zvk::exchange {

namespace {

// --- steps that both methods share ---

bool CheckIndex(const ImageClassData &image, int32_t index) {
  if (index >= 0 && index < image.Height) return true;
  RaiseException("UnsupportedOperationException", "Index is out of bounds.");
  return false;
}

// A zeroed buffer for the rows of a string; nil, after an exception, if there cannot be one.
ZeroedBuffer<uint8_t> MakeRows(const ImageClassData &packed) {
  const int64_t size = int64_t{PackedRowSize(packed)} * packed.Height;
  ZeroedBuffer<uint8_t> rows = PackedRowSizeWraps(packed) ? ZeroedBuffer<uint8_t>() : ZeroedBuffer<uint8_t>(size);
  if (!rows) RaiseNoMemoryForRow(size);
  return rows;
}

REALstring StringOfRows(const ZeroedBuffer<uint8_t> &rows, const ImageClassData &packed) {
  return REALBuildUnicodeString(rows.Get(), int64_t{PackedRowSize(packed)} * packed.Height, kEncodingBinary);
}

// The bytes of a caller's string, borrowed from the host for as long as this lives.
class StringBytes {
 public:
  // Raises "NilObjectException" for an empty string; there are no bytes then.
  explicit StringBytes(REALstring string) {
    if (string != nullptr) Borrow(string);
    if (length_ == 0) RaiseException("NilObjectException", "Memoryblock is nil");  // speaks of a block, also here
  }
  StringBytes(const StringBytes &) = delete;
  StringBytes &operator=(const StringBytes &) = delete;
  ~StringBytes() {
    if (!hasData_) return;
    if (REALDisposeStringData.Resolves()) {
      REALDisposeStringData(&data_);
    } else {
      std::free(data_.data);
    }
  }

  explicit operator bool() const { return length_ != 0; }
  // Nil if the host gave none.
  const uint8_t *Get() const { return bytes_; }

 private:
  void Borrow(REALstring string) {
    constexpr double kFirstWithStringData = 2012.0;
    if (rbversion >= kFirstWithStringData) {
      hasData_ = REALGetStringData(string, kEncodingBinary, &data_) != 0;
      if (!hasData_) return;
      bytes_ = static_cast<const uint8_t *>(data_.data);
      length_ = data_.length;
    } else {
      BorrowFromRecord(string);
    }
  }

  // An older host's own record, in words: the second is the address of the byte before the text, the fourth the length.
  void BorrowFromRecord(REALstring string) {
    REALLockString(string);
    locked_ = StringReference(string);
    const auto *const record = reinterpret_cast<const uint8_t *>(string);
    const uint8_t *beforeText;
    int32_t length;
    std::memcpy(&beforeText, record + sizeof(void *), sizeof beforeText);
    std::memcpy(&length, record + 3 * sizeof(void *), sizeof length);
    bytes_ = beforeText != nullptr ? beforeText + 1 : nullptr;
    length_ = static_cast<uint32_t>(length);
  }

  const uint8_t *bytes_ = nullptr;
  uint32_t length_ = 0;
  REALstringData data_{};
  bool hasData_ = false;
  StringReference locked_;
};

}  // namespace

// --- a row ---

REALstring rbGetRowFS(REALobject instance, int32_t index, int32_t format) {
  ImageClassData *image = ConvertibleRecord(instance);
  if (image == nullptr || !CheckIndex(*image, index)) return nullptr;
  const uint8_t *row = FetchRow(*image, index);
  if (row == nullptr) return nullptr;
  ImageClassData packed{};
  if (!InitImageClassData(&packed, image->Width, 1, format)) return nullptr;
  const ZeroedBuffer<uint8_t> result = MakeRows(packed);
  if (!result) return nullptr;
  const auto conversion = ConversionBetween(*image, packed);
  if (!conversion) return nullptr;
  conversion->ConvertRow(row, result.Get(), image->Width);
  return StringOfRows(result, packed);
}

void rbSetRowFS(REALobject instance, int32_t index, int32_t format, REALstring string) {
  const StringBytes bytes(string);
  if (!bytes) return;
  ImageClassData *image = ConvertibleRecord(instance);
  if (image == nullptr || !CheckIndex(*image, index) || bytes.Get() == nullptr) return;
  uint8_t *row = FetchRow(*image, index);
  if (row == nullptr) return;
  ImageClassData packed{};
  if (!InitImageClassData(&packed, image->Width, 1, format)) return;
  const auto conversion = ConversionBetween(packed, *image);
  if (conversion) conversion->ConvertRow(bytes.Get(), row, image->Width);
}

// --- all rows, from the top: the order for which the block of a mapped image is placed. Nothing yields. ---

REALstring rbGetAllFS(REALobject instance, int32_t format) {
  ImageClassData *image = ConvertibleRecord(instance);
  if (image == nullptr) return nullptr;
  ImageClassData packed{};
  if (!InitImageClassData(&packed, image->Width, image->Height, format)) return nullptr;
  const ZeroedBuffer<uint8_t> result = MakeRows(packed);
  if (!result) return nullptr;
  const auto conversion = ConversionBetween(*image, packed);
  if (!conversion) return nullptr;
  const ptrdiff_t rowSize = PackedRowSize(packed);
  ForEachRow(*image, image->Height, [&](const uint8_t *row, int32_t y) {
    conversion->ConvertRow(row, result.Get() + y * rowSize, image->Width);
  });
  return StringOfRows(result, packed);
}

void rbSetAllFS(REALobject instance, int32_t format, REALstring string) {
  const StringBytes bytes(string);
  if (!bytes) return;
  ImageClassData *image = ConvertibleRecord(instance);
  if (image == nullptr || bytes.Get() == nullptr) return;
  ImageClassData packed{};
  if (!InitImageClassData(&packed, image->Width, image->Height, format)) return;
  const auto conversion = ConversionBetween(packed, *image);
  if (!conversion) return;
  const ptrdiff_t rowSize = PackedRowSize(packed);
  ForEachRow(*image, image->Height,
             [&](uint8_t *row, int32_t y) { conversion->ConvertRow(bytes.Get() + y * rowSize, row, image->Width); });
}

}  // namespace zvk::exchange
