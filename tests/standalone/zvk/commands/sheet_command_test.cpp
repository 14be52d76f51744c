#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

using testing::AllOf;
using testing::HasSubstr;

constexpr uint32_t kPaper = 0xFFFFFF;
constexpr uint32_t kInk = 0x202020;

// The places of a sheet: a gap of 8 pixels around the cells, in each a square, 4 pixels and a line of 13-pixel letters,
// each 6 wide.
constexpr int kGap = 8;
constexpr int kUnder = 4 + 13;

class SheetCommand : public ZvkProgram {
 protected:
  void WriteFlat(const std::string &name, int width, int height, uint32_t colour) const {
    WriteImage(name, width, height, [colour](int, int) { return colour; });
  }
  void Sheet(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "sheet");
    const ProgramResult result = Run(arguments);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "");
  }
  void ExpectFailure(const std::vector<std::string> &arguments, int exitCode, const std::string &message) const {
    const std::set<std::string> names = Names();
    const ProgramResult result = Run(arguments);
    EXPECT_EQ(result.exitCode, exitCode);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "zvk: " + message + "\n");
    EXPECT_EQ(Names(), names);
  }
};

struct Box {
  int left, top, width, height;
  bool operator==(const Box &) const = default;
};

// The smallest rectangle around all pixels of the colour.
Box BoxOf(const Colours &colours, uint32_t colour) {
  int left = INT_MAX, top = INT_MAX, right = -1, bottom = -1;
  for (int y = 0; y < static_cast<int>(colours.size()); ++y) {
    for (int x = 0; x < static_cast<int>(colours[y].size()); ++x) {
      if (colours[y][x] != colour) continue;
      left = std::min(left, x);
      right = std::max(right, x);
      top = std::min(top, y);
      bottom = std::max(bottom, y);
    }
  }
  return {left, top, right - left + 1, bottom - top + 1};
}

std::string Text(const Box &box) {
  return std::to_string(box.left) + " " + std::to_string(box.top) + " " + std::to_string(box.width) + " " +
         std::to_string(box.height);
}

// Three pictures are two in a row and one below.
TEST_F(SheetCommand, LaysPicturesOutInRowsAndColumns) {
  WriteFlat("a.png", 40, 40, 0xFF0000);
  WriteFlat("b.png", 40, 40, 0x00FF00);
  WriteFlat("c.png", 40, 40, 0x0000FF);
  Sheet({"out.png", "a.png", "b.png", "c.png", "--size", "40"});
  const Colours sheet = ReadImage("out.png");
  EXPECT_EQ(sheet[0].size(), 3u * kGap + 2 * 40);
  EXPECT_EQ(sheet.size(), 3u * kGap + 2 * (40 + kUnder));
  EXPECT_EQ(Text(BoxOf(sheet, 0xFF0000)), "8 8 40 40");
  EXPECT_EQ(Text(BoxOf(sheet, 0x00FF00)), "56 8 40 40");
  EXPECT_EQ(Text(BoxOf(sheet, 0x0000FF)), "8 73 40 40");
  EXPECT_EQ(sheet[0][0], kPaper);
  EXPECT_EQ(sheet.back().back(), kPaper);
}

TEST_F(SheetCommand, TakesAsManyColumnsAsItIsTold) {
  for (const char *name : {"a.png", "b.png", "c.png"}) WriteFlat(name, 2, 2, 0xFF0000);
  for (const auto &[columns, width, height] :
       {std::tuple{"1", 1, 3}, std::tuple{"2", 2, 2}, std::tuple{"3", 3, 1}, std::tuple{"9", 3, 1}}) {
    Sheet({"out.png", "a.png", "b.png", "c.png", "--size", "32", "--columns", columns});
    const Colours sheet = ReadImage("out.png");
    EXPECT_EQ(sheet[0].size(), static_cast<size_t>(kGap + width * (32 + kGap))) << columns;
    EXPECT_EQ(sheet.size(), static_cast<size_t>(kGap + height * (32 + kUnder + kGap))) << columns;
  }
}

