// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iosfwd>

#include <quorvel/quorvel.h>

#include "calib/reference_fit.h"

namespace quorvel::internal {

/// Fits the reference plane to the depth frame that a ruler holds, by the method of its mode, and adopts it. Nothing is
/// written; `calibStatus` and `cameraHeight` stay as they are.
/// \param shift added to the fitted distance, mm; to that of the previous plane when the fit failed
/// \param lines where the lines of the fit go; nothing is printed when it is null
/// \return the account; its plane comes before the shift. With NoFrame nothing was changed
FitAccount fitReferencePlane(Quorvel& ruler, float shift, std::ostream* lines);

/// Which files of a calibration were written.
struct StoredCalibration {
    bool plane = false;
    bool depth = false;
};

/// Stores a ruler's plane and depth frame in its parameter folder, which is made when it is missing, each whole or not
/// at all.
StoredCalibration storeCalibration(const Quorvel& ruler);

/// Counts the ruler's plane as calibrated from now on.
void completeCalibration(Quorvel& ruler);

/// Fits the reference plane anew to the small point cloud of the last frame: Quorvel::ransacCalibRef with an account.
/// \param lines nothing is printed when it is null
FitAccount refitPlane(Quorvel& ruler, std::ostream* lines);

}  // namespace quorvel::internal
