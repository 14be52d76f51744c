#include "standalone/zvk/help/footer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace standalone {
namespace {

using testing::ElementsAre;

TEST(HelpFooter, HasTheTextThenExamplesThenExitCodes) {
  EXPECT_EQ(HelpFooter("One line\nand another.", {"zvk one", "zvk two"}, {.workFailed = "it failed"}),
            "One line\n"
            "and another.\n"
            "\n"
            "Examples:\n"
            "  zvk one\n"
            "  zvk two\n"
            "\n"
            "Exit codes:\n"
            "  0  done\n"
            "  1  it failed\n"
            "  2  the command line is wrong");
}

TEST(ExitCodesHelp, LeavesOutWhatCannotHappen) {
  EXPECT_EQ(ExitCodesHelp({}), "Exit codes:\n  0  done\n  2  the command line is wrong");
}

TEST(ExitCodesHelp, TellsWhatACommandThatWritesAFileLeavesBehind) {
  EXPECT_EQ(ExitCodesHelp(kOutWholeOrAsBefore),
            "Exit codes:\n"
            "  0  done\n"
            "  1  the work failed; OUT is as it was before\n"
            "  2  the command line is wrong; nothing was done");
}

TEST(ReadFooter, TellsParagraphsExamplesAndExitCodesApart) {
  const FooterLines lines = ReadFooter(HelpFooter("First,\n  of two lines.\n\nSecond.", {"zvk one"}, {}));
  EXPECT_THAT(lines.paragraphs, ElementsAre(ElementsAre("First,", "  of two lines."), ElementsAre("Second.")));
  EXPECT_THAT(lines.examples, ElementsAre("zvk one"));
  EXPECT_THAT(lines.exitCodes, ElementsAre("0  done", "2  the command line is wrong"));
}

TEST(ReadFooter, TakesWhatFollowsTheExitCodesForAParagraph) {
  const FooterLines lines = ReadFooter(ExitCodesHelp({}) + "\n\nMore.");
  EXPECT_THAT(lines.paragraphs, ElementsAre(ElementsAre("More.")));
  EXPECT_TRUE(lines.examples.empty());
}

}  // namespace
}  // namespace standalone
