// The scripts that make the class reference and try its examples, on small tables and texts of the tests' own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

using testing::HasSubstr;

constexpr char kSection[] = "# Properties\n\n- `Width`: Pixels in a row.\n";
constexpr char kFamily[] =
    "# Filling\n\n<!--\ngroup: Fills\ncovers: FillRect, Row\n-->\n\nFills. See [Filling](#filling).\n\n"
    "```lua\nlocal two = 1 + 1\nassert(two == 2)\nprint(two)\n```\n\n```text\n2\n```\n";

class ReferenceTest : public ZvkProgram {
 protected:
  ReferenceTest() {
    std::filesystem::create_directory(Path("texts"));
    Write("tables",
          "#!/bin/sh\ncat <<'END'\nPictureZVK\n  Properties\n    Width as Integer (read-only)\n  Methods\n"
          "    FillRect(value as integer)\n    FillRect(x as integer, value as integer)\n"
          "    Row(index as integer) as memoryblock (can be assigned to)\n  Constants\n    ScaleBox = 2\n"
          "Picture\n  Methods\n    Save(path as String)\nEND\n");
    std::filesystem::permissions(Path("tables"), std::filesystem::perms::owner_all);
    Write("texts/introduction.md", "# Reference\n\nAll of it.\n\n## Use\n\nUse it.\n");
    Write("texts/properties.md", kSection);
    Write("texts/constants.md", "# Constants\n\n## Filters\n\n- `ScaleBox`: A box.\n");
    Write("texts/10-fill.md", kFamily);
  }

  void Write(const std::string &name, const std::string &text) const { std::ofstream(Path(name)) << text; }

  ProgramResult RunScript(const std::string &script, std::vector<std::string> arguments) const {
    const std::filesystem::path tools = std::filesystem::path(PICTUREZVK_EXAMPLES).parent_path() / "tools/reference";
    arguments.insert(arguments.begin(), {"run", (tools / script).string()});
    return Run(arguments);
  }

  ProgramResult Make() const { return RunScript("page.lua", {"make", "./tables", "texts", "page.md"}); }

  // The page cannot be made, for a reason told in one line, and what was there stays.
  void ExpectRefused(const std::string &reason) const {
    Write("page.md", "before");
    const ProgramResult result = Make();
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.errors, "zvk: " + reason + "\n");
    EXPECT_EQ(Read("page.md"), "before");
  }
};

TEST_F(ReferenceTest, APageHasEveryDeclarationWithItsText) {
  const ProgramResult result = Make();
  ASSERT_EQ(result.exitCode, 0) << result.errors;
  const std::string page = Read("page.md");
  EXPECT_THAT(page, HasSubstr("# Reference\n\nAll of it.\n\n## Contents\n\n- [Use](#use)\n- [Properties](#properties)\n"
                              "- [Constants](#constants): [Filters](#filters)\n- [Fills](#fills): "
                              "[Filling](#filling)\n- [Methods from A to Z](#methods-from-a-to-z)\n\n## Use\n"));
  EXPECT_THAT(page, HasSubstr("| `Width as Integer` | read | Pixels in a row. |\n"));
  EXPECT_THAT(page, HasSubstr("### Filters\n\n| Constant | Value | Meaning |\n|---|---|---|\n| `ScaleBox` | 2 | A box. "
                              "|\n"));
  EXPECT_THAT(page, HasSubstr("## Fills\n\n### Filling\n\n```\nFillRect(value as integer)\n"
                              "FillRect(x as integer, value as integer)\n"
                              "Row(index as integer) as memoryblock   // can be assigned to\n```\n\nFills. See "
                              "[Filling](#filling).\n\n```lua\nlocal two = 1 + 1\n"));
  EXPECT_THAT(page, HasSubstr("| `FillRect` | [Filling](#filling) |\n| `Row` | [Filling](#filling) |\n"));
  EXPECT_THAT(page, Not(HasSubstr("Save")));
}

