// SPDX-License-Identifier: Apache-2.0
// Whole lives of rulers: every public call in any order with any arguments, copies, stored captures, and a host that
// writes into the public members. After each call the promises of that call are checked.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <opencv2/core.hpp>

#include <quorvel/quorvel.h>

#include "files/calibration_file.h"
#include "files/text_file.h"
#include "fuzz/input.h"
#include "fuzz/target.h"
#include "library/same_result.h"
#include "library/same_ruler.h"
#include "support/members.h"
#include "support/random.h"
#include "support/same_bits.h"

namespace quorvel::fuzz {

namespace {

namespace fs = std::filesystem;

using test::sameBits;

constexpr std::size_t kMostRulers = 3;
constexpr int kMostSteps = 40;
constexpr std::size_t kLargestFile = 400;  // bytes, of those made of the input

/// Everything that one input plays with.
struct World {
    Input& input;
    std::vector<std::unique_ptr<Quorvel>> rulers;
    /// The host's own images, which must never change.
    std::vector<cv::Mat> given;
    std::vector<cv::Mat> copies;
    std::vector<std::string> captures;  ///< folders, relative to the working folder

    explicit World(Input& bytes) : input(bytes) {}
    Quorvel& ruler() { return *input.oneOf(rulers); }
};

// Pictures

void fillDepth(Input& input, cv::Mat& depth) {
    const int kind = input.below(6);
    if (kind == 0 || depth.empty()) {
        return;
    }
    const int floor = 300 + input.word() % 2000;
    const int height = input.below(256);
    const int left = input.below(4);
    const float slope = kind == 3 ? input.real(-3.0F, 3.0F) : 0.0F;
    test::Draws noise(input.byte());
    const cv::Rect box(depth.cols * left / 8, depth.rows / 4, depth.cols / 2, depth.rows / 2);
    for (int row = 0; row < depth.rows; ++row) {
        for (int column = 0; column < depth.cols; ++column) {
            int value = floor - (box.contains(cv::Point(column, row)) ? height : 0);
            if (kind == 1) {
                value = 65535;
            } else if (kind == 2) {
                value = noise.below(65536);
            } else if (kind == 3) {
                value += static_cast<int>(slope * static_cast<float>(column)) + noise.below(4);
            } else if (kind == 4) {
                value = noise.below(8) == 0 ? 0 : value + noise.below(3);
            }
            depth.at<ushort>(row, column) = cv::saturate_cast<ushort>(value);
        }
    }
}

/// An image that no ruler takes: another type, another size, empty, or of three dimensions.
cv::Mat wrongImage(Input& input, const cv::Size& size) {
    const std::array<int, 6> types{CV_8UC1, CV_16UC1, CV_8UC3, CV_32FC1, CV_32FC3, CV_64FC4};
    const int type = input.oneOf(types);
    switch (input.below(5)) {
        case 0:
            return {};
        case 1:
            return {size.height, size.width, type, cv::Scalar::all(3)};
        case 2:
            return {1 + input.below(40), 1 + input.below(40), type, cv::Scalar::all(7)};
        case 3: {
            const std::array<int, 3> sizes{2, 3, 4};
            return cv::Mat(3, sizes.data(), type, cv::Scalar::all(1));
        }
        default:
            return cv::Mat(0, size.width, type);
    }
}

/// No camera has frames above this size, but a host may have given such a size to the ruler.
cv::Size frameSize(const Quorvel& ruler) {
    constexpr int kLargest = 128;
    const bool sensible =
        ruler.imageWidth > 0 && ruler.imageWidth <= kLargest && ruler.imageHeight > 0 && ruler.imageHeight <= kLargest;
    return sensible ? cv::Size(ruler.imageWidth, ruler.imageHeight) : cv::Size(16, 12);
}

/// Remembers the images that the host gave, to check later that they have not changed.
cv::Mat give(World& world, const cv::Mat& image) {
    world.given.push_back(image);
    world.copies.push_back(image.clone());
    return image;
}

cv::Mat anyColorFrame(World& world, const Quorvel& ruler) {
    Input& input = world.input;
    if (input.below(8) == 0) {
        return give(world, wrongImage(input, frameSize(ruler)));
    }
    cv::Mat color = anyStorage(input, frameSize(ruler), CV_8UC3);
    color.setTo(cv::Scalar(input.byte(), 90, 30));
    return give(world, color);
}

cv::Mat anyDepthFrame(World& world, const Quorvel& ruler) {
    Input& input = world.input;
    if (input.below(8) == 0) {
        return give(world, wrongImage(input, frameSize(ruler)));
    }
    cv::Mat depth = anyStorage(input, frameSize(ruler), CV_16UC1);
    fillDepth(input, depth);
    return give(world, depth);
}

// Conditions that must hold

bool hasForm(const cv::Mat& image, const cv::Size& size, int type) {
    return image.dims == 2 && image.size() == size && image.type() == type;
}

bool sameImage(const cv::Mat& a, const cv::Mat& b) {
    if (a.empty() && b.empty()) {
        return true;  // the clone of an image without rows has no dimensions either
    }
    if (a.dims != b.dims || a.type() != b.type() || a.empty() || b.empty()) {
        return false;
    }
    if (a.dims > 2) {
        return true;
    }
    const cv::Mat left = a.reshape(1);
    const cv::Mat right = b.reshape(1);
    return left.size() == right.size() && (a.depth() == CV_64F || sameBits(left, right));
}

void requireHostsImagesUntouched(const World& world) {
    for (std::size_t i = 0; i < world.given.size(); ++i) {
        require(sameImage(world.given[i], world.copies[i]), "an image of the host was written to");
    }
}

/// The place and the size of an image's pixels, which differ for different images. All empty images are equal here,
/// because OpenCV leaves -1 rows when an empty image is assigned to one of three dimensions.
std::array<std::size_t, 4> identity(const cv::Mat& image) {
    if (image.empty()) {
        return {};
    }
    return {reinterpret_cast<std::size_t>(image.data), static_cast<std::size_t>(image.rows),
            static_cast<std::size_t>(image.cols), static_cast<std::size_t>(image.type())};
}

using Identities = std::vector<std::array<std::size_t, 4>>;

Identities identities(const Quorvel& ruler) {
    Identities all;
    for (const auto& image : test::rulerImages()) {
        all.push_back(identity(ruler.*image.pointer));
    }
    for (const auto& buffer : test::rulerBuffers()) {
        for (const cv::Mat& image : ruler.*buffer.pointer) {
            all.push_back(identity(image));
        }
        all.emplace_back();  // between two buffers
    }
    return all;
}

bool isEmptyFrame(const cv::Mat& color, const cv::Mat& depth) {
    return color.rows == 0 || depth.rows == 0;
}

bool fits(const Quorvel& ruler, const cv::Mat& color, const cv::Mat& depth) {
    const cv::Size size(ruler.imageWidth, ruler.imageHeight);
    return ruler.imageWidth > 0 && ruler.imageHeight > 0 && ruler.downScale > 0 &&
           ruler.imageWidth / ruler.downScale > 0 && ruler.imageHeight / ruler.downScale > 0 &&
           hasForm(color, size, CV_8UC3) && hasForm(depth, size, CV_16UC1);
}

void requireCurrentImages(const Quorvel& ruler) {
    const cv::Size full(ruler.imageWidth, ruler.imageHeight);
    const cv::Size small(ruler.imageWidth / ruler.downScale, ruler.imageHeight / ruler.downScale);
    require(hasForm(ruler.colorImage, full, CV_8UC3) && hasForm(ruler.depthImage, full, CV_16UC1) &&
                hasForm(ruler.pointCloud, full, CV_32FC3),
            "a full-size image of the frame has another form");
    require(hasForm(ruler.colorSmall, small, CV_8UC3) && hasForm(ruler.depthSmall, small, CV_16UC1) &&
                hasForm(ruler.pointCloudSmall, small, CV_32FC3) && hasForm(ruler.pointCloudSmallCopy, small, CV_32FC3),
            "a small image of the frame has another form");
    require(sameBits(ruler.pointCloudSmall, ruler.pointCloudSmallCopy), "the small cloud and its copy differ");
    require(ruler.pointCloudSmall.data != ruler.pointCloudSmallCopy.data, "the small cloud's copy shares its pixels");
    bool same = true;
    for (int row = 0; row < full.height; ++row) {
        for (int column = 0; column < full.width; ++column) {
            same = same && ruler.pointCloud.at<cv::Vec3f>(row, column)[2] ==
                               static_cast<float>(ruler.depthImage.at<ushort>(row, column));
        }
    }
    require(same, "the cloud is not that of the depth image");
}

void requireEmptyResult(const MeasureResult& result, const std::string& when) {
    require(test::isEmptyResult(result), when);
}

/// \param small size of the small depth image that was measured; the picture's far edges follow from it
void requireSoundResult(const Quorvel& ruler, const cv::Size& small) {
    const MeasureResult& result = ruler.result;
    require(result.corners.empty() || result.corners.size() == 8, "a box has eight corners or none");
    const bool growing = ruler.productType == GROUND_GROWING;
    require(result.onTarget == (!growing && !result.corners.empty()), "whether the box is on target");
    require(!growing || result.sideMargin == 0.0F, "the mode knows no side margin");
    require(ruler.cameraTypeSet || result.sideMargin == 0.0F, "a side margin that nobody set");
    if (!result.inView) {
        require(result.length == 0.0F && result.width == 0.0F, "a box out of view has sides");
        require(result.height == 0.0F || ruler.productType == GROUND_TRACKING, "a box out of view has a height");
        return;
    }
    require(!result.corners.empty(), "a box without corners is in view");
    require(!(result.length < result.width) && !(result.width < 0.0F), "the sides are in disorder");
    const auto right = static_cast<float>(static_cast<double>(small.width) * ruler.downScale);
    const auto bottom = static_cast<float>(static_cast<double>(small.height) * ruler.downScale);
    for (const cv::Point2f& corner : result.corners) {
        require(corner.x >= 0.0F || result.sideMargin < 0.0F, "a corner lies left of the picture");
        require(corner.x <= right || result.sideMargin < 0.0F, "a corner lies right of the picture");
        require(corner.y >= 0.0F && corner.y <= bottom, "a corner lies above or below the picture");
    }
}

/// Checks that a file of the library was written whole and that no other file was left beside it.
void requireOnly(const fs::path& folder, const std::vector<std::string>& names) {
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        require(std::find(names.begin(), names.end(), name) != names.end(), "the library left " + name);
    }
}

// Calls

void construct(World& world) {
    Input& input = world.input;
    if (world.rulers.size() == kMostRulers) {
        world.rulers.erase(world.rulers.begin() + input.below(static_cast<int>(kMostRulers)));
    }
    const std::array<cv::Size, 8> sizes{cv::Size(64, 48), cv::Size(80, 64), cv::Size(33, 17), cv::Size(8, 8),
                                        cv::Size(4, 5),   cv::Size(3, 3),   cv::Size(32, 24), cv::Size(72, 60)};
    cv::Size size = input.oneOf(sizes);
    float fx = static_cast<float>(size.width);
    float fy = fx;
    float cx = fx / 2.0F;
    float cy = static_cast<float>(size.height) / 2.0F;
    if (input.below(4) == 0) {
        fx = input.anyReal();
        fy = input.anyReal();
        cx = input.anyReal();
        cy = input.anyReal();
    }
    if (input.below(8) == 0) {
        size = {input.anyInt(), input.anyInt()};
    }
    const bool offline = input.below(4) == 0;
    std::string folder = input.flag() ? "" : "nowhere";
    if (!world.captures.empty() && input.flag()) {
        folder = input.oneOf(world.captures);
    }
    const bool thereIs = fs::is_directory(folder);
    auto ruler = std::make_unique<Quorvel>(fx, fy, cx, cy, size.width, size.height, offline, folder);
    require(ruler->offlineMode == offline && ruler->offlineDir == folder, "the arguments were not kept");
    if (!offline) {
        require(ruler->imageWidth == size.width && ruler->imageHeight == size.height && sameBits(ruler->fx, fx) &&
                    sameBits(ruler->cy, cy) && ruler->downScale == 4 && !ruler->calibStatus,
                "a normal start differs from its arguments");
    } else if (!thereIs) {
        require(ruler->imageWidth == 0 && ruler->downScale == 0, "settings came from nowhere");
    }
    require(ruler->result.corners.empty() || ruler->result.corners.size() == 8, "a box has eight corners or none");
    world.rulers.push_back(std::move(ruler));
}

void copyRuler(World& world) {
    Input& input = world.input;
    Quorvel& from = world.ruler();
    if (input.flag() && world.rulers.size() < kMostRulers) {
        auto copy = std::make_unique<Quorvel>(from);
        require(identities(*copy) == identities(from) && test::sameSettings(*copy, from) &&
                    test::sameResult(copy->result, from.result),
                "a copy differs");
        world.rulers.push_back(std::move(copy));
        return;
    }
    Quorvel& to = world.ruler();
    to = from;
    require(identities(to) == identities(from), "an assigned ruler holds other images");
    require(test::sameSettings(to, from), "an assigned ruler differs");
}

void dropRuler(World& world) {
    if (world.rulers.size() > 1) {
        world.rulers.erase(world.rulers.begin() + world.input.below(static_cast<int>(world.rulers.size())));
    }
}

void takeFrame(World& world) {
    Quorvel& ruler = world.ruler();
    const cv::Mat color = anyColorFrame(world, ruler);
    const cv::Mat depth = anyDepthFrame(world, ruler);
    const bool withAux = world.input.flag();
    const cv::Mat aux = withAux ? give(world, wrongImage(world.input, {9, 7})) : cv::Mat();
    const bool offline = ruler.offlineMode;
    const cv::Mat usedColor = offline ? ruler.colorImage : color;
    const cv::Mat usedDepth = offline ? ruler.depthImage : depth;
    const bool empty = isEmptyFrame(usedColor, usedDepth);
    const bool good = !empty && fits(ruler, usedColor, usedDepth);
    const Identities before = identities(ruler);
    const bool taken = withAux ? ruler.getCameraFrame(color, depth, aux) : ruler.getCameraFrame(color, depth);
    require(taken == good, good ? "a good frame was refused" : "a bad frame was taken");
    if (!taken) {
        require(empty || identities(ruler) == before, "a refused frame changed an image");
        return;
    }
    requireCurrentImages(ruler);
    if (!offline) {
        require(sameBits(ruler.depthImage, depth) && sameBits(ruler.colorImage, color), "the frame was not kept");
        require(ruler.depthImage.data != depth.data && ruler.colorImage.data != color.data, "the frame is no clone");
        require(!withAux || sameImage(ruler.auxImage, aux), "the third image was not kept");
    }
    require(ruler.productType != GROUND_TRACKING || ruler.calibStatus, "the mode calibrates on every frame");
}

void measureOnce(World& world) {
    Quorvel& ruler = world.ruler();
    ruler.result.corners.assign(8, cv::Point2f(1.0F, 2.0F));
    ruler.result.length = 5.0F;
    ruler.result.inView = true;
    const int status = ruler.measureOnce();
    require(status == 0 || status == 1, "a status other than 0 and 1");
    const int type = ruler.productType;
    const bool measures = type == KIOSK || type == GROUND_TRACKING || type == GROUND_GROWING;
    if (status != 0 || !measures) {
        require(measures || status == 0, "a mode that measures nothing failed");
        requireEmptyResult(ruler.result, "a result is left of a measurement that failed");
        return;
    }
    require(type == GROUND_TRACKING || ruler.calibStatus, "measured without a plane");
    requireSoundResult(ruler, ruler.depthSmall.size());
    require(hasForm(ruler.pointCloud, {ruler.imageWidth, ruler.imageHeight}, CV_32FC3), "the cloud has another form");
}

void takeBatch(World& world) {
    Input& input = world.input;
    Quorvel& ruler = world.ruler();
    std::vector<cv::Mat> colors;
    std::vector<cv::Mat> depths;
    const int count = input.below(4);
    bool good = count > 0 && !ruler.offlineMode;
    bool empty = false;
    for (int i = 0; i < count; ++i) {
        colors.push_back(anyColorFrame(world, ruler));
        depths.push_back(anyDepthFrame(world, ruler));
        empty = empty || isEmptyFrame(colors.back(), depths.back());
        good = good && fits(ruler, colors.back(), depths.back());
    }
    if (input.below(8) == 0) {
        colors.emplace_back();
        good = false;
    }
    const bool sameCount = colors.size() == depths.size();
    const Identities before = identities(ruler);
    const bool taken = ruler.getCameraMultipleFrame(colors, depths);
    require(taken == good, good ? "a good batch was refused" : "a bad batch was taken");
    if (!taken) {
        require((empty && sameCount) || identities(ruler) == before, "a refused batch changed an image");
        return;
    }
    requireCurrentImages(ruler);
    const cv::Size full(ruler.imageWidth, ruler.imageHeight);
    const cv::Size small(ruler.imageWidth / ruler.downScale, ruler.imageHeight / ruler.downScale);
    const std::size_t frames = depths.size();
    require(ruler.colorFrameBuffer.size() == frames && ruler.depthFrameBuffer.size() == frames &&
                ruler.pointCloudBuffer.size() == frames && ruler.pointCloudSmallBuffer.size() == frames &&
                ruler.colorSmallBuffer.size() == frames && ruler.depthSmallBuffer.size() == frames &&
                ruler.pointCloudSmallCopyBuffer.size() == frames,
            "a buffer of a batch has another count");
    for (std::size_t i = 0; i < frames; ++i) {
        require(ruler.depthFrameBuffer[i].data == depths[i].data && ruler.colorFrameBuffer[i].data == colors[i].data,
                "a batch's frame is not shared");
        require(hasForm(ruler.pointCloudBuffer[i], full, CV_32FC3) &&
                    hasForm(ruler.pointCloudSmallBuffer[i], small, CV_32FC3) &&
                    hasForm(ruler.colorSmallBuffer[i], small, CV_8UC3) &&
                    hasForm(ruler.depthSmallBuffer[i], small, CV_16UC1) &&
                    hasForm(ruler.pointCloudSmallCopyBuffer[i], small, CV_32FC3),
                "an image of a batch has another form");
    }
}

bool buffersEmpty(const Quorvel& ruler) {
    for (const auto& buffer : test::rulerBuffers()) {
        if (!(ruler.*buffer.pointer).empty()) {
            return false;
        }
    }
    return true;
}

void measureMultiple(World& world) {
    Quorvel& ruler = world.ruler();
    const std::size_t frames = ruler.depthSmallBuffer.size();
    const bool measures = ruler.productType == KIOSK || ruler.productType == GROUND_TRACKING;
    const bool keeps = frames > 0 && ruler.productType == KIOSK && !ruler.calibStatus;
    const cv::Size small = frames > 0 ? ruler.depthSmallBuffer.back().size() : cv::Size();
    const bool loose = world.input.flag();
    const float length = loose ? 1000.0F : world.input.anyReal();
    const float width = loose ? 1000.0F : world.input.anyReal();
    const float height = loose ? 1000.0F : world.input.anyReal();
    const cv::Mat lastDepth = ruler.depthFrameBuffer.empty() ? cv::Mat() : ruler.depthFrameBuffer.back();
    const int status = ruler.measureMultiple(length, width, height);
    require(status == 0 || status == 1, "a status other than 0 and 1");
    require(buffersEmpty(ruler) || keeps, "a measured batch is still there");
    if (status != 0) {
        requireEmptyResult(ruler.result, "a result is left of a batch that failed");
        return;
    }
    require(measures && frames > 0, "a batch was measured out of nothing");
    require(ruler.result.inView && ruler.result.corners.size() == 8 && ruler.result.onTarget, "a mean out of view");
    requireSoundResult(ruler, small);
    require(ruler.depthImage.data == lastDepth.data, "the last frame is not the current one");
}

void calibrate(World& world) {
    Quorvel& ruler = world.ruler();
    const float shift = world.input.flag() ? 0.0F : world.input.anyReal();
    const bool ready = hasForm(ruler.depthImage, {ruler.imageWidth, ruler.imageHeight}, CV_16UC1);
    const bool was = ruler.calibStatus;
    const bool writable =
        (fs::is_directory(ruler.paramDir) || !fs::exists(ruler.paramDir)) && !fs::is_directory(ruler.calFilePath);
    float t = -1.0F;
    require(ruler.calibRef(t, shift) == 0, "a calibration has no status but 0");
    require(sameBits(t, ruler.refPlaneOffset), "the distance handed out is not the plane's");
    if (!ready) {
        require(ruler.calibStatus == was, "calibrated without a frame");
        return;
    }
    const cv::Size size(ruler.imageWidth, ruler.imageHeight);
    require(ruler.calibStatus && sameBits(ruler.cameraHeight, t), "the calibration is not noted");
    require(hasForm(ruler.calibFullCloud, size, CV_32FC3) && hasForm(ruler.calibCloud, size, CV_32FC3),
            "a cloud of the calibration has another form");
    if (ruler.paramDir == "./param" && ruler.calFilePath == "./param/cal.txt" && writable) {
        internal::Plane plane;
        const std::optional<internal::Plane> read = internal::readCalibrationFile(ruler.calFilePath, plane);
        require(read.has_value(), "the calibration file is not there");
        plane = *read;
        require(readText(ruler.calFilePath) == internal::sixDecimals(ruler.refPlaneNormal[0]) + ' ' +
                                                   internal::sixDecimals(ruler.refPlaneNormal[1]) + ' ' +
                                                   internal::sixDecimals(ruler.refPlaneNormal[2]) + ' ' +
                                                   internal::sixDecimals(t) + '\n',
                "the calibration file holds another plane");
        requireOnly("param", {"cal.txt", "depth.tif", "bg.bmp"});
    }
}

void changeSettings(World& world) {
    Input& input = world.input;
    Quorvel& ruler = world.ruler();
    cv::Rect out;
    float real = 0.0F;
    bool flag = false;
    switch (input.below(10)) {
        case 0: {
            const int type = input.below(4) == 0 ? input.anyInt() : input.below(5);
            require(ruler.setProductType(static_cast<ProductType>(type)) == 0 && ruler.productType == type,
                    "the mode was not taken");
            require(type != KIOSK_LOW_OBJECT || ruler.calibStatus, "the mode counts as calibrated");
            break;
        }
        case 1: {
            const int value = input.anyInt();
            require(ruler.setCameraType(input.flag(), value) == 0 && ruler.cameraTypeSet &&
                        ruler.cameraType == static_cast<float>(value),
                    "the side band was not taken");
            break;
        }
        case 2:
            ruler.setDebugMode(input.flag());
            break;
        case 3:
            require(ruler.getCameraHeight(real) == (ruler.calibStatus ? 0 : 1) &&
                        sameBits(real, ruler.calibStatus ? ruler.cameraHeight : 0.0F),
                    "another height is handed out");
            break;
        case 4:
            require(ruler.getCalibStatus(flag) == 0 && flag == ruler.calibStatus, "another status is handed out");
            break;
        case 5: {
            const cv::Rect roi = input.flag() ? cv::Rect({0, 0}, frameSize(ruler)) : input.anyRect();
            require(ruler.setCalibrationRoI(roi) == 0 && ruler.calibrationRoI == roi, "the region was not taken");
            break;
        }
        case 6: {
            const cv::Rect roi = input.flag() ? cv::Rect({0, 0}, frameSize(ruler)) : input.anyRect();
            require(ruler.setEffectiveRegionInArea(roi) == 0 && ruler.effectiveRegion == roi,
                    "the region was not taken");
            break;
        }
        case 7:
            real = input.flag() ? input.real(0.0F, 1.0F) : input.anyReal();
            require(ruler.setCalibrationRoI(real, out) == 0 && ruler.calibrationRoI == out, "another region came out");
            break;
        case 8:
            real = input.flag() ? input.real(0.0F, 1.0F) : input.anyReal();
            require(ruler.setEffectiveRegionInArea(real, out) == 0 && ruler.effectiveRegion == out,
                    "another region came out");
            break;
        default:
            real = input.flag() ? input.real(-0.5F, 0.5F) : input.anyReal();
            require(ruler.setFilterWeight(real) == 0 && sameBits(ruler.filterWeight, real), "the weight was not taken");
            break;
    }
}

void askForLittle(World& world) {
    Quorvel& ruler = world.ruler();
    require(ruler.getVersion() == QUORVEL_VERSION, "the version");
    require(ruler.stop() == 0, "stopping");
    const Identities before = identities(ruler);
    require(ruler.ransacCalibRef() == 0 && identities(ruler) == before, "a fit changed an image");
}

std::string anyParameterPath(Input& input) {
    const std::array<std::string, 8> paths{"p.yml", "p.xml", "p.json", "p", "", "p?.yml", "sub/p.yml", "p.yml.gz"};
    return input.oneOf(paths);
}

void saveParameters(World& world) {
    Quorvel& ruler = world.ruler();
    const std::string path = anyParameterPath(world.input);
    bool saved = false;
    try {
        saved = ruler.saveRulerParam(path);
    } catch (const cv::Exception&) {
        return;
    }
    require(path.find('?') == std::string::npos || !saved, "a question mark was written");
    if (!saved) {
        return;
    }
    cv::Rect calibrationArea;
    cv::Rect detectArea;
    Quorvel other(ruler);
    other.filterWeight = 77.0F;
    require(other.loadRulerParam(path, calibrationArea, detectArea), path + " was saved and cannot be loaded");
    require(calibrationArea == ruler.calibrationRoI && detectArea == ruler.effectiveRegion &&
                sameBits(other.filterWeight, ruler.filterWeight),
            path + " holds other parameters than were saved");
}

void loadParameters(World& world) {
    Input& input = world.input;
    Quorvel& ruler = world.ruler();
    const std::string path = anyParameterPath(input);
    const Quorvel before(ruler);
    cv::Rect calibrationArea(1, 2, 3, 4);
    cv::Rect detectArea(5, 6, 7, 8);
    bool loaded = false;
    try {
        loaded = ruler.loadRulerParam(path, calibrationArea, detectArea);
    } catch (const cv::Exception&) {
        loaded = false;
    }
    if (loaded) {
        require(calibrationArea == ruler.calibrationRoI && detectArea == ruler.effectiveRegion,
                "other regions are handed out");
        return;
    }
    require(calibrationArea == cv::Rect(1, 2, 3, 4) && detectArea == cv::Rect(5, 6, 7, 8) &&
                test::sameSettings(before, ruler),
            "a file that was not loaded changed something");
}

void writeHostileFile(World& world) {
    Input& input = world.input;
    for (const std::string folder : {"param", "capture"}) {
        if (!fs::is_directory(folder)) {
            fs::remove(folder);
            fs::create_directory(folder);
        }
    }
    const std::array<std::string, 5> paths{"param/cal.txt", "p.json", "p.yml", "p.xml", "capture/para.txt"};
    const int which = input.below(8);
    if (which == 7) {
        fs::remove_all("param");
        writeFile("param", "a file where the folder should be");
        return;
    }
    if (which == 5) {
        fs::remove_all("param/cal.txt");
        fs::create_directory("param/cal.txt");
        return;
    }
    if (which == 6) {
        fs::remove_all("param/cal.txt");
        writeFile("param/cal.txt", "0 0 1 " + std::to_string(input.word() % 3000));
        return;
    }
    const std::string& path = paths[static_cast<std::size_t>(which)];
    if (!fs::is_directory(path)) {
        const std::size_t size = std::min<std::size_t>(input.byte(), kLargestFile);
        writeFile(path, input.text(size));
    }
    if (which == 4 && world.captures.size() < 4) {
        world.captures.emplace_back("capture");
    }
}

void saveCapture(World& world) {
    Quorvel& ruler = world.ruler();
    fs::remove_all("log");  // a second call within a second would write nothing
    if (world.input.below(8) == 0) {
        writeFile("log", "a file where the folder should be");
    }
    try {
        require(ruler.saveOfflineData() == 0, "saving has no status but 0");
    } catch (const cv::Exception&) {
        return;
    }
    if (!fs::is_directory("log")) {
        fs::remove("log");
        return;
    }
    const fs::path month = fs::directory_iterator("log")->path();
    const fs::path folder = fs::directory_iterator(month)->path();
    requireOnly(folder, {"para.txt", "res.txt", "color.png", "depth.tif"});
    require(readText((folder / "res.txt").string()).rfind(internal::sixDecimals(ruler.result.width) + '\n', 0) == 0,
            "res.txt begins with another width");
    require(fs::exists(folder / "color.png") || ruler.colorImage.empty() ||
                !hasForm(ruler.colorImage, ruler.colorImage.size(), CV_8UC3),
            "color.png is missing");
    require(fs::exists(folder / "depth.tif") || ruler.depthImage.empty() ||
                !hasForm(ruler.depthImage, ruler.depthImage.size(), CV_16UC1),
            "depth.tif is missing");
    if (world.captures.size() < 4) {
        const std::string kept = "kept" + std::to_string(world.captures.size());
        fs::rename(folder, kept);
        world.captures.push_back(kept);
    }
}

// A host that writes into the members

/// Often the wrong image, sometimes one of another member, which then shares its pixels.
cv::Mat hostsImage(World& world, const Quorvel& ruler) {
    Input& input = world.input;
    const auto images = test::rulerImages();
    if (input.flag()) {
        const auto& image = input.oneOf(images);
        return ruler.*image.pointer;
    }
    return wrongImage(input, frameSize(ruler));
}

void writeImages(World& world, Quorvel& ruler) {
    Input& input = world.input;
    const auto images = test::rulerImages();
    const auto buffers = test::rulerBuffers();
    if (input.flag()) {
        const auto& image = input.oneOf(images);
        ruler.*image.pointer = hostsImage(world, ruler);
        return;
    }
    const auto& chosen = input.oneOf(buffers);
    std::vector<cv::Mat>& buffer = ruler.*chosen.pointer;
    switch (input.below(3)) {
        case 0:
            buffer.push_back(hostsImage(world, ruler));
            break;
        case 1:
            buffer.clear();
            break;
        default:
            if (!buffer.empty()) {
                buffer[static_cast<std::size_t>(input.byte()) % buffer.size()] = hostsImage(world, ruler);
            }
            break;
    }
}

/// As a calibration would have left it.
void writeGoodPlane(Input& input, Quorvel& ruler) {
    ruler.refPlaneNormal = {0.0F, 0.0F, 1.0F};
    ruler.refPlaneOffset = static_cast<float>(300 + input.word() % 2000);
    ruler.cameraHeight = ruler.refPlaneOffset;
    ruler.calibStatus = true;
    ruler.minObjectPixels = input.below(16);
    ruler.effectiveRegion = cv::Rect({0, 0}, frameSize(ruler));
    ruler.filterWeight = -1.0F;
}

void writeHostilePlane(Input& input, Quorvel& ruler) {
    ruler.refPlaneNormal = input.anyVector();
    ruler.refPlaneOffset = input.anyReal();
    ruler.calibStatus = input.flag();
}

void writeNumbers(Input& input, Quorvel& ruler) {
    const auto reals = test::membersOf<float>();
    const auto wholes = test::membersOf<int>();
    if (input.flag()) {
        ruler.*input.oneOf(reals).pointer = input.anyReal();
    } else {
        ruler.*input.oneOf(wholes).pointer = input.anyInt();
    }
}

void writeSwitchesAndPaths(Input& input, Quorvel& ruler) {
    const std::array<std::string, 5> paths{"", "./param", "nowhere/deep", "param/cal.txt", "./param/cal.txt"};
    const auto& path = input.oneOf(paths);
    switch (input.below(6)) {
        case 0:
            ruler.offlineMode = input.flag();
            break;
        case 1:
            ruler.calibStatus = input.flag();
            break;
        case 2:
            ruler.cameraTypeSet = input.flag();
            break;
        case 3:
            ruler.paramDir = path;
            break;
        case 4:
            ruler.calFilePath = path;
            break;
        default:
            ruler.backgroundPath = path;
            break;
    }
}

void writeMembers(World& world) {
    Input& input = world.input;
    Quorvel& ruler = world.ruler();
    switch (input.below(8)) {
        case 0:
        case 1:
        case 2:
            writeGoodPlane(input, ruler);
            break;
        case 3:
            writeHostilePlane(input, ruler);
            break;
        case 4:
            writeNumbers(input, ruler);
            break;
        case 5:
            writeSwitchesAndPaths(input, ruler);
            break;
        case 6:
            ruler.downScale = 1 + input.below(5);
            break;
        default:
            writeImages(world, ruler);
            break;
    }
}

constexpr std::array<void (*)(World&), 20> kSteps{
    takeFrame,      takeFrame,        takeFrame,   measureOnce,    measureOnce,    measureOnce,  takeBatch,
    takeBatch,      measureMultiple,  calibrate,   changeSettings, changeSettings, askForLittle, saveParameters,
    loadParameters, writeHostileFile, saveCapture, writeMembers,   writeMembers,   construct};

void live(Input& input) {
    World world(input);
    construct(world);
    for (int steps = 0; steps < kMostSteps && !input.empty(); ++steps) {
        const int step = input.below(static_cast<int>(kSteps.size()) + 2);
        if (step < static_cast<int>(kSteps.size())) {
            kSteps[static_cast<std::size_t>(step)](world);
        } else if (step == static_cast<int>(kSteps.size())) {
            copyRuler(world);
        } else {
            dropRuler(world);
        }
        requireHostsImagesUntouched(world);
    }
}

}  // namespace

}  // namespace quorvel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorvel::fuzz;
    prepareProcess();
    clearWorkingFolder();
    std::srand(1);
    Input input(data, size);
    live(input);
    return 0;
}
