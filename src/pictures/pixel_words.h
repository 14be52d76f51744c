// The 32-bit pixels of host pictures: where the samples lie in a pixel, by the editor's layout code. A code of a bitmap
// context (1 to 6) is its alpha info; premultiplied, plain and filler forms are read and written alike.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "pictures/picture_editor.h"

namespace zvk::pictures {

struct Samples {
  uint8_t red;
  uint8_t green;
  uint8_t blue;
};

// A pixel with its samples at the given bytes, in memory order, and the value of the fourth byte that makes it opaque.
template <int kRed, int kGreen, int kBlue, int kAlpha, uint8_t kOpaque>
struct PixelWord {
  static constexpr bool kKnown = true;
  static constexpr int kRedShift = 8 * kRed, kGreenShift = 8 * kGreen, kBlueShift = 8 * kBlue;

  static Samples Load(const uint8_t *pixel) { return {pixel[kRed], pixel[kGreen], pixel[kBlue]}; }

  static void StoreOpaque(uint8_t *pixel, Samples samples) {
    const uint32_t word = uint32_t{samples.red} << kRedShift | uint32_t{samples.green} << kGreenShift |
                          uint32_t{samples.blue} << kBlueShift | uint32_t{kOpaque} << 8 * kAlpha;
    std::memcpy(pixel, &word, sizeof word);
  }
};

using AlphaLastWord = PixelWord<0, 1, 2, 3, 255>;   // layouts 1, 3, 5
using AlphaFirstWord = PixelWord<1, 2, 3, 0, 255>;  // layouts 2, 4, 6
using GDWord = PixelWord<2, 1, 0, 3, 0>;            // layout 8: GD's alpha 0 is opaque

// A layout that nobody knows: reads as zero samples, and is never written.
struct UnknownWord {
  static constexpr bool kKnown = false;
  static Samples Load(const uint8_t *) { return {0, 0, 0}; }
};

// A word of any known layout, told at run time.
struct ShiftedWord {
  template <class Word>
  explicit ShiftedWord(Word) : red(Word::kRedShift), green(Word::kGreenShift), blue(Word::kBlueShift) {}

  Samples Load(const uint8_t *pixel) const {
    uint32_t word;
    std::memcpy(&word, pixel, sizeof word);
    return {static_cast<uint8_t>(word >> red), static_cast<uint8_t>(word >> green), static_cast<uint8_t>(word >> blue)};
  }

  int red;
  int green;
  int blue;
};

// Calls the visitor once with the word of the layout, which it takes as the type of its argument.
template <class Visitor>
decltype(auto) VisitPixelWord(int32_t layout, Visitor &&visitor) {
  switch (layout) {
    case 1:
    case 3:
    case 5:
      return visitor(AlphaLastWord());
    case 2:
    case 4:
    case 6:
      return visitor(AlphaFirstWord());
    case PictureEditor::kLayoutGD:
      return visitor(GDWord());
    default:
      return visitor(UnknownWord());
  }
}

// Calls the visitor once with the words of two pictures: both of one type where the pictures are laid out alike, else
// both ShiftedWord. No call if either layout is unknown.
template <class Visitor>
void VisitPixelWords(int32_t layout, int32_t otherLayout, Visitor &&visitor) {
  VisitPixelWord(layout, [&]<class Word>(Word word) {
    VisitPixelWord(otherLayout, [&]<class OtherWord>(OtherWord otherWord) {
      if constexpr (Word::kKnown && std::is_same_v<Word, OtherWord>) {
        visitor(word, otherWord);
      } else if constexpr (Word::kKnown && OtherWord::kKnown) {
        visitor(ShiftedWord(word), ShiftedWord(otherWord));
      }
    });
  });
}

}  // namespace zvk::pictures
