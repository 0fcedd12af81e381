// Whether a sanitizer watches the tests: they are then several times as slow.
#pragma once

namespace TestSupport {

#if defined(__has_feature)
#define TARN_HAS_FEATURE(feature) __has_feature(feature)
#else
#define TARN_HAS_FEATURE(feature) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || \
    TARN_HAS_FEATURE(address_sanitizer) || TARN_HAS_FEATURE(thread_sanitizer)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif
#undef TARN_HAS_FEATURE

/// The allocators of gcc 12's sanitizers have locks that no handler of a fork knows: a child of a
/// process whose threads allocate may wait for ever, whatever we do. Such children are left to the
/// build for every day.
inline constexpr bool kAllocatorForks = !kSanitized;

/// How often a random test repeats itself: what such tests find in many rounds, the build for every
/// day finds; a sanitizer needs but a few of them.
constexpr int Rounds(int everyday) {
  return kSanitized ? everyday / 10 : everyday;
}

}  // namespace TestSupport
