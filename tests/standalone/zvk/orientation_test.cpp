// The orientation of pictures in all commands that read image files. A picture that is stored in some orientation must
// give the very file that the upright one gives, and with --no-orient the one that its stored pixels give.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tiffio.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/standalone/files/exif_testing.h"
#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr int kWidth = 16;
constexpr int kHeight = 8;

// The corners are of colours of their own, and so is all the rest.
uint32_t Corners(int x, int y) {
  const uint32_t noise = (static_cast<uint32_t>(x * 7919 + y * 104729 + 12345) * 2654435761u) >> 8;
  const uint32_t corner = x < kWidth / 2 ? (y < kHeight / 2 ? 0xC00000 : 0x00C000) : (y < kHeight / 2 ? 0x0000C0 : 0);
  return (noise & 0x3F3F3F) + corner;
}

uint32_t ClearCorners(int x, int y) { return Corners(x, y) << 8 | (static_cast<uint32_t>(x * 37 + y * 11) & 255); }

class OrientedFiles : public ZvkProgram {
 protected:
  OrientedFiles() {
    for (const char *folder : {"upright", "stored"}) std::filesystem::create_directory(Path(folder));
    WriteImage("base.png", 20, 20, [](int x, int y) { return static_cast<uint32_t>(x * 9 << 16 | y * 11); });
    WriteImage("plain.jpg", kWidth, kHeight, Corners);
    stored_ = ReadImage("plain.jpg");
    EXPECT_EQ(stored_.size(), size_t{kHeight});
  }

  void WriteColours(const std::string &name, const Colours &colours) const {
    WriteImage(name, static_cast<int>(colours[0].size()), static_cast<int>(colours.size()),
               [&](int x, int y) { return colours[static_cast<size_t>(y)][static_cast<size_t>(x)]; });
  }

  // in.jpg, and what it is to give: upright/in.png and stored/in.png.
  void WriteOriented(int orientation) const {
    Write("in.jpg", JpegWithExif(Read("plain.jpg"), Exif(static_cast<uint32_t>(orientation), orientation % 2 == 0)));
    WriteColours("upright/in.png", Seen(stored_, orientation));
    WriteColours("stored/in.png", stored_);
  }

  // A TIFF file of the colours, with the channels of a pixel side by side or apart.
  void WriteTiff(const std::string &name, const Colours &colours, int orientation, uint16_t planes) const {
    TIFF *const tiff = TIFFOpen(Path(name).c_str(), "w");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(colours[0].size()));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<uint32_t>(colours.size()));
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 3);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, planes);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, orientation);
    for (int channel = 0; channel < (planes == PLANARCONFIG_CONTIG ? 1 : 3); ++channel) {
      for (uint32_t y = 0; y < colours.size(); ++y) {
        std::vector<uint8_t> row;
        for (const uint32_t colour : colours[y]) {
          for (const int shift : {16, 8, 0}) {
            if (planes == PLANARCONFIG_CONTIG || shift == 16 - 8 * channel) {
              row.push_back(static_cast<uint8_t>(colour >> shift));
            }
          }
        }
        TIFFWriteScanline(tiff, row.data(), y, static_cast<uint16_t>(channel));
      }
    }
    TIFFClose(tiff);
  }

  void SetOrientationOfTiff(const std::string &name, int orientation) const {
    TIFF *const tiff = TIFFOpen(Path(name).c_str(), "r+");
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, orientation);
    TIFFRewriteDirectory(tiff);
    TIFFClose(tiff);
  }

  Colours stored_;  // the pixels of the JPEG file
};

// A command line with IN and OUT to be filled in.
struct Command {
  const char *name;
  std::vector<std::string> words;
};

std::ostream &operator<<(std::ostream &stream, const Command &command) { return stream << command.name; }

class OrientationOf : public OrientedFiles, public testing::WithParamInterface<Command> {
 protected:
  // The file that the command makes of the input.
  std::string Made(const std::string &input, bool keepsOrientation) const {
    std::vector<std::string> words = GetParam().words;
    std::ranges::replace(words, "IN", input);
    std::ranges::replace(words, "OUT", "out.png");
    std::ranges::replace(words, "IMAGE=IN", "origpixels=" + input);
    if (keepsOrientation) words.insert(words.begin() + 1, "--no-orient");
    RunWell(words);
    return Read("out.png");
  }
};

