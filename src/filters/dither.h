// Ordered dither: each channel reduced to a number of levels, by a matrix of thresholds that is laid over the image.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::filters {

// Handler, runs in the filter frame. `matrix` is one of the numbers 1 to 10 of the Dither...Matrix constants, `levels`
// 2 to 256; other numbers, and an image that is neither gray nor RGB, leave dest unchanged. Alpha is dithered like the
// colours. A sample is rounded up where its fraction is small, so two levels give a negative.
REALobject DitherFilter(REALobject instance, REALobject dest, int32_t matrix, int32_t levels);

}  // namespace zvk::filters
