// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <quorvel/quorvel.h>

#include "sim/render.h"

namespace quorvel::bench {

/// What every benchmark works on: a noisy parcel of 400 x 300 x 200 mm seen from 1 m, 640 x 480.
struct BenchScene {
    sim::Frame empty;
    sim::Frame occupied;
};

/// Rendered once.
const BenchScene& benchScene();

/// A ruler for that camera with the areas set; nothing pushed.
Quorvel benchRuler(ProductType mode);

/// As benchRuler, calibrated on the empty surface. The calibration files go into a temporary folder.
Quorvel calibratedRuler(ProductType mode);

}  // namespace quorvel::bench
