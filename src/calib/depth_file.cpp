// SPDX-License-Identifier: Apache-2.0
#include "calib/depth_file.h"

#include <fstream>
#include <vector>

#include <opencv2/imgcodecs.hpp>

namespace quorvel::internal {

// Encoded in memory by the same encoder and written at once. Into a file it writes strip by strip and seeks before each
// of them, which takes a sixth longer.
void writeDepthFile(const std::string& path, const cv::Mat& depth) {
    std::vector<uchar> bytes;
    cv::imencode(".tif", depth, bytes);
    std::ofstream file(path, std::ios::binary);
    const void* const content = bytes.data();
    file.write(static_cast<const char*>(content), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace quorvel::internal
