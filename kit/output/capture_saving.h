// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "ruler/ruler.h"

namespace quorvel::kit {

/// Has the library write the ruler's state into a capture folder under ./log. None is made in a second that has a
/// folder already; then the next second is awaited.
/// \param ruler with a frame
/// \return the folder, relative to the working folder, such as "log/2026-11/2026-11-16-02-31-32"
/// \throws InputError when the folder or one of its four files cannot be written
std::string saveCapture(const internal::Ruler& ruler);

}  // namespace quorvel::kit
