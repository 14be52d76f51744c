#include <cstring>

#include "standalone/runtime/strings.h"

namespace standalone {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsSurrogate(char32_t point) { return point >= 0xD800 && point <= 0xDFFF; }

// One UTF-8 sequence from `position` on, which moves behind it. A broken one costs one byte.
char32_t NextUTF8(std::string_view bytes, size_t *position) {
  const auto byteAt = [&](size_t index) { return static_cast<uint8_t>(bytes[index]); };
  const uint8_t lead = byteAt((*position)++);
  if (lead < 0x80) return lead;
  const size_t following = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
  if (lead < 0xC2 || lead > 0xF4 || bytes.size() - *position < following) return kReplacement;
  char32_t point = lead & (0x3F >> following);
  for (size_t i = 0; i < following; ++i) {
    const uint8_t next = byteAt(*position + i);
    if ((next & 0xC0) != 0x80) return kReplacement;
    point = point << 6 | (next & 0x3F);
  }
  static constexpr char32_t kLowest[] = {0, 0x80, 0x800, 0x10000};
  if (point < kLowest[following] || point > 0x10FFFF || IsSurrogate(point)) return kReplacement;
  *position += following;
  return point;
}

std::u32string DecodeUTF8(std::string_view bytes) {
  std::u32string points;
  for (size_t position = 0; position < bytes.size();) points += NextUTF8(bytes, &position);
  return points;
}

// Whole units of a wide text; bytes left over at the end become one replacement character.
template <class Unit>
std::u32string Units(std::string_view bytes) {
  std::u32string units;
  size_t position = 0;
  for (; bytes.size() - position >= sizeof(Unit); position += sizeof(Unit)) {
    Unit unit;
    std::memcpy(&unit, bytes.data() + position, sizeof(Unit));
    units += unit;
  }
  if (position != bytes.size()) units += kReplacement;
  return units;
}

std::u32string DecodeUTF16(std::string_view bytes) {
  const std::u32string units = Units<char16_t>(bytes);
  std::u32string points;
  for (size_t i = 0; i < units.size(); ++i) {
    const bool isPair = units[i] >= 0xD800 && units[i] <= 0xDBFF && i + 1 < units.size() && units[i + 1] >= 0xDC00 &&
                        units[i + 1] <= 0xDFFF;
    if (isPair) {
      points += 0x10000 + ((units[i] - 0xD800) << 10) + (units[i + 1] - 0xDC00);
      ++i;
    } else {
      points += IsSurrogate(units[i]) ? kReplacement : units[i];
    }
  }
  return points;
}

std::u32string DecodeUTF32(std::string_view bytes) {
  std::u32string points = Units<char32_t>(bytes);
  for (char32_t &point : points) {
    if (point > 0x10FFFF || IsSurrogate(point)) point = kReplacement;
  }
  return points;
}

// A byte a character, none above `highest`.
std::u32string DecodeSingle(std::string_view bytes, uint8_t highest) {
  std::u32string points;
  for (const char byte : bytes) {
    const auto code = static_cast<uint8_t>(byte);
    points += code > highest ? kReplacement : code;
  }
  return points;
}

void AppendUTF8(char32_t point, std::string *text) {
  const auto continuation = [&](int shift) { return static_cast<char>(0x80 | ((point >> shift) & 0x3F)); };
  if (point < 0x80) {
    *text += static_cast<char>(point);
  } else if (point < 0x800) {
    *text += static_cast<char>(0xC0 | point >> 6);
    *text += continuation(0);
  } else if (point < 0x10000) {
    *text += static_cast<char>(0xE0 | point >> 12);
    *text += continuation(6);
    *text += continuation(0);
  } else {
    *text += static_cast<char>(0xF0 | point >> 18);
    *text += continuation(12);
    *text += continuation(6);
    *text += continuation(0);
  }
}

template <class Unit>
void AppendUnit(Unit unit, std::string *text) {
  text->append(reinterpret_cast<const char *>(&unit), sizeof(Unit));
}

void AppendUTF16(char32_t point, std::string *text) {
  if (point < 0x10000) {
    AppendUnit(static_cast<char16_t>(point), text);
  } else {
    AppendUnit(static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10)), text);
    AppendUnit(static_cast<char16_t>(0xDC00 + ((point - 0x10000) & 0x3FF)), text);
  }
}

bool Decode(std::string_view bytes, Encoding encoding, std::u32string *points) {
  switch (encoding) {
    case Encoding::UTF8:
      *points = DecodeUTF8(bytes);
      return true;
    case Encoding::UTF16:
      *points = DecodeUTF16(bytes);
      return true;
    case Encoding::UTF32:
      *points = DecodeUTF32(bytes);
      return true;
    case Encoding::Latin1:
      *points = DecodeSingle(bytes, 0xFF);
      return true;
    case Encoding::ASCII:
      *points = DecodeSingle(bytes, 0x7F);
      return true;
    case Encoding::None:
    case Encoding::Binary:
      break;
  }
  return false;
}

bool Append(char32_t point, Encoding encoding, std::string *text) {
  switch (encoding) {
    case Encoding::UTF8:
      AppendUTF8(point, text);
      return true;
    case Encoding::UTF16:
      AppendUTF16(point, text);
      return true;
    case Encoding::UTF32:
      AppendUnit(point, text);
      return true;
    case Encoding::Latin1:
      *text += point > 0xFF ? '?' : static_cast<char>(point);
      return true;
    case Encoding::ASCII:
      *text += point > 0x7F ? '?' : static_cast<char>(point);
      return true;
    case Encoding::None:
    case Encoding::Binary:
      break;
  }
  return false;
}

bool IsRaw(Encoding encoding) { return encoding == Encoding::None || encoding == Encoding::Binary; }

bool IsKnown(Encoding encoding) {
  std::u32string points;
  return IsRaw(encoding) || Decode({}, encoding, &points);
}

}  // namespace

bool ConvertText(std::string_view bytes, Encoding from, Encoding to, std::string *converted) {
  if (!IsKnown(from) || !IsKnown(to)) return false;
  if (from == to || IsRaw(from) || IsRaw(to)) {
    *converted = bytes;
    return true;
  }
  std::u32string points;
  Decode(bytes, from, &points);
  converted->clear();
  for (const char32_t point : points) Append(point, to, converted);
  return true;
}

}  // namespace standalone
