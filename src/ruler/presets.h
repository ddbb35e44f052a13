// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iosfwd>

#include <quorvel/quorvel.h>

namespace quorvel::internal {

/// Selects the operating mode: Quorvel::setProductType, with the lines going where the caller wants them.
/// \param lines nothing is printed when it is null
void selectMode(Quorvel& ruler, ProductType type, std::ostream* lines);

/// Loads the plane of the ruler's calibration file, with what follows from it; `calibStatus` stays as it is.
/// \param lines nothing is printed when it is null
/// \return whether there was a calibration file
bool loadStoredPlane(Quorvel& ruler, std::ostream* lines);

/// \return the detection area that the KIOSK modes begin with: the centred fifth of the picture's width and height
cv::Rect kioskRegion(const Quorvel& ruler);

}  // namespace quorvel::internal
