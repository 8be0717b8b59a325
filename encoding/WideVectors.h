#pragma once

// For the few hottest loops: processors with wide vectors get a version of their own, made by the compiler
// from the same text and chosen when the program starts. Sanitizers are not ready that early.
#if defined(__x86_64__) && defined(__linux__) && !defined(__SANITIZE_THREAD__) &&                            \
    !defined(__SANITIZE_ADDRESS__)
#define CLIPWREN_WIDE_VECTORS __attribute__((target_clones("avx2", "default")))
#else
#define CLIPWREN_WIDE_VECTORS
#endif