TEST_P(OrientationOf, IsHonoured) {
  for (int orientation = 1; orientation <= 8; ++orientation) {
    SCOPED_TRACE(orientation);
    WriteOriented(orientation);
    EXPECT_TRUE(Made("in.jpg", false) == Made("upright/in.png", false));
  }
}

TEST_P(OrientationOf, IsLeftOnWish) {
  const std::string expected = (WriteOriented(1), Made("stored/in.png", false));
  for (int orientation = 1; orientation <= 8; ++orientation) {
    SCOPED_TRACE(orientation);
    WriteOriented(orientation);
    EXPECT_TRUE(Made("in.jpg", true) == expected);
  }
}

INSTANTIATE_TEST_SUITE_P(
    AllCommands, OrientationOf,
    testing::Values(
        Command{"Scale", {"scale", "IN", "OUT", "11x"}},
        Command{"ScaleWithAlpha", {"scale", "IN", "OUT", "11x", "--format", "RGBA"}},
        Command{"ScaleWithoutAlpha", {"scale", "IN", "OUT", "x9", "--format", "G"}},
        Command{"ScaleInFile", {"scale", "IN", "OUT", "11x", "--in-file"}},
        Command{"ScaleInFileToGray", {"scale", "IN", "OUT", "x9", "--in-file", "--format", "GA"}},
        Command{"Filter", {"filter", "ApplyMatrix", "IN", "OUT", "MatrixDimension=3", "matrix=1,-2,3,0,4,-1,-2,1,-3"}},
        Command{"FilterWithImage", {"filter", "UnsharpFilter", "IN", "OUT", "IMAGE=IN", "Amount=0.3", "Threshold=4"}},
        Command{"Rotate", {"rotate", "IN", "OUT", "30"}},
        Command{"RotateWithClearCorners", {"rotate", "IN", "OUT", "30", "--background", "#FFFFFF00"}},
        Command{"Mirror", {"mirror", "IN", "OUT", "h"}},
        Command{"CombineBase", {"combine", "IN", "base.png", "OUT", "--at", "-3,2"}},
        Command{"CombineImage", {"combine", "base.png", "IN", "OUT", "--at", "3,2"}},
        Command{"CombineMask", {"combine", "base.png", "IN", "OUT", "--mask", "IN"}},
        Command{"CombineColour", {"combine", "base.png", "IN", "OUT", "--cover", "#408010"}},
        Command{"Sheet", {"sheet", "OUT", "IN", "base.png", "--size", "32"}},
        Command{"Run", {"run", "-e", "PictureZVK(Picture.Open(arg[1])):CopyPicture():Save(arg[2])", "IN", "OUT"}},
        Command{"RunWithFolderItem", {"run", "-e", "Picture.Open(FolderItem(arg[1])):Save(arg[2])", "IN", "OUT"}}),
    [](const testing::TestParamInfo<Command> &info) { return std::string(info.param.name); });

class Orientation : public OrientedFiles {
 protected:
  // The pixels as the program has them, in memory and through files.
  Colours Loaded(const std::string &name, const std::vector<std::string> &options = {}) const {
    std::vector<std::string> words = {"mirror", name, "mirrored.png", "h"};
    words.insert(words.end(), options.begin(), options.end());
    RunWell(words);
    Colours colours = ReadImage("mirrored.png");
    for (std::vector<uint32_t> &row : colours) std::ranges::reverse(row);
    return colours;
  }
  Colours LoadedInFile(const std::string &name, std::vector<std::string> options = {}) const {
    const Colours inMemory = Loaded(name, options);
    const std::string size = std::to_string(inMemory[0].size()) + "x";
    options.insert(options.begin(), {"scale", name, "scaled.png", size, "--in-file", "--fast"});
    RunWell(options);
    return ReadImage("scaled.png");
  }
};

