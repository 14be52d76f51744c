#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

using testing::AllOf;
using testing::HasSubstr;

uint32_t Noise(int x, int y) { return (static_cast<uint32_t>(x * 7919 + y * 104729 + 12345) * 2654435761u) >> 8; }
uint32_t ClearNoise(int x, int y) { return Noise(x, y) << 8 | (static_cast<uint32_t>(x * 37 + y * 11) & 255); }

// --- the rotation by three shears, one channel at a time ---

using Plane = std::vector<std::vector<uint8_t>>;  // rows of samples

Plane Blank(int width, int height, uint8_t background) {
  return Plane(static_cast<size_t>(height), std::vector<uint8_t>(static_cast<size_t>(width), background));
}
int WidthOf(const Plane &plane) { return static_cast<int>(plane[0].size()); }
int HeightOf(const Plane &plane) { return static_cast<int>(plane.size()); }
bool IsInside(int index, size_t limit) { return index >= 0 && static_cast<size_t>(index) < limit; }
uint8_t Share(uint8_t sample, double weight) { return static_cast<uint8_t>(sample * weight); }

void SkewRow(const std::vector<uint8_t> &source, std::vector<uint8_t> &dest, double offset, uint8_t background) {
  const int whole = static_cast<int>(std::floor(offset));
  const double weight = offset - whole;
  uint8_t left = Share(background, weight);
  for (size_t i = 0; i < source.size(); ++i) {
    const uint8_t before = left;
    left = Share(source[i], weight);
    const int to = whole + static_cast<int>(i);
    if (IsInside(to, dest.size())) dest[static_cast<size_t>(to)] = static_cast<uint8_t>(source[i] + before - left);
  }
  const int end = whole + static_cast<int>(source.size());
  if (IsInside(end, dest.size())) {
    dest[static_cast<size_t>(end)] = static_cast<uint8_t>(background - (background * weight - left));
  }
}

// A quarter turn to the left.
Plane Quarter(const Plane &plane) {
  Plane turned = Blank(HeightOf(plane), WidthOf(plane), 0);
  for (int y = 0; y < HeightOf(plane); ++y) {
    for (int x = 0; x < WidthOf(plane); ++x) {
      turned[static_cast<size_t>(WidthOf(plane) - 1 - x)][static_cast<size_t>(y)] =
          plane[static_cast<size_t>(y)][static_cast<size_t>(x)];
    }
  }
  return turned;
}

// The angle is above 0 and below 360, and no multiple of 90.
Plane Rotated(Plane base, double angle, uint8_t background) {
  if (angle > 45 && angle <= 315) {
    const int quarters = angle <= 135 ? 1 : angle <= 225 ? 2 : 3;
    for (int i = 0; i < quarters; ++i) base = Quarter(base);
    angle -= 90 * quarters;
  }
  const int width = WidthOf(base), height = HeightOf(base);
  const double r = angle * 3.141592653589793 / 180, s = std::sin(r), c = std::cos(r), t = std::tan(r * 0.5);

  const int width1 = width + static_cast<int>(std::fabs(t) * height);
  Plane first = Blank(width1, height, background);
  for (int u = 0; u < height; ++u) {
    SkewRow(base[static_cast<size_t>(u)], first[static_cast<size_t>(u)], ((t >= 0 ? u : u - height) + 0.5) * t,
            background);
  }

  const int height2 = static_cast<int>(height * c + width * std::fabs(s)) + 1;
  Plane second = Blank(width1, height2, background);
  double f = s > 0 ? (width - 1) * s : -((width - width1) * s);
  for (int u = 0; u < width1; ++u, f -= s) {
    const int whole = static_cast<int>(std::floor(f));
    const double weight = f - whole;
    uint8_t left = Share(background, weight);
    for (int v = 0; v < height; ++v) {
      const uint8_t sample = first[static_cast<size_t>(v)][static_cast<size_t>(u)], before = left;
      left = Share(sample, weight);
      if (!IsInside(v + whole, second.size())) continue;
      second[static_cast<size_t>(v + whole)][static_cast<size_t>(u)] = static_cast<uint8_t>(sample + before - left);
    }
    const int end = whole + height - 1;  // on the last pixel, unlike in a row
    if (IsInside(end, second.size())) {
      second[static_cast<size_t>(end)][static_cast<size_t>(u)] =
          static_cast<uint8_t>(background - (background * weight - left));
    }
  }

  Plane third = Blank(static_cast<int>(width * c + height * std::fabs(s)) + 1, height2, background);
  const double x = (width - 1) * s;
  double g = s >= 0 ? -(x * t) : (-(height2 - 1) - x) * t;
  for (size_t u = 0; u < third.size(); ++u, g += t) SkewRow(second[u], third[u], g, background);
  return third;
}

