#include "standalone/gd/drawing.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "standalone/runtime/host.h"

namespace standalone {
namespace {

constexpr uint32_t kPaper = 0xFFEEDD;
constexpr uint32_t kInk = 0x102030;

uint32_t ColourAt(const Picture &picture, int32_t x, int32_t y) {
  const Pixel pixel = picture.GetPixel(x, y);
  EXPECT_EQ(pixel.alpha, 255);
  return static_cast<uint32_t>(pixel.red) << 16 | static_cast<uint32_t>(pixel.green) << 8 | pixel.blue;
}

// Whether each pixel of the rectangle is of the colour of the ink; all others are of that of the paper.
std::vector<bool> InkIn(const Picture &picture, int32_t x, int32_t y, int32_t width, int32_t height) {
  std::vector<bool> ink;
  for (int32_t row = y; row < y + height; ++row) {
    for (int32_t column = x; column < x + width; ++column) {
      const uint32_t colour = ColourAt(picture, column, row);
      EXPECT_TRUE(colour == kInk || colour == kPaper) << column << ", " << row;
      ink.push_back(colour == kInk);
    }
  }
  return ink;
}

class Drawing : public testing::Test {
 protected:
  // One letter's pixels.
  static std::vector<bool> Letter(const std::string &text) {
    const Owned<Picture> picture = Paper(letter_.width, letter_.height, kPaper);
    DrawLetters(*picture, 0, 0, text, kInk);
    return InkIn(*picture, 0, 0, letter_.width, letter_.height);
  }

  const Host host_;
  static inline const LetterSize letter_ = SizeOfLetters();
};

TEST_F(Drawing, PaperIsOfOneOpaqueColour) {
  const Owned<Picture> picture = Paper(3, 2, kPaper);
  EXPECT_EQ(picture->Width(), 3);
  EXPECT_EQ(picture->Height(), 2);
  EXPECT_EQ(InkIn(*picture, 0, 0, 3, 2), std::vector<bool>(6, false));
}

TEST_F(Drawing, LettersStandSideBySideFromTheCornerGiven) {
  const int32_t width = 3 * letter_.width + 9;
  const int32_t height = letter_.height + 9;
  const Owned<Picture> picture = Paper(width, height, kPaper);
  DrawLetters(*picture, 4, 5, "Axo", kInk);
  const std::vector<bool> nothing(Letter("A").size(), false);
  int32_t x = 4;
  for (const char *letter : {"A", "x", "o"}) {
    EXPECT_NE(Letter(letter), nothing);
    EXPECT_EQ(InkIn(*picture, x, 5, letter_.width, letter_.height), Letter(letter)) << letter;
    x += letter_.width;
  }
  for (const bool ink : InkIn(*picture, 0, 0, width, 5)) EXPECT_FALSE(ink);
  for (const bool ink : InkIn(*picture, 0, 5 + letter_.height, width, 4)) EXPECT_FALSE(ink);
  for (const bool ink : InkIn(*picture, 0, 0, 4, height)) EXPECT_FALSE(ink);
  for (const bool ink : InkIn(*picture, width - 5, 0, 5, height)) EXPECT_FALSE(ink);
  EXPECT_NE(Letter("A"), Letter("x"));
}

TEST_F(Drawing, LettersEndAtTheEdges) {
  const Owned<Picture> picture = Paper(letter_.width, letter_.height, kPaper);
  DrawLetters(*picture, -letter_.width, 0, "AxA", kInk);
  EXPECT_EQ(InkIn(*picture, 0, 0, letter_.width, letter_.height), Letter("x"));
  DrawLetters(*picture, 0, letter_.height, "A", kInk);
  DrawLetters(*picture, 0, -letter_.height, "A", kInk);
  EXPECT_EQ(InkIn(*picture, 0, 0, letter_.width, letter_.height), Letter("x"));
}

TEST_F(Drawing, OtherLettersThanAsciiAreQuestionMarks) {
  EXPECT_EQ(LettersOf("Filter-1 ~"), "Filter-1 ~");
  EXPECT_EQ(LettersOf("sch\xC3\xB6n \xE6\xBC\xA2"), "sch?n ?");
  EXPECT_EQ(LettersOf("a\n\x7F"), "a??");
  EXPECT_EQ(LettersOf(""), "");
  EXPECT_EQ(Letter("\xC3\xB6"), Letter("?"));
}

TEST_F(Drawing, RefusesPicturesOfAnotherKind) {
  const Owned<Picture> picture = Owned<Picture>::Adopt(Picture::Make(8, 16));
  EXPECT_THROW(DrawLetters(*picture, 0, 0, "A", kInk), std::invalid_argument);
}

}  // namespace
}  // namespace standalone
