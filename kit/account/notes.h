// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "kit/input/camera.h"

namespace quorvel::kit {

/// \param source file of the camera
/// \return warnings on the camera's values, one sentence each
std::vector<std::string> cameraNotes(const Camera& camera, const std::string& source);

/// Prints each note as one line on standard error.
void printNotes(const std::vector<std::string>& notes);

}  // namespace quorvel::kit
