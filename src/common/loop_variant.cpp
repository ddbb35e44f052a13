// SPDX-License-Identifier: Apache-2.0
#include "common/loop_variant.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <string>

#include <opencv2/core.hpp>

namespace quorvel::internal {

namespace {

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
    if (cv::checkHardwareSupport(CV_CPU_AVX2)) {
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
