// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quorvel::bench {

/// One form of a work, made ready.
struct Run {
    std::function<void()> prepare;    ///< called before every call: restores the input; not timed
    std::function<void()> call;       ///< the timed call
    std::function<double()> outcome;  ///< a number that the last call found: equal in both forms, bit for bit
};

/// A timed work at one size or one point of a sweep, in the plain form and in the library's form.
struct Work {
    std::string name;            ///< "measureOnce"; no slash in it
    std::string point;           ///< "640x480", or the sweep's number
    double bytes = 0.0;          ///< bytes of a call's input and output, each counted once
    std::function<Run()> plain;  ///< makes the step-by-step form ready
    std::function<Run()> fast;   ///< makes the library's form ready
};

using Works = std::vector<Work>;

/// The stages alone, at 640 x 480.
Works intakeWorks();
Works heightCutWorks();
Works componentWorks();
Works surfaceFilterWorks();
Works footprintWorks();
Works normalMapWorks();
Works ransacWorks();
Works growthWorks();

/// The public operations at 640 x 480, 1280 x 720 and 1920 x 1080.
Works pipelineWorks();

/// The public operations over picture sizes, clutter, object size, calibration area and batch length.
Works sweepWorks();

/// All of the above.
Works allWorks();

}  // namespace quorvel::bench
