// What filters make of transparent pixels, from file to file.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

uint32_t Noise(int x, int y) { return (static_cast<uint32_t>(x * 7919 + y * 104729 + 12345) * 2654435761u) >> 8; }
uint32_t ClearNoise(int x, int y) { return Noise(x, y) << 8 | (static_cast<uint32_t>(x * 37 + y * 11) & 255); }

class FilterTransparency : public ZvkProgram {
 protected:
  FilterTransparency() {
    WriteClear("clear.png", 13, 9, ClearNoise);
    WriteImage("opaque.png", 13, 9, Noise);
  }
};

// Identity curves for the colours alone.
TEST_F(FilterTransparency, AFilterOfColoursLeavesAlpha) {
  RunWell({"filter", "GammaFilter", "clear.png", "out.png", "redGamma=1", "greenGamma=1", "blueGamma=1"});
  EXPECT_EQ(ReadClear("out.png"), Table(13, 9, ClearNoise));
}

TEST_F(FilterTransparency, AFilterOfAllChannelsFiltersAlphaToo) {
  // Every sample becomes that of the pixel to its left; the first column is its own.
  RunWell({"filter", "ApplyMatrix", "clear.png", "out.png", "MatrixDimension=3", "matrix=0,0,0,1,0,0,0,0,0"});
  const Colours result = ReadClear("out.png");
  for (int y = 1; y < 8; ++y) {
    for (int x = 1; x < 12; ++x) {
      EXPECT_EQ(result[static_cast<size_t>(y)][static_cast<size_t>(x)], ClearNoise(x - 1, y)) << x << ", " << y;
    }
  }
}

TEST_F(FilterTransparency, AnImageThatIsOnlyReadHasAlphaIfTheInputHasIt) {
  // Sharpened by nothing.
  const std::vector<std::string> more = {"Amount=0", "Threshold=255"};
  RunWell({"filter", "UnsharpFilter", "clear.png", "out.png", "origpixels=opaque.png", more[0], more[1]});
  RunWell({"filter", "UnsharpFilter", "clear.png", "out.png", "origpixels=clear.png", more[0], more[1]});
  EXPECT_EQ(ReadClear("out.png"), Table(13, 9, ClearNoise));

  const ProgramResult result =
      Run({"filter", "UnsharpFilter", "opaque.png", "out.png", "origpixels=clear.png", more[0], more[1]});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "zvk: clear.png: has transparent pixels, which are laid on #FFFFFF\n");
  EXPECT_EQ(ReadImage("out.png").size(), 9u);
}

TEST_F(FilterTransparency, AnOpaqueFileStaysOpaque) {
  for (const char *filter : {"NeonFilter", "SolarizeFilter"}) {
    RunWell({"filter", filter, "opaque.png", "out.png"});
    EXPECT_EQ(ReadImage("out.png").size(), 9u) << filter;
  }
}

TEST_F(FilterTransparency, TransparentPixelsAreLaidOnTheBackgroundWhereTheFileHasNoAlpha) {
  const ProgramResult result = Run({"filter", "GammaFilter", "clear.png", "out.bmp", "redGamma=1", "greenGamma=1",
                                    "blueGamma=1", "--background", "#204060"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "zvk: out.bmp: cannot hold transparency; transparent pixels are laid on #204060\n");
  EXPECT_EQ(ReadImage("out.bmp"), Table(13, 9, [](int x, int y) {
              const uint32_t colour = ClearNoise(x, y), alpha = colour & 255;
              uint32_t result = 0;
              for (const int shift : {16, 8, 0}) {
                result |= ((colour >> (shift + 8) & 255) * alpha + (0x204060u >> shift & 255) * (255 - alpha)) / 255
                          << shift;
              }
              return result;
            }));
}

}  // namespace
}  // namespace standalone
