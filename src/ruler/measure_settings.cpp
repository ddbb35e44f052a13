// SPDX-License-Identifier: Apache-2.0
#include "ruler/measure_settings.h"

#include "common/numbers.h"
#include "ruler/members.h"

namespace quorvel::internal {

MeasureSettings measureSettings(const Quorvel& ruler) {
    MeasureSettings settings;
    settings.plane = referencePlane(ruler);
    settings.minHeight = ruler.minObjectHeight;
    settings.minPixels = ruler.minObjectPixels;
    settings.camera = {ruler.cx, ruler.cy, ruler.fx, ruler.fy};
    settings.downScale = ruler.downScale;
    settings.cameraTypeSet = ruler.cameraTypeSet;
    settings.cameraType = truncateToInt(ruler.cameraType);
    settings.effectiveRegion = ruler.effectiveRegion;
    settings.variant =
        ruler.productType == GROUND_GROWING ? FootprintVariant::WithoutMargin : FootprintVariant::General;
    return settings;
}

}  // namespace quorvel::internal
