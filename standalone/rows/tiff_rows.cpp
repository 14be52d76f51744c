// TIFF rows, from strips or from tiles, of which one row at a time is in memory.

#include <tiffio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "standalone/files/part_file.h"
#include "standalone/rows/row_codecs.h"

namespace standalone {
namespace {

struct CloseTiff {
  void operator()(TIFF *tiff) const { TIFFClose(tiff); }
};
using OwnedTiff = std::unique_ptr<TIFF, CloseTiff>;

// A file over a copy of the descriptor, which ends with it. The library tells its troubles to nobody.
OwnedTiff OpenTiff(const std::string &path, int descriptor, const char *mode) {
  TIFFSetErrorHandler(nullptr);
  TIFFSetWarningHandler(nullptr);
  const int copy = dup(descriptor);
  if (copy < 0) throw std::bad_alloc();
  OwnedTiff tiff(TIFFFdOpen(copy, path.c_str(), mode));
  if (tiff == nullptr) close(copy);
  return tiff;
}

// --- reading ---

// How the samples of a file become red, green, blue and alpha.
struct PixelForm {
  uint16_t bits = 1;     // of a sample
  uint16_t samples = 1;  // of a pixel
  uint16_t photometric = PHOTOMETRIC_MINISBLACK;
  bool hasAlpha = false;
  bool isMultiplied = false;  // colours by alpha

  int32_t Colours() const { return photometric == PHOTOMETRIC_RGB ? 3 : 1; }
};

class TiffRowReader : public RowReader {
 public:
  TiffRowReader(const std::string &path, OwnedStream stream)
      : RowReader(path), stream_(std::move(stream)), tiff_(OpenTiff(path, fileno(stream_.get()), "rm")) {
    header_.format = "TIFF";
    if (tiff_ == nullptr) FailOnDamage();
    uint32_t width = 0;
    uint32_t height = 0;
    TIFFGetField(tiff_.get(), TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff_.get(), TIFFTAG_IMAGELENGTH, &height);
    ReadForm();
    SetHeader("TIFF", width, height, form_.Colours() == 1 && form_.photometric != PHOTOMETRIC_PALETTE, form_.hasAlpha);
    MakeTables();
    MakeRoom();
  }

  void ReadRow(std::span<uint8_t> row) override {
    const auto y = static_cast<uint32_t>(rowsRead_++);
    const uint8_t *const samples = TIFFIsTiled(tiff_.get()) != 0 ? RowOfTiles(y) : RowOfStrip(y);
    uint8_t *const target = form_.hasAlpha ? pixels_.data() : row.data();
    if (form_.bits == 16) {
      Convert<uint16_t>(samples, target);
    } else {
      Convert<uint8_t>(samples, target);
    }
    if (!form_.hasAlpha) return;
    if (form_.isMultiplied && keepsAlpha_) DivideByAlpha();
    PutPixels(pixels_, row);
  }

 private:
  uint16_t Field(uint32_t tag) const {
    uint16_t value = 0;
    TIFFGetFieldDefaulted(tiff_.get(), tag, &value);
    return value;
  }

  [[noreturn]] void Refuse(const std::string &what, const std::string &wayOut) const {
    throw NotByRowsError(path_ + ": is a TIFF file " + what + "; " + wayOut);
  }

