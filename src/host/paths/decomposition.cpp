#include "host/paths/decomposition.h"

#include <algorithm>

namespace zvk::host::paths {

namespace {

// Hangul syllables are a block of every leading consonant with every vowel with every trailing consonant or none.
constexpr char32_t kFirstSyllable = 0xAC00;
constexpr char32_t kFirstLeading = 0x1100;
constexpr char32_t kFirstVowel = 0x1161;
constexpr char32_t kNoTrailing = 0x11A7;  // one before the first trailing consonant
constexpr uint32_t kVowels = 21;
constexpr uint32_t kTrailings = 28;  // with none
constexpr uint32_t kSyllables = 19 * kVowels * kTrailings;

// Writes what one character decomposes into, and returns the end of it.
char32_t *WriteParts(char32_t character, char32_t *out) {
  const uint32_t syllable = character - kFirstSyllable;
  if (syllable < kSyllables) {
    *out++ = kFirstLeading + syllable / (kVowels * kTrailings);
    *out++ = kFirstVowel + syllable / kTrailings % kVowels;
    if (syllable % kTrailings != 0) *out++ = kNoTrailing + syllable % kTrailings;
    return out;
  }
  const auto row = std::ranges::lower_bound(kDecompositions, character, {}, &Decomposition::code);
  if (row == kDecompositions.end() || row->code != character) {
    *out++ = character;
    return out;
  }
  for (const char32_t part : row->parts) {
    if (part != 0) *out++ = part;
  }
  return out;
}

uint8_t CombiningClass(char32_t character) {
  const auto range = std::ranges::lower_bound(kCombiningRanges, character, {}, &CombiningRange::last);
  return range != kCombiningRanges.end() && range->first <= character ? range->combiningClass : 0;
}

// Puts every run of combining characters in the order of their classes; equal classes keep their order.
void Reorder(char32_t *first, char32_t *end) {
  const auto combines = [](char32_t character) { return CombiningClass(character) != 0; };
  while (first != end) {
    char32_t *const run = std::find_if(first, end, combines);
    first = std::find_if_not(run, end, combines);
    std::stable_sort(run, first, [](char32_t a, char32_t b) { return CombiningClass(a) < CombiningClass(b); });
  }
}

}  // namespace

int64_t Decompose(const char32_t *text, int64_t length, char32_t *result) {
  char32_t *end = result;
  for (int64_t i = 0; i < length; ++i) end = WriteParts(text[i], end);
  Reorder(result, end);
  return end - result;
}

}  // namespace zvk::host::paths
