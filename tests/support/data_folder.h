// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdlib>
#include <filesystem>

namespace quorvel::test {

/// \return folder of the real depth-camera frames, which need not exist: what the environment variable QUORVEL_DATA_DIR
///         names, else the build's
inline std::filesystem::path dataFolder() {
    const char* chosen = std::getenv("QUORVEL_DATA_DIR");
    return chosen != nullptr ? chosen : QUORVEL_DATA_DIR;
}

}  // namespace quorvel::test
