#include <gtest/gtest.h>
#include <tiffio.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "tests/standalone/rows/rows_testing.h"

namespace standalone {
namespace {

constexpr uint32_t kWidth = 37;
constexpr uint32_t kHeight = 21;

struct TiffForm {
  uint16_t photometric = PHOTOMETRIC_RGB;
  uint16_t samples = 3;
  uint16_t bits = 8;
  uint16_t compression = COMPRESSION_NONE;
  uint32_t rowsPerStrip = 4;
  uint16_t extra = 0;  // kind of the one extra sample
  uint32_t tile = 0;   // side of a tile; 0: strips
  uint16_t planes = PLANARCONFIG_CONTIG;
  uint16_t orientation = ORIENTATION_TOPLEFT;
  uint16_t kind = SAMPLEFORMAT_UINT;
  bool hasNarrowPalette = false;
  const char *mode = "w";
};

class TiffRows : public RowFiles {
 protected:
  static size_t RowBytes(const TiffForm &form) { return (kWidth * form.samples * form.bits + 7) / 8; }
  static std::vector<uint8_t> Stored(const TiffForm &form, uint32_t y) { return Noise(RowBytes(form), y); }

  static uint16_t PaletteEntry(const TiffForm &form, uint32_t channel, uint32_t index) {
    const uint32_t level = (index * (channel + 3) * 11 + channel * 50) & 255;
    return static_cast<uint16_t>(form.hasNarrowPalette ? level : level << 8 | 0x5A);
  }

  void WriteTiff(const std::string &name, const TiffForm &form) const {
    TIFF *const tiff = TIFFOpen(Path(name).c_str(), form.mode);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kWidth);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kHeight);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, form.photometric);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, form.samples);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, form.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, form.kind);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, form.compression);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, form.planes);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, form.orientation);
    if (form.extra != 0) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &form.extra);
    if (form.photometric == PHOTOMETRIC_PALETTE) {
      std::vector<uint16_t> maps[3];
      for (uint32_t channel = 0; channel < 3; ++channel) {
        for (uint32_t i = 0; i < 1u << form.bits; ++i) maps[channel].push_back(PaletteEntry(form, channel, i));
      }
      TIFFSetField(tiff, TIFFTAG_COLORMAP, maps[0].data(), maps[1].data(), maps[2].data());
    }
    if (form.tile != 0) {
      WriteTiles(tiff, form);
    } else {
      TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, form.rowsPerStrip);
      const bool isPlanar = form.planes == PLANARCONFIG_SEPARATE;
      for (uint16_t plane = 0; plane < (isPlanar ? form.samples : 1); ++plane) {
        for (uint32_t y = 0; y < kHeight; ++y) {
          std::vector<uint8_t> row = Stored(form, y);
          TIFFWriteScanline(tiff, row.data(), y, plane);
        }
      }
    }
    TIFFClose(tiff);
  }

  // Whole tiles, with bytes of 77 outside the picture; for samples of whole bytes.
  static void WriteTiles(TIFF *tiff, const TiffForm &form) {
    TIFFSetField(tiff, TIFFTAG_TILEWIDTH, form.tile);
    TIFFSetField(tiff, TIFFTAG_TILELENGTH, form.tile);
    const size_t pixelBytes = form.samples * form.bits / 8u;
    for (uint32_t top = 0; top < kHeight; top += form.tile) {
      for (uint32_t left = 0; left < kWidth; left += form.tile) {
        std::vector<uint8_t> tile(form.tile * form.tile * pixelBytes, 77);
        for (uint32_t y = top; y < std::min(top + form.tile, kHeight); ++y) {
          const std::vector<uint8_t> row = Stored(form, y);
          const size_t pixels = std::min(form.tile, kWidth - left);
          std::memcpy(&tile[(y - top) * form.tile * pixelBytes], &row[left * pixelBytes], pixels * pixelBytes);
        }
        TIFFWriteTile(tiff, tile.data(), left, top, 0, 0);
      }
    }
  }

  // The pixels that the stored bytes stand for, one bit after the other.
  static Rows Expected(const TiffForm &form) {
    const auto sampleAt = [&](const std::vector<uint8_t> &row, uint32_t index) -> uint32_t {
      if (form.bits == 16) {
        const uint32_t sample = row[2 * index + 1] * 256u + row[2 * index];  // little-endian
        return form.photometric == PHOTOMETRIC_RGB ? (sample + 128) / 257 : sample / 256;
      }
      uint32_t value = 0;
      for (uint32_t bit = index * form.bits; bit < (index + 1) * form.bits; ++bit) {
        value = value * 2 + (row[bit / 8] >> (7 - bit % 8) & 1);
      }
      return value;
    };
    const uint32_t largest = form.bits == 16 ? 255 : (1u << form.bits) - 1;
    Rows rows;
    for (uint32_t y = 0; y < kHeight; ++y) {
      const std::vector<uint8_t> stored = Stored(form, y);
      rows.emplace_back();
      for (uint32_t x = 0; x < kWidth; ++x) {
        for (uint32_t channel = 0; channel < 3; ++channel) {
          const uint32_t first = x * form.samples;
          uint32_t value = 0;
          if (form.photometric == PHOTOMETRIC_RGB) {
            value = sampleAt(stored, first + channel);
          } else if (form.photometric == PHOTOMETRIC_PALETTE) {
            const uint16_t entry = PaletteEntry(form, channel, sampleAt(stored, first));
            value = form.hasNarrowPalette ? entry : entry / 256u;
          } else {
            value = sampleAt(stored, first) * 255 / largest;
            if (form.photometric == PHOTOMETRIC_MINISWHITE) value = 255 - value;
          }
          rows.back().push_back(static_cast<uint8_t>(value));
        }
      }
    }
    return rows;
  }

  std::string RefusalOf(const TiffForm &form) const {
    WriteTiff("a.tif", form);
    EXPECT_TRUE(IsNotByRows("a.tif"));
    const std::string error = ReadError("a.tif");
    const std::string start = Path("a.tif") + ": is a TIFF file ";
    EXPECT_EQ(error.rfind(start, 0), 0u) << error;
    return error.substr(std::min(start.size(), error.size()));
  }
};

