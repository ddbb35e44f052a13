// SPDX-License-Identifier: Apache-2.0
#include "fuzz/target.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <streambuf>

#include <opencv2/core.hpp>
#include <opencv2/core/utils/logger.hpp>

#include "support/working_directory.h"

namespace quorvel::fuzz {

namespace {

/// A stream buffer that drops everything; numbers are still formatted, as for a terminal.
class NullBuffer : public std::streambuf {
    int_type overflow(int_type character) override { return traits_type::not_eof(character); }
};

int stayQuiet(int /*status*/, const char* /*function*/, const char* /*text*/, const char* /*file*/, int /*line*/,
              void* /*data*/) {
    return 0;
}

std::string contentOf(std::ifstream file, const std::string& path) {
    require(file.is_open(), path + " cannot be read");
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Things that are set up once in a process.
class Process {
public:
    Process() : previous_(std::cout.rdbuf(&nothing_)) {
        cv::redirectError(stayQuiet);
        cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
        cv::setNumThreads(1);
    }
    ~Process() { std::cout.rdbuf(previous_); }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

private:
    NullBuffer nothing_;
    std::streambuf* previous_;
    test::WorkingDirectory folder_;
};

}  // namespace

void require(bool holds, const std::string& what) {
    if (!holds) {
        std::cerr << "fuzz: " << what << std::endl;
        std::abort();
    }
}

void require(const ::testing::AssertionResult& holds, const std::string& what) {
    if (!holds) {
        require(false, what + ": " + holds.message());
    }
}

void prepareProcess() {
    static const Process process;
}

void clearWorkingFolder() {
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        std::filesystem::remove_all(entry.path());
    }
}

void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    file.close();
    require(file.good(), path + " cannot be written");
}

std::string readFile(const std::string& path) {
    return contentOf(std::ifstream(path, std::ios::binary), path);
}

std::string readText(const std::string& path) {
    return contentOf(std::ifstream(path), path);
}

}  // namespace quorvel::fuzz