TEST_F(Orientation, OfAJpegFileMovesPixelsAndChangesNone) {
  for (int orientation = 1; orientation <= 8; ++orientation) {
    SCOPED_TRACE(orientation);
    WriteOriented(orientation);
    EXPECT_EQ(Loaded("in.jpg"), Seen(stored_, orientation));
    EXPECT_EQ(Loaded("in.jpg", {"--no-orient"}), stored_);
    EXPECT_EQ(LoadedInFile("in.jpg"), Seen(stored_, orientation));
    EXPECT_EQ(LoadedInFile("in.jpg", {"--no-orient"}), stored_);
  }
}

// Planes of colours are read whole by the GD library, which turns such files itself as far as it can.
TEST_F(Orientation, OfATiffFileIsThatOfItsField) {
  const Colours colours = Table(kWidth, kHeight, Corners);
  for (int orientation = 1; orientation <= 8; ++orientation) {
    SCOPED_TRACE(orientation);
    WriteTiff("contiguous.tif", colours, orientation, PLANARCONFIG_CONTIG);
    WriteTiff("planes.tif", colours, orientation, PLANARCONFIG_SEPARATE);
    for (const std::string name : {"contiguous.tif", "planes.tif"}) {
      EXPECT_EQ(Loaded(name), Seen(colours, orientation)) << name;
      EXPECT_EQ(Loaded(name, {"--no-orient"}), colours) << name;
    }
    EXPECT_EQ(LoadedInFile("contiguous.tif"), Seen(colours, orientation));
    EXPECT_EQ(LoadedInFile("contiguous.tif", {"--no-orient"}), colours);
  }
}

TEST_F(Orientation, OfPngAndWebpFilesIsThatOfTheirExifData) {
  const Colours colours = Table(kWidth, kHeight, Corners);
  WriteColours("plain.png", colours);
  WriteColours("plain.webp", colours);
  for (int orientation = 1; orientation <= 8; ++orientation) {
    SCOPED_TRACE(orientation);
    const std::string exif = Exif(static_cast<uint32_t>(orientation));
    Write("in.png", PngWith(Read("plain.png"), "eXIf", exif));
    EXPECT_EQ(Loaded("in.png"), Seen(colours, orientation));
    EXPECT_EQ(LoadedInFile("in.png"), Seen(colours, orientation));
    Write("in.webp", WebpWithExif(Read("plain.webp"), kWidth, kHeight, exif));
    EXPECT_EQ(Loaded("in.webp"), Seen(colours, orientation));
    EXPECT_EQ(Loaded("in.webp", {"--no-orient"}), colours);
  }
}

TEST_F(Orientation, TakesAlphaWithItsPixels) {
  const Colours colours = Table(kWidth, kHeight, ClearCorners);
  WriteClear("plain.png", kWidth, kHeight, ClearCorners);
  for (int orientation = 1; orientation <= 8; ++orientation) {
    SCOPED_TRACE(orientation);
    Write("in.png", PngWith(Read("plain.png"), "eXIf", Exif(static_cast<uint32_t>(orientation))));
    WriteClear("in.tif", kWidth, kHeight, ClearCorners);
    SetOrientationOfTiff("in.tif", orientation);
    for (const std::string name : {"in.png", "in.tif"}) {
      const std::string size = orientation < 5 ? "16x8" : "8x16";
      RunWell({"scale", name, "memory.png", size, "--fast"});
      EXPECT_EQ(ReadClear("memory.png"), Seen(colours, orientation)) << name;
      RunWell({"scale", name, "file.png", size, "--fast", "--in-file"});
      EXPECT_EQ(ReadClear("file.png"), Seen(colours, orientation)) << name;
    }
  }
}

