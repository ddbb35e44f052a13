// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iosfwd>

#include <quorvel/quorvel.h>

namespace quorvel::internal {

/// Loads the capture in the ruler's `offlineDir` and measures it once.
/// \param ruler as its constructor begins, or unconfigured
/// \param lines where the lines of the measurement go; nothing is printed when it is null
/// \return whether there was a capture; without one nothing is changed
bool startOffline(Quorvel& ruler, std::ostream* lines);

}  // namespace quorvel::internal
