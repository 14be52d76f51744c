// The comparison of the shapes of two images.
#pragma once

#include <cstdint>

#include "image/image_record.h"

namespace zvk::levels {

// Handler: the number of pixels of two images of the same size, sample size, colour family and alpha, whatever their
// pixels hold and in whatever order the channels lie; -1 for nil, unusable and different images, and for images of no
// colour family. Yields once on each image, then fetches all rows of both.
int64_t CompareImages(REALobject instance, REALobject other);

}  // namespace zvk::levels
