// SPDX-License-Identifier: Apache-2.0
#include "library/plain/detection_area.h"

#include <cstddef>
#include <vector>

#include <opencv2/imgproc.hpp>

namespace quorvel::test::plain {

bool topFaceMeetsRegion(const std::array<cv::Point2f, 4>& topFace, const cv::Rect& region, const cv::Size& image) {
    cv::Mat regionImage = cv::Mat::zeros(image, CV_8U);
    cv::rectangle(regionImage, region, cv::Scalar(255), -1, 8);
    cv::Mat faceImage = cv::Mat::zeros(image, CV_8U);
    std::array<cv::Point, 4> polygon;
    for (std::size_t k = 0; k < 4; ++k) {
        polygon[k] = cv::Point(cvRound(topFace[k].x), cvRound(topFace[k].y));
    }
    cv::fillConvexPoly(faceImage, polygon, cv::Scalar(255), 8);
    cv::Mat blend;
    cv::addWeighted(regionImage, 0.5, faceImage, 0.5, 0.0, blend);
    cv::Mat both;
    cv::threshold(blend, both, 150, 255, cv::THRESH_BINARY);
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(both, contours, cv::RETR_CCOMP, cv::CHAIN_APPROX_SIMPLE);
    return !contours.empty();
}

}  // namespace quorvel::test::plain
