#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

uint32_t Gray(int value) { return static_cast<uint32_t>(value) * 0x010101; }

class FilterCommand : public ZvkProgram {
 protected:
  // Writes an image of these colours, one row.
  void WriteRow(const std::string &name, const std::vector<uint32_t> &colours) const {
    WriteImage(name, static_cast<int>(colours.size()), 1, [&](int x, int) { return colours[static_cast<size_t>(x)]; });
  }

  // Applies the filter to "in.png", expects that it went well without a word, and gives the result.
  Colours Filter(const std::string &name, std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"filter", name, "in.png", "out.png"});
    arguments.emplace_back("--leaks");
    const ProgramResult result = Run(arguments);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "references not given back: none\n");
    EXPECT_EQ(result.errors, "");
    return ReadImage("out.png");
  }

  // Runs what must fail, and expects one line of error, and all files as they were.
  void ExpectFailure(std::vector<std::string> arguments, int exitCode, const std::string &message) const {
    Write("out.png", "what was there before");
    const std::set<std::string> names = Names();
    arguments.insert(arguments.begin(), "filter");
    const ProgramResult result = Run(arguments);
    EXPECT_EQ(result.exitCode, exitCode);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "zvk: " + message + "\n");
    EXPECT_EQ(Names(), names);
    EXPECT_EQ(Read("out.png"), "what was there before");
  }
};

