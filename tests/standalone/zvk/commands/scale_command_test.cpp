#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/standalone/zvk/clocked_program.h"
#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// Colours without a pattern, the darkest and the brightest among them.
uint32_t Noise(int x, int y) {
  if (x == 0 && y == 0) return 0x000000;
  if (x == 1 && y == 0) return 0xFFFFFF;
  return (static_cast<uint32_t>(x * 7919 + y * 104729 + 12345) * 2654435761u) >> 8;
}

uint32_t GrayOf(uint32_t colour) {
  const uint32_t red = colour >> 16;
  const uint32_t green = colour >> 8 & 255;
  const uint32_t blue = colour & 255;
  const auto gray = static_cast<uint32_t>((blue * 0.11 + (green * 0.59 + red * 0.3)) + 0.5);
  return gray << 16 | gray << 8 | gray;
}

class ScaleCommand : public ZvkProgram {
 protected:
  // Expects that the work went well without a word.
  void Scale(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "scale");
    const ProgramResult result = Run(arguments);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "");
  }

  // Runs what must fail on "in.png" and "out.png", and expects one line of error, and all files as they were.
  ProgramResult Fail(const std::vector<std::string> &arguments) const {
    Write("out.png", "what was there before");
    const std::set<std::string> names = Names();
    const ProgramResult result = Run(arguments);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors.rfind("zvk: ", 0), 0u) << result.errors;
    EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << result.errors;
    EXPECT_EQ(Names(), names);
    EXPECT_EQ(Read("out.png"), "what was there before");
    return result;
  }

  void ExpectFailure(const std::vector<std::string> &arguments, int exitCode, const std::string &message) const {
    const ProgramResult result = Fail(arguments);
    EXPECT_EQ(result.exitCode, exitCode);
    EXPECT_EQ(result.errors, "zvk: " + message + "\n");
  }

  void WriteNoise(const std::string &name = "in.png") const { WriteImage(name, 5, 4, Noise); }
};

