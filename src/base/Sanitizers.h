// Which sanitizer is built in.
#pragma once

namespace KXP {

#if defined(__has_feature)
constexpr bool kHasAddressSanitizer = __has_feature(address_sanitizer);
constexpr bool kHasThreadSanitizer = __has_feature(thread_sanitizer);
#else
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kHasAddressSanitizer = true;
#else
constexpr bool kHasAddressSanitizer = false;
#endif
#if defined(__SANITIZE_THREAD__)
constexpr bool kHasThreadSanitizer = true;
#else
constexpr bool kHasThreadSanitizer = false;
#endif
#endif

}  // namespace KXP
