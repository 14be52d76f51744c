// The shorter forms of the handlers that draw a picture, which fill in the numbers that the caller leaves out.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"
#include "pictures/picture_editor.h"

namespace zvk::pictures {

template <auto kDraw8>
struct ShorterForms;

// Of a handler that takes all six numbers, and perhaps flags behind them: without a size the picture's own is taken,
// without positions 0.
template <class... Flags,
          void (*kDraw8)(REALobject instance, REALobject picture, int32_t destX, int32_t destY, int32_t destWidth,
                         int32_t destHeight, int32_t sourceX, int32_t sourceY, Flags... flags)>
struct ShorterForms<kDraw8> {
  static void Draw6(REALobject instance, REALobject picture, int32_t destX, int32_t destY, int32_t destWidth,
                    int32_t destHeight, Flags... flags) {
    kDraw8(instance, picture, destX, destY, destWidth, destHeight, 0, 0, flags...);
  }
  static void Draw4(REALobject instance, REALobject picture, int32_t destX, int32_t destY, Flags... flags) {
    const auto [width, height] = SizeOf(picture);
    Draw6(instance, picture, destX, destY, width, height, flags...);
  }
  static void Draw2(REALobject instance, REALobject picture, Flags... flags) {
    Draw4(instance, picture, 0, 0, flags...);
  }
};

}  // namespace zvk::pictures
