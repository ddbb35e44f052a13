// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "replay.h"

namespace quorvel::command {

/// What a pool of replays calls.
struct ReplayCalls {
    /// Makes the outcome of one folder, on one of the pool's threads; must not throw.
    std::function<ReplayOutcome(const std::string&)> replay;
    /// Gets the outcomes in the order of the folders, on the calling thread; what it throws ends the run.
    std::function<void(const ReplayOutcome&)> take;
    /// Asked before every folder, on one of the pool's threads: no other is begun once it says true.
    std::function<bool()> stopped;
};

/// Replays folders side by side and hands each outcome over as soon as it and those before it are there.
/// \param jobs number of threads, at least 1
/// \return number of outcomes handed over: those of all folders begun
std::size_t replayAll(const std::vector<std::string>& folders, int jobs, const ReplayCalls& calls);

}  // namespace quorvel::command
