// SPDX-License-Identifier: Apache-2.0
#include "simd/loop_variant.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <string>

#if defined(QUORVEL_AVX2_LOOPS) && defined(_MSC_VER)
#include <array>
#include <immintrin.h>
#include <intrin.h>
#endif

namespace quorvel::internal {

namespace {

#if defined(QUORVEL_AVX2_LOOPS)
/// Asks the processor itself. OpenCV's answer follows cv::setUseOptimized, which is the host's switch for OpenCV's own
/// code.
/// \return whether the processor has AVX2 and the system keeps its wide registers
bool hasAvx2() {
#if defined(_MSC_VER)
    std::array<int, 4> registers{};  // eax, ebx, ecx, edx
    __cpuid(registers.data(), 0);
    if (registers[0] < 7) {
        return false;
    }
    __cpuid(registers.data(), 1);
    constexpr int kSystemKeepsRegisters = 1 << 27;
    if ((registers[2] & kSystemKeepsRegisters) == 0) {
        return false;
    }
    constexpr unsigned long long kNarrowAndWide = 0b110;  // the halves of the registers that are kept
    if ((_xgetbv(0) & kNarrowAndWide) != kNarrowAndWide) {
        return false;
    }
    __cpuidex(registers.data(), 7, 0);
    constexpr int kAvx2 = 1 << 5;
    return (registers[1] & kAvx2) != 0;
#else
    // A host may ask before the constructor that makes the compiler's own check ready has run.
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") != 0;
#endif
}
#endif

LoopVariant namedVariant(const std::string& name, LoopVariant otherwise) {
    if (name == "plain") {
        return LoopVariant::Plain;
    }
    if (name == "baseline") {
        return LoopVariant::Baseline;
    }
    return name == "avx2" ? LoopVariant::Avx2 : otherwise;
}

LoopVariant firstChoice() {
    const std::vector<LoopVariant> runnable = runnableLoopVariants();
    const char* name = std::getenv("QUORVEL_LOOPS");
    const LoopVariant wanted = namedVariant(name != nullptr ? name : "", runnable.back());
    const bool canRun = std::find(runnable.begin(), runnable.end(), wanted) != runnable.end();
    return canRun ? wanted : runnable.back();
}

std::atomic<LoopVariant>& inUse() {
    static std::atomic<LoopVariant> variant{firstChoice()};
    return variant;
}

}  // namespace

std::vector<LoopVariant> runnableLoopVariants() {
    std::vector<LoopVariant> variants{LoopVariant::Plain, LoopVariant::Baseline};
#if defined(QUORVEL_AVX2_LOOPS)
    if (hasAvx2()) {
        variants.push_back(LoopVariant::Avx2);
    }
#endif
    return variants;
}

LoopVariant loopVariant() {
    return inUse().load(std::memory_order_relaxed);
}

void useLoopVariant(LoopVariant variant) {
    inUse().store(variant, std::memory_order_relaxed);
}

}  // namespace quorvel::internal
