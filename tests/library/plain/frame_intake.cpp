// SPDX-License-Identifier: Apache-2.0
#include "library/plain/frame_intake.h"

#include <opencv2/imgproc.hpp>

#include "library/plain/back_projection.h"
#include "library/plain/calibration.h"

namespace quorvel::test::plain {

void takeFrame(Quorvel& ruler, const cv::Mat& color, const cv::Mat& depth) {
    ruler.colorImage = color.clone();
    ruler.depthImage = depth.clone();
    const cv::Size small(ruler.imageWidth / ruler.downScale, ruler.imageHeight / ruler.downScale);
    cv::Mat colorSmall;
    cv::Mat depthSmall;
    cv::resize(ruler.colorImage, colorSmall, small, 0, 0, cv::INTER_NEAREST);
    cv::resize(ruler.depthImage, depthSmall, small, 0, 0, cv::INTER_NEAREST);
    ruler.colorSmall = colorSmall;
    ruler.depthSmall = depthSmall;
    ruler.pointCloudSmall = backProject(depthSmall, ruler.cxSmall, ruler.cySmall, ruler.invFxSmall, ruler.invFySmall);
    ruler.pointCloudSmallCopy = ruler.pointCloudSmall.clone();
    ruler.pointCloud = backProject(ruler.depthImage, ruler.cx, ruler.cy, ruler.invFx, ruler.invFy);
    if (ruler.productType == GROUND_TRACKING) {
        ransacCalibRef(ruler);
        ruler.calibStatus = true;
    }
}

}  // namespace quorvel::test::plain
