// SPDX-License-Identifier: Apache-2.0
#include "scratch_folder.h"

#include <random>
#include <system_error>

namespace quorvel::command {

ScratchFolder::ScratchFolder() {
    std::random_device device;
    path_ = std::filesystem::temp_directory_path() /
            ("quorvel-" + std::to_string(device()) + "-" + std::to_string(device()));
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace quorvel::command
