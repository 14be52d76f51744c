// The script that runs all examples of a page.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

class AllExamplesTest : public ZvkProgram {
 protected:
  ProgramResult RunPage(const std::string &page) const {
    Write("page.md", page);
    const std::filesystem::path tools = std::filesystem::path(PICTUREZVK_EXAMPLES).parent_path() / "tools/reference";
    return Run({"run", (tools / "all_examples.lua").string(), "page.md"});
  }
};

TEST_F(AllExamplesTest, BlocksRunInOrderInOneWorldAndOtherLanguagesDoNot) {
  const ProgramResult result = RunPage(
      "# Page\n\n```lua\nfunction two() return 2 end\n```\n\n```cpp\nint x;\n```\n\n```lua\nprint(two())\n```\n");
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.output, "2\n");
}

TEST_F(AllExamplesTest, AnExampleThatFailsIsNamedByItsLineInThePage) {
  const ProgramResult result = RunPage("a\n\n```lua\nlocal a\n```\n\n```lua\n\nerror('no')\n```\n");
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "zvk: page.md:9: no\n");
}

TEST_F(AllExamplesTest, APageWithoutExamplesIsRefused) {
  const ProgramResult result = RunPage("# Page\n\n```text\nno\n```\n");
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "zvk: page.md has no examples\n");
}

}  // namespace
}  // namespace standalone
