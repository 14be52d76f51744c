// Orientations as their definition has them, and EXIF data that tell one, in files of every kind.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace standalone {

// The side at which the first stored row is seen, and the one at which the first stored column is.
enum class Side { Top, Bottom, Left, Right };
struct SeenAt {
  Side firstRow;
  Side firstColumn;
};
constexpr SeenAt kSeenAt[9] = {{},
                               {Side::Top, Side::Left},
                               {Side::Top, Side::Right},
                               {Side::Bottom, Side::Right},
                               {Side::Bottom, Side::Left},
                               {Side::Left, Side::Top},
                               {Side::Right, Side::Top},
                               {Side::Right, Side::Bottom},
                               {Side::Left, Side::Bottom}};

// The rows of pixels that are seen where these are stored.
template <class Pixel>
std::vector<std::vector<Pixel>> Seen(const std::vector<std::vector<Pixel>> &stored, int orientation) {
  const SeenAt at = kSeenAt[orientation];
  size_t height = stored.size(), width = stored[0].size();
  if (at.firstRow == Side::Left || at.firstRow == Side::Right) std::swap(width, height);
  std::vector<std::vector<Pixel>> seen(height, std::vector<Pixel>(width));
  for (size_t row = 0; row < stored.size(); ++row) {
    for (size_t column = 0; column < stored[0].size(); ++column) {
      size_t x = 0, y = 0;
      for (const auto &[side, distance] : {std::pair{at.firstRow, row}, std::pair{at.firstColumn, column}}) {
        if (side == Side::Left) x = distance;
        if (side == Side::Right) x = width - 1 - distance;
        if (side == Side::Top) y = distance;
        if (side == Side::Bottom) y = height - 1 - distance;
      }
      seen[y][x] = stored[row][column];
    }
  }
  return seen;
}

// The number in that many bytes.
inline std::string Number(uint64_t number, int bytes, bool highFirst) {
  std::string text;
  for (int i = 0; i < bytes; ++i) {
    text += static_cast<char>(number >> 8 * (highFirst ? bytes - 1 - i : i));
  }
  return text;
}

// EXIF data of two fields: the make of a camera, and the orientation, of which a type other than 3 (a number of 2
// bytes) is none.
inline std::string Exif(uint32_t orientation, bool highFirst = false, uint32_t type = 3) {
  const auto number = [highFirst](uint64_t value, int bytes) { return Number(value, bytes, highFirst); };
  std::string data = (highFirst ? "MM" : "II") + number(42, 2) + number(8, 4) + number(2, 2);
  data += number(271, 2) + number(2, 2) + number(4, 4) + "abc" + '\0';
  data += number(274, 2) + number(type, 2) + number(1, 4) + number(orientation, 2) + number(0, 2);
  return data + number(0, 4);
}

constexpr std::string_view kExifMark("Exif\0\0", 6);

// A JPEG file with a segment of that content before all others.
inline std::string JpegWith(const std::string &jpeg, const std::string &content, char marker = '\xE1') {
  return jpeg.substr(0, 2) + '\xFF' + marker + Number(content.size() + 2, 2, true) + content + jpeg.substr(2);
}
inline std::string JpegWithExif(const std::string &jpeg, const std::string &exif) {
  return JpegWith(jpeg, std::string(kExifMark) + exif);
}

// A PNG file with such a chunk after its header.
inline std::string PngWith(const std::string &png, const std::string &type, const std::string &content) {
  constexpr size_t kHeaderEnd = 8 + 12 + 13;
  uint32_t check = 0xFFFFFFFF;
  for (const char letter : type + content) {
    check ^= static_cast<uint8_t>(letter);
    for (int bit = 0; bit < 8; ++bit) check = check >> 1 ^ ((check & 1) != 0 ? 0xEDB88320 : 0);
  }
  return png.substr(0, kHeaderEnd) + Number(content.size(), 4, true) + type + content + Number(~check, 4, true) +
         png.substr(kHeaderEnd);
}

// A WebP file in the extended form: with a header of the picture's size, and EXIF data at the end.
inline std::string WebpWithExif(const std::string &webp, int width, int height, const std::string &exif) {
  const auto chunk = [](const std::string &type, const std::string &content) {
    return type + Number(content.size(), 4, false) + content + (content.size() % 2 != 0 ? std::string(1, '\0') : "");
  };
  const std::string header = Number(8, 4, false) + Number(static_cast<uint64_t>(width - 1), 3, false) +
                             Number(static_cast<uint64_t>(height - 1), 3, false);
  return chunk("RIFF", "WEBP" + chunk("VP8X", header) + webp.substr(12) + chunk("EXIF", exif));
}

}  // namespace standalone
