// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace quorvel::command {

/// What one run of the built program gave.
struct CommandRun {
    std::string line;  ///< as it was called
    int exitCode = -1;
    std::string output;  ///< standard output, its line ends read as "\n" on every platform
    std::string errors;  ///< standard error, as well

    /// For a failing test: everything at once.
    std::string text() const;
    /// Standard output as one JSON document; a discarded value when it is not JSON.
    nlohmann::json json() const;
    /// Number of lines on standard error.
    int errorLines() const;
};

/// Runs the program with standard output and standard error apart: in a copy of this process where that serves, else
/// the built program.
/// \param arguments as typed in a shell
CommandRun runCommand(const std::string& arguments);

/// Expects what a run with wrong input gives: exit code 2, nothing on standard output and one line on standard error.
/// \param words what the line must hold
void expectRefusal(const CommandRun& run, const std::vector<std::string>& words);

/// A fresh folder that is removed at the end of the test.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    TemporaryFolder(TemporaryFolder&&) = delete;
    TemporaryFolder& operator=(TemporaryFolder&&) = delete;

    /// Path of the folder.
    const std::filesystem::path& path() const { return path_; }
    /// Path of a file in it.
    std::string file(const std::string& name) const { return (path_ / name).string(); }
    /// Runs the program in the folder.
    CommandRun run(const std::string& arguments) const;
    /// Writes a file into the folder.
    void write(const std::string& name, const std::string& bytes) const;
    /// Bytes of a file in the folder; empty when the file does not exist.
    std::string read(const std::string& name) const;
    /// The same, with the platform's line ends read as "\n".
    std::string readText(const std::string& name) const;

private:
    std::filesystem::path path_;
};

}  // namespace quorvel::command
