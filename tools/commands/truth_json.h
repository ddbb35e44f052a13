// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "sim/scene.h"

namespace quorvel::command {

/// \return what is true of the scene, as the JSON object that simulate_command.h describes, ended by a line break
std::string truthJson(const sim::Scene& scene, unsigned frameIndex);

}  // namespace quorvel::command
