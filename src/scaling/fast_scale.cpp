#include "scaling/fast_scale.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <optional>
#include <tuple>
#include <type_traits>

#include "host/resources.h"
#include "host/truncate.h"
#include "image/image_record.h"
#include "image/rows.h"
#include "pixels/luma.h"
#include "pixels/overlap.h"
#include "pixels/row_walker.h"
#include "scaling/scale_kernels.h"
#include "scaling/scale_pairs.h"
#include "scaling/watched_image.h"

namespace zvk::scaling {

namespace {

// --- pairs ---

constexpr int32_t kNoInk = -1;  // in place of a value: 0

// What a destination pixel gets of a source pixel.
struct FastPair {
  ChannelList<ChannelOffset> Read;
  ChannelList<ScaleWrite> Write;  // all is read before anything is written
  ScaleValues Values = ScaleValues::kSamples;
};

// Unlike in the resampler yellow is read as yellow.
constexpr FastPair kInks{.Read = {&ImageClassData::CyanOffset, &ImageClassData::MagentaOffset,
                                  &ImageClassData::YellowOffset, &ImageClassData::BlackOffset},
                         .Write = kInksWritten};
constexpr FastPair kInksAndAlpha{
    .Read = {&ImageClassData::CyanOffset, &ImageClassData::MagentaOffset, &ImageClassData::YellowOffset,
             &ImageClassData::BlackOffset, &ImageClassData::AlphaOffset},
    .Write = kInksAndAlphaWritten};
constexpr FastPair kBlackToGray{.Read = {&ImageClassData::BlackOffset}, .Write = kGrayWritten};
constexpr FastPair kBlackToGrayAndAlpha{.Read = {&ImageClassData::BlackOffset, &ImageClassData::AlphaOffset},
                                        .Write = kGrayAndAlphaWritten};
constexpr FastPair kColour{.Read = kColourRead, .Write = RGB_to_RGB.Write};
constexpr FastPair kColourAndAlpha{.Read = kColourAndAlphaRead, .Write = RGBA_to_RGBA.Write};
constexpr FastPair kColourToGray{.Read = kColourRead, .Write = kGrayWritten, .Values = ScaleValues::kGrayOfColour};
constexpr FastPair kColourToGrayAndAlpha{
    .Read = kColourAndAlphaRead, .Write = kGrayAndAlphaWritten, .Values = ScaleValues::kGrayOfColour};
constexpr FastPair kGrayToBlack{.Read = {&ImageClassData::GrayOffset},
                                .Write = {{&ImageClassData::CyanOffset, kNoInk},
                                          {&ImageClassData::MagentaOffset, kNoInk},
                                          {&ImageClassData::YellowOffset, kNoInk},
                                          {&ImageClassData::BlackOffset, 0}}};
constexpr FastPair kGrayToColour{.Read = {&ImageClassData::GrayOffset}, .Write = G_to_RGB.Write};
constexpr FastPair kGray{.Read = {&ImageClassData::GrayOffset}, .Write = kGrayWritten};
constexpr FastPair kGrayAndAlpha{.Read = {&ImageClassData::GrayOffset, &ImageClassData::AlphaOffset},
                                 .Write = kGrayAndAlphaWritten};

// --- pixels ---

template <const FastPair &Pair>
using PixelValues = std::array<uint8_t, ValueCount(Pair.Read.count, Pair.Values)>;

// Where a pair finds its samples in the pixels of two images. These are copies, as the compiler must take every byte
// that is written for a change of a record.
template <const FastPair &Pair>
struct PixelOffsets {
  PixelOffsets(const ImageClassData &source, const ImageClassData &dest)
      : sourceSize(source.PixelSize), destSize(dest.PixelSize) {
    for (int32_t i = 0; i < Pair.Read.count; ++i) read[i] = source.*Pair.Read[i];
    for (int32_t i = 0; i < Pair.Write.count; ++i) write[i] = dest.*Pair.Write[i].channel;
  }

