// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "command_run.h"
#include "support/data_folder.h"

namespace quorvel::command {

/// For tests on real camera frames; they are skipped when the folder with the frames is missing.
class RealFrames : public ::testing::Test {
protected:
    void SetUp() override {
        data_ = test::dataFolder();
        if (!std::filesystem::is_directory(data_)) {
            GTEST_SKIP() << "no folder with real captures; name one with the environment variable QUORVEL_DATA_DIR";
        }
    }

    /// \return path of a captured file, in quotes for the command line
    std::string quoted(const std::string& name) const { return "\"" + (data_ / name).string() + "\""; }

    std::filesystem::path data_;
    TemporaryFolder folder_;
};

}  // namespace quorvel::command
