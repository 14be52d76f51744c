#include "standalone/zvk/arguments/colour_argument.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "standalone/zvk/session/messages.h"

namespace standalone {
namespace {

TEST(ReadColour, TakesSixDigitsOrEightInAnyCase) {
  EXPECT_EQ(ReadColour("#FF8001"), (ColourArgument{0xFF8001, std::nullopt}));
  EXPECT_EQ(ReadColour("#ff8001"), (ColourArgument{0xFF8001, std::nullopt}));
  EXPECT_EQ(ReadColour("#00000000"), (ColourArgument{0, 0}));
  EXPECT_EQ(ReadColour("#FfFfFf7f"), (ColourArgument{0xFFFFFF, 0x7F}));
}

TEST(ReadColour, TakesNothingElse) {
  for (const char *text : {"", "#", "FF8001", "#FF80", "#FF80011", "#FF8001123", "#GG8001", "#-F8001", "#+F8001",
                           "# F8001", "#0x8001", "red", "##F8001"}) {
    EXPECT_EQ(ReadColour(text), std::nullopt) << text;
  }
}

TEST(ParseColour, TellsWhatCanBeWritten) {
  const auto errorOf = [](const std::string &text, bool mayHaveAlpha) -> std::string {
    try {
      ParseColour("--fore", text, mayHaveAlpha);
    } catch (const UsageError &error) {
      return error.what();
    }
    return "no error";
  };
  EXPECT_EQ(errorOf("red", false), "--fore 'red' is not understood; write #RRGGBB, as in #FF8000");
  EXPECT_EQ(errorOf("#FF800180", false), "--fore '#FF800180' is not understood; write #RRGGBB, as in #FF8000");
  EXPECT_EQ(errorOf("red", true), "--fore 'red' is not understood; write #RRGGBB or #RRGGBBAA, as in #FF8000");
  EXPECT_EQ(errorOf("#FF800180", true), "no error");
}

TEST(ColourText, IsWhatCanBeRead) {
  EXPECT_EQ(ColourText(0x00FF0A), "#00FF0A");
  EXPECT_EQ(ColourText(0), "#000000");
}

}  // namespace
}  // namespace standalone
