#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

using testing::AllOf;
using testing::HasSubstr;

uint32_t Noise(int x, int y) { return (static_cast<uint32_t>(x * 7919 + y * 104729 + 12345) * 2654435761u) >> 8; }
uint32_t ClearNoise(int x, int y) { return Noise(x, y) << 8 | (static_cast<uint32_t>(x * 37 + y * 11) & 255); }

using MirrorCommand = ZvkProgram;

TEST_F(MirrorCommand, TellsAllItsArguments) {
  const ProgramResult result = Run({"mirror", "--help"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.output, AllOf(HasSubstr("mirror [OPTIONS] IN OUT DIRECTION"), HasSubstr("left and right"),
                                   HasSubstr("top and bottom"), HasSubstr("--background"), HasSubstr("--plugin"),
                                   HasSubstr("Examples:\n  zvk mirror "), HasSubstr("Exit codes:")));
}

TEST_F(MirrorCommand, ExchangesLeftAndRight) {
  for (const int width : {1, 2, 5, 100}) {
    WriteImage("in.png", width, 4, Noise);
    RunWell({"mirror", "in.png", "out.png", "h"});
    EXPECT_EQ(ReadImage("out.png"), Table(width, 4, [=](int x, int y) { return Noise(width - 1 - x, y); }));
  }
}

TEST_F(MirrorCommand, ExchangesTopAndBottom) {
  for (const int height : {1, 2, 5, 60}) {
    WriteImage("in.png", 7, height, Noise);
    RunWell({"mirror", "in.png", "out.png", "v"});
    EXPECT_EQ(ReadImage("out.png"), Table(7, height, [=](int x, int y) { return Noise(x, height - 1 - y); }));
  }
}

TEST_F(MirrorCommand, MovesAlphaWithItsPixels) {
  WriteClear("in.png", 9, 5, ClearNoise);
  RunWell({"mirror", "in.png", "h.png", "h"});
  EXPECT_EQ(ReadClear("h.png"), Table(9, 5, [](int x, int y) { return ClearNoise(8 - x, y); }));
  RunWell({"mirror", "in.png", "v.tif", "v"});
  EXPECT_EQ(ReadClear("v.tif"), Table(9, 5, [](int x, int y) { return ClearNoise(x, 4 - y); }));
}

TEST_F(MirrorCommand, LaysTransparentPixelsOnTheBackgroundWhereTheFileHasNoAlpha) {
  WriteClear("in.png", 2, 1, [](int x, int) { return x == 0 ? 0x10203000u : 0x405060FFu; });
  const ProgramResult result = Run({"mirror", "in.png", "out.bmp", "h", "--background", "#FF8000"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "zvk: out.bmp: cannot hold transparency; transparent pixels are laid on #FF8000\n");
  EXPECT_EQ(ReadImage("out.bmp"), Colours({{0x405060, 0xFF8000}}));
}

TEST_F(MirrorCommand, MayReplaceItsInputAndLeavesNothingBehind) {
  WriteImage("in.png", 5, 4, Noise);
  const ProgramResult result = Run({"mirror", "in.png", "in.png", "h", "--leaks"});
  EXPECT_EQ(result.output, "references not given back: none\n");
  EXPECT_EQ(ReadImage("in.png"), Table(5, 4, [](int x, int y) { return Noise(4 - x, y); }));
  EXPECT_EQ(Names(), std::set<std::string>{"in.png"});
}

TEST_F(MirrorCommand, RefusesWhatItCannotDo) {
  WriteImage("in.png", 5, 4, Noise);
  for (const std::string direction : {"x", "", "H", "horizontal"}) {
    ExpectFailure({"mirror", "in.png", "out.png", direction}, 2,
                  "direction '" + direction +
                      "' is not understood; write h to exchange left and right, or v to exchange top and bottom\n");
  }
  ExpectFailure({"mirror", "in.png", "out.png"}, 2,
                "DIRECTION is required; 'zvk mirror --help' tells how it is used\n");
  ExpectFailure({"mirror", "in.png", "out.xyz", "h"}, 2, "out.xyz: no known image extension; use one of png, ");
  ExpectFailure({"mirror", "nowhere.png", "out.png", "h"}, 1, "nowhere.png: no such file; check the path\n");
  ExpectFailure({"mirror", "in.png", "missing/out.png", "h"}, 1, "missing/out.png: cannot be written (");
}

}  // namespace
}  // namespace standalone
