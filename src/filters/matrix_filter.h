// Convolution with a square matrix of integers.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::filters {

// Handlers, run in the filter frame: every channel of a pixel becomes the sum of the samples around it, each times its
// entry of the matrix, plus delta, times the scale factor, truncated and cut to 0 to 255. Edge pixels are repeated
// outwards. `matrix` holds dimension x dimension entries row by row; missing ones, and all behind the first 2500, are
// 0; one of 255 or more is a hole. A nil dest gives an image with the source's sides exchanged, of which only what fits
// is written.
REALobject PictureMatrix3(REALobject instance, REALobject dest, int32_t dimension, REALarray matrix);
REALobject PictureMatrix4(REALobject instance, REALobject dest, int32_t dimension, REALarray matrix, int32_t delta);
REALobject PictureMatrix5(REALobject instance, REALobject dest, int32_t dimension, REALarray matrix, int32_t delta,
                          double scaleFactor);

}  // namespace zvk::filters