TEST_F(FilterCommand, TellsItsArgumentsAndExitCodes) {
  const ProgramResult result = Run({"filter", "--help"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.output,
              AllOf(HasSubstr("filter [OPTIONS] [NAME] [IN] [OUT] [NAME=VALUE...]"), HasSubstr("--list"),
                    HasSubstr("--seed N"), HasSubstr("--plugin"), HasSubstr("--leaks"), HasSubstr("#RRGGBB"),
                    HasSubstr("Examples:\n  zvk filter "), HasSubstr("Exit codes:")));
}

TEST_F(FilterCommand, ListsAllFiltersWithTheirArguments) {
  const ProgramResult result = Run({"filter", "--list"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_THAT(result.output,
              AllOf(HasSubstr("OilFilter                levels=INTEGER range=INTEGER\n"), HasSubstr("NeonFilter\n"),
                    HasSubstr("BoxBlurFilter            Radius=NUMBER [Vertical=true] [Horizontal=true]\n"),
                    HasSubstr("StampFilter              radius=NUMBER threshold=NUMBER softness=NUMBER Black=#RRGGBB "
                              "White=#RRGGBB\n"),
                    HasSubstr("UnsharpFilter            origpixels=FILE Amount=NUMBER Threshold=INTEGER\n"),
                    HasSubstr("ApplyMatrix              MatrixDimension=INTEGER matrix=INTEGER,INTEGER,...\n")));
  EXPECT_THAT(result.output, testing::Not(HasSubstr("\nScale")));
}

TEST_F(FilterCommand, ListsTheFormsOfOneFilter) {
  const ProgramResult result = Run({"filter", "--list", "gammafilter", "--leaks"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output,
            "GammaFilter  gamma=NUMBER\n"
            "GammaFilter  gamma=NUMBER alphaGamma=NUMBER\n"
            "GammaFilter  redGamma=NUMBER greenGamma=NUMBER blueGamma=NUMBER\n"
            "GammaFilter  redGamma=NUMBER greenGamma=NUMBER blueGamma=NUMBER alphaGamma=NUMBER\n"
            "references not given back: none\n");
}

// 64 / 255 is 0.25098, its root 0.50098, and 255 of that 127.75, which rounds to 128.
TEST_F(FilterCommand, ChoosesTheFormByTheNamesThatAreGiven) {
  WriteRow("in.png", {0x404040, 0x000000, 0xFFFFFF});
  EXPECT_EQ(Filter("GammaFilter", {"gamma=2"}), Colours({{0x808080, 0x000000, 0xFFFFFF}}));
  EXPECT_EQ(Filter("GAMMAfilter", {"BLUEgamma=1", "greenGamma=1.0", "redGamma=2"}),
            Colours({{0x804040, 0x000000, 0xFFFFFF}}));
}

TEST_F(FilterCommand, AppliesAFilterWithoutArguments) {
  WriteRow("in.png", {0x007FFF, 0x80FF00});
  EXPECT_EQ(Filter("SolarizeFilter", {}), Colours({{0xFF00FF, 0x00FFFF}}));
}

// The entry left of the middle takes each sample from the left neighbour; a wide image stays wide.
TEST_F(FilterCommand, TakesArraysAndKeepsTheShape) {
  WriteRow("in.png", {0x102030, 0x405060, 0x708090});
  EXPECT_EQ(Filter("ApplyMatrix", {"MatrixDimension=3", "matrix=0,0,0,1,0,0,0,0,0"}),
            Colours({{0x102030, 0x102030, 0x405060}}));
  EXPECT_EQ(Filter("ApplyMatrix", {"delta=16", "matrix=1", "MatrixDimension=1"}),
            Colours({{0x203040, 0x506070, 0x8090A0}}));
  EXPECT_EQ(Filter("ApplyMatrix", {"delta=16", "matrix=1", "MatrixDimension=1", "ScaleFactor=0.5"}),
            Colours({{0x101820, 0x283038, 0x404850}}));
}

TEST_F(FilterCommand, TakesArraysOfAnyLength) {
  WriteRow("in.png", {0x0080FF, 0x010203});
  std::string mirrored;
  for (int i = 255; i >= 0; --i) mirrored += (mirrored.empty() ? "" : ",") + std::to_string(i);
  EXPECT_EQ(Filter("TransferFilter", {"gray=" + mirrored}), Colours({{0xFF7F00, 0xFEFDFC}}));
  EXPECT_EQ(Filter("TransferFilter", {"gray="}), Colours({{0, 0}}));
}

// With two levels black is at or below every threshold, and turns white.
TEST_F(FilterCommand, TakesConstantsByName) {
  WriteImage("in.png", 3, 2, [](int, int) { return 0; });
  EXPECT_EQ(Filter("DitherFilter", {"matrix=dithermagic2x2matrix", "levels=2"}),
            Colours({{0xFFFFFF, 0xFFFFFF, 0xFFFFFF}, {0xFFFFFF, 0xFFFFFF, 0xFFFFFF}}));
  EXPECT_EQ(Filter("DitherFilter", {"matrix=1", "levels=2"})[0][0], 0xFFFFFFu);
}

TEST_F(FilterCommand, LetsOptionalArgumentsBeLeftOut) {
  WriteImage("in.png", 3, 3, [](int x, int) { return x == 1 ? Gray(90) : 0; });
  const Colours original = ReadImage("in.png");
  const Colours blurred(3, std::vector<uint32_t>(3, Gray(30)));
  EXPECT_EQ(Filter("BoxBlurFilter", {"Radius=1"}), blurred);
  EXPECT_EQ(Filter("BoxBlurFilter", {"Radius=1", "Vertical=false"}), blurred);
  EXPECT_EQ(Filter("BoxBlurFilter", {"Radius=1", "Horizontal=false"}), original);
}

// 0 0 90 0 0, then 0 30 30 30 0, then 10 20 30 20 10.
TEST_F(FilterCommand, GivesTheImageThatTheFilterReturns) {
  WriteRow("in.png", {0, 0, Gray(90), 0, 0});
  EXPECT_EQ(Filter("BoxBlurFilter", {"Radius=1", "Iterations=2", "Vertical=FALSE"}),
            Colours({{Gray(10), Gray(20), Gray(30), Gray(20), Gray(10)}}));
  EXPECT_EQ(Filter("BoxBlurFilter", {"Radius=1", "Iterations=0"}), ReadImage("in.png"));
}

TEST_F(FilterCommand, TakesColours) {
  WriteImage("in.png", 6, 6, [](int, int) { return 0xFFFFFF; });
  const std::vector<std::string> arguments = {"radius=3", "threshold=0.5", "softness=0", "Black=#102030",
                                              "White=#FF8000"};
  EXPECT_EQ(Filter("StampFilter", arguments), Colours(6, std::vector<uint32_t>(6, 0xFF8000)));
  WriteImage("in.png", 6, 6, [](int, int) { return 0; });
  EXPECT_EQ(Filter("StampFilter", arguments), Colours(6, std::vector<uint32_t>(6, 0x102030)));
}

// The difference of 10 is made 1 + 4 x 0.5 times as large.
TEST_F(FilterCommand, TakesFilesAndSavesTheImageThatWasChanged) {
  WriteImage("in.png", 3, 2, [](int, int) { return Gray(100); });
  WriteImage("blurred.gif", 3, 2, [](int, int) { return Gray(90); });
  const std::vector<std::string> arguments = {"origpixels=blurred.gif", "Amount=0.5", "Threshold=10"};
  EXPECT_EQ(Filter("UnsharpFilter", arguments), Colours(2, std::vector<uint32_t>(3, Gray(120))));
  EXPECT_EQ(Filter("UnsharpFilter", {"origpixels=blurred.gif", "Amount=0.5", "Threshold=11"}), ReadImage("in.png"));
}

// The two numbers for each pixel are taken row by row, across before down.
TEST_F(FilterCommand, RepeatsRandomNumbersFromTheSeed) {
  const auto colour = [](int x, int y) { return static_cast<uint32_t>(x * 16 + y); };
  WriteImage("in.png", 9, 8, colour);
  for (const unsigned seed : {0u, 7u, 4294967295u}) {
    std::srand(seed);
    Colours expected;
    for (int y = 0; y < 8; ++y) {
      expected.emplace_back();
      for (int x = 0; x < 9; ++x) {
        const int dx = std::rand() % 7 - 3;
        const int dy = std::rand() % 7 - 3;
        expected.back().push_back(colour(std::clamp(x + dx, 0, 8), std::clamp(y + dy, 0, 7)));
      }
    }
    EXPECT_EQ(Filter("DiffuseFilter", {"level=3", "--seed", std::to_string(seed)}), expected) << seed;
  }
}

// A filter that can do without a dest makes one of its own shape.
TEST_F(FilterCommand, LeavesAnOptionalDestToTheFilter) {
  WriteRow("in.png", {0x102030, 0x405060, 0x708090});
  EXPECT_EQ(Filter("Rotate90", {}), Colours({{0x708090}, {0x405060}, {0x102030}}));
  EXPECT_EQ(Filter("Rotate180", {}), Colours({{0x708090, 0x405060, 0x102030}}));
}

TEST_F(FilterCommand, WritesTheFileItReads) {
  WriteRow("in.png", {0x007FFF});
  EXPECT_EQ(Run({"filter", "SolarizeFilter", "in.png", "in.png"}).errors, "");
  EXPECT_EQ(ReadImage("in.png"), Colours({{0xFF00FF}}));
}

TEST_F(FilterCommand, WantsAFilterAndTwoFiles) {
  const std::string end = " is required; 'zvk filter --help' tells how it is used";
  ExpectFailure({}, 2, "NAME" + end);
  ExpectFailure({"SolarizeFilter"}, 2, "IN" + end);
  ExpectFailure({"SolarizeFilter", "in.png"}, 2, "OUT" + end);
}

TEST_F(FilterCommand, NamesWhatIsWrongOnTheCommandLine) {
  WriteRow("in.png", {0});
  const ProgramResult unknown = Run({"filter", "ToneFilter", "in.png", "out.png"});
  EXPECT_EQ(unknown.exitCode, 2);
  EXPECT_THAT(unknown.errors, AllOf(StartsWith("zvk: there is no filter 'ToneFilter'; choose one of "),
                                    HasSubstr("GammaFilter, DitherFilter, ")));
  ExpectFailure({"DitherFilter", "in.png", "out.png", "matrix=1"}, 2,
                "DitherFilter is not told enough; add levels=INTEGER");
  ExpectFailure({"DitherFilter", "in.png", "out.png", "matrix=1", "level=2"}, 2,
                "DitherFilter has no argument 'level'; it takes matrix=INTEGER levels=INTEGER");
  ExpectFailure({"DitherFilter", "in.png", "out.png", "matrix=1", "2"}, 2,
                "'2' is out of place; behind OUT come arguments as NAME=VALUE");
  ExpectFailure({"DitherFilter", "in.png", "out.png", "matrix=1", "levels=some"}, 2,
                "levels: 'some' is not understood; write a whole number of 32 bits or the name of a constant");
  ExpectFailure({"DitherFilter", "in.png", "out.png", "levels=4", "matrix=DitherLines"}, 2,
                "matrix: 'DitherLines' is not understood; write a whole number of 32 bits or the name of a constant, "
                "such as DitherLines4x4Matrix");
  ExpectFailure({"SolarizeFilter", "in.png", "out"}, 2,
                "out: no known image extension; use one of png, jpg, jpeg, gif, webp, tif, tiff, bmp");
  ExpectFailure({"SolarizeFilter", "in.png", "out.png", "--seed", "-1"}, 2,
                "--seed: Value -1 not in range 0 to 4294967295; 'zvk filter --help' tells how it is used");
}

TEST_F(FilterCommand, LooksAtTheCommandLineBeforeTheFiles) {
  ExpectFailure({"UnsharpFilter", "none.png", "out.png", "origpixels=none.gif", "Amount=much", "Threshold=0"}, 2,
                "Amount: 'much' is not understood; write a number, such as 2 or 0.75");
}

TEST_F(FilterCommand, NamesFilesThatCannotBeRead) {
  WriteRow("in.png", {0});
  ExpectFailure({"SolarizeFilter", "none.png", "out.png"}, 1, "none.png: no such file; check the path");
  ExpectFailure({"UnsharpFilter", "in.png", "out.png", "origpixels=none.png", "Amount=1", "Threshold=0"}, 1,
                "none.png: no such file; check the path");
}

TEST_F(FilterCommand, TellsWhichFilesAreNotOfOneSize) {
  WriteRow("in.png", {0, 0});
  WriteRow("other.png", {0, 0, 0});
  ExpectFailure({"UnsharpFilter", "in.png", "out.png", "origpixels=other.png", "Amount=1", "Threshold=0"}, 1,
                "UnsharpFilter refuses in.png of 2 x 1 pixels with other.png of 3 x 1; take files of the same size");
}

}  // namespace
}  // namespace standalone
