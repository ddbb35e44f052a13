// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>

namespace quorvel::internal {

/// How long each stage of a measurement took, ms.
struct StageTimes {
    double heightCut = 0.0;
    double component = 0.0;
    double window = 0.0;  ///< the mask scaled up and the cloud cleared outside it
    double surfaceFilter = 0.0;
    double footprint = 0.0;
};

/// Notes the time since the last stage; does nothing when nobody wants to know.
class StageWatch {
public:
    /// \param times filled in; may be null
    explicit StageWatch(StageTimes* times) : times_(times) {
        if (times_ != nullptr) {
            last_ = Clock::now();
        }
    }

    /// \param stage that has just ended
    void lap(double StageTimes::*stage) {
        if (times_ != nullptr) {
            const Clock::time_point now = Clock::now();
            times_->*stage = std::chrono::duration<double, std::milli>(now - last_).count();
            last_ = now;
        }
    }

private:
    using Clock = std::chrono::steady_clock;

    StageTimes* times_;
    Clock::time_point last_;
};

}  // namespace quorvel::internal
