// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "common/loop_variant.h"

namespace quorvel::test {

/// Makes the library use one variant of its pixel loops for as long as the value lives.
class LoopVariantInUse {
public:
    explicit LoopVariantInUse(internal::LoopVariant variant) : before_(internal::loopVariant()) {
        internal::useLoopVariant(variant);
    }
    ~LoopVariantInUse() { internal::useLoopVariant(before_); }
    LoopVariantInUse(const LoopVariantInUse&) = delete;
    LoopVariantInUse& operator=(const LoopVariantInUse&) = delete;

private:
    internal::LoopVariant before_;
};

}  // namespace quorvel::test
