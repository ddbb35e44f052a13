// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <quorvel/quorvel.h>

namespace quorvel::test::plain {

/// The calibration over the ruler's public members, with the plain stages: smoothing, back-projection, region, fit of
/// the operating mode, and the two files. The ruler must hold a good depth frame.
/// \param[out] t the stored distance of the plane, mm
/// \param offset added to the fitted distance, mm
void calibRef(Quorvel& ruler, float& t, float offset);

/// The fit to the small point cloud of the frame that the ruler holds; a fit that fails keeps the previous plane.
void ransacCalibRef(Quorvel& ruler);

}  // namespace quorvel::test::plain
