// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <quorvel/quorvel.h>

#include "calib/plane_model.h"

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

/// Empties a record: no corners (their storage is kept), zero sizes, both flags false.
void resetResult(MeasureResult& result);

/// In debug mode, prints why a measurement refuses the reference plane, if it does; a plane that is not there is none.
void printPlaneRefusal(const Quorvel& ruler);

/// Prints the line with which every calibration reports its plane.
void printPlane(const Plane& plane);

/// \return the rectangle of a ratio of the picture, centred, each value computed in float and truncated to int
cv::Rect centeredRegion(float ratio, int imageWidth, int imageHeight);

}  // namespace quorvel::internal
