// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "kit/replay/replay.h"

namespace quorvel::kit {

/// What a pool of replays calls.
struct ReplayCalls {
    /// Makes the outcome of one folder, on one of the pool's threads; must not throw.
    std::function<ReplayOutcome(const std::string&)> replay;
    /// Gets the outcomes in the order of the folders, on the calling thread. An exception from it ends the run.
    std::function<void(const ReplayOutcome&)> take;
    /// Called before every folder, on one of the pool's threads. Once it returns true, no further folder is begun.
    std::function<bool()> stopped;
};

/// Replays folders side by side. Each outcome is handed over as soon as it and all outcomes before it are ready.
/// \param jobs number of threads, at least 1
/// \return number of outcomes handed over: those of all folders begun
std::size_t replayAll(const std::vector<std::string>& folders, int jobs, const ReplayCalls& calls);

}  // namespace quorvel::kit
