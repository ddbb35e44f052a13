// SPDX-License-Identifier: Apache-2.0
#include "kit/output/scratch_folder.h"

#include <random>
#include <system_error>

namespace quorvel::kit {

namespace {

std::filesystem::path freshPath() {
    std::random_device device;
    return std::filesystem::temp_directory_path() /
           ("quorvel-" + std::to_string(device()) + "-" + std::to_string(device()));
}

}  // namespace

ScratchFolder::ScratchFolder() : path_(freshPath()) {}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace quorvel::kit
