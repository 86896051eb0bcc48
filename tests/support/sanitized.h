// SPDX-License-Identifier: GPL-2.0-or-later
// Whether the tests run under a sanitizer, where times and resident memory are meaningless.
#pragma once

#if !defined(__has_feature)
#define __has_feature(name) 0  // of clang; g++ defines macros instead
#endif

namespace tolvik::testing {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || __has_feature(address_sanitizer) || \
    __has_feature(thread_sanitizer)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

}  // namespace tolvik::testing
