#pragma once

// For the few hottest loops: processors with wide vectors get a version of their own, made by the compiler
// from the same text and chosen when the program starts. Sanitizers are not ready that early. Such a function
// stands before those that use it: clang asks for it.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
#define CLIPWREN_SANITIZED
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer) || __has_feature(address_sanitizer)
#define CLIPWREN_SANITIZED
#endif
#endif

#if defined(__x86_64__) && defined(__linux__) && !defined(CLIPWREN_SANITIZED)
#define CLIPWREN_WIDE_VECTORS __attribute__((target_clones("avx2", "default")))
#else
#define CLIPWREN_WIDE_VECTORS
#endif
