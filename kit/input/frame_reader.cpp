// SPDX-License-Identifier: Apache-2.0
#include "kit/input/frame_reader.h"

#include <vector>

#include <opencv2/imgcodecs.hpp>

#include "kit/account/text_format.h"
#include "kit/input/depth_unit.h"
#include "kit/input/input_error.h"
#include "kit/input/input_file.h"
#include "kit/input/jpeg_check.h"
#include "kit/input/muted_errors.h"
#include "kit/input/png_check.h"

namespace quorvel::kit {

namespace {

/// No depth camera measures nearer than this, mm: a smaller maximum means that the unit is not millimetres.
constexpr double kNearestSensibleDepth = 30.0;

const char* const kDepthFiles = "a 16-bit PNG or TIFF file";

std::vector<unsigned char> readBytes(const std::string& path) {
    const std::string bytes = readInputFile(path, kLargestPicture, "name a picture file");
    return {bytes.begin(), bytes.end()};
}

void requireWhole(const std::vector<unsigned char>& bytes, const std::string& path) {
    const std::string damage = pngDamage(bytes);
    if (!damage.empty()) {
        throw InputError(path + ": the PNG is damaged: " + damage + "; copy or record it again");
    }
    if (jpegEndsEarly(bytes)) {
        throw InputError(path + ": the JPEG is damaged: the file ends early; copy or record it again");
    }
}

cv::Mat decoded(const std::vector<unsigned char>& bytes, int flags) {
    if (bytes.empty()) {
        return {};
    }
    const MutedErrors muted;
    try {
        return cv::imdecode(bytes, flags);
    } catch (const cv::Exception&) {
        return {};  // such as an impossible picture size
    }
}

cv::Mat decode(const std::string& path, int flags, const std::string& wanted) {
    const std::vector<unsigned char> bytes = readBytes(path);
    requireWhole(bytes, path);
    cv::Mat image = decoded(bytes, flags);
    if (image.empty()) {
        throw InputError(path + (bytes.empty() ? ": is empty and" : ":") + " cannot be read as a picture; give " +
                         wanted);
    }
    return image;
}

std::string kindText(const cv::Mat& image) {
    constexpr int kBitsPerByte = 8;
    return std::to_string(static_cast<int>(image.elemSize1()) * kBitsPerByte) + "-bit values in " +
           std::to_string(image.channels()) + (image.channels() == 1 ? " channel" : " channels");
}

}  // namespace

cv::Mat readColor(const std::string& path) {
    return decode(path, cv::IMREAD_COLOR | cv::IMREAD_IGNORE_ORIENTATION, "a PNG, TIFF or JPEG file");
}

std::string sizeText(cv::Size size) {
    return std::to_string(size.width) + " x " + std::to_string(size.height);
}

cv::Mat readMillimetres(const std::string& path) {
    cv::Mat depth = decode(path, cv::IMREAD_UNCHANGED, kDepthFiles);
    if (depth.type() != CV_16UC1) {
        throw InputError(path + ": holds " + kindText(depth) + ", and a capture's depth is one channel of 16 bits");
    }
    return depth;
}

cv::Mat readDepth(const std::string& path, double millimetresPerUnit) {
    const cv::Mat stored = decode(path, cv::IMREAD_UNCHANGED, kDepthFiles);
    const int type = stored.type();
    if (type != CV_16UC1 && type != CV_32FC1 && type != CV_64FC1) {
        throw InputError(path + ": holds " + kindText(stored) +
                         ", and depth is one channel of 16-bit or floating-point values; save the camera's raw "
                         "depth, not a picture of it");
    }
    cv::Mat depth = depthInMillimetres(stored, millimetresPerUnit);
    double deepest = 0.0;
    cv::minMaxLoc(stored, nullptr, &deepest, nullptr, nullptr, stored > 0);
    deepest *= millimetresPerUnit;
    if (deepest > 0.0 && deepest < kNearestSensibleDepth) {
        throw InputError(path + ": the deepest value is " + fixed(deepest, 3) +
                         " mm, nearer than any depth camera sees; say with --depth-scale how many millimetres one "
                         "stored unit is (1000 for metres)");
    }
    return depth;
}

FramePair readFrame(const std::string& colorPath, const std::string& depthPath, double millimetresPerUnit) {
    FramePair frame;
    frame.depth = readDepth(depthPath, millimetresPerUnit);
    frame.color = colorPath.empty() ? greyFromDepth(frame.depth) : readColor(colorPath);
    if (frame.color.size() != frame.depth.size()) {
        throw InputError(colorPath + ": is " + sizeText(frame.color.size()) + " pixels, but " + depthPath + " is " +
                         sizeText(frame.depth.size()) + "; give a colour image aligned with the depth, or none");
    }
    return frame;
}

void requireSize(const FramePair& frame, cv::Size camera, const std::string& depthPath) {
    if (frame.depth.size() != camera) {
        throw InputError(depthPath + ": is " + sizeText(frame.depth.size()) + " pixels, but the camera is given as " +
                         sizeText(camera) + "; use the camera file that belongs to this stream");
    }
}

}  // namespace quorvel::kit
