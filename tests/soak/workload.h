// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <vector>

#include <quorvel/quorvel.h>

#include "soak/digest.h"
#include "soak/scene_pool.h"
#include "support/random.h"

namespace quorvel::soak {

/// What a pass did.
struct PassOutcome {
    std::uint64_t digest = 0;  ///< of everything that the calls gave
    int frames = 0;            ///< that were pushed, refused ones included
    int measured = 0;          ///< that gave a box
    int refused = 0;
    int exceptions = 0;  ///< raised by parameter files that are no documents
};

/// A station with long-lived rulers, one for each mode and one for a smaller camera, that never stops: single shots in
/// every mode, batches, calibrations, files, and input that must be refused. Works in the current directory.
class Workload {
public:
    Workload();

    /// Warms up: the library's scratch memory grows to what the largest object needs.
    /// \return number of frames pushed
    int showEveryScene();

    /// Pushes some frames in a mixture that follows from a seed alone: the same seed, the same calls with the same
    /// pixels and random numbers.
    /// \param frames to push; a batch may be pushed over the end
    /// \param onFrame is told after every single shot, with the seconds that its intake and measurement took
    PassOutcome run(unsigned seed, int frames, const std::function<void(double)>& onFrame);

private:
    struct Station {
        Quorvel ruler;
        ScenePool* pool;
        ProductType mode;
    };

    void calibrateAll();
    void holdLongestBatches();
    void dropBatches();
    void calibrate(Station& station);
    void step(const std::function<void(double)>& onFrame);
    void shoot(Station& station, const std::function<void(double)>& onFrame);
    void shootBatch(Station& station);
    void useParameterFile(Station& station);
    void saveCapture(Station& station);
    void disturb(Station& station);
    void pushUnusable(Station& station);
    void expectRefused(bool taken);

    ScenePool large_;
    ScenePool small_;
    std::vector<Station> stations_;
    test::Draws draws_{0};
    Digest digest_;
    PassOutcome outcome_;
};

}  // namespace quorvel::soak
