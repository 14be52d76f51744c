// The instructions that the plug-in uses change no byte of what the program makes.

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

class CpuLevels : public ZvkProgram {
 protected:
  CpuLevels() {
    const auto noise = [](int x, int y) {
      const auto bits = static_cast<uint32_t>(x * 73856093 ^ y * 19349663) * 2654435761u;
      return bits >> 8 ^ static_cast<uint32_t>(x * 3 << 16 | y * 2 << 8);
    };
    WriteImage("in.png", 233, 151, [&](int x, int y) { return noise(x, y) & 0xFFFFFF; });
    WriteClear("clear.png", 131, 77, [&](int x, int y) { return noise(x, y) * 251; });
  }

  // The file that a command makes at a level; the machine's own for "".
  std::string Made(const std::string &level, const std::vector<std::string> &arguments) const {
    std::filesystem::remove(Path("out.png"));
    const ProgramResult result = RunProcess([&]() -> int {
      unsetenv("PICTUREZVK_CPU");
      if (!level.empty()) setenv("PICTUREZVK_CPU", level.c_str(), 1);
      Become(PICTUREZVK_ZVK, arguments);
    });
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "");
    return Read("out.png");
  }

  void ExpectTheSameAtEveryLevel(const std::vector<std::string> &arguments) const {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const std::string expected = Made("baseline", arguments);
    EXPECT_FALSE(expected.empty());
    for (const char *level : {"avx2", "avx512", ""}) {
      EXPECT_TRUE(Made(level, arguments) == expected) << level;
    }
  }
};

TEST_F(CpuLevels, ScaleTheSame) {
  for (const char *filter : {"lanczos3", "box", "cubic"}) {
    ExpectTheSameAtEveryLevel({"scale", "in.png", "out.png", "97x61", "--filter", filter});
    ExpectTheSameAtEveryLevel({"scale", "clear.png", "out.png", "200x190", "--filter", filter});
  }
}

TEST_F(CpuLevels, FilterTheSame) {
  ExpectTheSameAtEveryLevel({"filter", "BoxBlurFilter", "in.png", "out.png", "Radius=3"});
  ExpectTheSameAtEveryLevel({"filter", "BoxBlurFractionalFilter", "clear.png", "out.png", "Radius=0.7"});
  ExpectTheSameAtEveryLevel({"filter", "GammaFilter", "in.png", "out.png", "gamma=1.7"});
  ExpectTheSameAtEveryLevel({"filter", "NeonFilter", "clear.png", "out.png"});
  ExpectTheSameAtEveryLevel({"filter", "OilFilter", "in.png", "out.png", "levels=24", "range=2"});
  ExpectTheSameAtEveryLevel({"filter", "EngraveFilter", "in.png", "out.png", "level=2"});
  ExpectTheSameAtEveryLevel(
      {"filter", "DitherFilter", "clear.png", "out.png", "matrix=DitherOrdered8x8Matrix", "levels=4"});
  ExpectTheSameAtEveryLevel(
      {"filter", "ApplyMatrix", "in.png", "out.png", "MatrixDimension=3", "matrix=-2,-1,0,-1,1,1,0,1,2"});
}

TEST_F(CpuLevels, TurnTheSame) {
  ExpectTheSameAtEveryLevel({"rotate", "in.png", "out.png", "90"});
  ExpectTheSameAtEveryLevel({"rotate", "in.png", "out.png", "12.5"});
  ExpectTheSameAtEveryLevel({"rotate", "clear.png", "out.png", "180"});
}

}  // namespace
}  // namespace standalone