  ptrdiff_t sourceSize;
  ptrdiff_t destSize;
  std::array<int32_t, Pair.Read.count> read{};
  std::array<int32_t, Pair.Write.count> write{};
};

template <const FastPair &Pair>
using PixelSamples = std::array<uint8_t, Pair.Read.count>;

template <const FastPair &Pair>
PixelValues<Pair> ValuesOf(const PixelSamples<Pair> &samples) {
  if constexpr (Pair.Values == ScaleValues::kSamples) {
    return samples;
  } else {
    PixelValues<Pair> values{static_cast<uint8_t>(Luma(samples[0], samples[1], samples[2]))};
    std::copy(samples.begin() + 3, samples.end(), values.begin() + 1);
    return values;
  }
}

template <const FastPair &Pair>
PixelValues<Pair> ReadPixel(const uint8_t *pixel, const PixelOffsets<Pair> &offsets) {
  PixelSamples<Pair> samples{};
  for (int32_t i = 0; i < Pair.Read.count; ++i) samples[i] = pixel[offsets.read[i]];
  return ValuesOf<Pair>(samples);
}

template <const FastPair &Pair>
void WritePixel(uint8_t *pixel, const PixelOffsets<Pair> &offsets, const PixelValues<Pair> &values) {
  for (int32_t i = 0; i < Pair.Write.count; ++i) {
    const int32_t value = Pair.Write[i].value;
    pixel[offsets.write[i]] = value == kNoInk ? 0 : values[value];
  }
}

// True for pairs that give each sample to one channel, unchanged and in order.
template <const FastPair &Pair>
constexpr bool MovesSamples() {
  if (Pair.Values != ScaleValues::kSamples || Pair.Read.count != Pair.Write.count) return false;
  for (int32_t i = 0; i < Pair.Write.count; ++i) {
    if (Pair.Write[i].value != i) return false;
  }
  return true;
}

// True if the samples stand side by side and in the same order in the pixels of both images.
template <const FastPair &Pair>
bool MoveAsOne(const PixelOffsets<Pair> &offsets) {
  const int64_t shift = int64_t{offsets.write[0]} - offsets.read[0];
  for (int32_t i = 1; i < Pair.Read.count; ++i) {
    if (int64_t{offsets.write[i]} - offsets.read[i] != shift) return false;
  }
  return SamplesAreSideBySide(offsets.read);
}

// --- rows ---

// The source column for each column of the destination: the one under its left edge.
struct SourceColumns {
  const int32_t *table;  // nil where there was no memory for it
  double step;

