// Rotation by any angle, as three shears.
#pragma once

#include <cstdint>

#include "image/image_record.h"

namespace zvk::geometry {

// Handler: the image turned to the left (rows running downward) by `angle` degrees, as a new image that holds all of
// it; the corners that it does not cover are of the background colour, of which only the channels of the image's family
// count. Every argument of it is cut to its low byte. 0 and its multiples of 360 give the image itself with a new
// reference; 90, 180 and 270 the right-angle turns, for which the background plays no part.
// Nil for an image that is not usable or belongs to no family of colours, for an angle that is not finite or beyond
// 2^55, and where an image cannot be made. Of 16-bit gray, the byte at GrayOffset alone is moved, by angles up to 45
// degrees to either side; larger ones give nil.
REALobject rbRotate(REALobject instance, double angle, int32_t Red, int32_t Green, int32_t Blue, int32_t Alpha,
                    int32_t Gray, int32_t Cyan, int32_t Magenta, int32_t Yellow, int32_t Black);

}  // namespace zvk::geometry
