// Views of an image as chance has them.
#pragma once

#include "tests/scenes/stored_image.h"

namespace scenes {

// What views may show besides parts of the image, the image upside down and its channels.
struct ViewChances {
  bool emptyClips = false;    // clips by any numbers, which may be empty; else every view has a pixel
  bool movedOffsets = false;  // now and then a channel in the place of another one, within the pixel
};

// A random view of an image: the image itself, a clip, a mirrored view, one channel, the colours alone, or several of
// these in turn. An image with a row table has no views.
ImageObject AnyView(Random &random, const StoredImage &stored, const ViewChances &chances = {});

// The same, in which a channel may be in the place of another one.
inline ImageObject AnyOddView(Random &random, const StoredImage &stored) {
  return AnyView(random, stored, {.movedOffsets = true});
}

// A view of the stored image as large as that; empty if there is none.
ImageObject AnyViewOfSize(Random &random, const StoredImage &stored, int32_t width, int32_t height);

}  // namespace scenes
