#include "standalone/zvk/images/scale_in_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/standalone/zvk/clocked_program.h"
#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

using testing::HasSubstr;

uint32_t Noise(int x, int y) { return (static_cast<uint32_t>(x * 7919 + y * 104729 + 12345) * 2654435761u) >> 8; }

// The program runs with a folder for temporary files of the test's own.
class ScaleInFile : public ZvkProgram {
 protected:
  ScaleInFile() {
    std::filesystem::create_directory(Path("temporary"));
    setenv("TMPDIR", Path("temporary").c_str(), 1);
  }
  ~ScaleInFile() override {
    unsetenv("TMPDIR");
    EXPECT_TRUE(std::filesystem::is_empty(Path("temporary")));
  }

  ProgramResult Scale(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "scale");
    const ProgramResult result = Run(arguments);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "");
    return result;
  }

  // Expects the same file from the run in memory and from the one in files.
  void ExpectSame(const std::vector<std::string> &arguments, const std::vector<std::string> &more = {}) const {
    std::vector<std::string> inMemory = {arguments[0], "memory.png"};
    inMemory.insert(inMemory.end(), arguments.begin() + 1, arguments.end());
    std::vector<std::string> inFile = inMemory;
    inFile[1] = "file.png";
    inFile.push_back("--in-file");
    inFile.insert(inFile.end(), more.begin(), more.end());
    Scale(inMemory);
    Scale(inFile);
    EXPECT_TRUE(Read("memory.png") == Read("file.png"));
  }

  void ExpectFailure(const std::vector<std::string> &arguments, int exitCode, const std::string &message) const {
    Write("out.png", "what was there before");
    const std::set<std::string> names = Names();
    const ProgramResult result = Run(arguments);
    EXPECT_EQ(result.exitCode, exitCode);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "zvk: " + message + "\n");
    EXPECT_EQ(Names(), names);
    EXPECT_EQ(Read("out.png"), "what was there before");
  }

  // A TIFF file made strip by strip, of bands of colour.
  void WriteBands(const std::string &name, int32_t width, int32_t height) const {
    const auto writer = CreateRows(Path(name), width, height);
    std::vector<uint8_t> row(size_t{3} * static_cast<size_t>(width));
    for (int32_t y = 0; y < height; ++y) {
      for (size_t i = 0; i < row.size(); ++i)
        row[i] = static_cast<uint8_t>((i / 90 * 37) ^ static_cast<size_t>(y / 25 * 11));
      writer->WriteRow(row);
    }
    writer->Finish();
  }
};

TEST_F(ScaleInFile, GivesTheBytesOfTheRunInMemory) {
  WriteImage("in.png", 37, 29, Noise);
  for (const char *size : {"37x29", "10x7", "80x90", "100x5", "5x100", "1x1"}) {
    for (const char *filter : {"triangle", "box", "lanczos3", "lanczos8", "mitchell", "poly3", "cubic"}) {
      SCOPED_TRACE(std::string(size) + " " + filter);
      ExpectSame({"in.png", size, "--filter", filter});
    }
  }
}

TEST_F(ScaleInFile, GivesTheBytesOfTheRunInMemoryThroughEveryFormat) {
  WriteImage("in.png", 23, 19, Noise);
  for (const char *format : {"RGB", "RGBA", "RGBX", "ARGB", "XRGB", "BGR", "BGRA", "BGRX", "ABGR", "XBGR", "G", "GA",
                             "AG", "Gray16", "1of3", "2of3", "3of3", "1of4", "4of4"}) {
    SCOPED_TRACE(format);
    ExpectSame({"in.png", "31x11", "--format", format});
  }
}

TEST_F(ScaleInFile, ReadsAndWritesEveryFormatThatHasRows) {
  WriteImage("in.png", 20, 16, Noise);
  WriteImage("in.jpg", 20, 16, Noise);
  WriteImage("in.tif", 20, 16, Noise);
  for (const std::string name : {"in.png", "in.jpg", "in.tif"}) {
    SCOPED_TRACE(name);
    ExpectSame({name, "13x17"});
  }
  for (const std::string extension : {"jpg", "tif"}) {
    Scale({"in.png", "memory." + extension, "13x17"});
    Scale({"in.png", "file." + extension, "13x17", "--in-file"});
    EXPECT_EQ(ReadImage("file." + extension), ReadImage("memory." + extension));
  }
}

// Blocks of 16 MiB: the source takes three, and the image between the steps, of 12288 bytes a row, as well.
TEST_F(ScaleInFile, GivesTheSameBytesThroughBlocksThatMove) {
  WriteBands("in.tif", 3000, 3000);
  ExpectSame({"in.tif", "150x100", "--filter", "triangle"}, {"--block", "1"});
  ExpectSame({"in.tif", "3000x60", "--filter", "box"}, {"--block", "1"});
}

