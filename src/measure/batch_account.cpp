// SPDX-License-Identifier: Apache-2.0
#include "measure/batch_account.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace quorvel::internal {

namespace {

template <typename Test>
std::optional<std::size_t> firstFrame(const std::vector<MeasureAccount>& frames, Test test) {
    const auto found = std::find_if(frames.begin(), frames.end(), test);
    return found == frames.end() ? std::nullopt
                                 : std::optional<std::size_t>(static_cast<std::size_t>(found - frames.begin()));
}

std::vector<Sizes> sizesOf(const std::vector<MeasureAccount>& frames) {
    std::vector<Sizes> sizes;
    std::transform(frames.begin(), frames.end(), std::back_inserter(sizes),
                   [](const MeasureAccount& frame) { return frame.footprint.sizes; });
    return sizes;
}

}  // namespace

BatchAccount judgeBatch(std::vector<MeasureAccount> frames, const Sizes& tolerances) {
    BatchAccount account;
    account.tolerances = tolerances;
    account.frames = std::move(frames);
    if (account.frames.empty()) {
        return account;
    }
    const auto unmeasured = firstFrame(account.frames, [](const MeasureAccount& a) { return !hasRecord(a); });
    const auto sizeless =
        firstFrame(account.frames, [](const MeasureAccount& a) { return a.outcome != Outcome::Measured; });
    if (sizeless) {
        account.outcome = unmeasured ? BatchOutcome::FrameNotMeasured : BatchOutcome::FrameWithoutSizes;
        account.spoiler = unmeasured ? *unmeasured : *sizeless;
        return account;
    }
    const std::vector<Sizes> sizes = sizesOf(account.frames);
    account.spread = spreadOf(sizes);
    account.disagreement = firstDisagreement(sizes, tolerances);
    if (account.disagreement) {
        account.outcome = BatchOutcome::FramesDisagree;
        return account;
    }
    account.outcome = BatchOutcome::Agreed;
    account.mean = meanSizes(sizes);
    return account;
}

}  // namespace quorvel::internal
