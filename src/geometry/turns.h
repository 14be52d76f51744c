// Half and quarter turns of an image into another one. Whole pixels move and no value changes; filler stays as it is.
#pragma once

#include "image/image_record.h"

namespace zvk::geometry {

// Handlers. Each returns dest with a reference for the caller, or a new image of the source's format for a nil dest;
// nil if the source is not usable or has 16-bit samples, if the dest is not usable, or if there is no new image. The
// size of dest is not checked: what falls beyond it goes into the image of which it is a part, or is left out where
// there is none. A source of no family of colours moves nothing.

// Half a turn, to an image of the same size.
REALobject Rotate180(REALobject instance, REALobject dest);

// A quarter turn to the left (rows running downward): the upper right corner becomes the upper left one. The sides of
// the new image are exchanged. The host's "Rotate90" is the tiled form, its "Rotate90slow" the plain one: the result is
// the same, but the plain form moves the block of a mapped image for almost every pixel.
REALobject Rotate90fast(REALobject instance, REALobject dest);
REALobject Rotate90(REALobject instance, REALobject dest);

// Three quarters to the left, or one to the right: the lower left corner becomes the upper left one.
REALobject Rotate270fast(REALobject instance, REALobject dest);
REALobject Rotate270(REALobject instance, REALobject dest);

}  // namespace zvk::geometry
