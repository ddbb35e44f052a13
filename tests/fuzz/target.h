// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

/// The one function of a fuzzing target: works through one input and ends the process when something is wrong.
/// \return 0
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace quorvel::fuzz {

/// Ends the process with a message when something that must hold does not.
void require(bool holds, const std::string& what);
void require(const ::testing::AssertionResult& holds, const std::string& what);

/// Makes the process quiet and gives it a working folder of its own, which goes when the process ends. Every target
/// calls it first; only the first call does something.
void prepareProcess();

/// Removes everything in the working folder, so that one input leaves nothing to the next.
void clearWorkingFolder();

void writeFile(const std::string& path, const std::string& bytes);
std::string readFile(const std::string& path);
/// \return a text whose lines end in a line feed, whatever ends them in the file
std::string readText(const std::string& path);

}  // namespace quorvel::fuzz
