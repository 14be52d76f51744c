// The neon filter: contours glow, flat areas turn black.
#pragma once

#include "abi/host_layouts.h"

namespace zvk::filters {

// Handler: draws the contours of the image into dest (nil: a new image of the same size and format) and returns that.
// Each sample, alpha as well, becomes the root of twice the sum of the squares of its differences from the one to the
// right and from the one below, cut to 255. Right of the last pixel is what the row holds there, and zero behind it;
// below the last row all is zero. Dest is returned as it is where there is no memory for two rows, and for rows of a
// size that no two rows can have. Nil if the frame of filters refuses.
REALobject NeonFilter(REALobject instance, REALobject dest);

}  // namespace zvk::filters
