// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <quorvel/quorvel.h>

#include "measure/object_chain.h"

namespace quorvel::internal {

/// \return what the ruler's members say about measuring a frame
MeasureSettings measureSettings(const Quorvel& ruler);

}  // namespace quorvel::internal