  int32_t operator[](int32_t x) const { return table != nullptr ? table[x] : Truncate(step * x); }
};

struct FastJob {
  ImageClassData &dest;
  ImageClassData &source;
  SourceColumns columns;
  int32_t width;           // columns that are written
  bool fillsRows = false;  // bytes of a row may be written in any order, and more than once
};

// Moves `Bytes` bytes of each pixel. The distance of pixels, in a type of its own if it is known to the compiler.
template <int32_t Bytes, class Distance>
void MovePixels(const uint8_t *source, Distance sourceSize, uint8_t *dest, Distance destSize, SourceColumns columns,
                int32_t width) {
  for (int32_t x = 0; x < width; ++x) {
    std::array<uint8_t, Bytes> pixel{};
    std::memcpy(pixel.data(), source + columns[x] * sourceSize, Bytes);
    std::memcpy(dest, pixel.data(), Bytes);
    dest += destSize;
  }
}

// The same for pixels of three bytes without gaps in a row that is filled: a pixel is moved with the byte behind it,
// which the next pixel writes over. The last pixel is moved without that byte, and so is what comes from the last
// column of the source. Behind any other column lies a byte that is read for a later pixel, or one before such a byte.
void MovePackedTriples(const uint8_t *source, int32_t sourceWidth, uint8_t *dest, SourceColumns columns,
                       int32_t width) {
  constexpr ptrdiff_t kBytes = 3;
  int32_t whole = width - 1;
  while (whole > 0 && columns[whole - 1] >= sourceWidth - 1) --whole;
  for (int32_t x = 0; x < whole; ++x) {
    uint32_t word;
    std::memcpy(&word, source + columns[x] * kBytes, sizeof word);
    std::memcpy(dest + x * kBytes, &word, sizeof word);
  }
  for (int32_t x = whole; x < width; ++x) std::memcpy(dest + x * kBytes, source + columns[x] * kBytes, kBytes);
}

// One row, pixel after pixel from the left.
template <const FastPair &Pair>
void MakeRow(const FastJob &job, const uint8_t *source, uint8_t *dest) {
  const PixelOffsets<Pair> offsets(job.source, job.dest);
  const SourceColumns columns = job.columns;
  if constexpr (MovesSamples<Pair>()) {
    if (MoveAsOne<Pair>(offsets)) {
      constexpr int32_t kBytes = Pair.Read.count;
      source += RangeOf(offsets.read).lowest;
      dest += RangeOf(offsets.write).lowest;
      const bool isPacked = offsets.sourceSize == kBytes && offsets.destSize == kBytes;
      if (kBytes == 3 && isPacked && job.fillsRows) {
        MovePackedTriples(source, job.source.Width, dest, columns, job.width);
      } else if (isPacked) {
        constexpr std::integral_constant<ptrdiff_t, kBytes> kPacked;
        MovePixels<kBytes>(source, kPacked, dest, kPacked, columns, job.width);
      } else {
        MovePixels<kBytes>(source, offsets.sourceSize, dest, offsets.destSize, columns, job.width);
      }
      return;
    }
  }
  for (int32_t x = 0; x < job.width; ++x) {
    WritePixel<Pair>(dest, offsets, ReadPixel<Pair>(source + columns[x] * offsets.sourceSize, offsets));
    dest += offsets.destSize;
  }
}

// The same for a source without columns: each pixel gets the samples at the offsets of its row. A part that begins at
// the right edge of an image has them behind its rows. A channel whose sample lies behind the storage stays as it is.
template <const FastPair &Pair>
void MakeRowOfNoColumns(const FastJob &job, const uint8_t *source, uint8_t *dest) {
  constexpr int32_t kSamplesOfFirstValue = Pair.Values == ScaleValues::kGrayOfColour ? 3 : 1;
  const PixelOffsets<Pair> offsets(job.source, job.dest);
  const int64_t end = BytesFromRow(job.source, source);
  for (int32_t x = 0; x < job.width; ++x) {
    PixelSamples<Pair> samples{};
    std::array<bool, std::tuple_size_v<PixelValues<Pair>>> lacks{};
    for (int32_t i = 0; i < Pair.Read.count; ++i) {
      if (offsets.read[i] < end) {
        samples[i] = source[offsets.read[i]];
      } else {
        lacks[std::max(i - kSamplesOfFirstValue + 1, 0)] = true;
      }
    }
    const PixelValues<Pair> values = ValuesOf<Pair>(samples);
    for (int32_t i = 0; i < Pair.Write.count; ++i) {
      const int32_t value = Pair.Write[i].value;
      if (value == kNoInk || !lacks[value]) dest[offsets.write[i]] = value == kNoInk ? 0 : values[value];
    }
    dest += offsets.destSize;
  }
}

// Where in a row of the destination the bytes begin that are written, if none between them is left as it is and no row
// reaches into another one, nor any into the source.
template <const FastPair &Pair>
std::optional<int32_t> FirstOfFilledRow(const FastJob &job, int32_t height) {
  const PixelOffsets<Pair> offsets(job.source, job.dest);
  const OffsetRange written = RangeOf(offsets.write);
  if (offsets.destSize != Pair.Write.count || !SamplesAreSideBySide(offsets.write) ||
      !RowsAreApart(job.dest, written, job.width, height) || !ImagesAreApart(job.source, job.dest, job.width, height)) {
    return {};
  }
  return written.lowest;
}

struct RowMaker {
  void (*make)(const FastJob &job, const uint8_t *source, uint8_t *dest);
  void (*makeOfNoColumns)(const FastJob &job, const uint8_t *source, uint8_t *dest);
  std::optional<int32_t> (*firstOfFilledRow)(const FastJob &job, int32_t height);
};

// Knows the last row that was made, of which the next one is a copy if it shows the same row of the source and nobody
// can tell the difference.
class RowCopier {
 public:
  // `first` is where in a row the bytes begin that are written; empty if rows are not to be copied.
  RowCopier(const FastJob &job, const std::optional<int32_t> &first)
      : dest_(job.dest), bytes_(ptrdiff_t{job.width} * job.dest.PixelSize), first_(first), lastPlace_(job.dest) {}

  // False if the row is to be made anew.
  bool Copy(int32_t sourceRow, uint8_t *dest) {
    const bool isCopy = first_ && lastDest_ != nullptr && sourceRow == lastSourceRow_ && lastPlace_.IsThatOf(dest_);
    if (isCopy) std::memcpy(dest + *first_, lastDest_ + *first_, static_cast<size_t>(bytes_));
    lastSourceRow_ = sourceRow;
    lastDest_ = dest;
    lastPlace_ = BlockPlace(dest_);
    return isCopy;
  }

