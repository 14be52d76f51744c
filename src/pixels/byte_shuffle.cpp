#include "pixels/byte_shuffle.h"

namespace zvk::pixels {

int32_t WidestShuffle() { return HasWideShuffle() ? kWideShuffleBytes : HasByteShuffle() ? kShuffleBytes : 0; }

}  // namespace zvk::pixels
