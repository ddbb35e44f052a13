// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "library/same_result.h"
#include "support/same_bits.h"

namespace quorvel::test {

/// Every image of a ruler, by name.
inline std::vector<std::pair<std::string, cv::Mat Quorvel::*>> rulerImages() {
    return {{"colorImage", &Quorvel::colorImage},
            {"depthImage", &Quorvel::depthImage},
            {"auxImage", &Quorvel::auxImage},
            {"pointCloud", &Quorvel::pointCloud},
            {"calibFullCloud", &Quorvel::calibFullCloud},
            {"pointCloudSmall", &Quorvel::pointCloudSmall},
            {"colorSmall", &Quorvel::colorSmall},
            {"depthSmall", &Quorvel::depthSmall},
            {"calibImage", &Quorvel::calibImage},
            {"pointCloudSmallCopy", &Quorvel::pointCloudSmallCopy},
            {"calibCloud", &Quorvel::calibCloud},
            {"spareImage1", &Quorvel::spareImage1},
            {"spareImage2", &Quorvel::spareImage2},
            {"spareImage3", &Quorvel::spareImage3},
            {"spareImage4", &Quorvel::spareImage4},
            {"spareImage5", &Quorvel::spareImage5}};
}

/// Every buffer of a ruler, by name.
inline std::vector<std::pair<std::string, std::vector<cv::Mat> Quorvel::*>> rulerBuffers() {
    return {{"colorFrameBuffer", &Quorvel::colorFrameBuffer},
            {"depthFrameBuffer", &Quorvel::depthFrameBuffer},
            {"pointCloudBuffer", &Quorvel::pointCloudBuffer},
            {"spareBuffer1", &Quorvel::spareBuffer1},
            {"pointCloudSmallBuffer", &Quorvel::pointCloudSmallBuffer},
            {"colorSmallBuffer", &Quorvel::colorSmallBuffer},
            {"depthSmallBuffer", &Quorvel::depthSmallBuffer},
            {"spareBuffer2", &Quorvel::spareBuffer2},
            {"pointCloudSmallCopyBuffer", &Quorvel::pointCloudSmallCopyBuffer},
            {"spareBuffer3", &Quorvel::spareBuffer3}};
}

/// Compares all images of two rulers bit for bit and names the one that differs.
inline ::testing::AssertionResult sameImages(const Quorvel& a, const Quorvel& b) {
    for (const auto& [name, image] : rulerImages()) {
        const ::testing::AssertionResult same = sameBits(a.*image, b.*image);
        if (!same) {
            return ::testing::AssertionFailure() << name << ": " << same.message();
        }
    }
    return ::testing::AssertionSuccess();
}

/// Compares all buffers of two rulers bit for bit and names the one that differs.
inline ::testing::AssertionResult sameBuffers(const Quorvel& a, const Quorvel& b) {
    for (const auto& [name, buffer] : rulerBuffers()) {
        const std::vector<cv::Mat>& left = a.*buffer;
        const std::vector<cv::Mat>& right = b.*buffer;
        if (left.size() != right.size()) {
            return ::testing::AssertionFailure() << name << " of " << left.size() << " and " << right.size();
        }
        for (std::size_t i = 0; i < left.size(); ++i) {
            const ::testing::AssertionResult same = sameBits(left[i], right[i]);
            if (!same) {
                return ::testing::AssertionFailure() << name << "[" << i << "]: " << same.message();
            }
        }
    }
    return ::testing::AssertionSuccess();
}

/// Compares all settings, the plane and the state of two rulers and names the first number that differs.
inline ::testing::AssertionResult sameSettings(const Quorvel& a, const Quorvel& b) {
    for (float Quorvel::*value :
         {&Quorvel::refPlaneOffset, &Quorvel::cameraType, &Quorvel::fx, &Quorvel::fy, &Quorvel::invFx, &Quorvel::invFy,
          &Quorvel::cx, &Quorvel::cy, &Quorvel::fxSmall, &Quorvel::fySmall, &Quorvel::invFxSmall, &Quorvel::invFySmall,
          &Quorvel::cxSmall, &Quorvel::cySmall, &Quorvel::minObjectHeight, &Quorvel::spareFloat1,
          &Quorvel::cameraHeight, &Quorvel::spareFloat2, &Quorvel::filterWeight}) {
        if (!sameBits(a.*value, b.*value)) {
            return ::testing::AssertionFailure() << "a setting is " << a.*value << " and " << b.*value;
        }
    }
    for (int Quorvel::*value : {&Quorvel::imageWidth, &Quorvel::imageHeight, &Quorvel::downScale, &Quorvel::productType,
                                &Quorvel::minObjectPixels, &Quorvel::reservedValue}) {
        if (a.*value != b.*value) {
            return ::testing::AssertionFailure() << "a whole setting is " << a.*value << " and " << b.*value;
        }
    }
    for (bool Quorvel::*value :
         {&Quorvel::calibStatus, &Quorvel::offlineMode, &Quorvel::cameraTypeSet, &Quorvel::debugMode}) {
        if (a.*value != b.*value) {
            return ::testing::AssertionFailure() << "a switch is " << a.*value << " and " << b.*value;
        }
    }
    for (std::string Quorvel::*value :
         {&Quorvel::paramDir, &Quorvel::calFilePath, &Quorvel::backgroundPath, &Quorvel::offlineDir}) {
        if (a.*value != b.*value) {
            return ::testing::AssertionFailure() << "a path is " << a.*value << " and " << b.*value;
        }
    }
    for (std::size_t i = 0; i < 3; ++i) {
        if (a.calibPoints[i] != b.calibPoints[i]) {
            return ::testing::AssertionFailure() << "calibration point " << i << " differs";
        }
    }
    if (a.calibrationRoI != b.calibrationRoI || a.effectiveRegion != b.effectiveRegion) {
        return ::testing::AssertionFailure() << "a region differs";
    }
    return sameBits(a.refPlaneNormal, b.refPlaneNormal);
}

/// Compares every member of two rulers bit for bit.
inline ::testing::AssertionResult sameRuler(const Quorvel& a, const Quorvel& b) {
    for (const ::testing::AssertionResult& same :
         {sameSettings(a, b), sameImages(a, b), sameBuffers(a, b), sameResult(a.result, b.result)}) {
        if (!same) {
            return same;
        }
    }
    return ::testing::AssertionSuccess();
}

}  // namespace quorvel::test
