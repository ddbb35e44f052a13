// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <quorvel/quorvel.h>

namespace quorvel::command {

/// Has the library write the ruler's state into a capture folder under ./log. The library does not say which folder
/// it made, or whether it made one: none is made in a second that has a folder already, and then the next second is
/// awaited.
/// \param ruler with a frame
/// \return the folder, relative to the working folder, such as "log/2026-11/2026-11-16-02-31-32"
/// \throws InputError when the folder or one of its four files cannot be written
std::string saveCapture(Quorvel& ruler);

}  // namespace quorvel::command
