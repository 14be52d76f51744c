#include "host/paths/decomposition.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zvk::host::paths {
namespace {

std::u32string Decomposed(const std::u32string &text) {
  std::u32string result(text.size() * kLongestDecomposition, U'\0');
  result.resize(static_cast<size_t>(Decompose(text.data(), static_cast<int64_t>(text.size()), result.data())));
  return result;
}

TEST(Decomposition, PlainTextStaysAsItIs) {
  EXPECT_EQ(Decomposed(U""), U"");
  EXPECT_EQ(Decomposed(U"/usr/share/picture 1.png"), U"/usr/share/picture 1.png");
  EXPECT_EQ(Decomposed(U"\x4E2D\x6587\x1F600"), U"\x4E2D\x6587\x1F600");
}

TEST(Decomposition, ALetterWithAMarkBecomesLetterAndMark) {
  EXPECT_EQ(Decomposed(U"\xC5"), U"A\x30A");
  EXPECT_EQ(Decomposed(U"caf\xE9"), U"cafe\x301");
  EXPECT_EQ(Decomposed(U"\xDC"
                       U"bergr\xF6\xDF"
                       U"e"),
            U"U\x308"
            U"bergro\x308\xDF"
            U"e");  // sharp s is a letter of its own
}

TEST(Decomposition, ASignThatIsJustAnotherLetterBecomesThatLetterAndItsMarks) {
  EXPECT_EQ(Decomposed(U"\x2126"), U"\x3A9");   // ohm: omega
  EXPECT_EQ(Decomposed(U"\x212B"), U"A\x30A");  // angstrom: A with ring, and so on
  EXPECT_EQ(Decomposed(U"\x212A"), U"K");       // kelvin
}

TEST(Decomposition, SeveralMarksComeOutInTheOrderOfTheirClasses) {
  // s with dot below and dot above: below is of class 220, above of 230.
  const std::u32string expected = U"s\x323\x307";
  EXPECT_EQ(Decomposed(U"\x1E69"), expected);
  EXPECT_EQ(Decomposed(U"\x1E63\x307"), expected);
  EXPECT_EQ(Decomposed(U"\x1E61\x323"), expected);
  EXPECT_EQ(Decomposed(U"s\x323\x307"), expected);
  EXPECT_EQ(Decomposed(U"s\x307\x323"), expected);
}

TEST(Decomposition, MarksOfOneClassKeepTheirOrder) {
  EXPECT_EQ(Decomposed(U"a\x301\x308"), U"a\x301\x308");
  EXPECT_EQ(Decomposed(U"a\x308\x301"), U"a\x308\x301");
  // Two above, of 230, around one below, of 220, and one attached, of 202.
  EXPECT_EQ(Decomposed(U"a\x301\x323\x308\x327"), U"a\x327\x323\x301\x308");
}

TEST(Decomposition, ALetterBetweenMarksKeepsThemApart) {
  EXPECT_EQ(Decomposed(U"a\x301"
                       U"b\x323"),
            U"a\x301"
            U"b\x323");
  EXPECT_EQ(Decomposed(U"\x301/\x323"), U"\x301/\x323");
  // The grapheme joiner is of class 0.
  EXPECT_EQ(Decomposed(U"a\x301\x34F\x323"), U"a\x301\x34F\x323");
}

TEST(Decomposition, AMarkMayItselfDecompose) {
  EXPECT_EQ(Decomposed(U"\x344"), U"\x308\x301");  // Greek dialytika tonos
  EXPECT_EQ(Decomposed(U"\x340"), U"\x300");
  EXPECT_EQ(Decomposed(U"\x341"), U"\x301");
  EXPECT_EQ(Decomposed(U"\x343"), U"\x313");
  // Tibetan vowel sign ii: marks of class 129 and 130, which come before one of 132.
  EXPECT_EQ(Decomposed(U"\xF40\xF74\xF73"), U"\xF40\xF71\xF72\xF74");
}

TEST(Decomposition, TheLongestDecompositionsHaveFourCharacters) {
  // Greek small alpha with psili, varia and ypogegrammeni.
  EXPECT_EQ(Decomposed(U"\x1F82"), U"\x3B1\x313\x300\x345");
  // Greek small iota with dialytika and oxia, which is the one with tonos.
  EXPECT_EQ(Decomposed(U"\x1FD3"), U"\x3B9\x308\x301");
}

TEST(Decomposition, HangulSyllablesBecomeTheirTwoOrThreeLetters) {
  EXPECT_EQ(Decomposed(U"\xAC00"), U"\x1100\x1161");
  EXPECT_EQ(Decomposed(U"\xAC01"), U"\x1100\x1161\x11A8");
  EXPECT_EQ(Decomposed(U"\xAC1B"), U"\x1100\x1161\x11C2");  // the last trailing consonant
  EXPECT_EQ(Decomposed(U"\xAC1C"), U"\x1100\x1162");        // the next vowel
  EXPECT_EQ(Decomposed(U"\xAE4C"), U"\x1101\x1161");        // the next leading consonant, 588 syllables on
  EXPECT_EQ(Decomposed(U"\xD55C\xAE00"), U"\x1112\x1161\x11AB\x1100\x1173\x11AF");
  EXPECT_EQ(Decomposed(U"\xD7A3"), U"\x1112\x1175\x11C2");  // the last one
  EXPECT_EQ(Decomposed(U"\xABFF\xD7A4"), U"\xABFF\xD7A4");  // their neighbours
}

TEST(Decomposition, CompatibilityIdeographsBecomeTheUnifiedOnes) {
  EXPECT_EQ(Decomposed(U"\xF900"), U"\x8C48");
  EXPECT_EQ(Decomposed(U"\xFAD9"), U"\x9F8E");
  EXPECT_EQ(Decomposed(U"\x2F800"), U"\x4E3D");
  EXPECT_EQ(Decomposed(U"\x2F803"), U"\x20122");
  EXPECT_EQ(Decomposed(U"\x2FA1D"), U"\x2A600");
  EXPECT_EQ(Decomposed(U"\xFA0E"), U"\xFA0E");  // one that is unified itself
}

TEST(Decomposition, CharactersBeyond16BitsDecomposeToo) {
  EXPECT_EQ(Decomposed(U"\x1D15E"), U"\x1D157\x1D165");         // half note
  EXPECT_EQ(Decomposed(U"\x1D160"), U"\x1D158\x1D165\x1D16E");  // eighth note: stem of 216, flag of 216
  EXPECT_EQ(Decomposed(U"\x1109A"), U"\x11099\x110BA");         // Kaithi dddha
}

TEST(Decomposition, FormsThatAreOnlyCompatibleStay) {
  EXPECT_EQ(Decomposed(U"\xFB01\xB2\xA0\xFF21\x2460"), U"\xFB01\xB2\xA0\xFF21\x2460");
}

// Every character of the planes in which any decomposes, between marks of high and low classes.
TEST(Decomposition, DecomposedTextStaysAsItIs) {
  for (char32_t character = 1; character <= 0x2FFFF; ++character) {
    const std::u32string once = Decomposed({character, 0x345, character, 0x334, 0x301});
    ASSERT_EQ(Decomposed(once), once) << std::hex << static_cast<uint32_t>(character);
    ASSERT_GE(once.size(), 5u);
  }
}

TEST(Decomposition, TheTablesAreInAscendingOrder) {
  for (size_t i = 1; i < kDecompositions.size(); ++i) {
    EXPECT_LT(kDecompositions[i - 1].code, kDecompositions[i].code);
  }
  for (size_t i = 0; i < kCombiningRanges.size(); ++i) {
    EXPECT_LE(kCombiningRanges[i].first, kCombiningRanges[i].last);
    EXPECT_GT(kCombiningRanges[i].combiningClass, 0);
    if (i > 0) {
      EXPECT_LT(kCombiningRanges[i - 1].last, kCombiningRanges[i].first);
    }
  }
}

}  // namespace
}  // namespace zvk::host::paths
