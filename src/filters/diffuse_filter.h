// The diffuse filter: pixels are scattered by chance.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::filters {

// Handler: fills dest (nil: a new image of the same size and format) with pixels of the image and returns it. Each is
// taken from up to `level` columns and rows away, which the C library's rand decides by two calls for each pixel, the
// column first. Dest is returned as it is for CMYK. Nil if the frame of filters refuses.
REALobject DifuseFilter(REALobject instance, REALobject dest, int32_t level);

}  // namespace zvk::filters
