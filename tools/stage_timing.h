// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <quorvel/quorvel.h>

namespace quorvel::command {

/// How long the stages of one measurement took, ms.
struct StageMilliseconds {
    double groundRemoval = 0.0;
    double heightCut = 0.0;
    double objectComponent = 0.0;
    /// Whether there was an object; without one the measurement ended here.
    bool objectFound = false;
    double objectWindow = 0.0;  ///< the mask scaled up and the cloud cleared outside it
    double surfaceFilter = 0.0;
    double footprint = 0.0;
};

/// Measures the frame that a ruler holds on clones of its images, stage by stage with the library's own code, which is
/// linked in a second time for it: the shared library shows the stages to nobody.
/// \param ruler with a usable plane and a frame that was taken in and not measured yet; its mode measures
StageMilliseconds timeStages(const Quorvel& ruler);

}  // namespace quorvel::command
