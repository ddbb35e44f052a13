// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace quorvel::bench {

/// Blocks above this size, bytes, are counted. The C library keeps smaller ones for later use.
constexpr unsigned long kLargeBlock = 64UL * 1024UL;

/// Large blocks that the process has asked for since it started, by malloc, calloc, realloc, posix_memalign,
/// aligned_alloc or memalign: the whole program is linked to counting forms of them.
unsigned long largeAllocations();

/// Bytes of these blocks.
unsigned long largeAllocatedBytes();

}  // namespace quorvel::bench
