// SPDX-License-Identifier: Apache-2.0
#include "command_run.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>

#include <gtest/gtest.h>

#ifndef _WIN32
#include <sys/wait.h>
#endif

namespace quorvel::command {

namespace {

std::string readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string quoted(const std::string& text) {
    return "\"" + text + "\"";
}

int exitCodeOf(int status) {
#ifdef _WIN32
    return status;
#else
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
#endif
}

std::filesystem::path freshPath() {
    // Test programs run at the same time; the name must be free for each of them.
    static std::random_device device;
    const std::string name = "quorvel_command_" + std::to_string(device()) + "_" + std::to_string(device());
    return std::filesystem::path(::testing::TempDir()) / name;
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
    std::string line = quoted(QUORVEL_BINARY) + " " + arguments + " > " + quoted(output) + " 2> " + quoted(errors);
#ifdef _WIN32
    line = quoted(line);  // the shell there strips the outermost pair of quotes
#endif
    CommandRun run;
    run.line = arguments;
    run.exitCode = exitCodeOf(std::system(line.c_str()));
    run.output = readFile(output);
    run.errors = readFile(errors);
    std::filesystem::remove(output);
    std::filesystem::remove(errors);
    return run;
}

TemporaryFolder::TemporaryFolder() : path_(freshPath()) {
    std::filesystem::create_directories(path_);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

CommandRun TemporaryFolder::run(const std::string& arguments) const {
    return runCommand("-C " + quoted(path_.string()) + " " + arguments);
}

void TemporaryFolder::write(const std::string& name, const std::string& bytes) const {
    std::ofstream file(path_ / name, std::ios::binary);
    file << bytes;
}

std::string TemporaryFolder::read(const std::string& name) const {
    return readFile(path_ / name);
}

}  // namespace quorvel::command