 private:
  const ImageClassData &dest_;
  ptrdiff_t bytes_;
  std::optional<int32_t> first_;
  int32_t lastSourceRow_ = 0;
  const uint8_t *lastDest_ = nullptr;
  BlockPlace lastPlace_;
};

uint8_t ScaleRows(const RowMaker &maker, ImageClassData &dest, ImageClassData &source, int32_t width, int32_t height) {
  const WatchedImage watchedDest(dest), watchedSource(source);
  if (!IsUsable(source)) return false;
  YieldOn(source);
  if (!IsUsable(dest)) return false;
  YieldOn(dest);

  const int32_t sourceWidth = source.Width;
  const int32_t sourceHeight = source.Height;
  const double xstep = static_cast<double>(sourceWidth) / width;
  const double ystep = static_cast<double>(sourceHeight) / height;
  const auto areLargeEnough = [&] {
    return watchedSource.RowsOf(sourceWidth, source.PixelSize) >= sourceHeight &&
           watchedDest.RowsOf(width, dest.PixelSize) >= height;
  };
  if (!areLargeEnough()) return false;
  const ZeroedBuffer<int32_t> table(width);
  if (table) {
    for (int32_t x = 0; x < width; ++x) table[x] = Truncate(xstep * x);
  }
  FastJob job{dest, source, {table.Get(), xstep}, width};
  // In a yield the source may change. Without columns a row need not be filled.
  std::optional<int32_t> first;
  if (dest.Yield.YieldTicks == 0 && sourceWidth > 0) first = maker.firstOfFilledRow(job, height);
  job.fillsRows = first.has_value();
  const auto make = sourceWidth > 0 ? maker.make : maker.makeOfNoColumns;
  RowCopier copier(job, first);
  RowGroup rows;
  for (int32_t y = 0; y < height; ++y) {
    if (y > 0 && !areLargeEnough()) return false;
    const int32_t sourceY = Truncate(ystep * y);
    if (rows.Fetch(dest, y, source, nullptr, sourceY) && !copier.Copy(sourceY, rows.Dest())) {
      make(job, rows.First(), rows.Dest());
    }
    YieldOn(dest);
  }
  return true;
}

// --- the choice of a pair ---

template <const FastPair &Pair>
uint8_t ScalePixels(ImageClassData &dest, ImageClassData &source, int32_t width, int32_t height) {
  return ScaleRows({MakeRow<Pair>, MakeRowOfNoColumns<Pair>, FirstOfFilledRow<Pair>}, dest, source, width, height);
}

using FastScale = uint8_t (*)(ImageClassData &dest, ImageClassData &source, int32_t width, int32_t height);

constexpr FastScale CMYK_to_CMYK_Scale = ScalePixels<kInks>;
constexpr FastScale CMYK_to_G_Scale = ScalePixels<kBlackToGray>;
constexpr FastScale RGB_to_RGB_Scale = ScalePixels<kColour>;
constexpr FastScale RGB_to_G_Scale = ScalePixels<kColourToGray>;
constexpr FastScale G_to_RGB_Scale = ScalePixels<kGrayToColour>;
constexpr FastScale G_to_G_Scale = ScalePixels<kGray>;

FastScale ScaleOfInks(bool alpha, const ImageClassData &dest) {
  if (dest.IsCMYK) return alpha && dest.HasAlpha ? ScalePixels<kInksAndAlpha> : CMYK_to_CMYK_Scale;
  if (dest.IsRGB) return nullptr;
  if (dest.IsGray) return alpha && dest.HasAlpha ? ScalePixels<kBlackToGrayAndAlpha> : CMYK_to_G_Scale;
  return nullptr;
}

FastScale ScaleOfColour(bool alpha, const ImageClassData &dest) {
  if (dest.IsCMYK) return nullptr;
  if (dest.IsRGB) return alpha && dest.HasAlpha ? ScalePixels<kColourAndAlpha> : RGB_to_RGB_Scale;
  if (dest.IsGray) return alpha && dest.HasAlpha ? ScalePixels<kColourToGrayAndAlpha> : RGB_to_G_Scale;
  return nullptr;
}

FastScale ScaleOfGray(bool alpha, const ImageClassData &dest) {
  // Ink only where both have alpha or neither has it; the destination's alpha stays.
  if (dest.IsCMYK) return alpha == (dest.HasAlpha != 0) ? ScalePixels<kGrayToBlack> : nullptr;
  // The destination's alpha stays here too, even if the source has one.
  if (dest.IsRGB) return G_to_RGB_Scale;
  if (dest.IsGray) return alpha && dest.HasAlpha ? ScalePixels<kGrayAndAlpha> : G_to_G_Scale;
  return nullptr;
}

// Nil where nothing is converted.
FastScale FindFastScale(const ImageClassData &source, const ImageClassData &dest) {
  if (source.IsCMYK) return ScaleOfInks(source.HasAlpha, dest);
  if (source.IsRGB) return ScaleOfColour(source.HasAlpha, dest);
  if (source.IsGray) return ScaleOfGray(source.HasAlpha, dest);
  return nullptr;
}

}  // namespace

uint8_t ScalePictureFast(REALobject dest, REALobject source, int32_t width, int32_t height) {
  if (source == nullptr || dest == nullptr) return false;
  ImageClassData &sourceRecord = *RecordOf(source);
  ImageClassData &destRecord = *RecordOf(dest);
  if (!sourceRecord.Valid || !destRecord.Valid) return false;
  if (sourceRecord.BitsPerComponent == 16 || destRecord.BitsPerComponent == 16) return false;
  width = std::min(destRecord.Width, width);
  height = std::min(destRecord.Height, height);
  if (width < 1 || height < 1) return false;
  const FastScale scale = FindFastScale(sourceRecord, destRecord);
  return scale != nullptr && scale(destRecord, sourceRecord, width, height);
}

}  // namespace zvk::scaling
