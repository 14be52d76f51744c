#include "standalone/files/orientation.h"

#include <libexif/exif-data.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace standalone {
namespace {

using namespace std::literals;

using Bytes = std::vector<uint8_t>;

constexpr int kUpright = 1;
constexpr std::string_view kExifStart = "Exif\0\0"sv;
constexpr size_t kLargestExif = 1 << 16;  // bytes that EXIF data can have in a JPEG file

enum class Order : uint8_t { LowFirst, HighFirst };

// A stream as bytes at positions.
class Source {
 public:
  explicit Source(std::FILE *stream) : stream_(stream) {}
  Source(const Source &) = delete;
  Source &operator=(const Source &) = delete;
  ~Source() {
    if (stream_ != nullptr) std::fclose(stream_);
  }

  // As many of them as there are.
  Bytes Read(uint64_t position, size_t count) const {
    if (stream_ == nullptr || position > uint64_t{std::numeric_limits<int64_t>::max()} ||
        fseeko(stream_, static_cast<off_t>(position), SEEK_SET) != 0) {
      return {};
    }
    Bytes bytes(count);
    bytes.resize(std::fread(bytes.data(), 1, count, stream_));
    return bytes;
  }

  // A number of up to 8 bytes; 0 if they are not all there.
  uint64_t Number(uint64_t position, size_t count, Order order) const {
    Bytes bytes = Read(position, count);
    if (bytes.size() < count) return 0;
    if (order == Order::LowFirst) std::ranges::reverse(bytes);
    uint64_t number = 0;
    for (const uint8_t byte : bytes) number = number << 8 | byte;
    return number;
  }

  bool Has(std::string_view text, uint64_t position) const {
    return std::ranges::equal(Read(position, text.size()), text, {}, {}, [](char letter) { return uint8_t(letter); });
  }

