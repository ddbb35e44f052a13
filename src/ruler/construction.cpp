// SPDX-License-Identifier: Apache-2.0
#include <iostream>
#include <string>
#include <utility>

#include <opencv2/imgcodecs.hpp>

#include <quorvel/quorvel.h>

#include "common/image_file.h"
#include "common/platform.h"
#include "persist/capture_reader.h"
#include "ruler/members.h"

using namespace quorvel::internal;

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

}  // namespace

Quorvel::Quorvel(float focalX, float focalY, float centerX, float centerY, int width, int height, bool offline,
                 std::string captureDir)
    : offlineMode(offline), paramDir("./param"), offlineDir(std::move(captureDir)) {
    calFilePath = paramDir + "/cal.txt";
    backgroundPath = paramDir + "/bg.bmp";
    if (offlineMode && !isFolder(offlineDir)) {
        return;
    }
    if (!offlineMode || !startOffline()) {
        startNormally(focalX, focalY, centerX, centerY, width, height);
    }
}

Quorvel::Quorvel(const Quorvel& other) = default;
Quorvel& Quorvel::operator=(const Quorvel& other) = default;
Quorvel::~Quorvel() = default;

void Quorvel::startNormally(float focalX, float focalY, float centerX, float centerY, int width, int height) {
    calibStatus = false;
    downScale = kDownScale;
    minObjectHeight = kMinObjectHeight;
    imageWidth = width;
    imageHeight = height;
    cx = centerX;
    cy = centerY;
    fx = focalX;
    fy = focalY;
    invFx = reciprocal(fx);
    invFy = reciprocal(fy);
    cxSmall = cx * kSmallPerFull;
    cySmall = cy * kSmallPerFull;
    fxSmall = fx * kSmallPerFull;
    fySmall = fy * kSmallPerFull;
    invFxSmall = invFx * kFullPerSmall;
    invFySmall = invFy * kFullPerSmall;
    reservedValue = kReservedValue;
    calibrationRoI = cv::Rect(width / 2 - kRegionSize / 2, height / 2 - kRegionSize / 2, kRegionSize, kRegionSize);
    effectiveRegion = calibrationRoI;
    if (debugMode) {
        std::cout << "Initial Quorvel Parameter." << std::endl;
    }
}

bool Quorvel::startOffline() {
    const std::string folder = "./" + offlineDir;
    CaptureParameters capture;
    if (!readCaptureParameters(folder + "/para.txt", capture)) {
        return false;
    }
    downScale = capture.downScale;
    minObjectHeight = capture.minObjectHeight;
    cx = capture.cx;
    cy = capture.cy;
    fx = capture.fx;
    fy = capture.fy;
    invFx = capture.invFx;
    invFy = capture.invFy;
    // The small-image intrinsics are scaled where they stand, not computed from the values just read: in a replay
    // they stay 0, and with them the small point cloud's x and y and minObjectPixels.
    const auto scale = static_cast<float>(downScale);
    cxSmall /= scale;
    cySmall /= scale;
    fxSmall /= scale;
    fySmall /= scale;
    invFxSmall *= scale;
    invFySmall *= scale;
    adoptPlane(*this, capture.plane);
    imageWidth = capture.imageWidth;
    imageHeight = capture.imageHeight;
    calibStatus = true;
    colorImage = readImageFile(folder + "/color.png", cv::IMREAD_COLOR);
    depthImage = readImageFile(folder + "/depth.tif", cv::IMREAD_UNCHANGED);
    colorSmall = colorImage.clone();
    depthSmall = depthImage.clone();
    getCameraFrame(colorImage, depthImage, auxImage);
    measureOnce();
    return true;
}
