// The oil filter: each sample becomes the mean of those samples around it that are most alike.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::filters {

// Handler: paints the image into dest (nil: a new image of the same size and format) and returns that. The samples of a
// channel within `range` pixels, up to the edges, are sorted into `levels` bins of like samples (at most 256); the
// result is the mean of the fullest bin, rounded down, and of the lower one if two are as full. Where no pixel lies in
// range, for a negative range that is, 255 is written. Below 1 level dest is returned as it is. Nil if the frame of
// filters refuses.
REALobject OilFilter(REALobject instance, REALobject dest, int32_t levels, int32_t range);

}  // namespace zvk::filters
