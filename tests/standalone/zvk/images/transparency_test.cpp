// Transparent pixels from file to image and back: which bits of alpha survive, and what becomes of the others.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <png.h>

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "standalone/runtime/memory_block.h"
#include "standalone/zvk/images/image_io.h"
#include "tests/standalone/zvk/zvk_program.h"

namespace standalone {
namespace {

// All alphas in a row, over colours that differ from pixel to pixel.
uint32_t EveryAlpha(int x, int) {
  return 0x10203000u + static_cast<uint32_t>(x) * 0x00010100u + static_cast<uint32_t>(x);
}

// What GD keeps of an alpha: 7 bits, and what these are told as.
uint32_t InSevenBits(uint32_t alpha) {
  const uint32_t clearness = 127 - alpha / 2;
  return 255 - (clearness * 2 + clearness / 64);
}

uint32_t LaidOn(uint32_t background, uint32_t colour) {
  const uint32_t alpha = colour & 255;
  uint32_t result = 0;
  for (const int shift : {16, 8, 0}) {
    const uint32_t over = colour >> (shift + 8) & 255, under = background >> shift & 255;
    result |= (over * alpha + under * (255 - alpha)) / 255 << shift;
  }
  return result;
}

class Transparency : public ZvkProgram {
 protected:
  Value Load(const std::string &name) const { return LoadImage(session_, Path(name)); }

  // The image as 0xRRGGBBAA.
  Colours PixelsOf(const Value &image) const {
    const Value format = session_.Images().Constant("ImageFormatRGBA");
    Colours rows;
    for (int32_t y = 0; y < SizeOf(image).height; ++y) {
      const Value row = image.Call("RowInFormat", {y, format});
      const uint8_t *byte = row.As<MemoryBlock>()->Data();
      rows.emplace_back();
      for (int32_t x = 0; x < SizeOf(image).width; ++x, byte += 4) {
        rows.back().push_back(uint32_t{byte[0]} << 24 | byte[1] << 16 | byte[2] << 8 | byte[3]);
      }
    }
    return rows;
  }

  static bool HasAlpha(const Value &image) { return image.Get("HasAlpha").AsBoolean(); }

  // What the work says on the standard error stream.
  static std::string Said(const std::function<void()> &work) {
    testing::internal::CaptureStderr();
    work();
    return testing::internal::GetCapturedStderr();
  }

