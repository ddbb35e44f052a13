// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

namespace quorvel::soak {

/// \return resident memory of this process without what the C library keeps for later, bytes; nothing where the system
/// does not tell
std::optional<double> residentBytes();

/// \return number of files, folders and sockets that this process holds open; nothing where the system does not tell
std::optional<int> openDescriptors();

/// \return seconds that this process has computed, where the system counts them, else seconds on the clock
double secondsWorked();

}  // namespace quorvel::soak
