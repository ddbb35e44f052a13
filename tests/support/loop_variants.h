// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "simd/loop_variant.h"
#include "support/loop_variant_name.h"

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

/// Calls `test()`, or `test(name)` with the variant's name, once with every variant of the pixel loops that this
/// machine can run.
template <typename Test>
void forEachLoopVariant(Test test) {
    for (const internal::LoopVariant variant : internal::runnableLoopVariants()) {
        SCOPED_TRACE(nameOf(variant));
        const LoopVariantInUse inUse(variant);
        if constexpr (std::is_invocable_v<Test, std::string>) {
            test(nameOf(variant));
        } else {
            test();
        }
    }
}

/// For tests that are repeated with every variant of the pixel loops that this machine can run.
class EveryLoopVariant : public ::testing::TestWithParam<internal::LoopVariant> {
    LoopVariantInUse inUse_{GetParam()};
};

/// Goes into INSTANTIATE_TEST_SUITE_P of such a test suite.
inline auto runnableLoopVariants() {
    return ::testing::ValuesIn(internal::runnableLoopVariants());
}
inline std::string loopVariantName(const ::testing::TestParamInfo<internal::LoopVariant>& info) {
    return nameOf(info.param);
}

}  // namespace quorvel::test
