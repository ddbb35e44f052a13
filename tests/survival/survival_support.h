// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include <quorvel/quorvel.h>

namespace quorvel::test {

constexpr int kSurvivalWidth = 160;   // pixels
constexpr int kSurvivalHeight = 120;  // pixels

/// \return a ruler for frames of 160 x 120 that has seen a flat surface, calibrating by growing and without random
/// draws
Quorvel rulerAbove(int distance);

/// \return the depth image of a flat surface, mm
cv::Mat surfaceAt(int distance);

/// \return the names in a folder, ascending
std::vector<std::string> namesIn(const std::filesystem::path& folder);

/// \return whether this is the name of a file that a writer has put beside its place
bool isBeside(const std::string& name);

/// Runs something in a process of its own, which is killed after a while.
/// \param delay microseconds
/// \return whether it was the kill that ended the process
bool killedAfter(int delay, const std::function<void()>& work);

/// Runs something in a process of its own to its end.
/// \return its exit code: 0 when `work` returned true, 1 when false, -1 when it crashed
int exitCodeOf(const std::function<bool()>& work);

}  // namespace quorvel::test
