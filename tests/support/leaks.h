// SPDX-License-Identifier: GPL-2.0-or-later
// Scopes in which memory may leak: a library in C that an exception passes through cannot free its memory.
#pragma once

#if defined(__SANITIZE_ADDRESS__)
#define TOLVIK_TEST_LEAKS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TOLVIK_TEST_LEAKS 1
#endif
#endif
#ifdef TOLVIK_TEST_LEAKS
#include <sanitizer/lsan_interface.h>
#endif

namespace tolvik::testing {

#ifdef TOLVIK_TEST_LEAKS
using LeaksAllowed = __lsan::ScopedDisabler;
#else
struct LeaksAllowed {
  ~LeaksAllowed() {}
};
#endif

}  // namespace tolvik::testing
