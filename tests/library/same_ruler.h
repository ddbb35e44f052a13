// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "library/same_result.h"
#include "support/members.h"

namespace quorvel::test {

/// Compares one member of two rulers bit for bit.
template <typename Value>
::testing::AssertionResult sameMember(const Quorvel& a, const Quorvel& b, Value Quorvel::*member) {
    if constexpr (std::is_same_v<Value, MeasureResult>) {
        return sameResult(a.*member, b.*member);
    } else {
        return detail::sameValue(a.*member, b.*member);
    }
}

namespace detail {

/// What a member is to a comparison.
enum class Kind { kImage, kBuffer, kResult, kSetting };

template <typename Value>
constexpr Kind kindOf(Value Quorvel::* /*member*/) {
    if constexpr (std::is_same_v<Value, cv::Mat>) {
        return Kind::kImage;
    } else if constexpr (std::is_same_v<Value, std::vector<cv::Mat>>) {
        return Kind::kBuffer;
    } else {
        return std::is_same_v<Value, MeasureResult> ? Kind::kResult : Kind::kSetting;
    }
}

inline ::testing::AssertionResult sameMembers(const Quorvel& a, const Quorvel& b, Kind kind) {
    ::testing::AssertionResult all = ::testing::AssertionSuccess();
    forEachMember([&](const char* name, auto member) {
        if (kindOf(member) != kind || !all) {
            return;
        }
        const ::testing::AssertionResult same = sameMember(a, b, member);
        if (!same) {
            all = ::testing::AssertionFailure() << name << ": " << same.message();
        }
    });
    return all;
}

}  // namespace detail

/// Compares all images of two rulers bit for bit and names the one that differs.
inline ::testing::AssertionResult sameImages(const Quorvel& a, const Quorvel& b) {
    return detail::sameMembers(a, b, detail::Kind::kImage);
}

/// Compares all buffers of two rulers bit for bit and names the one that differs.
inline ::testing::AssertionResult sameBuffers(const Quorvel& a, const Quorvel& b) {
    return detail::sameMembers(a, b, detail::Kind::kBuffer);
}

/// Compares all settings, the plane and the state of two rulers and names the first that differs.
inline ::testing::AssertionResult sameSettings(const Quorvel& a, const Quorvel& b) {
    return detail::sameMembers(a, b, detail::Kind::kSetting);
}

/// Compares every member of two rulers bit for bit.
inline ::testing::AssertionResult sameRuler(const Quorvel& a, const Quorvel& b) {
    for (const ::testing::AssertionResult& same :
         {sameSettings(a, b), sameImages(a, b), sameBuffers(a, b), sameResult(a.result, b.result)}) {
        if (!same) {
            return same;
        }
    }
    return ::testing::AssertionSuccess();
}

}  // namespace quorvel::test