// 4000 pixels of 3 bytes by 2000 take two blocks, and so does each turn of them.
TEST_F(Orientation, IsHonouredThroughBlocksThatMove) {
  const auto writer = CreateRows(Path("in.tif"), 4000, 2000);
  std::vector<uint8_t> row(12000);
  for (size_t y = 0; y < 2000; ++y) {
    for (size_t i = 0; i < row.size(); ++i) row[i] = static_cast<uint8_t>((i / 30 * 37) ^ (y / 10 * 11));
    writer->WriteRow(row);
  }
  writer->Finish();
  for (const int orientation : {2, 3, 5, 6}) {
    SCOPED_TRACE(orientation);
    SetOrientationOfTiff("in.tif", orientation);
    RunWell({"scale", "in.tif", "memory.png", "40x", "--filter", "box"});
    RunWell({"scale", "in.tif", "file.png", "40x", "--filter", "box", "--in-file", "--block", "1"});
    EXPECT_TRUE(Read("memory.png") == Read("file.png"));
  }
}

TEST_F(Orientation, IsGoneFromWhatIsWritten) {
  WriteOriented(6);
  for (const std::string name : {"out.jpg", "out.tif", "out.png", "out.webp"}) {
    RunWell({"mirror", "in.jpg", name, "v"});
    EXPECT_THAT(Run({"info", name}).output, testing::AllOf(HasSubstr("8 x 16 pixels"), Not(HasSubstr("orientation"))));
  }
  RunWell({"scale", "in.jpg", "in.jpg", "100x", "--in-file"});
  EXPECT_THAT(Run({"info", "in.jpg"}).output, testing::AllOf(HasSubstr("100 x 200"), Not(HasSubstr("orientation"))));
}

TEST_F(Orientation, IsToldByInfoWithTheSizeThatIsSeen) {
  const std::vector<std::string> turns = {"mirrored left to right", "turned by 180 degrees",
                                          "mirrored top to bottom", "turned to the left and mirrored top to bottom",
                                          "turned to the right",    "turned to the right and mirrored top to bottom",
                                          "turned to the left"};
  for (int orientation = 2; orientation <= 8; ++orientation) {
    WriteOriented(orientation);
    const std::string number = std::to_string(orientation);
    const std::string turn = turns[static_cast<size_t>(orientation) - 2];
    EXPECT_THAT(Run({"info", "in.jpg"}).output,
                testing::StartsWith(std::string("size                 ") + (orientation < 5 ? "16 x 8" : "8 x 16") +
                                    " pixels\norientation          " + number + ", " + turn +
                                    " from 16 x 8 pixels\nfile                 JPEG\n"));
    EXPECT_THAT(Run({"info", "in.jpg", "--no-orient"}).output,
                testing::StartsWith("size                 16 x 8 pixels\norientation          " + number + ", to be " +
                                    turn + "\nfile                 JPEG\n"));
  }
  WriteOriented(1);
  EXPECT_THAT(Run({"info", "in.jpg"}).output, Not(HasSubstr("orientation")));
  WriteColours("plain.webp", stored_);
  Write("in.webp", WebpWithExif(Read("plain.webp"), kWidth, kHeight, Exif(8)));
  EXPECT_THAT(Run({"info", "in.webp"}).output, HasSubstr("8 x 16 pixels\norientation          8, turned to the left"));
}

TEST_F(Orientation, ThatIsNoneCountsForUpright) {
  const std::string exif = Exif(6);
  for (const std::string &broken : {Exif(0), Exif(9), Exif(65535), Exif(6, false, 2), std::string("no data at all"),
                                    exif.substr(0, 9), exif.substr(0, 30), exif.substr(0, exif.size() - 7)}) {
    Write("in.jpg", JpegWithExif(Read("plain.jpg"), broken));
    EXPECT_EQ(Loaded("in.jpg"), stored_);
    EXPECT_EQ(LoadedInFile("in.jpg"), stored_);
    EXPECT_THAT(Run({"info", "in.jpg"}).output, Not(HasSubstr("orientation")));
  }
}

TEST_F(Orientation, IsAnOptionOfEveryCommandThatReadsImages) {
  for (const std::string command :
       {"scale", "filter", "rotate", "mirror", "combine", "sheet", "info", "run", "batch"}) {
    EXPECT_THAT(Run({command, "--help"}).output, HasSubstr("--no-orient")) << command;
  }
}

}  // namespace
}  // namespace standalone