TEST_F(ScaleInFile, FastGivesTheBytesOfTheRunInMemory) {
  WriteImage("in.png", 37, 29, Noise);
  for (const char *size : {"37x29", "10x7", "80x90", "1x1"}) ExpectSame({"in.png", size, "--fast"});
  ExpectSame({"in.png", "50x50", "--fast", "--format", "G"});
}

// In memory the picture would take 192 MB. Beside what the program takes in any case, two blocks of 16 MiB and a row of
// strips do not take half of it, nor does what AddressSanitizer keeps back of the memory that was freed.
TEST_F(ScaleInFile, NeedsMemoryForItsBlocksAndNotForThePicture) {
  WriteBands("in.tif", 4000, 16000);
  const ProgramResult result =
      Scale({"in.tif", "out.tif", "40x160", "--filter", "box", "--in-file", "--block", "16777216"});
  EXPECT_LT(result.peakMemory - Run({"--version"}).peakMemory, 96'000'000);
  EXPECT_EQ(ReadImage("out.tif").size(), 160u);
}

TEST_F(ScaleInFile, GoesBeyondTheLargestPicture) {
  WriteImage("in.png", 1, 1, [](int, int) { return 0xABCDEF; });
  Scale({"in.png", "out.tif", "40000x1", "--in-file"});
  const auto wide = OpenRows(Path("out.tif"));
  EXPECT_EQ(wide->Width(), 40000);
  std::vector<uint8_t> row(120000);
  wide->ReadRow(row);
  EXPECT_EQ(row[0], 0xAB);
  EXPECT_EQ(row[119999], 0xEF);
  Scale({"out.tif", "small.png", "2x1", "--in-file"});
  EXPECT_EQ(ReadImage("small.png"), Colours({{0xABCDEF, 0xABCDEF}}));
}

TEST_F(ScaleInFile, MayReplaceItsInput) {
  WriteImage("in.png", 8, 6, Noise);
  Scale({"in.png", "once.png", "4x"});
  Scale({"in.png", "in.png", "4x", "--in-file"});
  EXPECT_EQ(Read("in.png"), Read("once.png"));
}

// Red and green from noise, and all alphas in turn.
uint32_t ClearNoise(int x, int y) { return Noise(x, y) << 8 | (static_cast<uint32_t>(x * 7 + y * 31) & 255); }

TEST_F(ScaleInFile, GivesTheBytesOfTheRunInMemoryForTransparentPictures) {
  WriteClear("in.png", 23, 19, ClearNoise);
  WriteClear("in.tif", 23, 19, ClearNoise);
  WriteClear("opaque.png", 23, 19, [](int x, int y) { return Noise(x, y) << 8 | 255; });
  for (const char *name : {"in.png", "in.tif", "opaque.png"}) {
    SCOPED_TRACE(name);
    ExpectSame({name, "31x11"});
    ExpectSame({name, "31x11", "--format", "GA"});
  }
}

TEST_F(ScaleInFile, LaysTransparentPixelsOnTheBackgroundAsTheRunInMemoryDoes) {
  WriteClear("in.png", 23, 19, ClearNoise);
  for (const std::string output : {"jpg", "png"}) {
    std::vector<std::string> arguments = {"scale", "in.png", "memory." + output, "23x19", "--background", "#336699"};
    if (output == "png") arguments.insert(arguments.end(), {"--format", "G"});
    const ProgramResult inMemory = Run(arguments);
    arguments[2] = "file." + output;
    arguments.emplace_back("--in-file");
    const ProgramResult inFile = Run(arguments);
    const std::string message = output == "png" ? "in.png: has transparent pixels, which are laid on #336699"
                                                : ".jpg: cannot hold transparency; transparent pixels are laid on "
                                                  "#336699";
    EXPECT_THAT(inMemory.errors, HasSubstr(message));
    EXPECT_THAT(inFile.errors, HasSubstr(message));
    EXPECT_EQ(ReadImage("memory." + output), ReadImage("file." + output));
  }
}

TEST_F(ScaleInFile, TellsOnWishThatNothingIsLeft) {
  WriteImage("in.png", 8, 6, Noise);
  for (const char *format : {"RGB", "Gray16", "CMYK"}) {
    const ProgramResult result = Run({"scale", "in.png", "out.png", "4x4", "--in-file", "--leaks", "--format", format});
    EXPECT_EQ(result.output, "references not given back: none\n");
  }
}

// The line as it moves on by a second so many times, and is taken away.
std::string Seconds(const std::string &what, int count) {
  std::string text;
  for (int second = 1; second <= count; ++second) {
    text += "\r\x1b[K" + what + ", " + std::to_string(second) + ".0 s";
  }
  return text + "\r\x1b[K";
}

