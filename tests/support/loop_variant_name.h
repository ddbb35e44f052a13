// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "simd/loop_variant.h"

namespace quorvel::test {

/// \return the name by which QUORVEL_LOOPS knows the variant
inline std::string nameOf(internal::LoopVariant variant) {
    switch (variant) {
        case internal::LoopVariant::Plain:
            return "plain";
        case internal::LoopVariant::Baseline:
            return "baseline";
        case internal::LoopVariant::Avx2:
            break;
    }
    return "avx2";
}

}  // namespace quorvel::test
