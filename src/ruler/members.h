// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iosfwd>
#include <string>

#include <quorvel/quorvel.h>

#include "geometry/plane_model.h"

namespace quorvel::internal {

/// \return the reference plane, which stands in two members
inline Plane referencePlane(const Quorvel& ruler) {
    return {ruler.refPlaneNormal, ruler.refPlaneOffset};
}

/// Stores the reference plane in its two members and the smallest object region that follows from it.
inline void adoptPlane(Quorvel& ruler, const Plane& plane) {
    ruler.refPlaneNormal = plane.normal;
    ruler.refPlaneOffset = plane.offset;
    ruler.minObjectPixels = objectPixelMinimum(plane.offset, ruler.fxSmall);
}

/// Prints a line in debug mode.
/// \param lines where to; nothing is printed when it is null
void printInDebugMode(const Quorvel& ruler, const std::string& line, std::ostream* lines);

/// Prints the line with which every calibration reports its plane.
/// \param lines where to; nothing is printed when it is null
void printPlane(const Plane& plane, std::ostream* lines);

/// \return the rectangle of a ratio of the picture, centred, each value computed in float and truncated to int
cv::Rect centeredRegion(float ratio, int imageWidth, int imageHeight);

}  // namespace quorvel::internal