TEST_F(ScaleInFile, ShowsTheElapsedTimeOnATerminal) {
  WriteBands("in.tif", 30, 20);
  const ProgramResult result =
      RunProcessOnTerminal(WorkOf({"scale", "in.tif", "out.png", "12x8", "--in-file"}, HurryingClock()));
  EXPECT_EQ(result.exitCode, 0);
  // With each row of the source and of the result, and whenever the image gives time.
  EXPECT_THAT(result.output, testing::StartsWith(Seconds("reading", 20)));
  EXPECT_THAT(result.output, HasSubstr("\r\x1b[K\r\x1b[Kscaling to 12 x 8, 1.0 s\r\x1b[K"));
  EXPECT_THAT(result.output, testing::EndsWith(Seconds("writing", 8)));
}

TEST_F(ScaleInFile, RefusesABlockThatIsNone) {
  WriteImage("in.png", 2, 2, Noise);
  for (const std::string block : {"0", "-5", "many", "16M", "2147483648", "1.5"}) {
    ExpectFailure({"scale", "in.png", "out.png", "1x1", "--in-file", "--block=" + block}, 2,
                  "block '" + block + "' is not understood; write a number of bytes from 1 to 2147483647");
  }
  ExpectFailure({"scale", "in.png", "out.png", "1x1", "--block", "20000000"}, 2,
                "--block requires --in-file; 'zvk scale --help' tells how it is used");
}

TEST_F(ScaleInFile, RefusesAnOutputThatHasNoRows) {
  WriteImage("in.png", 2, 2, Noise);
  for (const std::string name : {"out.gif", "out", "out.bmp"}) {
    ExpectFailure({"scale", "in.png", name, "1x1", "--in-file"}, 2,
                  name + ": no image extension that --in-file can write; use one of png, jpg, jpeg, tif, tiff");
  }
}

TEST_F(ScaleInFile, RefusesAnInputThatHasNoRowsWithAWayOut) {
  WriteImage("in.gif", 2, 2, Noise);
  ExpectFailure({"scale", "in.gif", "out.png", "1x1", "--in-file"}, 1,
                "in.gif: is not an image that can be read row by row; take a PNG, JPEG or TIFF file, or leave out "
                "--in-file");
}

TEST_F(ScaleInFile, RefusesWhatTheRunInMemoryRefuses) {
  WriteImage("in.png", 5, 4, Noise);
  ExpectFailure({"scale", "nowhere.png", "out.png", "2x2", "--in-file"}, 1,
                "nowhere.png: no such file; check the path");
  for (const std::string format : {"CMYK", "Buffer", "Scaling3"}) {
    ExpectFailure({"scale", "in.png", "out.png", "2x2", "--in-file", "--format", format}, 1,
                  "an RGB picture cannot be scaled into " + format +
                      "; take a format of red, green and blue or of gray, such as RGB or G");
  }
  ExpectFailure({"scale", "in.png", "out.png", "100000001x1", "--in-file"}, 1,
                "a result of 100000001 x 1 pixels is too large; a picture has at most 100000000 pixels each way");
  ExpectFailure(
      {"scale", "in.png", "out.jpg", "65501x1", "--in-file"}, 1,
      "out.jpg: a JPEG file holds up to 65500 pixels in each direction; use another format or a smaller image");
  ExpectFailure({"scale", "in.png", "missing/out.png", "2x2", "--in-file"}, 1,
                "missing/out.png: cannot be written (No such file or directory); check that its folder exists and who "
                "may write there");
}

TEST_F(ScaleInFile, RefusesAFileThatIsCutShortAndLeavesNothing) {
  WriteBands("whole.tif", 300, 300);
  const std::string whole = Read("whole.tif");
  WriteImage("in.png", 40, 40, Noise);
  Write("cut.png", Read("in.png").substr(0, Read("in.png").size() / 2));
  ExpectFailure({"scale", "cut.png", "out.png", "2x2", "--in-file"}, 1,
                "cut.png: is a PNG file that is cut short or damaged; get a whole copy of it");
  Write("cut.tif", whole.substr(0, whole.size() / 2));
  ExpectFailure({"scale", "cut.tif", "out.png", "2x2", "--in-file"}, 1,
                "cut.tif: is a TIFF file that is cut short or damaged; get a whole copy of it");
}

TEST_F(ScaleInFile, NamesTheFolderThatHasNoRoom) {
  WriteImage("in.png", 5, 4, Noise);
  const ProgramResult result = Run({"scale", "in.png", "out.png", "90000000x90000000", "--in-file"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.errors, HasSubstr("zvk: no temporary file can be made in " + Path("temporary") + " ("));
  EXPECT_THAT(result.errors, HasSubstr("); make room there, or name another folder by TMPDIR\n"));
}

}  // namespace
}  // namespace standalone
