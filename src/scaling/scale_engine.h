// Resampling of one image into another with one of seven filters: a horizontal pass into a temp image, then a vertical
// one, both driven by tables of taps.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::scaling {

// Method "Scale": resamples all of `source` into the left top `width` by `height` pixels of `dest`, which must have
// them, as must have `temp`, if it is given: `width` by the source's height pixels of the pair's stride. A nil `temp`
// is created through the source's factories. `mode` counts the filters from 1 in the order below. True when `dest` was
// written. False, and nothing is raised, for nil or not usable images, a size not above zero, another mode, formats
// that form no pair, or no memory for the tables of taps; `temp` may be written then. A column or row of the result
// that may need more than 0x7FFFFFFF bytes of taps comes out 0. Rows that an image does not hold any more after a yield
// are left out.
uint8_t PictureScaleZVK(REALobject dest, REALobject source, REALobject temp, int32_t mode, int32_t width,
                        int32_t height);

// The same for each filter. `dest` and `source` must not be nil and the size must be above zero.
uint8_t trianglePictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height);
uint8_t boxPictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height);
uint8_t lanczos3PictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height);
uint8_t lanczos8PictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height);
uint8_t mitchellPictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height);
uint8_t poly3PictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height);
uint8_t cubicPictureScale(REALobject dest, REALobject source, REALobject temp, int32_t width, int32_t height);

}  // namespace zvk::scaling
