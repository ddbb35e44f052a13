// SPDX-License-Identifier: Apache-2.0
#include "command_run.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <random>
#include <sstream>
#include <system_error>

#include <gtest/gtest.h>

#ifndef _WIN32
#include <sys/wait.h>
#endif

#include "forked_command.h"

namespace quorvel::command {

namespace {

std::string readFile(const std::filesystem::path& path, std::ios::openmode mode) {
    std::ifstream file(path, mode);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

std::string inQuotes(const std::string& text) {
    return "\"" + text + "\"";
}

int exitCodeOf(int status) {
#ifdef _WIN32
    return status;
#else
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
#endif
}

/// Whether the shell or, on Windows, the program could not be started at all; 9009 is then the shell's exit code. Under
/// Wine about one start in some thousand fails.
bool wasNotStarted(int status) {
#ifdef _WIN32
    constexpr int kProgramNotFound = 9009;
    return status == -1 || status == kProgramNotFound;
#else
    return status == -1;
#endif
}

std::filesystem::path freshPath() {
    // Test programs run at the same time; the name must be free for each of them.
    static std::random_device device;
    const std::string name = "quorvel_command_" + std::to_string(device()) + "_" + std::to_string(device());
    return std::filesystem::path(::testing::TempDir()) / name;
}

/// Runs the built program by the shell.
/// \return its status, as std::system() gives it
int runInShell(const std::string& arguments, const std::string& output, const std::string& errors) {
    std::string line =
        inQuotes(QUORVEL_BINARY) + " " + arguments + " > " + inQuotes(output) + " 2> " + inQuotes(errors);
#ifdef _WIN32
    line = inQuotes(line);  // the shell there strips the outermost pair of quotes
#endif
    constexpr int kTries = 3;
    int status = -1;
    for (int i = 0; i < kTries && wasNotStarted(status); ++i) {
        status = std::system(line.c_str());
    }
    return status;
}

}  // namespace

std::string CommandRun::text() const {
    return "quorvel " + line + "\nexit code " + std::to_string(exitCode) + "\nstandard output:\n" + output +
           "\nstandard error:\n" + errors;
}

nlohmann::json CommandRun::json() const {
    return nlohmann::json::parse(output, nullptr, false);
}

int CommandRun::errorLines() const {
    return static_cast<int>(std::count(errors.begin(), errors.end(), '\n'));
}

CommandRun runCommand(const std::string& arguments) {
    const std::filesystem::path base = freshPath();
    const std::string output = base.string() + ".out";
    const std::string errors = base.string() + ".err";
    CommandRun run;
    run.line = arguments;
    const std::optional<int> status = runInCopy(QUORVEL_BINARY, arguments, output, errors);
    run.exitCode = exitCodeOf(status ? *status : runInShell(arguments, output, errors));
    run.output = readFile(output, std::ios::in);
    run.errors = readFile(errors, std::ios::in);
    std::filesystem::remove(output);
    std::filesystem::remove(errors);
    return run;
}

void expectRefusal(const CommandRun& run, const std::vector<std::string>& words) {
    EXPECT_EQ(run.exitCode, 2) << run.text();
    EXPECT_EQ(run.output, "") << run.text();
    EXPECT_EQ(run.errorLines(), 1) << run.text();
    for (const std::string& word : words) {
        EXPECT_NE(run.errors.find(word), std::string::npos) << "expected \"" << word << "\" in\n" << run.text();
    }
}

TemporaryFolder::TemporaryFolder() : path_(freshPath()) {
    std::filesystem::create_directories(path_);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

CommandRun TemporaryFolder::run(const std::string& arguments) const {
    return runCommand("-C " + inQuotes(path_.string()) + " " + arguments);
}

void TemporaryFolder::write(const std::string& name, const std::string& bytes) const {
    std::ofstream file(path_ / name, std::ios::binary);
    file << bytes;
}

std::string TemporaryFolder::read(const std::string& name) const {
    return readFile(path_ / name, std::ios::binary);
}

std::string TemporaryFolder::readText(const std::string& name) const {
    return readFile(path_ / name, std::ios::in);
}

}  // namespace quorvel::command
