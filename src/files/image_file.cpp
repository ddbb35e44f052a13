// SPDX-License-Identifier: Apache-2.0
#include "files/image_file.h"

#include <string_view>
#include <vector>

#include <opencv2/imgcodecs.hpp>

#include "files/platform.h"
#include "files/whole_file.h"

namespace quorvel::internal {

bool writeImageFile(const std::string& path, const cv::Mat& image) {
    // An image of three dimensions has -1 rows: the encoder of TIFF takes gigabytes for them.
    if (image.empty() || image.dims != 2) {
        return false;
    }
    std::vector<uchar> bytes;
    if (!cv::imencode(path.substr(path.rfind('.')), image, bytes)) {
        return false;
    }
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): bytes as the characters of a file
    const auto* const characters = reinterpret_cast<const char*>(bytes.data());
    return writeWholeFile(path, {characters, bytes.size()}, FileContent::Binary);
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
