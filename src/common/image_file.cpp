// SPDX-License-Identifier: Apache-2.0
#include "common/image_file.h"

#include <string_view>
#include <vector>

#include <opencv2/imgcodecs.hpp>

#include "common/platform.h"
#include "common/whole_file.h"

namespace quorvel::internal {

void writeImageFile(const std::string& path, const cv::Mat& image) {
    // An image of three dimensions has -1 rows: the encoder of TIFF takes gigabytes for them.
    if (image.empty() || image.dims != 2) {
        return;
    }
    std::vector<uchar> bytes;
    if (cv::imencode(path.substr(path.rfind('.')), image, bytes)) {
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): bytes as the characters of a file
        const auto* const characters = reinterpret_cast<const char*>(bytes.data());
        writeWholeFile(path, {characters, bytes.size()}, FileContent::Binary);
    }
}

cv::Mat readImageFile(const std::string& path, int mode) {
    if (!isPlainFile(path)) {
        return {};
    }
    try {
        return cv::imread(path, mode);
    } catch (const cv::Exception&) {
        return {};
    }
}

}  // namespace quorvel::internal
