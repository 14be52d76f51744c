#include <gtest/gtest.h>
#include <png.h>

#include <cstdio>
#include <string>
#include <vector>

#include "tests/standalone/rows/rows_testing.h"

namespace standalone {
namespace {

constexpr uint32_t kWidth = 13;
constexpr uint32_t kHeight = 6;

struct PngForm {
  int colourType;
  int bits;  // of a sample
  bool hasClearColour = false;
  int interlace = PNG_INTERLACE_NONE;
};

class PngRows : public RowFiles {
 protected:
  static size_t Samples(int colourType) {
    return colourType == PNG_COLOR_TYPE_RGBA         ? 4
           : colourType == PNG_COLOR_TYPE_RGB        ? 3
           : colourType == PNG_COLOR_TYPE_GRAY_ALPHA ? 2
                                                     : 1;
  }

  // A picture of noise, or of the bytes given for every row. The clear colour is entry 1, or the first pixel's.
  void WritePng(const std::string &name, const PngForm &form, std::vector<uint8_t> bytes = {}) const {
    std::FILE *const file = std::fopen(Path(name).c_str(), "wb");
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_set_IHDR(png, info, kWidth, kHeight, form.bits, form.colourType, form.interlace, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    if (form.colourType == PNG_COLOR_TYPE_PALETTE) {
      std::vector<png_color> palette;
      for (int i = 0; i < 1 << form.bits; ++i) {
        palette.push_back({static_cast<uint8_t>(255 - i), static_cast<uint8_t>(i * 7), static_cast<uint8_t>(i)});
      }
      png_set_PLTE(png, info, palette.data(), static_cast<int>(palette.size()));
      const uint8_t alphas[] = {255, 0};
      if (form.hasClearColour) png_set_tRNS(png, info, alphas, 2, nullptr);
    } else if (form.hasClearColour) {
      const png_color_16 clear = {0, 9, 9, 9, 9};
      png_set_tRNS(png, info, nullptr, 0, &clear);
    }
    png_write_info(png, info);
    const size_t rowBytes = (kWidth * Samples(form.colourType) * static_cast<size_t>(form.bits) + 7) / 8;
    std::vector<std::vector<uint8_t>> rows;
    std::vector<png_bytep> addresses;
    for (uint32_t y = 0; y < kHeight; ++y) rows.push_back(bytes.empty() ? Noise(rowBytes, y) : bytes);
    for (std::vector<uint8_t> &row : rows) addresses.push_back(row.data());
    png_write_image(png, addresses.data());
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    std::fclose(file);
  }
};

TEST_F(PngRows, OfEveryFormAreReadLikeTheWholePicture) {
  for (const PngForm &form : {PngForm{PNG_COLOR_TYPE_GRAY, 1},
                              {PNG_COLOR_TYPE_GRAY, 2},
                              {PNG_COLOR_TYPE_GRAY, 4},
                              {PNG_COLOR_TYPE_GRAY, 8},
                              {PNG_COLOR_TYPE_GRAY, 16},
                              {PNG_COLOR_TYPE_GRAY_ALPHA, 8},
                              {PNG_COLOR_TYPE_GRAY_ALPHA, 16},
                              {PNG_COLOR_TYPE_PALETTE, 1},
                              {PNG_COLOR_TYPE_PALETTE, 2},
                              {PNG_COLOR_TYPE_PALETTE, 4},
                              {PNG_COLOR_TYPE_PALETTE, 8},
                              {PNG_COLOR_TYPE_RGB, 8},
                              {PNG_COLOR_TYPE_RGB, 16},
                              {PNG_COLOR_TYPE_RGBA, 8},
                              {PNG_COLOR_TYPE_RGBA, 16}}) {
    SCOPED_TRACE(std::to_string(form.colourType) + " " + std::to_string(form.bits));
    WritePng("a.png", form);
    EXPECT_EQ(ReadByRows("a.png"), ReadWhole("a.png"));
    const RowsHeader header = OpenRows(Path("a.png"))->Header();
    EXPECT_EQ(header.isGray, form.colourType == PNG_COLOR_TYPE_GRAY || form.colourType == PNG_COLOR_TYPE_GRAY_ALPHA);
    EXPECT_EQ(header.hasAlpha, (form.colourType & PNG_COLOR_MASK_ALPHA) != 0);
  }
}

TEST_F(PngRows, TellWhetherAPixelWasTransparent) {
  std::vector<uint8_t> opaque(kWidth * 4, 255);
  WritePng("opaque.png", {PNG_COLOR_TYPE_RGBA, 8}, opaque);
  opaque[7] = 254;
  WritePng("clear.png", {PNG_COLOR_TYPE_RGBA, 8}, opaque);
  for (const auto &[name, isClear] : {std::pair{"opaque.png", false}, std::pair{"clear.png", true}}) {
    const auto reader = OpenRows(Path(name));
    EXPECT_TRUE(reader->Header().hasAlpha);
    ReadRows(*reader);
    EXPECT_EQ(reader->HasSeenTransparency(), isClear);
  }
}

// The colour 9, 9, 9 is clear, or entry 1 of the palette, which is 254, 7, 1.
TEST_F(PngRows, KeepTheColourThatCountsAsClear) {
  const std::vector<uint8_t> nines(kWidth * 3, 9);
  WritePng("key.png", {PNG_COLOR_TYPE_RGB, 8, true}, nines);
  WritePng("entry.png", {PNG_COLOR_TYPE_PALETTE, 8, true}, std::vector<uint8_t>(kWidth, 1));
  const auto byColour = OpenRows(Path("key.png"));
  EXPECT_TRUE(byColour->Header().hasAlpha);
  EXPECT_EQ(ReadRows(*byColour), Rows(kHeight, nines));
  EXPECT_TRUE(byColour->HasSeenTransparency());

  const auto byEntry = OpenRows(Path("entry.png"));
  EXPECT_TRUE(byEntry->Header().hasAlpha);
  const Rows rows = ReadRows(*byEntry);
  for (size_t x = 0; x < kWidth; ++x) {
    EXPECT_EQ(std::vector<uint8_t>(rows[0].begin() + 3 * x, rows[0].begin() + 3 * x + 3),
              (std::vector<uint8_t>{254, 7, 1}));
  }
  EXPECT_TRUE(byEntry->HasSeenTransparency());
}

TEST_F(PngRows, KeepAllBitsOfAlphaWhereItIsWanted) {
  std::vector<uint8_t> pixels;
  for (uint32_t x = 0; x < kWidth; ++x) {
    pixels.insert(pixels.end(), {static_cast<uint8_t>(10 * x), 20, 30, static_cast<uint8_t>(255 - x)});
  }
  WritePng("a.png", {PNG_COLOR_TYPE_RGBA, 8}, pixels);
  const auto reader = OpenRows(Path("a.png"));
  EXPECT_EQ(reader->PixelBytes(), 3);
  reader->KeepAlpha();
  EXPECT_EQ(reader->PixelBytes(), 4);
  EXPECT_EQ(ReadRows(*reader), Rows(kHeight, pixels));
  EXPECT_TRUE(reader->HasSeenTransparency());

  // Gray is told three times, and of 16 bits the high byte counts.
  WritePng("gray.png", {PNG_COLOR_TYPE_GRAY_ALPHA, 16}, Noise(4 * kWidth, 1));
  const std::vector<uint8_t> stored = Noise(4 * kWidth, 1);
  std::vector<uint8_t> expected;
  for (uint32_t x = 0; x < kWidth; ++x) {
    expected.insert(expected.end(), {stored[4 * x], stored[4 * x], stored[4 * x], stored[4 * x + 2]});
  }
  EXPECT_EQ(ReadWithAlpha("gray.png"), Rows(kHeight, expected));
}

TEST_F(PngRows, TellClearColoursAsAlphaWhereItIsWanted) {
  std::vector<uint8_t> pixels(kWidth * 3, 9);
  pixels[1] = 10;
  WritePng("key.png", {PNG_COLOR_TYPE_RGB, 8, true}, pixels);
  std::vector<uint8_t> expected = {9, 10, 9, 255};
  for (uint32_t x = 1; x < kWidth; ++x) expected.insert(expected.end(), {9, 9, 9, 0});
  EXPECT_EQ(ReadWithAlpha("key.png"), Rows(kHeight, expected));
}

TEST_F(PngRows, WithoutAlphaHaveNoneToKeep) {
  WritePng("a.png", {PNG_COLOR_TYPE_RGB, 8});
  EXPECT_EQ(ReadWithAlpha("a.png"), ReadByRows("a.png"));
}

TEST_F(PngRows, AreRefusedWhereTheyAreInterlaced) {
  WritePng("a.png", {PNG_COLOR_TYPE_RGB, 8, false, PNG_INTERLACE_ADAM7});
  EXPECT_TRUE(IsNotByRows("a.png"));
  EXPECT_EQ(ReadError("a.png"), Path("a.png") +
                                    ": is an interlaced PNG file, whose rows are not stored one after another; save it "
                                    "without interlacing");
}

TEST_F(PngRows, AreReadWhereTheyAreInterlacedIfThePictureMayBeHeldWhole) {
  for (const int colourType : {PNG_COLOR_TYPE_RGB, PNG_COLOR_TYPE_RGBA, PNG_COLOR_TYPE_GRAY}) {
    WritePng("plain.png", {colourType, 8});
    WritePng("interlaced.png", {colourType, 8, false, PNG_INTERLACE_ADAM7});
    const auto reader = OpenRows(Path("interlaced.png"), Interlaced::HoldWhole);
    EXPECT_EQ(ReadRows(*reader), ReadByRows("plain.png"));
    const auto withAlpha = OpenRows(Path("interlaced.png"), Interlaced::HoldWhole);
    withAlpha->KeepAlpha();
    EXPECT_EQ(ReadRows(*withAlpha), ReadWithAlpha("plain.png"));
  }
  Write("cut.png", Read("interlaced.png").substr(0, Read("interlaced.png").size() / 2));
  EXPECT_THROW(OpenRows(Path("cut.png"), Interlaced::HoldWhole), ImageFileError);
}

// A check sum of the pixels that is not theirs.
TEST_F(PngRows, AreRefusedWhereABitHasChanged) {
  WritePng("a.png", {PNG_COLOR_TYPE_RGB, 8});
  std::string bytes = Read("a.png");
  bytes[bytes.size() - 20] ^= 1;
  Write("a.png", bytes);
  EXPECT_EQ(ReadError("a.png"), Path("a.png") + ": is a PNG file that is cut short or damaged; get a whole copy of it");
}

}  // namespace
}  // namespace standalone
