#include "pictures/masked_drawing.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "host/host_services.h"
#include "pictures/picture_import.h"
#include "pictures/pixel_rows.h"
#include "pictures/pixel_words.h"
#include "pixels/dispatch.h"
#include "pixels/divide_by_255.h"

namespace zvk::pictures {

namespace {

bool HasColours(const ImageClassData &image) { return image.HasRed && image.HasGreen && image.HasBlue; }

// Nil if there is none. The reference that comes with it is never given back.
REALobject ExistingMask(REALobject picture) { return REALGetPictureMask(picture, 0); }

// --- one row ---

// Pixels of one row, from the first one that is drawn on.
struct MaskedPixels {
  uint8_t *dest;
  const uint8_t *source;
  const uint8_t *mask;  // nil for a white one
};

// How the pixels of a picture and of its mask are drawn into an image, whose offsets count as they are at the row.
class MaskedRow {
 public:
  MaskedRow(const PixelWord &word, const PixelWord &maskWord, bool invertMask)
      : word_(word), maskWord_(maskWord), invertMask_(invertMask) {}

  // The mask's red becomes alpha, which a colour at the same place replaces.
  void Store(const ImageClassData &image, const MaskedPixels &row, int32_t width);
  // Each colour is blended over the image's. There must be a mask.
  void Blend(const ImageClassData &image, const MaskedPixels &row, int32_t width);

 private:
  static constexpr int32_t kTileBytes = kTilePixels * kWordBytes;
  using Tile = std::array<uint8_t, kTileBytes>;

  void StoreMasked(const ImageClassData &image, const MaskedPixels &row, int32_t width);
  void StoreInOrder(const ImageClassData &image, const MaskedPixels &pixels, int32_t count) const;
  void BlendInOrder(const ImageClassData &image, const MaskedPixels &pixels, int32_t count) const;

  const PixelWord &word_;
  const PixelWord &maskWord_;
  const bool invertMask_;
  RowMover moveColours_;
  RowMover moveMask_;
};

MaskedPixels PixelsAt(const MaskedPixels &row, ptrdiff_t x, ptrdiff_t pixelSize) {
  return {row.dest + x * pixelSize, row.source + x * kWordBytes, row.mask + x * kWordBytes};
}

bool AllLieApart(const MaskedPixels &pixels, const PixelReach &reach, int32_t count) {
  return LieApart(pixels.dest, reach, pixels.source, count) && LieApart(pixels.dest, reach, pixels.mask, count);
}

// What a sample is exclusive-ored with.
constexpr uint8_t Flip(bool complement) { return complement ? 255 : 0; }

// The picture's weight 255 gives `drawn`, 0 gives `old`. What is divided is weight * drawn + (255 - weight) * old.
uint8_t BlendSample(uint32_t old, uint32_t drawn, uint32_t weight) {
  return static_cast<uint8_t>(DivideBy255(255 * old + weight * (drawn - old)));
}

[[gnu::always_inline]] inline void BlendBytesBody(uint8_t *__restrict dest, const uint8_t *__restrict drawn,
                                                  const uint8_t *__restrict weights, ptrdiff_t count) {
  for (ptrdiff_t i = 0; i < count; ++i) dest[i] = BlendSample(dest[i], drawn[i], weights[i]);
}
constexpr auto BlendBytes = KernelOf<BlendBytesBody>;

void MaskedRow::Store(const ImageClassData &image, const MaskedPixels &row, int32_t width) {
  const auto colours = ColourMoves(word_, image);
  const auto move = [&](std::span<const SampleMove> moves) {
    moveColours_.For(kWordBytes, image.PixelSize, moves)(row.source, row.dest, width);
  };
  const auto &[red, green, blue] = colours;
  if (std::ranges::count(colours, image.AlphaOffset, &SampleMove::to) != 0) {
    move(colours);
  } else if (row.mask == nullptr) {
    move(std::array{SampleMove{.from = red.from, .to = image.AlphaOffset, .zero = invertMask_, .full = !invertMask_},
                    red, green, blue});
  } else {
    StoreMasked(image, row, width);
  }
}

// There is a mask, and no colour replaces alpha within its pixel.
void MaskedRow::StoreMasked(const ImageClassData &image, const MaskedPixels &row, int32_t width) {
  const std::array offsets{image.RedOffset, image.GreenOffset, image.BlueOffset, image.AlphaOffset};
  const PixelReach reach{image.PixelSize, RangeOf(offsets)};
  const SampleMove alpha{maskWord_.red, image.AlphaOffset, invertMask_};
  const SampleMover &moveColours = moveColours_.For(kWordBytes, image.PixelSize, ColourMoves(word_, image));
  const SampleMover &moveMask = moveMask_.For(kWordBytes, image.PixelSize, std::span(&alpha, 1));
  for (int32_t x = 0, count = 0; x < width; x += count) {
    count = std::min(width - x, kTilePixels);
    const MaskedPixels pixels = PixelsAt(row, x, image.PixelSize);
    if (AllLieApart(pixels, reach, count)) {
      moveMask(pixels.mask, pixels.dest, count);
      moveColours(pixels.source, pixels.dest, count);
    } else {
      StoreInOrder(image, pixels, count);
    }
  }
}

// Calls work(dest, source, mask) for each pixel. It must work a pixel out whole before it stores any of it, and it is
// stored before the next one is looked at, as the image may lie over the very picture.
template <class Work>
void ForEachPixel(const MaskedPixels &pixels, ptrdiff_t pixelSize, int32_t count, Work work) {
  auto [dest, source, mask] = pixels;
  for (int32_t i = 0; i < count; ++i) {
    work(dest, source, mask);
    dest += pixelSize;
    source += kWordBytes;
    mask += kWordBytes;
  }
}

void MaskedRow::StoreInOrder(const ImageClassData &image, const MaskedPixels &pixels, int32_t count) const {
  const ptrdiff_t redOffset = image.RedOffset, greenOffset = image.GreenOffset, blueOffset = image.BlueOffset;
  const ptrdiff_t alphaOffset = image.AlphaOffset;
  const PixelWord word = word_, maskWord = maskWord_;
  const uint8_t flip = Flip(invertMask_);
  ForEachPixel(pixels, image.PixelSize, count, [=](uint8_t *dest, const uint8_t *source, const uint8_t *mask) {
    const uint8_t red = source[word.red], green = source[word.green], blue = source[word.blue];
    dest[alphaOffset] = mask[maskWord.red] ^ flip;
    dest[redOffset] = red;
    dest[greenOffset] = green;
    dest[blueOffset] = blue;
  });
}

// The moves of a picture's colours into tiles, whose pixels are as large as the image's and begin with the colour that
// lies first. Zeros go to the bytes between, as far as there are moves left: a mover that writes all bytes is faster.
class TileMoves {
 public:
  TileMoves(const PixelWord &word, const ImageClassData &image, int32_t lowest, bool complement) {
    for (const SampleMove &move : ColourMoves(word, image)) Add({move.from, move.to - lowest, complement});
    const auto colours = All();
    for (int32_t to = 0; to < image.PixelSize && count_ < moves_.size(); ++to) {
      if (!std::ranges::count(colours, to, &SampleMove::to)) Add({.from = word.red, .to = to, .zero = true});
    }
  }