TEST_F(TiffRows, OfEverySimpleFormAreReadAsTheyAreStored) {
  const TiffForm forms[] = {
      {},
      {.compression = COMPRESSION_LZW},
      {.compression = COMPRESSION_ADOBE_DEFLATE},
      {.compression = COMPRESSION_PACKBITS, .rowsPerStrip = kHeight},
      {.rowsPerStrip = 1},
      {.bits = 16},
      {.bits = 16, .compression = COMPRESSION_ADOBE_DEFLATE},
      {.samples = 4, .extra = EXTRASAMPLE_UNASSALPHA},
      {.samples = 4, .extra = EXTRASAMPLE_ASSOCALPHA},
      {.samples = 4, .bits = 16, .extra = EXTRASAMPLE_UNASSALPHA},
      {.photometric = PHOTOMETRIC_MINISBLACK, .samples = 1, .bits = 1},
      {.photometric = PHOTOMETRIC_MINISWHITE, .samples = 1, .bits = 1},
      {.photometric = PHOTOMETRIC_MINISWHITE, .samples = 1, .bits = 1, .compression = COMPRESSION_CCITTFAX4},
      {.photometric = PHOTOMETRIC_MINISBLACK, .samples = 1, .bits = 2},
      {.photometric = PHOTOMETRIC_MINISBLACK, .samples = 1, .bits = 4},
      {.photometric = PHOTOMETRIC_MINISWHITE, .samples = 1, .bits = 4},
      {.photometric = PHOTOMETRIC_MINISBLACK, .samples = 1, .bits = 8},
      {.photometric = PHOTOMETRIC_MINISWHITE, .samples = 1, .bits = 8},
      {.photometric = PHOTOMETRIC_MINISBLACK, .samples = 1, .bits = 16},
      {.photometric = PHOTOMETRIC_MINISWHITE, .samples = 1, .bits = 16},
      {.photometric = PHOTOMETRIC_MINISBLACK, .samples = 2, .extra = EXTRASAMPLE_UNASSALPHA},
      {.photometric = PHOTOMETRIC_PALETTE, .samples = 1, .bits = 1},
      {.photometric = PHOTOMETRIC_PALETTE, .samples = 1, .bits = 4},
      {.photometric = PHOTOMETRIC_PALETTE, .samples = 1, .bits = 8},
      {.photometric = PHOTOMETRIC_PALETTE, .samples = 1, .bits = 8, .hasNarrowPalette = true},
      {.tile = 16},
      {.bits = 16, .compression = COMPRESSION_LZW, .tile = 16},
      {.photometric = PHOTOMETRIC_MINISBLACK, .samples = 1, .tile = 32},
      {.samples = 4, .extra = EXTRASAMPLE_UNASSALPHA, .tile = 64},
      {.mode = "w8"},
      // Rows are given as they are stored, wherever they are seen.
      {.orientation = ORIENTATION_BOTLEFT},
      {.tile = 16, .orientation = ORIENTATION_RIGHTTOP},
  };
  for (const TiffForm &form : forms) {
    SCOPED_TRACE(std::to_string(&form - forms));
    WriteTiff("a.tif", form);
    EXPECT_EQ(ReadByRows("a.tif"), Expected(form));
    const RowsHeader header = OpenRows(Path("a.tif"))->Header();
    EXPECT_EQ(header.format, "TIFF");
    EXPECT_EQ(header.width, static_cast<int32_t>(kWidth));
    EXPECT_EQ(header.height, static_cast<int32_t>(kHeight));
    EXPECT_EQ(header.isGray, form.photometric == PHOTOMETRIC_MINISBLACK || form.photometric == PHOTOMETRIC_MINISWHITE);
    EXPECT_EQ(header.hasAlpha, form.extra != 0);
  }
}

