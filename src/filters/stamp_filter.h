// The stamp filter: the image in two colours, as a blurred threshold gives it.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::filters {

// Handler: a new image, of the same size and format. The image is box blurred three times with a third of `radius`
// (pixels), the first time into dest if there is one, and each sample of gray, or of red, green and blue, then goes
// through a curve from the colour's part in `black` to its part in `white` (green for gray): the smoothstep over
// `softness` around `threshold`, both as parts of 255. Alpha of the result is zero, and so is all of it for other
// families. Nil if a step fails or refuses.
REALobject StampFilter(REALobject instance, REALobject dest, double radius, double threshold, double softness,
                       uint32_t black, uint32_t white);

}  // namespace zvk::filters
