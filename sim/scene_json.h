// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "sim/scene.h"

namespace quorvel::sim {

// The file has the members of Scene, with the same names; colours are written "#rrggbb". A missing member has its
// default; only the sizes of objects are required.

/// Reads a scene file. Throws std::runtime_error with one line that begins with the path, for an unreadable file and
/// for everything that sceneFromJson() refuses.
Scene readScene(const std::string& path);

/// Writes a scene file that readScene() reads back unchanged. Throws std::runtime_error when the file cannot be
/// written, std::invalid_argument for a scene that readScene() would refuse.
void writeScene(const std::string& path, const Scene& scene);

/// The scene as indented JSON text, every member written out. Throws std::invalid_argument with sceneProblem() for a
/// scene that sceneFromJson() would refuse.
std::string sceneToJson(const Scene& scene);

/// The scene of a JSON text. Throws std::runtime_error with one line saying where, what is wrong and what is expected:
/// for text that is not JSON, unknown or missing members, wrong types and values that sceneProblem() finds.
Scene sceneFromJson(const std::string& text);

}  // namespace quorvel::sim
