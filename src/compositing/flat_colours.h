// The pixel loops of Combine with a flat colour in place of the source or of the mask.
#pragma once

#include <cstdint>

#include "image/image_record.h"
#include "image/rectangle.h"

namespace zvk::compositing {

// Blend a rectangle that lies in both images; `colour` is 0xRRGGBB. Alpha is neither read nor written. Yield on dest
// after each row. Nothing happens unless both images are gray or RGB. `premultiplied` says that what is laid on has
// been multiplied by its coverage already.

// The colour through the image, whose 255 keeps dest.
void BlendFlatForeground(ImageClassData &dest, ImageClassData &image, bool premultiplied, const Transfer &transfer,
                         int32_t colour);

// The image through the colour, whose 255 keeps dest.
void BlendThroughFlatMask(ImageClassData &dest, ImageClassData &image, bool premultiplied, const Transfer &transfer,
                          int32_t colour);

}  // namespace zvk::compositing