// All channels of colours with that many bytes.
Colours Rotated(const Colours &colours, int bytes, double angle, uint32_t background) {
  Colours result;
  for (int byte = 0; byte < bytes; ++byte) {
    Plane plane = Blank(static_cast<int>(colours[0].size()), static_cast<int>(colours.size()), 0);
    for (size_t y = 0; y < plane.size(); ++y) {
      for (size_t x = 0; x < plane[0].size(); ++x) plane[y][x] = static_cast<uint8_t>(colours[y][x] >> 8 * byte);
    }
    plane = Rotated(plane, angle, static_cast<uint8_t>(background >> 8 * byte));
    result.resize(plane.size(), std::vector<uint32_t>(plane[0].size()));
    for (size_t y = 0; y < plane.size(); ++y) {
      for (size_t x = 0; x < plane[0].size(); ++x) result[y][x] |= uint32_t{plane[y][x]} << 8 * byte;
    }
  }
  return result;
}

// --- tests ---

using RotateCommand = ZvkProgram;

TEST_F(RotateCommand, TellsAllItsArguments) {
  const ProgramResult result = Run({"rotate", "--help"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.output, AllOf(HasSubstr("rotate [OPTIONS] IN OUT ANGLE"), HasSubstr("counter-clockwise"),
                                   HasSubstr("--background #RRGGBB[AA]"), HasSubstr("--plugin"),
                                   HasSubstr("Examples:\n  zvk rotate "), HasSubstr("Exit codes:")));
}

TEST_F(RotateCommand, MovesPixelsByQuarterTurns) {
  constexpr int kWidth = 7, kHeight = 4;
  WriteImage("in.png", kWidth, kHeight, Noise);
  const Colours left = Table(kHeight, kWidth, [](int x, int y) { return Noise(kWidth - 1 - y, x); });
  const Colours half = Table(kWidth, kHeight, [](int x, int y) { return Noise(kWidth - 1 - x, kHeight - 1 - y); });
  const Colours right = Table(kHeight, kWidth, [](int x, int y) { return Noise(y, kHeight - 1 - x); });
  const std::pair<const char *, Colours> turns[] = {{"0", Table(kWidth, kHeight, Noise)},
                                                    {"90", left},
                                                    {"180", half},
                                                    {"270", right},
                                                    {"-90", right},
                                                    {"450", left},
                                                    {"-180", half},
                                                    {"36090.0", left},
                                                    {"360", Table(kWidth, kHeight, Noise)}};
  for (const auto &[angle, expected] : turns) {
    RunWell({"rotate", "in.png", "out.png", angle});
    EXPECT_EQ(ReadImage("out.png"), expected) << angle;
  }
}

TEST_F(RotateCommand, TurnsByAnyAngleAndLeavesWhiteCorners) {
  WriteImage("in.png", 23, 17, Noise);
  const Colours source = Table(23, 17, Noise);
  for (const auto &[text, angle] : {std::pair{"30", 30.0},
                                    {"45", 45.0},
                                    {"45.5", 45.5},
                                    {"100", 100.0},
                                    {"200.25", 200.25},
                                    {"-12.5", 347.5},
                                    {"-100", 260.0},
                                    {"1e1", 10.0}}) {
    RunWell({"rotate", "in.png", "out.png", text});
    EXPECT_EQ(ReadImage("out.png"), Rotated(source, 3, angle, 0xFFFFFF)) << text;
  }
}

TEST_F(RotateCommand, LeavesCornersOfTheColourThatIsAskedFor) {
  WriteImage("in.png", 23, 17, Noise);
  for (const char *background : {"#336699", "#336699FF"}) {
    RunWell({"rotate", "in.png", "out.png", "30", "--background", background});
    const Colours result = ReadImage("out.png");
    EXPECT_EQ(result, Rotated(Table(23, 17, Noise), 3, 30, 0x336699));
    EXPECT_EQ(result[0][0], 0x336699u);
  }
}

TEST_F(RotateCommand, LeavesClearCornersAroundATransparentPicture) {
  WriteClear("in.png", 23, 17, ClearNoise);
  RunWell({"rotate", "in.png", "out.png", "30"});
  EXPECT_EQ(ReadClear("out.png"), Rotated(Table(23, 17, ClearNoise), 4, 30, 0xFFFFFF00));
  RunWell({"rotate", "in.png", "out.png", "30", "--background", "#10203040"});
  EXPECT_EQ(ReadClear("out.png"), Rotated(Table(23, 17, ClearNoise), 4, 30, 0x10203040));
  RunWell({"rotate", "in.png", "out.png", "30", "--background", "#102030"});
  EXPECT_EQ(ReadClear("out.png"), Rotated(Table(23, 17, ClearNoise), 4, 30, 0x102030FF));
  RunWell({"rotate", "in.png", "out.png", "180"});
  EXPECT_EQ(ReadClear("out.png"), Table(23, 17, [](int x, int y) { return ClearNoise(22 - x, 16 - y); }));
}

TEST_F(RotateCommand, LeavesClearCornersAroundAnOpaquePictureOnWish) {
  WriteImage("in.png", 23, 17, Noise);
  RunWell({"rotate", "in.png", "out.png", "30", "--background", "#10203000"});
  const Colours source = Table(23, 17, [](int x, int y) { return Noise(x, y) << 8 | 255; });
  EXPECT_EQ(ReadClear("out.png"), Rotated(source, 4, 30, 0x10203000));
}

TEST_F(RotateCommand, LaysClearCornersOnTheirColourWhereTheFileHasNoAlpha) {
  WriteImage("in.png", 23, 17, [](int, int) { return 0x808080; });
  const ProgramResult result = Run({"rotate", "in.png", "out.bmp", "30", "--background", "#FF800000"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "zvk: out.bmp: cannot hold transparency; transparent pixels are laid on #FF8000\n");
  EXPECT_EQ(ReadImage("out.bmp")[0][0], 0xFF8000u);
}

TEST_F(RotateCommand, MayReplaceItsInputAndLeavesNothingBehind) {
  WriteImage("in.png", 5, 4, Noise);
  for (const char *angle : {"10", "90", "0"}) {
    const ProgramResult result = Run({"rotate", "in.png", "in.png", angle, "--leaks"});
    EXPECT_EQ(result.output, "references not given back: none\n");
    EXPECT_EQ(result.errors, "");
  }
  EXPECT_EQ(Names(), std::set<std::string>{"in.png"});
}

TEST_F(RotateCommand, RefusesWhatItCannotDo) {
  WriteImage("in.png", 5, 4, Noise);
  for (const std::string angle : {"left", "", "90x", "nan", "inf", "1e999", "0x10"}) {
    ExpectFailure({"rotate", "in.png", "out.png", angle}, 2,
                  "angle '" + angle + "' is not understood; write degrees, as in 90 or -12.5\n");
  }
  for (const std::string colour : {"white", "#12345", "#112233445"}) {
    ExpectFailure({"rotate", "in.png", "out.png", "90", "--background", colour}, 2,
                  "--background '" + colour + "' is not understood; write #RRGGBB or #RRGGBBAA, as in #FF8000\n");
  }
  ExpectFailure({"rotate", "in.png", "out.png"}, 2, "ANGLE is required; 'zvk rotate --help' tells how it is used\n");
  ExpectFailure({"rotate", "in.png", "out.xyz", "90"}, 2, "out.xyz: no known image extension; use one of png, ");
  ExpectFailure({"rotate", "nowhere.png", "out.png", "90"}, 1, "nowhere.png: no such file; check the path\n");
  ExpectFailure({"rotate", "in.png", "missing/out.png", "90"}, 1, "missing/out.png: cannot be written (");
}

TEST_F(RotateCommand, RefusesAResultBeyondTheLargestPicture) {
  WriteImage("wide.png", 32767, 60, [](int, int) { return 0; });
  // 32767 x cos(0.1) + 60 x sin(0.1) is 32767.05, and 60 x cos(0.1) + 32767 x sin(0.1) is 117.19.
  ExpectFailure({"rotate", "wide.png", "out.png", "0.1"}, 1,
                "out.png: 32768 x 118 pixels are too many; a picture has at most 32767 pixels each way\n");
}

}  // namespace
}  // namespace standalone
