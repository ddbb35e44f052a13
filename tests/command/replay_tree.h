// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "command_run.h"

namespace quorvel::command {

/// A folder with a tree of five captures below log: three measured, one empty, one that lost its files.
class ReplayTree : public ::testing::Test {
protected:
    using Json = nlohmann::json;

    static void SetUpTestSuite();
    static void TearDownTestSuite();

    /// Runs `quorvel replay` in the folder.
    static CommandRun replay(const std::string& arguments);
    /// \return the lines of a text, each as a JSON document; a discarded value for a line that is not JSON
    static std::vector<Json> lines(const std::string& text);

    static std::unique_ptr<TemporaryFolder> folder_;
};

}  // namespace quorvel::command
