// The complement of every sample of a rectangle of an image, or of all of it, in place.
#pragma once

#include <cstdint>

#include "image/image_record.h"

namespace zvk::levels {

// Handlers: each sample, alpha included, becomes 255 - sample, a 16-bit one 65535 - sample. Filler keeps its bytes. A
// rectangle with a negative size extends to the other side of its corner, and what lies outside the image is cut. An
// image that is not usable, an empty rectangle and an image of no colour family change nothing. Yield before the first
// and after each row.
void Invert1(REALobject instance);
void Invert5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height);

}  // namespace zvk::levels