 private:
  std::FILE *const stream_;
};

// --- where files keep their EXIF data, which is empty if there is none ---

Bytes ExifOfJpeg(const Source &file) {
  constexpr uint64_t kFill = 0xFFFF;
  constexpr uint64_t kApplication = 0xFFE1;
  uint64_t position = 2;
  while (true) {
    const uint64_t marker = file.Number(position, 2, Order::HighFirst);
    if (marker == kFill) {
      ++position;
      continue;
    }
    // Tables, frame headers, comments and the like are passed over; the picture itself ends the search.
    const bool isSegment = (marker >= 0xFFC0 && marker <= 0xFFCF) || (marker >= 0xFFDB && marker <= 0xFFFE);
    const uint64_t size = file.Number(position + 2, 2, Order::HighFirst);
    if (!isSegment || size < 2) return {};
    if (marker == kApplication && file.Has(kExifStart, position + 4)) return file.Read(position + 4, size - 2);
    position += 2 + size;
  }
}

Bytes ExifOfPng(const Source &file) {
  for (uint64_t position = 8; file.Read(position, 8).size() == 8 && !file.Has("IEND", position + 4);) {
    const uint64_t size = file.Number(position, 4, Order::HighFirst);
    if (file.Has("eXIf", position + 4)) return file.Read(position + 8, std::min(size, uint64_t{kLargestExif}));
    position += 12 + size;
  }
  return {};
}

Bytes ExifOfWebp(const Source &file) {
  for (uint64_t position = 12; file.Read(position, 8).size() == 8;) {
    const uint64_t size = file.Number(position + 4, 4, Order::LowFirst);
    if (file.Has("EXIF", position)) return file.Read(position + 8, std::min(size, uint64_t{kLargestExif}));
    position += 8 + size + size % 2;
  }
  return {};
}

struct FreeExif {
  void operator()(ExifData *data) const { exif_data_unref(data); }
};

// The number as it is written, whatever it is.
uint64_t OrientationOfExif(Bytes exif) {
  if (exif.empty()) return kUpright;
  if (!std::ranges::equal(std::span(exif).first(std::min(exif.size(), kExifStart.size())), kExifStart, {}, {},
                          [](char letter) { return uint8_t(letter); })) {
    exif.insert(exif.begin(), kExifStart.begin(), kExifStart.end());
  }
  const std::unique_ptr<ExifData, FreeExif> data(
      exif_data_new_from_data(exif.data(), static_cast<unsigned int>(exif.size())));
  if (data == nullptr) return kUpright;
  const ExifEntry *const entry = exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
  if (entry == nullptr || entry->format != EXIF_FORMAT_SHORT || entry->size < 2) return kUpright;
  return exif_get_short(entry->data, exif_data_get_byte_order(data.get()));
}

// --- TIFF, whose first directory has the field ---

struct TiffField {
  uint64_t position;  // of its number of 2 bytes
  Order order;
};

std::optional<TiffField> OrientationOfTiff(const Source &file) {
  constexpr uint64_t kOrientation = 274;
  constexpr uint64_t kShort = 3;
  const Order order = file.Has("II", 0) ? Order::LowFirst : Order::HighFirst;
  const bool isLarge = file.Number(2, 2, order) == 43;
  const uint64_t directory = isLarge ? file.Number(8, 8, order) : file.Number(4, 4, order);
  const size_t countBytes = isLarge ? 8 : 2;
  const size_t entryBytes = isLarge ? 20 : 12;
  const uint64_t count = std::min(file.Number(directory, countBytes, order), uint64_t{0xFFFF});
  uint64_t entry = directory + countBytes;
  for (uint64_t i = 0; i < count && file.Read(entry, 1).size() == 1; ++i, entry += entryBytes) {
    if (file.Number(entry, 2, order) != kOrientation || file.Number(entry + 2, 2, order) != kShort) continue;
    return TiffField{entry + (isLarge ? 12 : 8), order};
  }
  return std::nullopt;
}

bool IsTiff(const Source &file) {
  return file.Has("II*\0"sv, 0) || file.Has("MM\0*"sv, 0) || file.Has("II+\0"sv, 0) || file.Has("MM\0+"sv, 0);
}

uint64_t WrittenOrientation(const Source &file) {
  if (file.Has("\xFF\xD8\xFF", 0)) return OrientationOfExif(ExifOfJpeg(file));
  if (file.Has("\x89PNG\r\n\x1A\n", 0)) return OrientationOfExif(ExifOfPng(file));
  if (file.Has("RIFF", 0) && file.Has("WEBP", 8)) return OrientationOfExif(ExifOfWebp(file));
  if (!IsTiff(file)) return kUpright;
  const std::optional<TiffField> field = OrientationOfTiff(file);
  return field ? file.Number(field->position, 2, field->order) : uint64_t{kUpright};
}

}  // namespace

int StoredOrientation(const std::string &path) {
  const uint64_t orientation = WrittenOrientation(Source(std::fopen(path.c_str(), "rbe")));
  return orientation >= 1 && orientation <= 8 ? static_cast<int>(orientation) : kUpright;
}

Turn TurnOf(int orientation) {
  // 1 to 4 leave rows rows, 5 to 8 make them columns. Within each four, the mirroring goes round: none, left and right,
  // both, top and bottom.
  const int mirrors = (orientation - 1) % 4;
  return {orientation > 4, mirrors == 1 || mirrors == 2, mirrors >= 2};
}

Turn TurnOf(const std::string &path, Orient orient) {
  return orient == Orient::Upright ? TurnOf(StoredOrientation(path)) : Turn();
}

void ForgetOrientationOfTiff(std::span<uint8_t> bytes) {
  if (bytes.empty()) return;
  const Source file(fmemopen(bytes.data(), bytes.size(), "rb"));
  const std::optional<TiffField> field = OrientationOfTiff(file);
  if (!field || field->position + 2 > bytes.size()) return;
  bytes[field->position] = field->order == Order::LowFirst ? kUpright : 0;
  bytes[field->position + 1] = field->order == Order::LowFirst ? 0 : kUpright;
}

}  // namespace standalone
