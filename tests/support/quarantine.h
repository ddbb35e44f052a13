// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace quorvel::test {

/// The address sanitizer keeps freed memory back for a while: resident memory tells nothing about leaks then.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kKeepsFreedMemory = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kKeepsFreedMemory = true;
#else
constexpr bool kKeepsFreedMemory = false;
#endif
#else
constexpr bool kKeepsFreedMemory = false;
#endif

}  // namespace quorvel::test
