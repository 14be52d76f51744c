// How the pixels of a bitmap context lie: told when a host is made, and to the storage of its pictures.
#pragma once

#include <cstdint>

namespace standalone {

struct BitmapLayout {
  // Low three bits: 1, 3, 5 are bytes R, G, B, A; 2, 4, 6 are A, R, G, B (5 and 6 with a filler byte in place of
  // alpha); 0 and 7 are kept as 5. Higher bits are kept for what plug-ins make of them.
  uint32_t alphaInfo = 6;
  int32_t bitsPerPixel = 32;
  int32_t bytesPerRow = 0;  // 0: as many as the pixels need
  bool hasAlphaChannel = false;
};

}  // namespace standalone