  void WriteInterlaced(const std::string &name, int width, const std::function<uint32_t(int x, int y)> &colour) const {
    std::FILE *const file = std::fopen(Path(name).c_str(), "wb");
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_set_IHDR(png, info, static_cast<png_uint_32>(width), 1, 8, PNG_COLOR_TYPE_RGBA, PNG_INTERLACE_ADAM7,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    std::vector<uint8_t> row;
    for (int x = 0; x < width; ++x) {
      for (const int shift : {24, 16, 8, 0}) row.push_back(static_cast<uint8_t>(colour(x, 0) >> shift));
    }
    png_bytep address = row.data();
    png_write_image(png, &address);
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    std::fclose(file);
  }

  const PluginSession session_{{.path = PICTUREZVK_LIBRARY}};
};

TEST_F(Transparency, PngAndTiffFilesBecomeImagesWithAllBitsOfAlpha) {
  for (const char *name : {"in.png", "in.tif"}) {
    WriteClear(name, 256, 2, EveryAlpha);
    EXPECT_EQ(Said([&] {
                const Value image = Load(name);
                EXPECT_TRUE(HasAlpha(image)) << name;
                EXPECT_EQ(PixelsOf(image), Table(256, 2, EveryAlpha)) << name;
              }),
              "");
  }
}

TEST_F(Transparency, InterlacedPngFilesDoToo) {
  WriteInterlaced("in.png", 256, EveryAlpha);
  EXPECT_EQ(PixelsOf(Load("in.png")), Table(256, 1, EveryAlpha));
}

TEST_F(Transparency, GifFilesBecomeImagesOfClearAndOpaquePixels) {
  WriteImage("in.gif", 3, 1, [](int x, int) { return x == 1 ? 0x7F000000u : 0x102030u; });
  EXPECT_EQ(PixelsOf(Load("in.gif")), Colours({{0x102030FF, 0x00000000, 0x102030FF}}));
}

TEST_F(Transparency, AnOpaqueFileBecomesAnImageWithoutAlphaUnlessThatIsAskedFor) {
  WriteImage("plain.png", 3, 1, [](int, int) { return 0x102030; });
  WriteClear("plane.png", 3, 1, [](int, int) { return 0x102030FF; });
  WriteClear("plane.tif", 3, 1, [](int, int) { return 0x102030FF; });
  for (const char *name : {"plain.png", "plane.png", "plane.tif"}) {
    EXPECT_FALSE(HasAlpha(Load(name))) << name;
    const Value image = LoadImageWithAlpha(session_, Path(name));
    EXPECT_TRUE(HasAlpha(image)) << name;
    EXPECT_EQ(PixelsOf(image), Colours({{0x102030FF, 0x102030FF, 0x102030FF}})) << name;
  }
}

TEST_F(Transparency, AnImageWithoutAlphaIsLaidOnTheBackgroundAndThatIsTold) {
  WriteClear("in.png", 256, 1, EveryAlpha);
  EXPECT_EQ(Said([&] {
              const Value image = LoadOpaqueImage(session_, Path("in.png"), 0x00FF80);
              EXPECT_FALSE(HasAlpha(image));
              SaveImage(image, Path("out.png"), kWhite);
            }),
            "zvk: " + Path("in.png") + ": has transparent pixels, which are laid on #00FF80\n");
  EXPECT_EQ(ReadImage("out.png"), Table(256, 1, [](int x, int y) { return LaidOn(0x00FF80, EveryAlpha(x, y)); }));
  WriteImage("opaque.png", 1, 1, [](int, int) { return 0x102030; });
  EXPECT_EQ(Said([&] { LoadOpaqueImage(session_, Path("opaque.png"), kWhite); }), "");
}

TEST_F(Transparency, PngAndTiffFilesGetAllBitsOfAlpha) {
  WriteClear("in.png", 256, 2, EveryAlpha);
  const Value image = Load("in.png");
  for (const char *name : {"out.png", "out.tif", "OUT.TIFF"}) {
    EXPECT_EQ(Said([&] { SaveImage(image, Path(name), kWhite); }), "");
    EXPECT_EQ(ReadClear(name), Table(256, 2, EveryAlpha)) << name;
  }
}

TEST_F(Transparency, WebpFilesGetSevenBitsOfAlpha) {
  WriteClear("in.png", 256, 1, EveryAlpha);
  EXPECT_EQ(Said([&] { SaveImage(Load("in.png"), Path("out.webp"), kWhite); }), "");
  const Colours pixels = PixelsOf(Load("out.webp"));
  for (int x = 0; x < 256; ++x) {
    const uint32_t expected = EveryAlpha(x, 0);
    const uint32_t alpha = InSevenBits(expected & 255);
    EXPECT_EQ(pixels[0][static_cast<size_t>(x)] & 255, alpha) << x;
    // The library makes up the colour of a pixel that nobody sees.
    if (alpha != 0) {
      EXPECT_EQ(pixels[0][static_cast<size_t>(x)] >> 8, expected >> 8) << x;
    }
  }
}

TEST_F(Transparency, OtherFilesAreLaidOnTheBackgroundAndThatIsTold) {
  WriteClear("in.png", 200, 1, EveryAlpha);
  const Value image = Load("in.png");
  for (const char *name : {"out.bmp", "out.gif", "out.jpg"}) {
    EXPECT_EQ(Said([&] { SaveImage(image, Path(name), 0xFF8000); }),
              "zvk: " + Path(name) + ": cannot hold transparency; transparent pixels are laid on #FF8000\n");
    const Colours colours = ReadImage(name);
    for (int x = 0; x < 200; ++x) {
      const uint32_t expected = LaidOn(0xFF8000, EveryAlpha(x, 0)), read = colours[0][static_cast<size_t>(x)];
      if (std::string(name) != "out.jpg") {
        EXPECT_EQ(read, expected) << name << x;
      }
      for (const int shift : {16, 8, 0}) EXPECT_NEAR(read >> shift & 255, expected >> shift & 255, 12) << name << x;
    }
  }
}

TEST_F(Transparency, AnImageWithAlphaThatIsOpaqueIsSavedAsOneWithoutIt) {
  WriteImage("in.png", 3, 1, [](int x, int) { return 0x102030 * static_cast<uint32_t>(x); });
  SaveImage(Load("in.png"), Path("plain.png"), kWhite);
  EXPECT_EQ(Said([&] { SaveImage(LoadImageWithAlpha(session_, Path("in.png")), Path("out.png"), kWhite); }), "");
  EXPECT_EQ(Read("out.png"), Read("plain.png"));
}

TEST_F(Transparency, AlphaIsDroppedOnWish) {
  WriteClear("in.png", 256, 1, EveryAlpha);
  EXPECT_EQ(Said([&] { SaveImage(Load("in.png"), Path("out.png"), kWhite, AlphaPlane::Drop); }), "");
  EXPECT_EQ(ReadImage("out.png"), Table(256, 1, [](int x, int y) { return EveryAlpha(x, y) >> 8; }));
}

TEST_F(Transparency, GrayWithAlphaIsSavedAsColoursWithAlpha) {
  const Value format = session_.Images().Constant("ImageFormatGA");
  const Value image = session_.Images().New({2, 1, format});
  const auto row = Owned<MemoryBlock>::Adopt(MemoryBlock::Make(4));
  const uint8_t bytes[] = {200, 77, 100, 255};
  std::copy_n(bytes, 4, row->Data());
  image.Assign("RowInFormat", {0, format}, row);
  SaveImage(image, Path("out.png"), kWhite);
  EXPECT_EQ(ReadClear("out.png"), Colours({{0xC8C8C84D, 0x646464FF}}));
}

TEST_F(Transparency, LayingOnABackgroundRoundsDownAndMayHappenInPlace) {
  std::vector<uint8_t> pixels, expected;
  for (uint32_t alpha = 0; alpha < 256; ++alpha) {
    const uint32_t colour = 0xFF400000 | alpha << 8 | alpha;
    for (const int shift : {24, 16, 8, 0}) pixels.push_back(static_cast<uint8_t>(colour >> shift));
    const uint32_t result = LaidOn(0x8000FF, colour);
    for (const int shift : {16, 8, 0}) expected.push_back(static_cast<uint8_t>(result >> shift));
  }
  LayOnBackground(pixels, 0x8000FF, pixels);
  pixels.resize(expected.size());
  EXPECT_EQ(pixels, expected);
}

// --- zvk scale ---

class ScaleTransparency : public ZvkProgram {
 protected:
  void Scale(std::vector<std::string> arguments, const std::string &errors = "") const {
    arguments.insert(arguments.begin(), "scale");
    const ProgramResult result = Run(arguments);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors, errors);
  }
};

// A disc of colour with an edge that fades out over some pixels, and another colour where it is clear.
uint32_t Disc(int x, int y) {
  const int outside = (x - 12) * (x - 12) + (y - 9) * (y - 9) - 40;
  const int alpha = std::clamp(255 - 5 * outside, 0, 255);
  return (alpha == 0 ? 0x00112200u : 0xC8643200u) | static_cast<uint32_t>(alpha);
}

TEST_F(ScaleTransparency, TheSameSizeGivesTheSamePixels) {
  WriteClear("in.png", 25, 19, Disc);
  for (const char *format : {"RGBA", "ARGB", "BGRA", "ABGR", ""}) {
    std::vector<std::string> arguments = {"in.png", "out.png", "25x19"};
    if (*format != '\0') arguments.insert(arguments.end(), {"--format", format});
    Scale(arguments);
    EXPECT_EQ(ReadClear("out.png"), Table(25, 19, Disc)) << format;
  }
}

// Twice as large, the box repeats every pixel; half as large, it takes means that are rounded after each of the two
// steps, colours and alpha each for themselves.
TEST_F(ScaleTransparency, AnEdgeKeepsItsAlpha) {
  WriteClear("in.png", 24, 18, Disc);
  Scale({"in.png", "large.png", "48x36", "--filter", "box"});
  EXPECT_EQ(ReadClear("large.png"), Table(48, 36, [](int x, int y) { return Disc(x / 2, y / 2); }));
  Scale({"in.png", "small.tif", "12x9", "--filter", "box"});
  const auto mean = [](uint32_t a, uint32_t b) {
    uint32_t result = 0;
    for (const int shift : {24, 16, 8, 0}) result |= ((a >> shift & 255) + (b >> shift & 255) + 1) / 2 << shift;
    return result;
  };
  EXPECT_EQ(ReadClear("small.tif"), Table(12, 9, [&](int x, int y) {
              const auto row = [&](int at) { return mean(Disc(2 * x, at), Disc(2 * x + 1, at)); };
              return mean(row(2 * y), row(2 * y + 1));
            }));
}

TEST_F(ScaleTransparency, GrayKeepsItToo) {
  WriteClear("in.png", 25, 19, Disc);
  Scale({"in.png", "out.png", "25x19", "--format", "GA"});
  EXPECT_EQ(ReadClear("out.png"), Table(25, 19, [](int x, int y) {
              const uint32_t colour = Disc(x, y);
              const auto gray = static_cast<uint32_t>((colour >> 8 & 255) * 0.11 +
                                                      ((colour >> 16 & 255) * 0.59 + (colour >> 24) * 0.3) + 0.5);
              return gray * 0x01010100u | (colour & 255);
            }));
}

TEST_F(ScaleTransparency, AFormatWithoutAlphaHasThePixelsLaidOnTheBackgroundBefore) {
  WriteClear("in.png", 25, 19, Disc);
  Scale({"in.png", "out.png", "25x19", "--format", "RGB", "--background", "#336699"},
        "zvk: in.png: has transparent pixels, which are laid on #336699\n");
  EXPECT_EQ(ReadImage("out.png"), Table(25, 19, [](int x, int y) { return LaidOn(0x336699, Disc(x, y)); }));
}

TEST_F(ScaleTransparency, AFileWithoutAlphaHasThemLaidOnWhiteUnlessToldOtherwise) {
  WriteClear("in.png", 25, 19, Disc);
  const std::string message = "zvk: out.bmp: cannot hold transparency; transparent pixels are laid on ";
  Scale({"in.png", "out.bmp", "25x19"}, message + "#FFFFFF\n");
  EXPECT_EQ(ReadImage("out.bmp"), Table(25, 19, [](int x, int y) { return LaidOn(0xFFFFFF, Disc(x, y)); }));
  Scale({"in.png", "out.bmp", "25x19", "--background", "#00ff7f"}, message + "#00FF7F\n");
  EXPECT_EQ(ReadImage("out.bmp"), Table(25, 19, [](int x, int y) { return LaidOn(0x00FF7F, Disc(x, y)); }));
}

TEST_F(ScaleTransparency, LeavesNothingBehind) {
  WriteClear("in.png", 25, 19, Disc);
  const ProgramResult result = Run({"scale", "in.png", "out.png", "8x3", "--leaks"});
  EXPECT_EQ(result.output, "references not given back: none\n");
}

TEST_F(ScaleTransparency, RefusesABackgroundThatIsNoColour) {
  WriteClear("in.png", 2, 2, Disc);
  for (const std::string text : {"white", "#12345", "#1234567", "112233", "#11223344", "#GG0000"}) {
    const ProgramResult result = Run({"scale", "in.png", "out.png", "8x3", "--background", text});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.errors, "zvk: --background '" + text + "' is not understood; write #RRGGBB, as in #FF8000\n");
  }
  EXPECT_FALSE(Names().contains("out.png"));
}

}  // namespace
}  // namespace standalone