  void ReadForm() {
    form_.bits = Field(TIFFTAG_BITSPERSAMPLE);
    form_.samples = Field(TIFFTAG_SAMPLESPERPIXEL);
    if (TIFFGetField(tiff_.get(), TIFFTAG_PHOTOMETRIC, &form_.photometric) == 0) FailOnDamage();
    if (form_.photometric == PHOTOMETRIC_YCBCR && Field(TIFFTAG_COMPRESSION) == COMPRESSION_JPEG) {
      TIFFSetField(tiff_.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
      form_.photometric = PHOTOMETRIC_RGB;
    }
    const bool isGray = form_.photometric == PHOTOMETRIC_MINISBLACK || form_.photometric == PHOTOMETRIC_MINISWHITE;
    const bool isIndexed = form_.photometric == PHOTOMETRIC_PALETTE;
    if (!isGray && !isIndexed && form_.photometric != PHOTOMETRIC_RGB) {
      Refuse("whose pixels are neither gray nor of red, green and blue", "save it in RGB");
    }
    const bool isSmall = form_.bits == 1 || form_.bits == 2 || form_.bits == 4;
    const bool isWhole = form_.bits == 8 || (form_.bits == 16 && !isIndexed);
    const uint16_t kind = Field(TIFFTAG_SAMPLEFORMAT);
    const bool isCounted = kind == SAMPLEFORMAT_UINT || kind == SAMPLEFORMAT_VOID;
    if (!isCounted || !(isWhole || (isSmall && form_.samples == 1 && form_.Colours() == 1))) {
      Refuse("of " + std::to_string(form_.samples) + " samples of " + std::to_string(form_.bits) + " bits a pixel" +
                 (isCounted ? "" : ", which are no plain numbers"),
             "save it with 8 or 16 bits a sample");
    }
    if (form_.samples < form_.Colours()) FailOnDamage();
    if (form_.samples > 1 && Field(TIFFTAG_PLANARCONFIG) != PLANARCONFIG_CONTIG) {
      Refuse("with a plane for each channel", "save it with the channels of a pixel side by side (tiffcp -p contig)");
    }
    uint16_t extraCount = 0;
    uint16_t *extraKinds = nullptr;
    TIFFGetFieldDefaulted(tiff_.get(), TIFFTAG_EXTRASAMPLES, &extraCount, &extraKinds);
    form_.hasAlpha = extraCount > 0 && form_.samples > form_.Colours() && !isIndexed &&
                     (extraKinds[0] == EXTRASAMPLE_ASSOCALPHA || extraKinds[0] == EXTRASAMPLE_UNASSALPHA);
    form_.isMultiplied = form_.hasAlpha && extraKinds[0] == EXTRASAMPLE_ASSOCALPHA;
  }

  // What each sample value of up to 8 bits stands for; 16 bits are made 8 before.
  void MakeTables() {
    const uint32_t largest = (1u << std::min<uint16_t>(form_.bits, 8)) - 1;
    if (form_.photometric == PHOTOMETRIC_PALETTE) {
      std::array<uint16_t *, 3> maps = {};
      if (TIFFGetField(tiff_.get(), TIFFTAG_COLORMAP, &maps[0], &maps[1], &maps[2]) == 0) FailOnDamage();
      // Entries have 16 bits; some programs fill in 8.
      const bool isNarrow = std::ranges::all_of(maps, [largest](const uint16_t *map) {
        return std::all_of(map, map + largest + 1, [](uint16_t level) { return level < 256; });
      });
      for (size_t channel = 0; channel < 3; ++channel) {
        for (uint32_t value = 0; value <= largest; ++value) {
          tables_[channel][value] = static_cast<uint8_t>(maps[channel][value] >> (isNarrow ? 0 : 8));
        }
      }
      return;
    }
    for (uint32_t value = 0; value <= largest; ++value) {
      const uint32_t level = form_.photometric == PHOTOMETRIC_MINISWHITE ? largest - value : value;
      for (std::array<uint8_t, 256> &table : tables_) table[value] = static_cast<uint8_t>(level * 255 / largest);
    }
  }

  void MakeRoom() {
    const tmsize_t bytes = TIFFScanlineSize(tiff_.get());
    if (bytes <= 0) FailOnDamage();
    samples_.resize(static_cast<size_t>(bytes));
    if (form_.hasAlpha) pixels_.resize(size_t{4} * header_.width);
    if (TIFFIsTiled(tiff_.get()) == 0) return;
    TIFFGetField(tiff_.get(), TIFFTAG_TILEWIDTH, &tileWidth_);
    TIFFGetField(tiff_.get(), TIFFTAG_TILELENGTH, &tileHeight_);
    const tmsize_t tileBytes = TIFFTileSize(tiff_.get());
    // Only tiles of whole bytes can be put side by side.
    const bool isWhole = uint64_t{tileWidth_} * form_.bits * form_.samples % 8 == 0;
    if (tileWidth_ == 0 || tileHeight_ == 0 || tileBytes <= 0 || !isWhole) FailOnDamage();
    tile_.resize(static_cast<size_t>(tileBytes));
    tileRow_.resize(samples_.size() * tileHeight_);
  }

  const uint8_t *RowOfStrip(uint32_t y) {
    if (TIFFReadScanline(tiff_.get(), samples_.data(), y) < 0) FailOnDamage();
    return samples_.data();
  }

  // Tiles are put together into whole rows, a row of tiles at a time.
  const uint8_t *RowOfTiles(uint32_t y) {
    if (y % tileHeight_ == 0) {
      const size_t bytesAcross = static_cast<size_t>(TIFFTileRowSize(tiff_.get()));
      for (uint32_t x = 0; x < static_cast<uint32_t>(header_.width); x += tileWidth_) {
        if (TIFFReadTile(tiff_.get(), tile_.data(), x, y, 0, 0) < 0) FailOnDamage();
        const size_t position = x / tileWidth_ * bytesAcross;
        const size_t bytes = std::min(bytesAcross, samples_.size() - position);
        for (uint32_t row = 0; row < tileHeight_; ++row) {
          std::memcpy(tileRow_.data() + row * samples_.size() + position, tile_.data() + row * bytesAcross, bytes);
        }
      }
    }
    return tileRow_.data() + y % tileHeight_ * samples_.size();
  }

  // Samples of 16 bits come in the machine's order, smaller ones from the high bits of their byte down. Of 16 bits
  // colours are rounded and gray is cut, as whole pictures are read.
  template <class Sample>
  void Convert(const uint8_t *samples, uint8_t *target) const {
    const auto sampleAt = [&](size_t index) -> uint8_t {
      if constexpr (sizeof(Sample) == 2) {
        uint16_t sample;
        std::memcpy(&sample, samples + index * 2, sizeof sample);
        return static_cast<uint8_t>(form_.Colours() == 3 ? (sample + 128) / 257 : sample >> 8);
      } else if (form_.bits == 8) {
        return samples[index];
      }
      const size_t position = index * form_.bits;
      return static_cast<uint8_t>(samples[position / 8] >> (8 - form_.bits - position % 8) & ((1 << form_.bits) - 1));
    };
    const size_t colourStep = form_.Colours() == 3 ? 1 : 0;
    size_t first = 0;
    for (int32_t x = 0; x < header_.width; ++x, first += form_.samples) {
      for (size_t channel = 0; channel < 3; ++channel) {
        *target++ = tables_[channel][sampleAt(first + channel * colourStep)];
      }
      if (form_.hasAlpha) *target++ = sampleAt(first + static_cast<size_t>(form_.Colours()));
    }
  }

  // To the nearest; black where nothing is left of a colour.
  void DivideByAlpha() {
    for (size_t i = 0; i < pixels_.size(); i += 4) {
      const int alpha = pixels_[i + 3];
      for (size_t channel = i; channel < i + 3; ++channel) {
        const int colour = alpha == 0 ? 0 : (pixels_[channel] * 255 + alpha / 2) / alpha;
        pixels_[channel] = static_cast<uint8_t>(std::min(colour, 255));
      }
    }
  }

  OwnedStream stream_;
  OwnedTiff tiff_;
  PixelForm form_;
  std::array<std::array<uint8_t, 256>, 3> tables_ = {};
  std::vector<uint8_t> samples_;  // a row as it is stored
  std::vector<uint8_t> pixels_;   // a row with alpha
  uint32_t tileWidth_ = 0;
  uint32_t tileHeight_ = 0;
  std::vector<uint8_t> tile_;
  std::vector<uint8_t> tileRow_;  // rows as they are stored, as many as a tile has
  int32_t rowsRead_ = 0;
};

// --- writing ---

// Beyond this many bytes of pixels a file gets offsets of 64 bits. What is not pixels stays below the rest.
constexpr int64_t kLargestClassicTiff = 4'000'000'000;
constexpr int64_t kStripBytes = 1 << 16;

class TiffRowWriter : public RowWriter {
 public:
  TiffRowWriter(const std::string &path, int32_t width, int32_t height, bool hasAlpha) : file_(path) {
    const uint16_t samples = hasAlpha ? 4 : 3;
    const int64_t rowBytes = int64_t{samples} * width;
    tiff_ = OpenTiff(path, file_.Descriptor(), rowBytes * height > kLargestClassicTiff ? "w8" : "w");
    if (tiff_ == nullptr) file_.FailToWrite(errno);
    const auto rowsPerStrip = static_cast<uint32_t>(std::clamp<int64_t>(kStripBytes / rowBytes, 1, height));
    TIFFSetField(tiff_.get(), TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(width));
    TIFFSetField(tiff_.get(), TIFFTAG_IMAGELENGTH, static_cast<uint32_t>(height));
    TIFFSetField(tiff_.get(), TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff_.get(), TIFFTAG_SAMPLESPERPIXEL, samples);
    const uint16_t extra = EXTRASAMPLE_UNASSALPHA;
    if (hasAlpha) TIFFSetField(tiff_.get(), TIFFTAG_EXTRASAMPLES, 1, &extra);
    TIFFSetField(tiff_.get(), TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tiff_.get(), TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff_.get(), TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
    TIFFSetField(tiff_.get(), TIFFTAG_ROWSPERSTRIP, rowsPerStrip);
  }

  void WriteRow(std::span<const uint8_t> row) override {
    void *const source = const_cast<uint8_t *>(row.data());  // only read
    if (TIFFWriteScanline(tiff_.get(), source, rowsWritten_++, 0) < 0) file_.FailToWrite(errno);
  }

  void Finish() override {
    if (TIFFFlush(tiff_.get()) == 0) file_.FailToWrite(errno);
    tiff_.reset();
    file_.Commit();
  }

 private:
  PartFile file_;
  OwnedTiff tiff_;
  uint32_t rowsWritten_ = 0;
};

}  // namespace

std::unique_ptr<RowReader> OpenTiffRows(const std::string &path, OwnedStream stream, Interlaced /*interlaced*/) {
  return std::make_unique<TiffRowReader>(path, std::move(stream));
}

std::unique_ptr<RowWriter> CreateTiffRows(const std::string &path, int32_t width, int32_t height, bool hasAlpha) {
  return std::make_unique<TiffRowWriter>(path, width, height, hasAlpha);
}

}  // namespace standalone
