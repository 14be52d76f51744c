// Resizing by the nearest pixel to the left and above: no filter, no temp image, no threads.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::scaling {

// Method "ScaleFast": gives each of the left top `width` by `height` pixels of `dest` one pixel of `source`. The size
// is cut to the destination's first, so the source is scaled to fit and not cropped. Channels that the source lacks
// stay as they are, but gray becomes black ink and no other. A source without columns gives all pixels of a row what
// lies at its channels' offsets, as far as that is in its storage. True when `dest` was written. False, and nothing is
// raised, for nil or not usable images, 16-bit samples, a size not above zero, and formats between which nothing is
// converted; also if code of the host that ran in a yield took away pixels that are still needed.
uint8_t ScalePictureFast(REALobject dest, REALobject source, int32_t width, int32_t height);

}  // namespace zvk::scaling
