// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "sim/scene.h"

namespace quorvel::sim {

/// Names of the built-in scenes, in the order in which they are best shown.
std::vector<std::string> presetNames();

/// One line, without a full stop, on what the named scene shows.
/// Throws std::invalid_argument, naming the known presets, for an unknown name.
std::string presetDescription(const std::string& name);

/// The named built-in scene. Throws as presetDescription() does.
Scene preset(const std::string& name);

}  // namespace quorvel::sim
