// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>

namespace quorvel::kit {

/// Measures wall time from its construction.
class Stopwatch {
public:
    /// \return milliseconds since construction
    double milliseconds() const {
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start_).count();
    }

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace quorvel::kit
