#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "standalone/runtime/strings.h"

namespace standalone {
namespace {

using std::string_literals::operator""s;

std::string Convert(const std::string &bytes, Encoding from, Encoding to) {
  std::string converted;
  EXPECT_TRUE(ConvertText(bytes, from, to, &converted));
  return converted;
}

// "aé€😀": one, two, three and four bytes in UTF-8.
const std::string kUTF8 = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
const std::string kUTF16 = "a\0\xE9\0\xAC\x20\x3D\xD8\x00\xDE"s;
const std::string kUTF32 = "a\0\0\0\xE9\0\0\0\xAC\x20\0\0\x00\xF6\x01\0"s;

TEST(ConvertText, GoesBetweenAllUnicodeForms) {
  const std::vector<std::pair<Encoding, std::string>> forms = {
      {Encoding::UTF8, kUTF8}, {Encoding::UTF16, kUTF16}, {Encoding::UTF32, kUTF32}};
  for (const auto &[from, bytes] : forms) {
    for (const auto &[to, expected] : forms) EXPECT_EQ(Convert(bytes, from, to), expected);
  }
}

TEST(ConvertText, WritesAQuestionMarkForWhatHasNoPlace) {
  EXPECT_EQ(Convert(kUTF8, Encoding::UTF8, Encoding::Latin1), "a\xE9??");
  EXPECT_EQ(Convert(kUTF8, Encoding::UTF8, Encoding::ASCII), "a???");
  EXPECT_EQ(Convert("a\xE9", Encoding::Latin1, Encoding::UTF8), "a\xC3\xA9");
}

TEST(ConvertText, ReadsBrokenBytesAsTheReplacementCharacter) {
  const std::string replacement = "\xEF\xBF\xBD";
  EXPECT_EQ(Convert("a\xE9", Encoding::ASCII, Encoding::UTF8), "a" + replacement);
  const auto repaired = [](const std::string &bytes) {
    return Convert(Convert(bytes, Encoding::UTF8, Encoding::UTF32), Encoding::UTF32, Encoding::UTF8);
  };
  EXPECT_EQ(repaired("a\x80z"), "a" + replacement + "z");                           // a stray continuation
  EXPECT_EQ(repaired("\xE2\x82"), replacement + replacement);                       // cut short
  EXPECT_EQ(repaired("\xC0\xAF"), replacement + replacement);                       // longer than needed
  EXPECT_EQ(repaired("\xE0\x80\xAF"), replacement + replacement + replacement);     // longer than needed
  EXPECT_EQ(repaired("\xED\xA0\x80"), replacement + replacement + replacement);     // half a pair
  EXPECT_EQ(repaired("\xF4\x90\x80\x80").size(), 4 * replacement.size());           // beyond the last character
  EXPECT_EQ(Convert("\x3D\xD8"s, Encoding::UTF16, Encoding::UTF8), replacement);    // half a pair
  EXPECT_EQ(Convert("\x00\xDE"s, Encoding::UTF16, Encoding::UTF8), replacement);    // the other half
  EXPECT_EQ(Convert("a\0z"s, Encoding::UTF16, Encoding::UTF8), "a" + replacement);  // half a unit
  EXPECT_EQ(Convert("\0\0\x11\0"s, Encoding::UTF32, Encoding::UTF8), replacement);  // beyond the last character
}

TEST(ConvertText, LeavesBytesOfNoEncodingAsTheyAre) {
  for (const Encoding raw : {Encoding::None, Encoding::Binary}) {
    EXPECT_EQ(Convert("\xFF\x00z"s, raw, Encoding::UTF8), "\xFF\x00z"s);
    EXPECT_EQ(Convert("\xC3\xA9", Encoding::UTF8, raw), "\xC3\xA9");
  }
}

TEST(ConvertText, RefusesACodeThatItDoesNotKnow) {
  std::string converted = "before";
  EXPECT_FALSE(ConvertText("a", static_cast<Encoding>(7), Encoding::UTF8, &converted));
  EXPECT_FALSE(ConvertText("a", Encoding::UTF8, static_cast<Encoding>(7), &converted));
  EXPECT_FALSE(ConvertText("a", Encoding::Binary, static_cast<Encoding>(7), &converted));
  EXPECT_EQ(converted, "before");
}

}  // namespace
}  // namespace standalone
