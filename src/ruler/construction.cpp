// SPDX-License-Identifier: Apache-2.0
#include "ruler/construction.h"

#include <iostream>
#include <string>
#include <utility>

#include <opencv2/imgcodecs.hpp>

#include "files/capture_reader.h"
#include "files/platform.h"
#include "files/whole_file.h"
#include "ruler/frame_intake.h"
#include "ruler/measure_once.h"
#include "ruler/members.h"

namespace quorvel::internal {

namespace {

constexpr int kDownScale = 4;
constexpr float kSmallPerFull = 0.25F;
constexpr float kFullPerSmall = 4.0F;
constexpr float kMinObjectHeight = 10.0F;  // mm
constexpr int kReservedValue = 50;
constexpr int kRegionSize = 100;  // pixels

float reciprocal(float value) {
    return static_cast<float>(1.0 / static_cast<double>(value));
}

/// Sets what follows from the camera, whose six values stand in the ruler already.
void startNormally(Quorvel& ruler) {
    ruler.calibStatus = false;
    ruler.downScale = kDownScale;
    ruler.minObjectHeight = kMinObjectHeight;
    ruler.invFx = reciprocal(ruler.fx);
    ruler.invFy = reciprocal(ruler.fy);
    ruler.cxSmall = ruler.cx * kSmallPerFull;
    ruler.cySmall = ruler.cy * kSmallPerFull;
    ruler.fxSmall = ruler.fx * kSmallPerFull;
    ruler.fySmall = ruler.fy * kSmallPerFull;
    ruler.invFxSmall = ruler.invFx * kFullPerSmall;
    ruler.invFySmall = ruler.invFy * kFullPerSmall;
    ruler.reservedValue = kReservedValue;
    ruler.calibrationRoI = cv::Rect(ruler.imageWidth / 2 - kRegionSize / 2, ruler.imageHeight / 2 - kRegionSize / 2,
                                    kRegionSize, kRegionSize);
    ruler.effectiveRegion = ruler.calibrationRoI;
    if (ruler.debugMode) {
        std::cout << "Initial Quorvel Parameter." << std::endl;
    }
}

}  // namespace

bool startOffline(Quorvel& ruler, std::ostream* lines) {
    const std::string folder = "./" + ruler.offlineDir;
    const std::optional<CaptureParameters> capture = readCaptureParameters(folder + "/para.txt");
    if (!capture) {
        return false;
    }
    ruler.downScale = capture->downScale;
    ruler.minObjectHeight = capture->minObjectHeight;
    ruler.cx = capture->cx;
    ruler.cy = capture->cy;
    ruler.fx = capture->fx;
    ruler.fy = capture->fy;
    ruler.invFx = capture->invFx;
    ruler.invFy = capture->invFy;
    // The small-image intrinsics are scaled where they stand, not computed from the values just read: in a replay
    // they stay 0, and with them the small point cloud's x and y and minObjectPixels.
    const auto scale = static_cast<float>(ruler.downScale);
    ruler.cxSmall /= scale;
    ruler.cySmall /= scale;
    ruler.fxSmall /= scale;
    ruler.fySmall /= scale;
    ruler.invFxSmall *= scale;
    ruler.invFySmall *= scale;
    adoptPlane(ruler, capture->plane);
    ruler.imageWidth = capture->imageWidth;
    ruler.imageHeight = capture->imageHeight;
    ruler.calibStatus = true;
    ruler.colorImage = readImageFile(folder + "/color.png", cv::IMREAD_COLOR);
    ruler.depthImage = readImageFile(folder + "/depth.tif", cv::IMREAD_UNCHANGED);
    ruler.colorSmall = ruler.colorImage.clone();
    ruler.depthSmall = ruler.depthImage.clone();
    takeFrame(ruler, ruler.colorImage, ruler.depthImage, &ruler.auxImage, lines);
    measureSingleShot(ruler, {}, lines);
    return true;
}

}  // namespace quorvel::internal

Quorvel::Quorvel(float focalX, float focalY, float centerX, float centerY, int width, int height, bool offline,
                 std::string captureDir)
    : offlineMode(offline), paramDir("./param"), offlineDir(std::move(captureDir)) {
    using namespace quorvel::internal;
    calFilePath = paramDir + "/cal.txt";
    backgroundPath = paramDir + "/bg.bmp";
    if (offlineMode && !isFolder(offlineDir)) {
        return;
    }
    if (offlineMode && startOffline(*this, &std::cout)) {
        return;
    }
    fx = focalX;
    fy = focalY;
    cx = centerX;
    cy = centerY;
    imageWidth = width;
    imageHeight = height;
    startNormally(*this);
}

Quorvel::Quorvel(const Quorvel& other) = default;
Quorvel& Quorvel::operator=(const Quorvel& other) = default;
Quorvel::~Quorvel() = default;
