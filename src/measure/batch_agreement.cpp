// SPDX-License-Identifier: Apache-2.0
#include "measure/batch_agreement.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quorvel::internal {

namespace {

struct NamedSize {
    Dimension dimension;
    float Sizes::*size;
};

/// In the order in which two frames are compared.
constexpr std::array<NamedSize, 3> kSizes{
    {{Dimension::Height, &Sizes::height}, {Dimension::Width, &Sizes::width}, {Dimension::Length, &Sizes::length}}};

}  // namespace

std::optional<Disagreement> firstDisagreement(const std::vector<Sizes>& frames, const Sizes& tolerances) {
    for (std::size_t k = 0; k < frames.size(); ++k) {
        for (std::size_t j = k + 1; j < frames.size(); ++j) {
            for (const NamedSize& named : kSizes) {
                const float difference = std::fabs(frames[k].*named.size - frames[j].*named.size);
                if (difference > tolerances.*named.size) {
                    return Disagreement{k, j, named.dimension, difference, tolerances.*named.size};
                }
            }
        }
    }
    return std::nullopt;
}

Sizes meanSizes(const std::vector<Sizes>& frames) {
    Sizes mean;
    for (const Sizes& frame : frames) {
        mean.length += frame.length;
        mean.width += frame.width;
        mean.height += frame.height;
    }
    const auto count = static_cast<float>(frames.size());
    return {mean.length / count, mean.width / count, mean.height / count};
}

Sizes spreadOf(const std::vector<Sizes>& frames) {
    Sizes spread;
    for (const NamedSize& named : kSizes) {
        const auto smaller = [&named](const Sizes& a, const Sizes& b) { return a.*named.size < b.*named.size; };
        const auto [least, greatest] = std::minmax_element(frames.begin(), frames.end(), smaller);
        spread.*named.size = std::fabs((*greatest).*named.size - (*least).*named.size);
    }
    return spread;
}

}  // namespace quorvel::internal
