// Help for hot loops: the choice of an instruction set at run time, and a word about which loop is to be vectorised.
#pragma once

#include "host/layers.h"

// Put before a function definition, it has the function compiled for several instruction sets besides the portable one;
// the loader picks the best that the machine has. All give the same bytes, as the build fuses no product with a sum.
// What the function calls must be inline. Where the compiler does not know the attribute, or a sanitizer would trip
// over the choosing, only the portable form is built.
#if defined(__GNUC__) && !defined(__clang__) && (defined(__x86_64__) || defined(__i386__)) && \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define ZVK_KERNEL_CLONES [[gnu::target_clones("default", "avx2", "avx512f")]]
#else
#define ZVK_KERNEL_CLONES
#endif

namespace zvk::pixels {

// Called in a loop's body, it keeps the compiler from vectorising or merging the steps of that loop (which it does by
// gathering, where it can), so that the loops inside each step are vectorised. It makes no code.
[[gnu::always_inline]] inline void OneStepAtATime() { asm volatile(""); }

}  // namespace zvk::pixels
