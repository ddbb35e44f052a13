// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

namespace quorvel::command {

/// The decoder fills what is missing of a JPEG file with grey and goes on.
/// \return whether the bytes are a JPEG file without its end; false for every other file
bool jpegEndsEarly(const std::vector<unsigned char>& bytes);

}  // namespace quorvel::command