TEST_F(TiffRows, OfEitherByteOrderAreTheSame) {
  for (const char *mode : {"wl", "wb"}) {
    const TiffForm form = {.bits = 16, .mode = mode};
    WriteTiff("a.tif", form);
    EXPECT_EQ(ReadByRows("a.tif"), Expected(form));
  }
}

// The forms that the whole-picture reader takes as they are stored: no tiles, no bilevel files where 0 is black, and no
// alpha that its colours have not been multiplied by.
TEST_F(TiffRows, AreReadLikeTheWholePicture) {
  const TiffForm forms[] = {
      {},
      {.compression = COMPRESSION_LZW},
      {.bits = 16},
      {.samples = 4, .extra = EXTRASAMPLE_ASSOCALPHA},
      {.photometric = PHOTOMETRIC_MINISWHITE, .samples = 1, .bits = 1},
      {.photometric = PHOTOMETRIC_MINISBLACK, .samples = 1, .bits = 4},
      {.photometric = PHOTOMETRIC_MINISBLACK, .samples = 1},
      {.photometric = PHOTOMETRIC_MINISWHITE, .samples = 1},
      {.photometric = PHOTOMETRIC_MINISBLACK, .samples = 1, .bits = 16},
      {.photometric = PHOTOMETRIC_PALETTE, .samples = 1, .bits = 4},
      {.photometric = PHOTOMETRIC_PALETTE, .samples = 1},
  };
  for (const TiffForm &form : forms) {
    SCOPED_TRACE(std::to_string(&form - forms));
    WriteTiff("a.tif", form);
    EXPECT_EQ(ReadByRows("a.tif"), ReadWhole("a.tif"));
  }
}

TEST_F(TiffRows, TellWhetherAPixelWasTransparent) {
  WriteTiff("a.tif", {.samples = 4, .extra = EXTRASAMPLE_UNASSALPHA});
  const auto clear = OpenRows(Path("a.tif"));
  ReadRows(*clear);
  EXPECT_TRUE(clear->HasSeenTransparency());
  // A sample that nobody says is alpha is passed over.
  WriteTiff("b.tif", {.samples = 4});
  const auto other = OpenRows(Path("b.tif"));
  EXPECT_EQ(ReadRows(*other), Expected({.samples = 4}));
  EXPECT_FALSE(other->HasSeenTransparency());
}

TEST_F(TiffRows, KeepAllBitsOfAlphaWhereItIsWanted) {
  for (const uint32_t tile : {0u, 64u}) {
    const TiffForm form = {.samples = 4, .extra = EXTRASAMPLE_UNASSALPHA, .tile = tile};
    WriteTiff("a.tif", form);
    Rows stored;
    for (uint32_t y = 0; y < kHeight; ++y) stored.push_back(Stored(form, y));
    EXPECT_EQ(ReadWithAlpha("a.tif"), stored);
    EXPECT_EQ(ReadByRows("a.tif"), WithoutAlpha(stored));
  }
}

// A colour of 100 that was multiplied by an alpha of 128 is stored as 50, or thereabouts.
TEST_F(TiffRows, DivideColoursByAKeptAlphaThatTheyHaveBeenMultipliedBy) {
  const TiffForm form = {.samples = 4, .extra = EXTRASAMPLE_ASSOCALPHA};
  WriteTiff("a.tif", form);
  Rows expected;
  for (uint32_t y = 0; y < kHeight; ++y) {
    expected.push_back(Stored(form, y));
    for (size_t i = 0; i < expected.back().size(); ++i) {
      const double alpha = expected.back()[i / 4 * 4 + 3];
      if (i % 4 == 3) continue;
      uint8_t &colour = expected.back()[i];
      colour = alpha == 0 ? 0 : static_cast<uint8_t>(std::min(255.0, std::floor(colour * 255 / alpha + 0.5)));
    }
  }
  EXPECT_EQ(ReadWithAlpha("a.tif"), expected);
}

TEST_F(TiffRows, OfOtherFormsAreRefusedWithAWayOut) {
  EXPECT_EQ(RefusalOf({.photometric = PHOTOMETRIC_SEPARATED, .samples = 4}),
            "whose pixels are neither gray nor of red, green and blue; save it in RGB");
  EXPECT_EQ(RefusalOf({.photometric = PHOTOMETRIC_CIELAB}),
            "whose pixels are neither gray nor of red, green and blue; save it in RGB");
  EXPECT_EQ(RefusalOf({.planes = PLANARCONFIG_SEPARATE}),
            "with a plane for each channel; save it with the channels of a pixel side by side (tiffcp -p contig)");
  EXPECT_EQ(RefusalOf({.bits = 32}), "of 3 samples of 32 bits a pixel; save it with 8 or 16 bits a sample");
  EXPECT_EQ(RefusalOf({.bits = 4}), "of 3 samples of 4 bits a pixel; save it with 8 or 16 bits a sample");
  EXPECT_EQ(RefusalOf({.bits = 16, .kind = SAMPLEFORMAT_INT}),
            "of 3 samples of 16 bits a pixel, which are no plain numbers; save it with 8 or 16 bits a sample");
}

}  // namespace
}  // namespace standalone
