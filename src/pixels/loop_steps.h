// A word to the compiler about which loop of a nest is to be vectorised.
#pragma once

#include "host/layers.h"

namespace zvk::pixels {

// Called in a loop's body, it keeps the compiler from vectorising or merging the steps of that loop (which it does by
// gathering, where it can), so that the loops inside each step are vectorised. It makes no code.
[[gnu::always_inline]] inline void OneStepAtATime() { asm volatile(""); }

}  // namespace zvk::pixels
