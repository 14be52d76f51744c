// The blur for the fractional part of a radius: three taps, of which the outer ones weigh that part.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::filters {

// Handler: blurs the image into dest (nil: a new image of the same size and format) and returns that. With f what
// `radius` (pixels) has beyond a whole number, each sample becomes (f x its neighbours + itself) / (2 f + 1), rounded
// down, first along columns and then along rows. Of a CMYK image only the bytes at the offsets of red, green, blue and
// alpha are blurred. Dest is returned as it is where there is no memory, or for rows larger than a blur has room for.
// Nil for an image of no colour family, and if the frame of filters refuses.
REALobject BoxBlurFractionalFilter(REALobject instance, REALobject dest, double radius);

}  // namespace zvk::filters
