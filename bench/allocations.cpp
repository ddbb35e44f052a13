// SPDX-License-Identifier: Apache-2.0
#include "allocations.h"

#include <atomic>
#include <cerrno>
#include <cstddef>

namespace {

std::atomic<unsigned long> largeCount{0};
std::atomic<unsigned long> largeBytes{0};

void count(std::size_t bytes) {
    if (bytes > quorvel::bench::kLargeBlock) {
        ++largeCount;
        largeBytes += bytes;
    }
}

}  // namespace

namespace quorvel::bench {

unsigned long largeAllocations() {
    return largeCount;
}

unsigned long largeAllocatedBytes() {
    return largeBytes;
}

}  // namespace quorvel::bench

// The program's own definitions take the place of the C library's, for the shared libraries too. Its real functions are
// reached by their other names; free() stays its own.
#define QUORVEL_INTERPOSED __attribute__((visibility("default")))

extern "C" {

void* __libc_malloc(std::size_t bytes);
void* __libc_calloc(std::size_t count, std::size_t bytes);
void* __libc_realloc(void* block, std::size_t bytes);
void* __libc_memalign(std::size_t alignment, std::size_t bytes);

QUORVEL_INTERPOSED void* malloc(std::size_t bytes) {
    count(bytes);
    return __libc_malloc(bytes);
}

QUORVEL_INTERPOSED void* calloc(std::size_t elements, std::size_t bytes) {
    count(elements * bytes);
    return __libc_calloc(elements, bytes);
}

QUORVEL_INTERPOSED void* realloc(void* block, std::size_t bytes) {
    count(bytes);
    return __libc_realloc(block, bytes);
}

QUORVEL_INTERPOSED void* memalign(std::size_t alignment, std::size_t bytes) {
    count(bytes);
    return __libc_memalign(alignment, bytes);
}

QUORVEL_INTERPOSED void* aligned_alloc(std::size_t alignment, std::size_t bytes) {
    count(bytes);
    return __libc_memalign(alignment, bytes);
}

QUORVEL_INTERPOSED int posix_memalign(void** block, std::size_t alignment, std::size_t bytes) {
    count(bytes);
    void* const found = __libc_memalign(alignment, bytes);
    if (found == nullptr) {
        return ENOMEM;
    }
    *block = found;
    return 0;
}

}  // extern "C"
