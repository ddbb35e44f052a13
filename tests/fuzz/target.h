// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "fuzz/input.h"

/// The one function of a fuzzing target: works through one input and ends the process when something is wrong.
/// \return 0
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace quorvel::fuzz {

/// Ends the process with a message when something that must hold does not.
void require(bool holds, const std::string& what);
void require(const ::testing::AssertionResult& holds, const std::string& what);

/// Makes the process quiet and gives it its own working folder, which is removed when the process ends. Every target
/// calls this first; only the first call has an effect.
void prepareProcess();

/// Removes everything in the working folder, so that one input leaves nothing to the next.
void clearWorkingFolder();

/// Works through one input with the function that its first byte chooses.
/// \param table functions of an Input
/// \return 0
template <typename Table>
int workThrough(const Table& table, const std::uint8_t* data, std::size_t size) {
    prepareProcess();
    Input input(data, size);
    input.oneOf(table)(input);
    return 0;
}

void writeFile(const std::string& path, const std::string& bytes);
std::string readFile(const std::string& path);
/// \return the text of a file with line ends as line feeds, for files of every platform
std::string readText(const std::string& path);

}  // namespace quorvel::fuzz
