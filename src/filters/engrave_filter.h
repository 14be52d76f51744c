// The engrave filter: a relief of the image, lit along the diagonal.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::filters {

// Handler: engraves the image into dest (nil: a new image of the same size and format) and returns that. Each sample,
// alpha as well, becomes 128 plus its difference from the one `level` pixels further right and down, or left and up
// for a negative level, cut to 0 to 255; beyond an edge the edge counts. Dest is returned as it is for CMYK. Nil if the
// frame of filters refuses.
REALobject EngraveFilter(REALobject instance, REALobject dest, int32_t level);

}  // namespace zvk::filters
