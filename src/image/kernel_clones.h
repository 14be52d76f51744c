// Marks a hot loop to be compiled for several instruction sets besides the portable one; the loader picks the best that
// the machine has. All give the same bytes, as the build fuses no product with a sum. Put it before a function
// definition; helpers that the function calls must be inline. Where the compiler does not know the attribute, or a
// sanitizer would trip over the choosing, only the portable form is built.
#pragma once

#if defined(__GNUC__) && !defined(__clang__) && (defined(__x86_64__) || defined(__i386__)) && \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define ZVK_KERNEL_CLONES [[gnu::target_clones("default", "avx2", "avx512f")]]
#else
#define ZVK_KERNEL_CLONES
#endif