TEST_F(ScaleCommand, TellsAllItsArgumentsChoicesAndDefaults) {
  const ProgramResult result = Run({"scale", "--help"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_THAT(
      result.output,
      AllOf(HasSubstr("scale [OPTIONS] IN OUT SIZE"), HasSubstr("WIDTHxHEIGHT"), HasSubstr("--filter"),
            HasSubstr("[default: lanczos3]"), HasSubstr("--fast"), HasSubstr("--threads"), HasSubstr("--format"),
            HasSubstr("[default: RGB, or RGBA if IN has"), HasSubstr("--background"), HasSubstr("[default: #FFFFFF]"),
            HasSubstr("--in-file"), HasSubstr("--block"), HasSubstr("[default: 67108864]"), HasSubstr("--plugin"),
            HasSubstr("--leaks"), HasSubstr("Examples:\n  zvk scale "), HasSubstr("Exit codes:")));
  EXPECT_THAT(result.output,
              AllOf(HasSubstr("triangle"), HasSubstr("box"), HasSubstr("lanczos3"), HasSubstr("lanczos8"),
                    HasSubstr("mitchell"), HasSubstr("poly3"), HasSubstr("cubic")));
  EXPECT_THAT(result.output, HasSubstr("png, jpg, jpeg, gif, webp, tif, tiff, bmp"));
}

TEST_F(ScaleCommand, GivesTheSamePixelsForTheSameSize) {
  WriteNoise();
  Scale({"in.png", "out.png", "5x4"});
  EXPECT_EQ(ReadImage("out.png"), Table(5, 4, Noise));
}

// Shrinking by two the box takes the mean of two and two pixels, rounded after each of the two steps.
TEST_F(ScaleCommand, ScalesToTheSizeByTheFilter) {
  WriteImage("in.png", 4, 2, [](int x, int y) { return x * 0x0A0402 + y * 0x303030; });
  Scale({"in.png", "out.png", "2x1", "--filter", "box"});
  // Rows of red: 0 10 20 30 and 48 58 68 78, means 5 25 and 53 73, then 29 49. Green: 0 4 8 12 and 48 52 56 60,
  // means 2 10 and 50 58, then 26 34. Blue: 0 2 4 6 and 48 50 52 54, means 1 5 and 49 53, then 25 29.
  EXPECT_EQ(ReadImage("out.png"), Colours({{29u << 16 | 26 << 8 | 25, 49u << 16 | 34 << 8 | 29}}));
}

TEST_F(ScaleCommand, TakesEveryFilterInAnyCase) {
  WriteImage("in.png", 3, 3, [](int, int) { return 0x4080C0; });
  for (const char *filter : {"triangle", "Box", "LANCZOS3", "lanczos8", "mitchell", "poly3", "cubic"}) {
    Scale({"in.png", "out.png", "7x2", "--filter", filter});
    EXPECT_EQ(ReadImage("out.png"), Table(7, 2, [](int, int) { return 0x4080C0; })) << filter;
  }
}

TEST_F(ScaleCommand, UsesLanczos3UnlessToldOtherwise) {
  WriteNoise();
  Scale({"in.png", "default.png", "9x9"});
  Scale({"in.png", "lanczos3.png", "9x9", "--filter", "lanczos3"});
  Scale({"in.png", "box.png", "9x9", "--filter", "box"});
  EXPECT_EQ(ReadImage("default.png"), ReadImage("lanczos3.png"));
  EXPECT_NE(ReadImage("default.png"), ReadImage("box.png"));
}

TEST_F(ScaleCommand, FastTakesThePixelToTheLeftAndAbove) {
  WriteNoise();
  Scale({"in.png", "out.png", "3x3", "--fast"});
  // Steps of 5 / 3 and 4 / 3.
  EXPECT_EQ(ReadImage("out.png"), Table(3, 3, [](int x, int y) { return Noise(x * 5 / 3, y * 4 / 3); }));
  Scale({"in.png", "out.png", "15x8", "--fast", "--format", "BGRA"});
  EXPECT_EQ(ReadImage("out.png"), Table(15, 8, [](int x, int y) { return Noise(x / 3, y / 2); }));
}

TEST_F(ScaleCommand, FastHasAGrayOfItsOwn) {
  WriteImage("in.png", 1, 1, [](int, int) { return 100 << 16 | 200 << 8 | 51; });
  Scale({"in.png", "out.png", "1x1", "--fast", "--format", "G"});
  // (77 x 100 + 151 x 200 + 28 x 51) / 256 = 153.6, rounded down; without --fast 0.3, 0.59 and 0.11 make 153.61.
  EXPECT_EQ(ReadImage("out.png"), Colours({{0x999999}}));
  Scale({"in.png", "out.png", "1x1", "--format", "G"});
  EXPECT_EQ(ReadImage("out.png"), Colours({{0x9A9A9A}}));
}

TEST_F(ScaleCommand, ThreadsDropFractionsBetweenTheTwoSteps) {
  // Means of 10 and 13 in each row: 11.5, rounded by one thread and cut by several. The rows stay as they are.
  WriteImage("in.png", 2, 50, [](int x, int) { return x == 0 ? 0x0A0A0A : 0x0D0D0D; });
  Scale({"in.png", "out.png", "1x50", "--filter", "box"});
  EXPECT_EQ(ReadImage("out.png"), Table(1, 50, [](int, int) { return 0x0C0C0C; }));
  for (const char *threads : {"0", "1", "2", "32"}) {
    Scale({"in.png", "out.png", "1x50", "--filter", "box", "--threads", threads});
    EXPECT_EQ(ReadImage("out.png"), Table(1, 50, [](int, int) { return 0x0B0B0B; })) << threads;
  }
}

TEST_F(ScaleCommand, AnyNumberOfThreadsGivesTheSameFile) {
  WriteImage("in.png", 70, 90, Noise);
  Scale({"in.png", "one.png", "100x60", "--threads", "1"});
  for (const char *threads : {"0", "3", "32"}) {
    Scale({"in.png", "out.png", "100x60", "--threads", threads});
    EXPECT_EQ(ReadImage("out.png"), ReadImage("one.png")) << threads;
  }
}

TEST_F(ScaleCommand, KeepsTheProportionsForAMissingSide) {
  WriteNoise();
  Scale({"in.png", "wide.png", "10x"});
  Scale({"in.png", "high.png", "x2"});
  EXPECT_EQ(ReadImage("wide.png").size(), 8u);
  EXPECT_EQ(ReadImage("wide.png")[0].size(), 10u);
  EXPECT_EQ(ReadImage("high.png").size(), 2u);
  EXPECT_EQ(ReadImage("high.png")[0].size(), 3u);
}

TEST_F(ScaleCommand, GivesTheColoursThroughEveryColourFormat) {
  WriteNoise();
  for (const char *format :
       {"RGB", "RGBA", "RGBX", "ARGB", "XRGB", "BGR", "BGRA", "BGRX", "ABGR", "XBGR", "rgb", "bGrA"}) {
    Scale({"in.png", "out.png", "5x4", "--format", format});
    EXPECT_EQ(ReadImage("out.png"), Table(5, 4, Noise)) << format;
  }
}

TEST_F(ScaleCommand, GivesGrayThroughEveryGrayFormat) {
  WriteNoise();
  const Colours expected = Table(5, 4, [](int x, int y) { return GrayOf(Noise(x, y)); });
  for (const char *format :
       {"G", "GA", "AG", "Gray16", "1of3", "2of3", "3of3", "1of4", "2of4", "3of4", "4of4", "RofRGB", "AofABGR"}) {
    Scale({"in.png", "out.png", "5x4", "--format", format});
    EXPECT_EQ(ReadImage("out.png"), expected) << format;
  }
}

TEST_F(ScaleCommand, ReadsAndWritesEveryImageFormat) {
  const auto colour = [](int x, int) { return x < 2 ? 0xFF0000u : 0x0000FFu; };
  for (const char *extension : {"png", "gif", "webp", "tif", "tiff", "bmp", "PNG"}) {
    const std::string name = std::string("in.") + extension;
    WriteImage(name, 4, 3, colour);
    Scale({name, "out.png", "4x3"});
    EXPECT_EQ(ReadImage("out.png"), Table(4, 3, colour)) << extension;
    Scale({"out.png", std::string("out.") + extension, "4x3"});
    EXPECT_EQ(ReadImage(std::string("out.") + extension), Table(4, 3, colour)) << extension;
  }
  // JPEG keeps gray of one level.
  for (const char *extension : {"jpg", "jpeg"}) {
    const std::string name = std::string("gray.") + extension;
    WriteImage(name, 8, 8, [](int, int) { return 0x808080; });
    Scale({name, std::string("out.") + extension, "16x8"});
    EXPECT_EQ(ReadImage(std::string("out.") + extension), Table(16, 8, [](int, int) { return 0x808080; }));
  }
}

TEST_F(ScaleCommand, ScalesTheExamplesWithoutAWord) {
  for (const char *name : {"astronaut.png", "coffee.png", "moon.png", "rocket.jpg", "hubble_deep_field.jpg"}) {
    Scale({std::string(PICTUREZVK_EXAMPLES) + "/" + name, "out.png", "60x"});
    EXPECT_EQ(ReadImage("out.png")[0].size(), 60u);
  }
}

TEST_F(ScaleCommand, MayReplaceItsInput) {
  WriteNoise();
  chmod(Path("in.png").c_str(), 0640);
  Scale({"in.png", "in.png", "1x1", "--filter", "box", "--format", "G"});
  EXPECT_EQ(ReadImage("in.png").size(), 1u);
  EXPECT_EQ(Names(), std::set<std::string>{"in.png"});
  struct stat status = {};
  ASSERT_EQ(stat(Path("in.png").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640u);
}

TEST_F(ScaleCommand, NeverMakesAnOpaqueFileTransparent) {
  WriteNoise();
  for (const char *format : {"RGBA", "ARGB", "BGRA", "ABGR", "GA", "AG"}) {
    Scale({"in.png", "out.png", "7x7", "--format", format});
    EXPECT_FALSE(LoadImageFile(Path("out.png")).hasTransparency) << format;
  }
}

TEST_F(ScaleCommand, TellsOnWishThatNothingIsLeft) {
  WriteNoise();
  for (const char *format : {"RGB", "GA"}) {
    const ProgramResult result = Run({"scale", "in.png", "out.png", "8x3", "--format", format, "--leaks"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "references not given back: none\n");
    EXPECT_EQ(result.errors, "");
  }
  const ProgramResult failed = Run({"scale", "in.png", "out.png", "8x3", "--format", "CMYK", "--leaks"});
  EXPECT_EQ(failed.exitCode, 1);
  EXPECT_EQ(failed.output, "references not given back: none\n");
}

class WatchedScaleCommand : public ScaleCommand {
 protected:
  WatchedScaleCommand() { WriteNoise(); }
  const std::vector<std::string> arguments_ = {"scale", "in.png", "out.png", "9x9"};
};

TEST_F(WatchedScaleCommand, ShowsTheElapsedTimeOnATerminal) {
  const ProgramResult result = RunProcessOnTerminal(WorkOf(arguments_, HurryingClock()));
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.output, testing::StartsWith("\r\x1b[Kscaling to 9 x 9, 1.0 s\r\x1b[K"));
  EXPECT_THAT(result.output, testing::EndsWith("\r\x1b[K"));
}

TEST_F(WatchedScaleCommand, ShowsTheElapsedTimeWhileAThreadWorks) {
  std::vector<std::string> arguments = arguments_;
  arguments.insert(arguments.end(), {"--threads", "1"});
  const ProgramResult result = RunProcessOnTerminal(WorkOf(arguments, HurryingClock()));
  EXPECT_EQ(result.exitCode, 0);
  // The image is given time at its start only, and the host while the thread works.
  EXPECT_THAT(result.output,
              testing::StartsWith("\r\x1b[Kscaling to 9 x 9, 1.0 s\r\x1b[Kscaling to 9 x 9, 2.0 s\r\x1b[K"));
}

TEST_F(WatchedScaleCommand, ShowsNothingWhereThereIsNoTerminal) {
  const ProgramResult result = RunProcess(WorkOf(arguments_, HurryingClock()));
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "");
}

TEST_F(WatchedScaleCommand, ShowsNothingOfShortWorkOnATerminal) {
  const ProgramResult result = RunProcessOnTerminal(WorkOf(arguments_, StandingClock()));
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output, "");
}

TEST_F(ScaleCommand, NamesAFileThatIsNotThere) {
  ExpectFailure({"scale", "nowhere.png", "out.png", "2x2"}, 1, "nowhere.png: no such file; check the path");
}

TEST_F(ScaleCommand, NamesAFileThatIsNoImage) {
  Write("in.png", "not an image at all");
  const ProgramResult result = Fail({"scale", "in.png", "out.png", "2x2"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.errors, HasSubstr("in.png: is not an image that can be read; known are PNG, "));
}

TEST_F(ScaleCommand, NamesAnInputThatIsAFolder) {
  ExpectFailure({"scale", ".", "out.png", "2x2"}, 1, ".: is a folder; name an image file in it");
}

TEST_F(ScaleCommand, RefusesAFilterThatThereIsNot) {
  WriteNoise();
  ExpectFailure({"scale", "in.png", "out.png", "2x2", "--filter", "bicubic"}, 2,
                "unknown filter 'bicubic'; choose one of Triangle, Box, Lanczos3, Lanczos8, Mitchell, Poly3, Cubic");
}

TEST_F(ScaleCommand, RefusesAFormatThatThereIsNot) {
  WriteNoise();
  for (const std::string format : {"RBG", "Unknown", "1"}) {
    const ProgramResult result = Fail({"scale", "in.png", "out.png", "2x2", "--format", format});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.errors, testing::StartsWith("zvk: unknown format '" + format + "'; choose one of RGB, RGBA, "));
  }
}

TEST_F(ScaleCommand, RefusesNumbersOfThreadsThatThereAreNot) {
  WriteNoise();
  for (const std::string threads : {"-1", "33", "many", "1.5"}) {
    ExpectFailure({"scale", "in.png", "out.png", "2x2", "--threads=" + threads}, 2,
                  "threads '" + threads + "' is not understood; write a number from 0 to 32");
  }
}

TEST_F(ScaleCommand, RefusesWhatDoesNotGoTogether) {
  WriteNoise();
  for (const auto &[options, problem] : std::vector<std::pair<std::vector<std::string>, std::string>>{
           {{"--fast", "--filter", "box"}, "--filter excludes --fast"},
           {{"--fast", "--threads", "2"}, "--fast excludes --threads"},
           {{"--in-file", "--threads", "2"}, "--threads excludes --in-file"}}) {
    std::vector<std::string> arguments = {"scale", "in.png", "out.png", "2x2"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    ExpectFailure(arguments, 2, problem + "; 'zvk scale --help' tells how it is used");
  }
}

TEST_F(ScaleCommand, RefusesWideSamplesForFast) {
  WriteNoise();
  ExpectFailure({"scale", "in.png", "out.png", "2x2", "--fast", "--format", "Gray16"}, 1,
                "--fast cannot scale into Gray16; take 8 bits, such as G, or leave it out");
}

TEST_F(ScaleCommand, RefusesASizeThatIsNone) {
  WriteNoise();
  for (const std::string size : {"0x2", "2x0", "two", "x", "2x2x2", "99999999999x2"}) {
    const ProgramResult result = Fail({"scale", "in.png", "out.png", size});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.errors, testing::StartsWith("zvk: size '" + size + "' "));
  }
}

TEST_F(ScaleCommand, RefusesAResultBeyondTheLargestPicture) {
  WriteNoise();
  const std::string end = " pixels is too large; a picture has at most 32767 pixels each way";
  ExpectFailure({"scale", "in.png", "out.png", "32768x1"}, 1, "a result of 32768 x 1" + end);
  ExpectFailure({"scale", "in.png", "out.png", "1x32768"}, 1, "a result of 1 x 32768" + end);
  ExpectFailure({"scale", "in.png", "out.png", "x32767"}, 1, "a result of 40959 x 32767" + end);
}

TEST_F(ScaleCommand, MakesAResultOfTheLargestSides) {
  WriteImage("in.png", 1, 1, [](int, int) { return 0xABCDEF; });
  Scale({"in.png", "out.png", "32767x1"});
  EXPECT_EQ(ReadImage("out.png"), Table(32767, 1, [](int, int) { return 0xABCDEF; }));
}

// 30000 RGB pixels are a row of 90048 bytes.
TEST_F(ScaleCommand, RefusesAResultBeyondTheMemoryOfAnImage) {
  WriteNoise();
  ExpectFailure({"scale", "in.png", "out.png", "30000x30000"}, 1,
                "a result of 30000 x 30000 pixels takes 2701440000 bytes, more than an image can have; take a smaller "
                "size, or add --in-file");
}

TEST_F(ScaleCommand, RefusesAnIntermediateResultBeyondTheMemoryOfAnImage) {
  WriteImage("in.png", 1, 30000, [](int, int) { return 0; });
  ExpectFailure({"scale", "in.png", "out.png", "20000x1"}, 1,
                "there is not enough memory for the 20000 x 30000 pixels between the two steps of scaling; take a "
                "smaller width, or add --in-file");
}

TEST_F(ScaleCommand, TellsWhichFormatsColoursCannotBeScaledInto) {
  WriteNoise();
  for (const std::string format :
       {"CMYK", "CMYKA", "ACMYK", "CMYKX", "XCMYK", "KYMC", "KYMCA", "AKYMC", "KYMCX", "XKYMC", "Buffer", "Scaling3"}) {
    ExpectFailure({"scale", "in.png", "out.png", "2x2", "--format", format}, 1,
                  "an RGB picture cannot be scaled into " + format +
                      "; take a format of red, green and blue or of gray, such as RGB or G");
  }
}

TEST_F(ScaleCommand, NamesAnOutputThatCannotBeWritten) {
  WriteNoise();
  const ProgramResult noFolder = Fail({"scale", "in.png", "missing/out.png", "2x2"});
  EXPECT_EQ(noFolder.exitCode, 1);
  EXPECT_THAT(noFolder.errors, HasSubstr("missing/out.png: cannot be written ("));

  std::filesystem::create_directory(Path("folder.png"));
  ExpectFailure({"scale", "in.png", "folder.png", "2x2"}, 1, "folder.png: is a folder; name a file in it");
}

TEST_F(ScaleCommand, RefusesAnOutputOfAnUnknownExtension) {
  WriteNoise();
  for (const std::string name : {"out", "out.xyz", "out.", ".png"}) {
    ExpectFailure({"scale", "in.png", name, "2x2"}, 2,
                  name + ": no known image extension; use one of png, jpg, jpeg, gif, webp, tif, tiff, bmp");
    EXPECT_FALSE(Names().contains(name));
  }
}

TEST_F(ScaleCommand, NamesAnOutputFormatThatCannotHoldTheResult) {
  WriteImage("in.png", 1, 1, [](int, int) { return 0; });
  ExpectFailure({"scale", "in.png", "out.webp", "16384x1"}, 1,
                "out.webp: a WebP file holds up to 16383 pixels in each direction; use another format or a smaller "
                "image");
  EXPECT_FALSE(Names().contains("out.webp"));
}

}  // namespace
}  // namespace standalone
