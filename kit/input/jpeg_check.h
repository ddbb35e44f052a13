// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

namespace quorvel::kit {

/// Finds a JPEG file that was cut off. The decoder would fill the missing part with grey and report nothing.
/// \return whether the bytes are a JPEG file without its end; false for every other file
bool jpegEndsEarly(const std::vector<unsigned char>& bytes);

}  // namespace quorvel::kit
