#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

using Zvk = ZvkProgram;

TEST_F(Zvk, PrintsItsVersion) {
  const ProgramResult result = Run({"--version"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.output, testing::MatchesRegex("zvk [0-9]+\\.[0-9]+\\.[0-9]+\n"));
  EXPECT_EQ(result.errors, "");
}

TEST_F(Zvk, TellsItsCommandsAndExitCodes) {
  for (const char *flag : {"--help", "-h"}) {
    const ProgramResult result = Run({flag});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.output,
                AllOf(HasSubstr("  scale "), HasSubstr("  filter "), HasSubstr("  rotate "), HasSubstr("  mirror "),
                      HasSubstr("  combine "), HasSubstr("  sheet "), HasSubstr("  info "), HasSubstr("  batch "),
                      HasSubstr("--version"), HasSubstr("  0  done\n"), HasSubstr("  1  the work failed"),
                      HasSubstr("  2  the command line is wrong")));
    EXPECT_EQ(result.errors, "");
  }
}

TEST_F(Zvk, RefusesACommandLineWithoutACommand) {
  const ProgramResult result = Run({});
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "zvk: A subcommand is required; 'zvk --help' tells how it is used\n");
}

TEST_F(Zvk, NamesACommandOrOptionThatThereIsNot) {
  for (const std::string word : {"skale", "--fast"}) {
    const ProgramResult result = Run({word, "a.png"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "zvk: there is no command or option '" + word + "'; 'zvk --help' tells how it is used\n");
  }
}

TEST_F(Zvk, PointsToTheHelpOfTheCommandThatWasUsed) {
  EXPECT_EQ(Run({"scale", "a.png"}).errors, "zvk: OUT is required; 'zvk scale --help' tells how it is used\n");
  EXPECT_EQ(Run({"scale", "a.png", "b.png"}).errors,
            "zvk: SIZE is required; 'zvk scale --help' tells how it is used\n");
  EXPECT_EQ(Run({"scale", "a.png", "b.png", "1x1", "more"}).errors,
            "zvk: The following argument was not expected: more; 'zvk scale --help' tells how it is used\n");
  EXPECT_EQ(Run({"scale", "a.png", "b.png", "1x1", "--filter"}).exitCode, 2);
}

TEST_F(Zvk, KeepsAMessageOnOneLineWhateverAFileIsCalled) {
  const ProgramResult result = Run({"scale", "a\nb\x1b[2J\x7f.png", "out.png", "1x1"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.errors, StartsWith("zvk: a b [2J .png: "));
  EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1);
}

}  // namespace
}  // namespace standalone
