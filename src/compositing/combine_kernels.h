// The pixel loops of Combine with a mask image.
#pragma once

#include <cstdint>

#include "image/image_record.h"

namespace zvk::compositing {

// Blend a rectangle that lies in all three images, with `mask` addressed like `source`; 255 in the mask keeps dest.
// Yield on dest after each row. Nothing happens unless all three are gray or RGB. In Case2pt the source has been
// multiplied by its coverage already, in Case2pf it has not.
void Case2pt(ImageClassData &dest, ImageClassData &source, ImageClassData &mask, int32_t destX, int32_t destY,
             int32_t width, int32_t height, int32_t sourceX, int32_t sourceY);
void Case2pf(ImageClassData &dest, ImageClassData &source, ImageClassData &mask, int32_t destX, int32_t destY,
             int32_t width, int32_t height, int32_t sourceX, int32_t sourceY);

}  // namespace zvk::compositing
