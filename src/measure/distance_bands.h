// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace quorvel::internal {

/// The minimum object height of the KIOSK mode, which follows the sensor's noise: 3 mm up to a plane distance of
/// 800 mm, 5 mm up to 1000 mm, 8 mm up to 1200 mm, 10 mm beyond.
/// \param offset distance of the plane, mm
/// \param current handed back when the distance is NaN, mm
float kioskMinHeight(float offset, float current);

/// How much the GROUND_TRACKING mode lowers a measured height: 1 mm up to a plane distance of 550 mm, 3 mm up to
/// 700 mm, 5 mm up to 900 mm, 7 mm up to 1100 mm, 8 mm beyond, nothing when the distance is NaN. These limits
/// are not those of kioskMinHeight(), on purpose.
/// \param offset distance of the plane, mm
float trackingHeightLowering(float offset);

}  // namespace quorvel::internal
