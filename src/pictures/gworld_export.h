// Images copied whole into offscreen graphics worlds of the QuickDraw platform, for host programs that still have
// those.
#pragma once

#include "image/image_record.h"

namespace zvk::pictures {

// Handler. A new "GWorldZVK" of the host that owns a new world with the image's pixels: gray in 8 bits, red, green and
// blue in 24, with alpha in 32. One reference for the caller. Nil for an image that is not usable, has 16-bit samples
// or is neither gray nor RGB, and where the platform or the class is missing. The pixels of the world stay locked. The
// world's sides have 16 bits: of a wider image as many columns are written as its row bytes hold, of a higher one none.
REALobject CopyGWorld(REALobject instance);

// The same for a usable gray image; alpha is left out.
REALobject CopyGWorldG(ImageClassData &image);

}  // namespace zvk::pictures
