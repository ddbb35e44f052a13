// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iostream>
#include <sstream>
#include <string>

namespace quorvel::test {

/// Catches everything written to std::cout while it lives.
class CapturedOutput {
public:
    CapturedOutput() : previous_(std::cout.rdbuf(text_.rdbuf())) {}
    ~CapturedOutput() { std::cout.rdbuf(previous_); }
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    /// \return what has been written so far
    std::string text() const { return text_.str(); }

private:
    std::ostringstream text_;
    std::streambuf* previous_;
};

}  // namespace quorvel::test
