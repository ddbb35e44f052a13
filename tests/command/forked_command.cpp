// SPDX-License-Identifier: Apache-2.0
#include "forked_command.h"

#if defined(_WIN32) || defined(QUORVEL_COVERAGE)

namespace quorvel::command {

std::optional<int> runInCopy(const std::string& /*program*/, const std::string& /*arguments*/,
                             const std::string& /*outputFile*/, const std::string& /*errorFile*/) {
    return std::nullopt;
}

}  // namespace quorvel::command

#else

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <wordexp.h>

#include <gtest/gtest.h>
#include <opencv2/core/utility.hpp>

#include "commands/app.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace quorvel::command {

namespace {

/// A command line, taken apart and expanded as a shell does it.
class Words {
public:
    explicit Words(const std::string& line) : failed_(wordexp(line.c_str(), &words_, WRDE_UNDEF) != 0) {}
    ~Words() {
        if (!failed_) {
            wordfree(&words_);
        }
    }
    Words(const Words&) = delete;
    Words& operator=(const Words&) = delete;
    Words(Words&&) = delete;
    Words& operator=(Words&&) = delete;

    bool failed() const { return failed_; }
    int count() const { return static_cast<int>(words_.we_wordc); }
    const char* const* list() const { return words_.we_wordv; }

private:
    wordexp_t words_{};
    bool failed_;
};

/// Keeps OpenCV from starting its threads in the test program, which would end the copying.
class OneThread : public ::testing::Environment {
public:
    void SetUp() override { cv::setNumThreads(1); }
};

const ::testing::Environment* const kOneThread = ::testing::AddGlobalTestEnvironment(new OneThread);

bool hasOneThread() {
    namespace fs = std::filesystem;
    return std::distance(fs::directory_iterator("/proc/self/task"), fs::directory_iterator()) == 1;
}

bool replaceStream(const std::string& file, int stream) {
    constexpr mode_t kAllThatTheMaskAllows = 0666;
    const int opened = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kAllThatTheMaskAllows);
    return opened >= 0 && dup2(opened, stream) >= 0;
}

[[noreturn]] void runAndExit(const Words& words, const std::string& outputFile, const std::string& errorFile) {
    constexpr int kNoStreams = 126;
    if (!replaceStream(outputFile, STDOUT_FILENO) || !replaceStream(errorFile, STDERR_FILENO)) {
        _exit(kNoStreams);
    }
    // As every program starts.
    std::srand(1);
    cv::setNumThreads(-1);
    const int code = runProgram(words.count(), words.list());
    std::cout.flush();
    std::fflush(nullptr);
#if defined(__SANITIZE_ADDRESS__)
    __lsan_do_leak_check();
#endif
    // Not exit(): what this process has built up belongs to the test, such as its folders.
    _exit(code);
}

}  // namespace

std::optional<int> runInCopy(const std::string& program, const std::string& arguments, const std::string& outputFile,
                             const std::string& errorFile) {
    const Words words("\"" + program + "\" " + arguments);
    if (words.failed() || !hasOneThread()) {
        return std::nullopt;
    }
    // Or the copy would write what is waiting here once more.
    std::cout.flush();
    std::fflush(nullptr);
    const pid_t copy = fork();
    if (copy == 0) {
        runAndExit(words, outputFile, errorFile);
    }
    int status = 0;
    return copy > 0 && waitpid(copy, &status, 0) == copy ? std::optional(status) : std::nullopt;
}

}  // namespace quorvel::command

#endif
