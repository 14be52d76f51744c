#include "host/paths/folder_path.h"

#include <cstdint>
#include <cstring>
#include <iterator>
#include <span>

#include "host/paths/decomposition.h"

namespace zvk::host::paths {

namespace {

// --- characters in UTF-8 and UTF-16 ---

constexpr char32_t kMalformed = 0xFFFFFFFF;

// Reads one character of a zero-terminated text and moves behind it.
char32_t ReadUTF8(const char *&text) {
  const auto lead = static_cast<uint8_t>(*text++);
  if (lead < 0x80) return lead;
  if (lead < 0xC0 || lead > 0xF7) return kMalformed;
  const int32_t trailing = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
  char32_t character = lead & (0x3Fu >> trailing);
  for (int32_t i = 0; i < trailing; ++i) {
    const auto byte = static_cast<uint8_t>(*text);
    if ((byte & 0xC0) != 0x80) return kMalformed;
    character = character << 6 | (byte & 0x3Fu);
    ++text;
  }
  static constexpr char32_t kLeast[] = {0, 0x80, 0x800, 0x10000};  // below it a shorter form exists
  const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
  return character >= kLeast[trailing] && character <= 0x10FFFF && !isSurrogate ? character : kMalformed;
}

// Takes one character off the front of `units`, which has one unit at least.
char32_t ReadUTF16(std::span<const uint16_t> &units) {
  const char32_t unit = units.front();
  units = units.subspan(1);
  if (unit < 0xD800 || unit > 0xDFFF) return unit;
  if (unit > 0xDBFF || units.empty() || units.front() < 0xDC00 || units.front() > 0xDFFF) return kMalformed;
  const char32_t low = units.front();
  units = units.subspan(1);
  return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
}

// Writes one character and returns the end of it.
char *WriteUTF8(char32_t character, char *out) {
  const auto put = [&out](char32_t byte) { *out++ = static_cast<char>(byte); };
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0 | character >> 6);
    put(0x80 | (character & 0x3F));
  } else if (character < 0x10000) {
    put(0xE0 | character >> 12);
    put(0x80 | (character >> 6 & 0x3F));
    put(0x80 | (character & 0x3F));
  } else {
    put(0xF0 | character >> 18);
    put(0x80 | (character >> 12 & 0x3F));
    put(0x80 | (character >> 6 & 0x3F));
    put(0x80 | (character & 0x3F));
  }
  return out;
}

// --- the path ---

// True for a name whose surrogates come in pairs and which no character ends early.
bool IsName(std::span<const uint16_t> name) {
  while (!name.empty()) {
    const char32_t character = ReadUTF16(name);
    if (character == kMalformed || character == U'\0') return false;
  }
  return true;
}

// The decomposed path of `path`, or of the file `name` in the folder `path`. Empty for a malformed path.
ZeroedBuffer<char> DecomposedPath(const char *path, std::span<const uint16_t> name = {}) {
  const auto capacity = static_cast<int64_t>(std::strlen(path) + 1 + name.size());
  const ZeroedBuffer<char32_t> whole(capacity);
  const ZeroedBuffer<char32_t> decomposed(kLongestDecomposition * capacity);
  if (!whole || !decomposed) return {};

  int64_t length = 0;
  while (*path != '\0') {
    const char32_t character = ReadUTF8(path);
    if (character == kMalformed) return {};
    whole[length++] = character;
  }
  // Decomposing name and folder as one text gives the same as each by itself, since the slash combines with nothing.
  if (!name.empty() && whole[length - 1] != U'/') whole[length++] = U'/';
  while (!name.empty()) whole[length++] = ReadUTF16(name);
  length = Decompose(whole.Get(), length, decomposed.Get());
  if (length == 0) return {};

  const std::span characters(decomposed.Get(), static_cast<size_t>(length));
  int64_t units = 0;  // UTF-16
  for (const char32_t character : characters) units += character < 0x10000 ? 1 : 2;
  // A unit takes three bytes at most, so the text always stays below the 6 x units + 10 that it may have.
  ZeroedBuffer<char> result(6 * units + 20);
  if (!result) return result;
  char *end = result.Get();
  for (const char32_t character : characters) end = WriteUTF8(character, end);
  return result;
}

}  // namespace

ZeroedBuffer<char> FolderItemPath(REALobject item) {
  if (item == nullptr) return {};

  // A file that exists.
  FSRef reference{};
  if (REALFSRefFromFolderItem(item, &reference, nullptr) && reference.path != nullptr) {
    return DecomposedPath(reference.path);
  }

  // A file that does not exist yet: its folder and its name.
  reference = {};
  HFSUniStr255 name{};
  if (REALFSRefFromFolderItem(item, &reference, &name) && reference.path != nullptr && *reference.path != '\0' &&
      name.length != 0 && name.length <= std::size(name.unicode)) {
    const std::span<const uint16_t> units(name.unicode, name.length);
    if (IsName(units)) return DecomposedPath(reference.path, units);
  }

  // Hosts without the first entry.
  FSSpec fsSpec{};
  if (REALFSSpecFromFolderItem(&fsSpec, item) && fsSpec.path != nullptr) {
    return DecomposedPath(fsSpec.path);
  }
  return {};
}

}  // namespace zvk::host::paths
