// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include "common/loop_variant.h"

namespace quorvel::test {

/// Puts the loop variant back that was in use before.
class KeptLoopVariant {
public:
    KeptLoopVariant() = default;
    ~KeptLoopVariant() { internal::useLoopVariant(before_); }
    KeptLoopVariant(const KeptLoopVariant&) = delete;
    KeptLoopVariant& operator=(const KeptLoopVariant&) = delete;

private:
    internal::LoopVariant before_ = internal::loopVariant();
};

/// Calls `test()` once with every variant that this machine can run.
template <typename Test>
void forEachLoopVariant(Test test) {
    const KeptLoopVariant kept;
    for (const internal::LoopVariant variant : internal::runnableLoopVariants()) {
        SCOPED_TRACE(::testing::Message() << "loop variant " << static_cast<int>(variant));
        internal::useLoopVariant(variant);
        test();
    }
}

}  // namespace quorvel::test
