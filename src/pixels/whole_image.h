// The short forms of handlers that take a rectangle: they work on the whole image.
#pragma once

#include <cstdint>

#include "image/image_record.h"

namespace zvk::pixels {

// Calls handler(instance, 0, 0, width, height, arguments...) with the size of the image. For a nil instance nothing
// happens, and what is returned is 0.
template <class Result, class... Arguments>
Result OnWholeImage(Result (*handler)(REALobject, int32_t, int32_t, int32_t, int32_t, Arguments...),
                    REALobject instance, Arguments... arguments) {
  const ImageClassData *image = RecordOf(instance);
  if (image == nullptr) return Result();
  return handler(instance, 0, 0, image->Width, image->Height, arguments...);
}

}  // namespace zvk::pixels