TEST_F(ReferenceTest, APageThatIsWhatTheTablesGivePasses) {
  ASSERT_EQ(Make().exitCode, 0);
  const ProgramResult result = RunScript("page.lua", {"check", "./tables", "texts", "page.md"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
}

TEST_F(ReferenceTest, APageThatIsNotWhatTheTablesGiveIsToldWithTheWayOut) {
  ASSERT_EQ(Make().exitCode, 0);
  std::string page = Read("page.md");
  page.replace(page.find("All of it."), 3, "Any");
  Write("page.md", page);
  const ProgramResult result = RunScript("page.lua", {"check", "./tables", "texts", "page.md"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors,
            "zvk: page.md is not what the class tables and texts give, from line 5 on; './run docs' makes it anew\n");
  EXPECT_EQ(Read("page.md"), page);
}

TEST_F(ReferenceTest, AMemberThatNoTextExplainsIsRefused) {
  Write("texts/properties.md", "# Properties\n");
  ExpectRefused("PictureZVK.Width as Integer is in the class tables and in no text of texts; name it in one");
  Write("texts/properties.md", kSection);
  Write("texts/constants.md", "# Constants\n");
  ExpectRefused("PictureZVK.ScaleBox = 2 is in the class tables and in no text of texts; name it in one");
}

TEST_F(ReferenceTest, AMemberOfWhichNothingIsToldIsRefused) {
  Write("texts/properties.md", "# Properties\n\n- `Width`\n");
  ExpectRefused("texts/properties.md names Width and tells nothing of it");
}

TEST_F(ReferenceTest, AnOverloadThatNoTextExplainsIsRefused) {
  std::string family = kFamily;
  family.replace(family.find("covers: FillRect, Row"), 21, "covers: FillRect(value as integer)\ncovers: Row");
  Write("texts/10-fill.md", family);
  ExpectRefused(
      "PictureZVK.FillRect(x as integer, value as integer) is in the class tables and in no text of texts; name it in "
      "one");
}

TEST_F(ReferenceTest, ATextOfWhatIsNotThereIsRefused) {
  Write("texts/properties.md", std::string(kSection) + "- `Depth`: Bits.\n");
  ExpectRefused("texts/properties.md explains Depth, which no class has; 'zvk methods' tells what there is");
  Write("texts/properties.md", kSection);
  std::string family = kFamily;
  family.replace(family.find("FillRect, Row"), 8, "FillOval");
  Write("texts/10-fill.md", family);
  ExpectRefused("texts/10-fill.md covers FillOval, which no class has; 'zvk methods' tells what there is");
}

TEST_F(ReferenceTest, AMemberExplainedTwiceIsRefused) {
  Write("texts/20-more.md", "# More\n\n<!--\ngroup: Fills\ncovers: Row\n-->\n\n```lua\n\n\n\n```\n");
  ExpectRefused(
      "Row(index as integer) as memoryblock is explained by texts/10-fill.md and by texts/20-more.md; leave it to one");
}

TEST_F(ReferenceTest, AFamilyHasOneExampleOfThreeToTwelveLines) {
  const std::string head = "# Filling\n\n<!--\ngroup: Fills\ncovers: FillRect, Row\n-->\n\n";
  Write("texts/10-fill.md", head + "Fills.\n");
  ExpectRefused("texts/10-fill.md has 0 examples; there is one for each family");
  Write("texts/10-fill.md", head + "```lua\nprint(1)\nprint(2)\n```\n");
  ExpectRefused("the example of texts/10-fill.md has 2 lines; it should have 3 to 12");
}

TEST_F(ReferenceTest, ALinkToNoHeadingIsRefused) {
  Write("texts/introduction.md", "# Reference\n\n## Use\n\nSee [ovals](#ovals).\n");
  ExpectRefused("there is a link to #ovals, but no such heading");
}

TEST_F(ReferenceTest, ALineThatWouldBecomeAListIsRefused) {
  for (const std::string line : {"+ 28 B.", "* 2.", "256. A colour."}) {
    Write("texts/introduction.md", "# Reference\n\n## Use\n\nGray is 77 R\n" + line + "\n");
    ExpectRefused("texts/introduction.md:6 begins like a list; break its lines elsewhere");
  }
}

TEST_F(ReferenceTest, TwoHeadingsOfOneNameAreRefused) {
  Write("texts/introduction.md", "# Reference\n\n## Use\n\n## Filling\n");
  ExpectRefused("page.md has two headings 'Filling'; rename one of them");
}

TEST_F(ReferenceTest, AnExampleThatDoesWhatItSaysPasses) {
  const ProgramResult result = RunScript("example.lua", {"texts/10-fill.md"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.output, "");
}

TEST_F(ReferenceTest, AnExampleThatFailsTellsItsLineOfTheText) {
  std::string family = kFamily;
  family.replace(family.find("two == 2"), 8, "two == 3");
  Write("texts/10-fill.md", family);
  const ProgramResult result = RunScript("example.lua", {"texts/10-fill.md"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "zvk: texts/10-fill.md:12: assertion failed!\n");
}

TEST_F(ReferenceTest, AnExampleThatPrintsAnythingElseFails) {
  std::string family = kFamily;
  family.replace(family.find("\n2\n"), 3, "\n3\n");
  Write("texts/10-fill.md", family);
  const ProgramResult other = RunScript("example.lua", {"texts/10-fill.md"});
  EXPECT_EQ(other.exitCode, 1);
  EXPECT_THAT(other.errors, HasSubstr("the example of texts/10-fill.md prints\n"));
  family.erase(family.find("```text"));
  Write("texts/10-fill.md", family);
  EXPECT_EQ(RunScript("example.lua", {"texts/10-fill.md"}).exitCode, 1);
}

TEST_F(ReferenceTest, LinksOfAPageLeadToFilesAndHeadings) {
  Write("page.md",
        "# Page\n\n[here](#page) [text](texts/10-fill.md#filling) [far](https://example.org/) `[code](no.md)`\n\n"
        "```\n[code](no.md)\n```\n");
  const ProgramResult result = RunScript("links.lua", {"page.md"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
}

TEST_F(ReferenceTest, ALinkOfAPageThatLeadsNowhereIsTold) {
  Write("page.md", "# Page\n\n[text](texts/10-fill.md#ovals)\n");
  EXPECT_EQ(RunScript("links.lua", {"page.md"}).errors,
            "zvk: page.md links to texts/10-fill.md#ovals, but no heading of texts/10-fill.md is called so\n");
  Write("page.md", "# Page\n\n[text](texts/30-oval.md)\n");
  const ProgramResult result = RunScript("links.lua", {"page.md"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "zvk: page.md links to texts/30-oval.md, which is not there\n");
}

}  // namespace
}  // namespace standalone
