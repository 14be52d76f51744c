// The unsharp mask: an image becomes sharper by its difference from a blurred copy of itself.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::filters {

// Handler: changes the image in place by `origpixels`, its blurred copy. A sample that differs from the copy's by at
// least `threshold` moves away from it to (1 + 4 x amount) times the difference, within 0 to 255; others stay. True
// when done, also for an image of no colour family, of which nothing is changed. False, with nothing changed, unless
// both images are usable, of 8-bit samples, and alike in size and format.
uint8_t unsharpFilter(REALobject instance, REALobject origpixels, double amount, int32_t threshold);

}  // namespace zvk::filters
