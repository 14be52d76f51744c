#include "compositing/copy_pixels.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>
#include <optional>
#include <span>

#include "image/channels.h"
#include "image/image_record.h"
#include "image/rectangle.h"
#include "image/rows.h"
#include "pixels/conversion.h"
#include "pixels/pixel_watch.h"
#include "pixels/row_walker.h"
#include "pixels/wide_samples.h"

namespace zvk::compositing {

namespace {

// --- blocks ---

// The channels by which two images are found to be packed alike, and where a row's first sample lies. CMYK images never
// are.
struct BlockChannel {
  uint8_t ImageClassData::*has;
  int32_t ImageClassData::*offset;
};
constexpr BlockChannel kBlockChannels[] = {
    {&ImageClassData::HasRed, &ImageClassData::RedOffset},
    {&ImageClassData::HasGreen, &ImageClassData::GreenOffset},
    {&ImageClassData::HasBlue, &ImageClassData::BlueOffset},
    {&ImageClassData::HasGray, &ImageClassData::GrayOffset},
    {&ImageClassData::HasAlpha, &ImageClassData::AlphaOffset},
};

bool FillsItsPixels(const ImageClassData &image) {
  return std::ranges::count_if(kBlockChannels, [&](const BlockChannel &channel) { return image.*channel.has != 0; }) ==
         image.PixelSize;
}

// True if rows are copied as blocks. The offset of gray is not asked for.
bool IsBlockCopy(const ImageClassData &dest, const ImageClassData &source) {
  return !dest.IsMapping && !source.IsMapping && FillsItsPixels(dest) && FillsItsPixels(source) &&
         std::ranges::all_of(
             kBlockChannels,
             [&](const BlockChannel &channel) { return (dest.*channel.has != 0) == (source.*channel.has != 0); }) &&
         dest.BitsPerComponent == source.BitsPerComponent && dest.RedOffset == source.RedOffset &&
         dest.GreenOffset == source.GreenOffset && dest.BlueOffset == source.BlueOffset &&
         (!dest.HasAlpha || dest.AlphaOffset == source.AlphaOffset);
}

int32_t SmallestOffset(const ImageClassData &image) {
  int32_t smallest = INT_MAX;
  for (const BlockChannel &channel : kBlockChannels) {
    if (image.*channel.has) smallest = std::min(smallest, image.*channel.offset);
  }
  return smallest;
}

// Each block is longer than the rectangle by destX pixels: it goes on into the rest of the row and the rows behind it,
// as far as both storages go.
void CopyBlock(ImageClassData &dest, uint8_t *destRow, const ImageClassData &source, const uint8_t *sourceRow,
               const Transfer &transfer) {
  const int64_t channels = dest.PixelSize;
  const int64_t destStart = transfer.destX * channels + SmallestOffset(dest);
  const int64_t sourceStart = transfer.sourceX * channels + SmallestOffset(source);
  const int64_t size =
      std::min({(int64_t{transfer.width} + transfer.destX) * channels, BytesFromRow(dest, destRow) - destStart,
                BytesFromRow(source, sourceRow) - sourceStart});
  if (size > 0) std::memmove(destRow + destStart, sourceRow + sourceStart, static_cast<size_t>(size));
}

// --- pixel by pixel ---

struct PixelCopy {
  PixelConversion pixels;
  OffsetRange written;  // of the samples that a pixel gets
};

// How pixels are copied; empty where no conversion is defined, and for an image of no family.
std::optional<PixelCopy> CopyBetween(const ImageClassData &source, const ImageClassData &dest) {
  const auto from = PixelLayoutOf<ColourFamily::Gray, ColourFamily::RGB, ColourFamily::CMYK>(source);
  const auto to = PixelLayoutOf<ColourFamily::Gray, ColourFamily::RGB, ColourFamily::CMYK>(dest);
  if (!from || !to) return std::nullopt;
  const auto pixels = PixelConversion::Between(*from, *to,
                                               {.grayIsBlackAlone = true,
                                                .keepsWideSamples = true,
                                                .inksWithAlphaAreColours = true,
                                                .alwaysInOrder = MayBeMappedTwice(source, dest)});
  if (!pixels) return std::nullopt;
  const size_t samples = to->ColourCount() + (from->hasAlpha && to->hasAlpha ? 1 : 0);
  return PixelCopy{*pixels, RangeOf(std::span(to->offsets).first(samples))};
}

// A row of gray into 16-bit samples. Of one without a second byte, on either side, the first byte is copied.
void CopyIntoWideSamples(const ImageClassData &dest, const ImageClassData &source, const RowGroup &rows,
                         const Transfer &transfer, const PixelConversion &pixels) {
  const auto to = [&](int32_t x) { return rows.Dest() + (ptrdiff_t{transfer.destX} + x) * dest.PixelSize; };
  const auto from = [&](int32_t x) { return rows.First() + (ptrdiff_t{transfer.sourceX} + x) * source.PixelSize; };
  const auto copyWhole = [&](int32_t x, int32_t count) { pixels.ConvertRow(from(x), to(x), count); };
  const auto copyCut = [&](int32_t x) { to(x)[dest.GrayOffset] = from(x)[source.GrayOffset]; };
  const auto copyRun = [&](int32_t x, int32_t count) {
    if (source.BitsPerComponent != 16) return copyWhole(x, count);
    VisitWideSamples(
        source, rows.First(), transfer.sourceX + x, count,
        [&](int32_t column, int32_t run) { copyWhole(column - transfer.sourceX, run); },
        [&](int32_t column) { copyCut(column - transfer.sourceX); });
  };
  VisitWideSamples(
      dest, rows.Dest(), transfer.destX, transfer.width,
      [&](int32_t column, int32_t count) { copyRun(column - transfer.destX, count); },
      [&](int32_t column) { copyCut(column - transfer.destX); });
}

// The transfer may be empty, where only the cut of sums that have wrapped has left nothing: no row is asked for then.
bool CopyRows(ImageClassData &dest, ImageClassData &source, const Transfer &transfer) {
  const auto forEachRow = [&](const auto &copyRow) {
    return IsEmpty(transfer) ||
           ForEachRowGroup(dest, transfer.destY, source, nullptr, transfer.sourceY, transfer.height, copyRow);
  };
  if (IsBlockCopy(dest, source)) {
    return forEachRow([&](const RowGroup &rows) { CopyBlock(dest, rows.Dest(), source, rows.First(), transfer); });
  }
  std::optional<PixelCopy> copy = CopyBetween(source, dest);
  if (!copy) {
    if (IsEmpty(transfer)) return false;
    // The first rows are asked for all the same, which moves the blocks of mapped images.
    FetchRow(dest, transfer.destY);
    FetchRow(source, transfer.sourceY);
    return false;
  }
  return forEachRow([&](const RowGroup &rows) {
    // Other code of the host may have moved the channels since.
    if (dest.Yield.YieldTicks != 0) copy = CopyBetween(source, dest);
    if (!copy) return;
    if (dest.BitsPerComponent == 16 && source.IsGray) {
      return CopyIntoWideSamples(dest, source, rows, transfer, copy->pixels);
    }
    uint8_t *destPixel = rows.Dest() + ptrdiff_t{transfer.destX} * dest.PixelSize;
    // Bytes between the samples stay, so that these may be read as well.
    ExpectWrites(dest, destPixel, copy->written, transfer.width);
    copy->pixels.ConvertRow(rows.First() + ptrdiff_t{transfer.sourceX} * source.PixelSize, destPixel, transfer.width);
  });
}

}  // namespace

uint8_t rbCopyPixels8(REALobject instance, REALobject source, int32_t destX, int32_t destY, int32_t destWidth,
                      int32_t destHeight, int32_t sourceX, int32_t sourceY) {
  ImageClassData *dest = RecordOf(instance);
  ImageClassData *from = RecordOf(source);
  if (dest == nullptr || from == nullptr || !from->Valid || !IsUsable(*dest)) return false;
  const PixelWatch watchedDest(*dest), watchedSource(*from);
  YieldOn(*dest);
  if (!IsUsable(*from)) return false;
  YieldOn(*from);
  // The yields let other code of the host run, which may have closed or constructed anew either image.
  if (!IsUsable(*dest) || !IsUsable(*from) || !watchedDest.HasStorage() || !watchedSource.HasStorage()) return false;

  const Transfer fitted = FitTransfer({destX, destY, destWidth, destHeight, sourceX, sourceY}, dest->Width,
                                      dest->Height, from->Width, from->Height);
  return !IsEmpty(fitted) &&
         CopyRows(*dest, *from, CutToImages(fitted, dest->Width, dest->Height, from->Width, from->Height));
}

uint8_t rbCopyPixels6(REALobject instance, REALobject source, int32_t destX, int32_t destY, int32_t destWidth,
                      int32_t destHeight) {
  return rbCopyPixels8(instance, source, destX, destY, destWidth, destHeight, 0, 0);
}

uint8_t rbCopyPixels2(REALobject instance, REALobject source) {
  const ImageClassData *dest = RecordOf(instance);
  return dest != nullptr && rbCopyPixels8(instance, source, 0, 0, dest->Width, dest->Height, 0, 0);
}

}  // namespace zvk::compositing