// In the middle of a square of 40 pixels.
TEST_F(SheetCommand, MakesLargePicturesFitAndKeepsSmallOnes) {
  WriteFlat("wide.png", 80, 20, 0xFF0000);
  WriteFlat("high.png", 40, 160, 0x00FF00);
  WriteFlat("small.png", 6, 4, 0x0000FF);
  Sheet({"out.png", "wide.png", "high.png", "small.png", "--size", "40", "--columns", "3"});
  const Colours sheet = ReadImage("out.png");
  EXPECT_EQ(Text(BoxOf(sheet, 0xFF0000)), "8 23 40 10");
  EXPECT_EQ(Text(BoxOf(sheet, 0x00FF00)), "71 8 10 40");
  EXPECT_EQ(Text(BoxOf(sheet, 0x0000FF)), "121 26 6 4");
}

TEST_F(SheetCommand, WritesTheNamesUnderThePictures) {
  for (const char *name : {"MM.png", "a.b.png"}) WriteFlat(name, 40, 40, 0xFF0000);
  WriteFlat("a name that is too long.png", 40, 40, 0xFF0000);
  const auto inkUnder = [&](const std::string &name) {
    Sheet({"out.png", name, "--size", "40"});
    return BoxOf(ReadImage("out.png"), kInk);
  };
  // Letters need not fill their space: within it the ink is, and in the last one too.
  const Box two = inkUnder("MM.png");
  EXPECT_GE(two.left, 8 + (40 - 2 * 6) / 2);
  EXPECT_GE(two.top, 8 + 40 + 4);
  EXPECT_LE(two.left + two.width, 8 + (40 + 2 * 6) / 2);
  EXPECT_GT(two.width, 6);
  EXPECT_LE(two.top + two.height, 8 + 40 + kUnder);
  // Only the extension is left out.
  EXPECT_GT(inkUnder("a.b.png").width, 2 * 6);
  // Eight letters have room in 48 pixels.
  const Box cut = inkUnder("a name that is too long.png");
  EXPECT_GE(cut.left, 4);
  EXPECT_LE(cut.left + cut.width, 4 + 48);
  EXPECT_GT(cut.width, 42 - 6);
}

TEST_F(SheetCommand, WritesNamesOfOtherLettersThanAsciiAsWideAsTheyShow) {
  WriteFlat("\xC3\xB6\xC3\xB6.png", 40, 40, 0xFF0000);
  WriteFlat("--.png", 40, 40, 0xFF0000);
  Sheet({"other.png", "\xC3\xB6\xC3\xB6.png", "--size", "40"});
  const Box ink = BoxOf(ReadImage("other.png"), kInk);
  EXPECT_GE(ink.left, 8 + (40 - 2 * 6) / 2);
  EXPECT_LE(ink.left + ink.width, 8 + (40 + 2 * 6) / 2);
  EXPECT_GT(ink.width, 6);
}

TEST_F(SheetCommand, TellsOnWishThatNothingIsLeft) {
  WriteFlat("a.png", 400, 300, 0xFF0000);
  const ProgramResult result = Run({"sheet", "out.png", "a.png", "a.png", "--leaks"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output, "references not given back: none\n");
}

TEST_F(SheetCommand, TellsItsArgumentsAndExitCodes) {
  const ProgramResult result = Run({"sheet", "--help"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.output,
              AllOf(HasSubstr("sheet [OPTIONS] OUT FILE..."), HasSubstr("--size"), HasSubstr("[default: 160]"),
                    HasSubstr("--columns"), HasSubstr("--plugin"), HasSubstr("--leaks"),
                    HasSubstr("Examples:\n  zvk sheet "), HasSubstr("Exit codes:")));
}

TEST_F(SheetCommand, NamesWhatIsWrong) {
  WriteFlat("a.png", 4, 4, 0xFF0000);
  ExpectFailure({"sheet", "out.png", "a.png", "none.png"}, 1, "none.png: no such file; check the path");
  ExpectFailure({"sheet", "a.png"}, 2, "FILE is required; 'zvk sheet --help' tells how it is used");
  ExpectFailure({"sheet", "out", "a.png"}, 2,
                "out: no known image extension; use one of png, jpg, jpeg, gif, webp, tif, tiff, bmp");
  ExpectFailure({"sheet", "out.png", "a.png", "--size", "31"}, 2,
                "--size: Value 31 not in range 32 to 4096; 'zvk sheet --help' tells how it is used");
  // 8 pictures of 4104 pixels each way and a gap.
  std::vector<std::string> many = {"sheet", "out.png", "--size", "4096", "--columns", "8"};
  for (int i = 0; i < 8; ++i) many.push_back("a.png");
  ExpectFailure(many, 1, "a sheet of 32840 x 4129 pixels is too large; take fewer pictures or a smaller --size");
}

}  // namespace
}  // namespace standalone
