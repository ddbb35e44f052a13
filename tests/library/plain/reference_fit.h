// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::test::plain {

/// The fits of the two calibrating modes, put together from the plain stages. The plane is read and overwritten in
/// place; a fit that fails leaves what was there.
void fitDominantPlane(const cv::Mat& cloud, cv::Vec3f& normal, float& t);
void fitGrownPlane(const cv::Mat& fullCloud, const cv::Mat& regionCloud, float minPoints, cv::Vec3f& normal, float& t);

/// (int) of (50 / t * fxSmall)^2; INT_MIN where int cannot hold it.
int objectPixelMinimum(float t, float fxSmall);

}  // namespace quorvel::test::plain
