// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace quorvel::kit {

/// Paths of the two pictures of one instant.
struct FrameFiles {
    /// Empty when there is no colour image.
    std::string color;
    std::string depth;
};

/// Pairs the files of two lists.
/// \param colors empty, or one for each depth
/// \throws InputError when the lists do not go together, or when there is no depth
std::vector<FrameFiles> pairFiles(const std::vector<std::string>& colors, const std::vector<std::string>& depths);

/// Finds the frames of a batch in a folder, in natural name order (2 before 10). A pair is two pictures (PNG, TIFF,
/// JPEG) whose names differ only in "color" or "colour" against "depth", and perhaps in their endings. Left out are
/// names with neither word, names with "empty", and the plain pair color/depth when there are numbered ones.
/// \throws InputError when the folder cannot be read or has no pair, or when a picture has no partner
std::vector<FrameFiles> findFrames(const std::string& folder);

}  // namespace quorvel::kit
