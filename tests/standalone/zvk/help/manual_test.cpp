#include "standalone/zvk/help/manual.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>

#include "tests/standalone/zvk/help_texts.h"

namespace standalone {
namespace {

using testing::HasSubstr;
using testing::Not;

class ManualPage : public HelpTexts {
 protected:
  ManualPage() {
    const ProgramResult result = Run({"manual"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors, "");
    page_ = result.output;
  }

  // The text from one line on, up to the next one that starts likewise.
  std::string Part(const std::string &start, const std::string &name) const {
    const size_t begin = page_.find(start + name + "\n");
    EXPECT_NE(begin, std::string::npos) << name;
    if (begin == std::string::npos) return "";
    return page_.substr(begin, page_.find("\n.S", begin + 1) - begin);
  }

  static std::string InBold(const std::string &name) {
    std::string escaped;
    for (const char letter : name) escaped += letter == '-' ? "\\-" : std::string(1, letter);
    return "\\fB" + escaped + "\\fR";
  }

  std::string page_;
};

TEST_F(ManualPage, HasTheUsualSectionsInTheUsualOrder) {
  EXPECT_THAT(page_, testing::StartsWith(".TH ZVK 1 "));
  EXPECT_THAT(Part(".SH ", "NAME"), HasSubstr("\nzvk \\- "));
  size_t last = 0;
  for (const char *const name :
       {"NAME", "SYNOPSIS", "DESCRIPTION", "COMMANDS", "EXIT STATUS", "ENVIRONMENT", "FILES", "EXAMPLES", "SEE ALSO"}) {
    const size_t place = page_.find(std::string("\n.SH ") + name + "\n");
    ASSERT_NE(place, std::string::npos) << name;
    EXPECT_GT(place, last) << name;
    last = place;
  }
}

TEST_F(ManualPage, TellsEveryCommandWithAllItsOptions) {
  for (const std::string &command : Commands()) {
    const std::string part = Part(".SS ", command);
    for (const std::string &option : Options(command)) {
      EXPECT_THAT(part, HasSubstr(InBold(option))) << command;
    }
  }
  for (const std::string &option : Options("")) EXPECT_THAT(Part(".SH ", "DESCRIPTION"), HasSubstr(InBold(option)));
}

TEST_F(ManualPage, TellsWhatIsInTheHelp) {
  EXPECT_THAT(Part(".SS ", "scale"),
              testing::AllOf(HasSubstr("\n.B zvk scale\n[OPTIONS] IN OUT SIZE\n"),
                             HasSubstr("\\fB\\-\\-filter\\fR \\fINAME\\fR\nResampling filter: triangle, box,"),
                             HasSubstr("Not together with \\fB\\-\\-filter\\fR or \\fB\\-\\-threads\\fR."),
                             HasSubstr("Only with \\fB\\-\\-in\\-file\\fR.")));
  EXPECT_THAT(Part(".SS ", "filter"), HasSubstr("[NAME] [IN] [OUT] [NAME=VALUE ...]\n"));
  EXPECT_THAT(Part(".SS ", "sheet"), HasSubstr("OUT FILE ...\n"));
  EXPECT_THAT(Part(".SH ", "EXIT STATUS"), HasSubstr("\n\\fB2\\fR\nThe command line is wrong."));
  EXPECT_THAT(Part(".SH ", "ENVIRONMENT"), HasSubstr("TMPDIR"));
  EXPECT_THAT(Part(".SH ", "FILES"), HasSubstr("libPictureZVK.so"));
  EXPECT_THAT(Part(".SH ", "EXAMPLES"), HasSubstr("\nzvk scale photo.jpg small.jpg 640x480\n"));
  // Once each: examples and exit codes have sections of their own.
  EXPECT_THAT(Part(".SS ", "scale"), Not(HasSubstr("Examples")));
  EXPECT_THAT(Part(".SS ", "scale"), Not(HasSubstr("Exit codes")));
}

// A line that starts with a dot, or an apostrophe, would be a command of the language.
TEST_F(ManualPage, HasNoLineThatIsACommandByAccident) {
  std::istringstream lines(page_);
  const std::set<std::string> commands = {".TH", ".SH", ".SS", ".TP", ".PP", ".B", ".I", ".br", ".nf", ".fi"};
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with('.')) {
      EXPECT_TRUE(commands.contains(FirstWord(line))) << line;
    }
    EXPECT_FALSE(line.empty() || line.starts_with('\'')) << line;
    EXPECT_TRUE(std::ranges::all_of(line, [](unsigned char letter) { return letter >= ' ' && letter <= '~'; })) << line;
  }
}

TEST_F(ManualPage, IsSetWithoutAWarning) {
  if (!std::filesystem::exists("/usr/bin/groff")) GTEST_SKIP() << "groff is not installed";
  Write("zvk.1", page_);
  const ProgramResult set = Run({"-man", "-ww", "-Tutf8", "-P-cbou", "zvk.1"}, "/usr/bin/groff");
  EXPECT_EQ(set.exitCode, 0);
  EXPECT_EQ(set.errors, "");
  EXPECT_THAT(set.output, testing::AllOf(HasSubstr("zvk - scale, filter, turn and combine pictures"),
                                         HasSubstr("\n       --filter NAME\n"), HasSubstr("'zvk filter --list'"),
                                         HasSubstr("zvk run -e 'print(PictureZVK.")));
}

}  // namespace
}  // namespace standalone
