// The programs of docs/guide.md, typed in as they stand.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "standalone/gd/image_file.h"
#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

using testing::HasSubstr;

class GuideTest : public ZvkProgram {
 protected:
  GuideTest() {
    const std::filesystem::path examples = PICTUREZVK_EXAMPLES;
    std::filesystem::create_directory_symlink(examples, Path("examples"));
    std::filesystem::create_directory(Path("build"));
    std::ifstream page(examples.parent_path() / "docs/guide.md");
    std::stringstream text;
    text << page.rdbuf();
    page_ = text.str();
  }

  std::vector<std::string> Programs() const {
    std::vector<std::string> programs;
    const std::string fence = "\n```lua\n";
    for (size_t at = page_.find(fence); at != std::string::npos; at = page_.find(fence, at)) {
      at += fence.size();
      programs.push_back(page_.substr(at, page_.find("\n```", at) + 1 - at));
    }
    return programs;
  }

  // Runs the one program that has the words, under the name; it must succeed. Gives what it prints.
  std::string RunProgramWith(const std::string &words, const std::string &name) const {
    std::string output;
    int found = 0;
    for (const std::string &program : Programs()) {
      if (program.find(words) == std::string::npos) continue;
      ++found;
      std::ofstream(Path(name)) << program;
      const ProgramResult result = Run({"run", name});
      EXPECT_EQ(result.exitCode, 0);
      EXPECT_EQ(result.errors, "");
      output = result.output;
    }
    EXPECT_EQ(found, 1) << "programs with " << words;
    return output;
  }

  std::string page_;
};

TEST_F(GuideTest, EveryProgramRuns) {
  const std::vector<std::string> programs = Programs();
  ASSERT_GE(programs.size(), 4U);
  for (const std::string &program : programs) {
    std::ofstream(Path("program.lua")) << program;
    const ProgramResult result = Run({"run", "program.lua"});
    EXPECT_EQ(result.exitCode, 0) << program;
    EXPECT_EQ(result.errors, "") << program;
  }
}

TEST_F(GuideTest, TheFirstScriptMakesAPictureOfHalfTheSize) {
  RunProgramWith("local half", "half.lua");
  const LoadedImage whole = LoadImageFile(Path("examples/astronaut.png"));
  const LoadedImage half = LoadImageFile(Path("build/half.png"));
  EXPECT_EQ(half.image->sx, whole.image->sx / 2);
  EXPECT_EQ(half.image->sy, whole.image->sy / 2);
}

TEST_F(GuideTest, AViewOfACornerInvertsThatCornerAlone) {
  EXPECT_EQ(RunProgramWith("corner:Invert", "corner.lua"), "BGRX\t4\n");
  const LoadedImage photo = LoadImageFile(Path("examples/coffee.png"));
  const LoadedImage corner = LoadImageFile(Path("build/corner.png"));
  ASSERT_EQ(corner.image->sx, photo.image->sx);
  ASSERT_EQ(corner.image->sy, photo.image->sy);
  for (int y = 0; y < photo.image->sy; ++y) {
    for (int x = 0; x < photo.image->sx; ++x) {
      const int colour = photo.image->tpixels[y][x] & 0xffffff;
      const int expected = x < 100 && y < 100 ? 0xffffff - colour : colour;
      ASSERT_EQ(corner.image->tpixels[y][x] & 0xffffff, expected) << x << "," << y;
    }
  }
}

TEST_F(GuideTest, ThreadsChangeNoByte) {
  EXPECT_EQ(RunProgramWith("ScaleMT", "threads.lua"), "true\n");
  EXPECT_THAT(page_, HasSubstr("\n\nprints true: "));
}

TEST_F(GuideTest, TheExceptionIsTheOneThatIsShown) {
  const std::string output = RunProgramWith("pcall", "exception.lua");
  EXPECT_THAT(output, HasSubstr("OutOfBoundsException"));
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) EXPECT_THAT(page_, HasSubstr("\n    " + line + "\n"));
}

}  // namespace
}  // namespace standalone