  std::span<const SampleMove> All() const { return std::span(moves_).first(count_); }

 private:
  void Add(const SampleMove &move) { moves_[count_++] = move; }

  std::array<SampleMove, SampleMover::kMost> moves_{};
  size_t count_ = 0;
};

// The picture and its weights are brought into the order in which the image's pixels lie. Bytes of these that are no
// colours have the weight 0, and stay.
void MaskedRow::Blend(const ImageClassData &image, const MaskedPixels &row, int32_t width) {
  const PixelReach reach{image.PixelSize, RangeOf(std::array{image.RedOffset, image.GreenOffset, image.BlueOffset})};
  const TileMoves moves(word_, image, reach.offsets.lowest, false);
  const TileMoves weightMoves(maskWord_, image, reach.offsets.lowest, !invertMask_);
  const SampleMover &moveColours = moveColours_.For(kWordBytes, image.PixelSize, moves.All());
  const SampleMover &moveWeights = moveMask_.For(kWordBytes, image.PixelSize, weightMoves.All());
  const int32_t tilePixels = std::clamp(kTileBytes / image.PixelSize, 1, width);
  Tile drawn, weights;
  for (Tile *tile : {&drawn, &weights}) {
    std::fill_n(tile->data(), std::min<int64_t>(kTileBytes, int64_t{tilePixels} * image.PixelSize), 0);
  }
  for (int32_t x = 0, count = 0; x < width; x += count) {
    count = std::min(width - x, tilePixels);
    const MaskedPixels pixels = PixelsAt(row, x, image.PixelSize);
    if (image.PixelSize <= kTileBytes && AllLieApart(pixels, reach, count)) {
      moveColours(pixels.source, drawn.data(), count);
      moveWeights(pixels.mask, weights.data(), count);
      BlendBytes(pixels.dest + reach.First(), drawn.data(), weights.data(), reach.Size(count));
    } else {
      BlendInOrder(image, pixels, count);
    }
  }
}

void MaskedRow::BlendInOrder(const ImageClassData &image, const MaskedPixels &pixels, int32_t count) const {
  const ptrdiff_t redOffset = image.RedOffset, greenOffset = image.GreenOffset, blueOffset = image.BlueOffset;
  const PixelWord word = word_, maskWord = maskWord_;
  const uint8_t flip = Flip(!invertMask_);
  ForEachPixel(pixels, image.PixelSize, count, [=](uint8_t *dest, const uint8_t *source, const uint8_t *mask) {
    const uint8_t red = BlendSample(dest[redOffset], source[word.red], mask[maskWord.red] ^ flip);
    const uint8_t green = BlendSample(dest[greenOffset], source[word.green], mask[maskWord.green] ^ flip);
    const uint8_t blue = BlendSample(dest[blueOffset], source[word.blue], mask[maskWord.blue] ^ flip);
    dest[redOffset] = red;
    dest[greenOffset] = green;
    dest[blueOffset] = blue;
  });
}

// --- all rows ---

using DrawMaskedRow = void (MaskedRow::*)(const ImageClassData &, const MaskedPixels &, int32_t);

// Draws each row of the transfer by one of the two ways, and steps both cursors. A row that cannot be had is left out.
void DrawRows(const PixelWatch &watched, const Transfer &transfer, PictureEditor &picture, PictureEditor *mask,
              bool invertMask, DrawMaskedRow draw) {
  ImageClassData &image = watched.Record();
  YieldOn(image);
  const PixelWord *word = WordOf(picture.Layout);
  const PixelWord *maskWord = mask != nullptr ? WordOf(mask->Layout) : word;
  if (word == nullptr || maskWord == nullptr) return;
  MaskedRow row(*word, *maskWord, invertMask);
  for (int32_t i = 0; i < transfer.height; ++i) {
    if (uint8_t *dest = DestPixel(watched, transfer, i); dest != nullptr) {
      const uint8_t *maskPixels = mask != nullptr ? SourcePixel(*mask, transfer) : nullptr;
      (row.*draw)(image, {dest, SourcePixel(picture, transfer), maskPixels}, transfer.width);
    }
    picture.NextRow();
    if (mask != nullptr) mask->NextRow();
    YieldOn(image);
  }
}

}  // namespace

void DrawMasked(const PixelWatch &image, const Transfer &transfer, PictureEditor &picture, PictureEditor *mask,
                bool invertMask) {
  DrawRows(image, transfer, picture, mask, invertMask, &MaskedRow::Store);
}

void BlendMasked(const PixelWatch &image, const Transfer &transfer, PictureEditor &picture, PictureEditor *mask,
                 bool invertMask) {
  DrawRows(image, transfer, picture, mask, invertMask, &MaskedRow::Blend);
}

// --- handlers ---

namespace {

// Attaches readers to the picture and, unless it is nil, to the mask, and lets `draw`, which is DrawMasked or
// BlendMasked, have them with their cursors on the first row, if anything is to be drawn.
void DrawFitted(ImageClassData &image, REALobject picture, REALobject mask, const Transfer &transfer, bool invertMask,
                decltype(DrawMasked) *draw) {
  if (!IsUsable(image)) return;
  const PixelWatch watched(image);
  YieldOn(image);
  PictureReader reader;
  PictureReader maskReader;
  if (!reader.GetPictureEditor(picture, 1, 0)) return;
  if (mask != nullptr && !maskReader.GetPictureEditor(mask, 1, 0)) return;
  Transfer fitted = FitToPicture(transfer, image, reader);
  // The host keeps a mask as large as its picture, so its size is not asked for. Where its rows end it is not read.
  if (mask != nullptr) fitted.width = std::min(fitted.width, maskReader.RowPixels() - fitted.sourceX);
  if (!IsEmpty(fitted)) {
    SkipRows(reader, fitted.sourceY);
    if (mask != nullptr) SkipRows(maskReader, fitted.sourceY);
    draw(watched, fitted, reader, mask != nullptr ? &maskReader : nullptr, invertMask);
  }
  maskReader.ReleasePicture();
  reader.ReleasePicture();
  YieldOn(image);
}

}  // namespace

void rbDrawMaskedPictureRGB8(REALobject instance, REALobject picture, int32_t destX, int32_t destY, int32_t destWidth,
                             int32_t destHeight, int32_t sourceX, int32_t sourceY, uint8_t invertMask) {
  ImageClassData *image = RecordOf(instance);
  if (image == nullptr || !HasColours(*image)) return;
  const REALobject mask = ExistingMask(picture);
  const Transfer transfer{destX, destY, destWidth, destHeight, sourceX, sourceY};
  DrawFitted(*image, picture, mask, transfer, invertMask != 0, DrawMasked);
}

void rbDrawPictureApplyMaskRGB8(REALobject instance, REALobject picture, int32_t destX, int32_t destY,
                                int32_t destWidth, int32_t destHeight, int32_t sourceX, int32_t sourceY,
                                uint8_t invertMask) {
  ImageClassData *image = RecordOf(instance);
  if (image == nullptr || !HasColours(*image)) return;
  const REALobject mask = ExistingMask(picture);
  if (mask == nullptr) {
    // Drawn plain, so the inversion of a mask that is not there counts for nothing: unlike in the other family.
    rbDrawPictureRGB8(instance, picture, destX, destY, destWidth, destHeight, sourceX, sourceY);
    return;
  }
  const Transfer transfer{destX, destY, destWidth, destHeight, sourceX, sourceY};
  DrawFitted(*image, picture, mask, transfer, invertMask != 0, BlendMasked);
}

}  // namespace zvk::pictures
