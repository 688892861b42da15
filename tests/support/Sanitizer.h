#pragma once

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QUILLMOOR_IS_SANITIZED_BUILD
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define QUILLMOOR_IS_SANITIZED_BUILD
#endif
#endif

/// How much longer a test may take under a sanitizer, and how much less it may do.
#ifdef QUILLMOOR_IS_SANITIZED_BUILD
constexpr int SanitizerFactor = 16;
#else
constexpr int SanitizerFactor = 1;
#endif
