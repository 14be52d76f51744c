// The box blur: each sample becomes the mean of a window of samples, which runs along columns, rows or both.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::filters {

// Handler: blurs the image into dest (nil: a new image of the same size and format) and returns that. The window covers
// 2 x r + 1 samples, the edge pixels repeated, with r the whole part of `radius` in pixels; its mean is rounded down.
// Radii below 1 do not blur but darken to a third, once for each direction. Dest is returned as it is where no
// direction is asked for, for a negative radius, for windows and rows larger than a blur has room for, and where there
// is no memory. Nil if the frame of filters refuses. The cost of a pixel does not depend on the radius.
REALobject BoxBlurFilter(REALobject instance, REALobject dest, double radius, uint8_t vertical, uint8_t horizontal);

// Handler: the same several times over, each time on the result of the time before. Dest gets the first of these, the
// others go to new images; the last one is returned. Below 1 iteration the image itself is returned.
REALobject BoxBlurFilter2(REALobject instance, REALobject dest, double radius, int32_t iterations, uint8_t vertical,
                          uint8_t horizontal);

}  // namespace zvk::filters
