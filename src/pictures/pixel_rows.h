// Rows on their way between a host picture and an image: where they lie, in what steps they are worked on, and the
// movers that bring samples from one to the other.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "image/image_record.h"
#include "image/rectangle.h"
#include "pictures/picture_editor.h"
#include "pictures/pixel_words.h"
#include "pixels/pixel_watch.h"
#include "pixels/sample_mover.h"

namespace zvk::pictures {

// Pixels of a step, where a row takes several passes: enough to make a step worth while, few enough for the first
// cache.
inline constexpr int32_t kTilePixels = 512;

// Row i of the rectangle; nil if the row cannot be had. Asked again for each row: other code of the host may have run
// since, and closed the image or constructed it anew, where the rectangle may not lie.
uint8_t *RowOf(const PixelWatch &image, const Rectangle &rectangle, int32_t i);

// The transfer's first pixel in its row i in the image, by the same rules.
uint8_t *DestPixel(const PixelWatch &image, const Transfer &transfer, int32_t i);

// The transfer's first pixel in the row under the picture's cursor.
const uint8_t *SourcePixel(const PictureEditor &picture, const Transfer &transfer);

// The moves of a picture's colours to the image's, which count as the image has them now. The last one counts where two
// go to one byte.
std::array<SampleMove, 3> ColourMoves(const PixelWord &word, const ImageClassData &image);

// True if the order of reads and writes is unobservable between `count` pixels, one or more, of an image and of a
// picture: they have no byte in common, and no sample of the image lies among those of its next pixel.
bool LieApart(const uint8_t *pixels, const PixelReach &reach, const uint8_t *words, int32_t count);

// A mover for rows between which the host may move channels in their pixels: made at the first row, and again where the
// numbers are not those of the row before.
class RowMover {
 public:
  // Sizes are a pixel's bytes, 1 or more. Lasts until the next call.
  const SampleMover &For(int32_t sourcePixelSize, int32_t destPixelSize, std::span<const SampleMove> moves);

 private:
  int32_t sourcePixelSize_ = 0;
  int32_t destPixelSize_ = 0;
  size_t count_ = 0;
  std::array<SampleMove, SampleMover::kMost> moves_{};
  std::optional<SampleMover> mover_;
};

}  // namespace zvk::pictures
