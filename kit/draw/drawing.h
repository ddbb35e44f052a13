// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <opencv2/core.hpp>

namespace quorvel::kit {

/// Colours are blue, green, red, 0 to 255. Every function draws with smoothed edges, clips at the picture's border,
/// and skips positions that are no finite numbers.

/// Draws a line with a dark border that keeps it visible on any background.
/// \param picture CV_8UC3
/// \param thickness pixels
void drawLine(cv::Mat& picture, cv::Point2d from, cv::Point2d to, const cv::Scalar& color, int thickness);

/// Draws a dashed rectangle with a dark border.
/// \param dash length of a dash and of a gap, pixels
void drawDashedRectangle(cv::Mat& picture, const cv::Rect& rect, const cv::Scalar& color, int thickness, double dash);

/// Fills a convex polygon.
/// \param opacity 0 (invisible) to 1
void fillPolygon(cv::Mat& picture, const std::vector<cv::Point2f>& polygon, const cv::Scalar& color, double opacity);

/// \param capHeight height of capital letters, pixels
/// \return size of the text on one line, pixels, with the room that letters below the line take
cv::Size textSize(const std::string& text, double capHeight);

/// Writes one line of ASCII text.
/// \param topLeft of the rectangle that textSize() gives
void drawText(cv::Mat& picture, const std::string& text, cv::Point topLeft, double capHeight, const cv::Scalar& color);

/// Draws a dark, slightly transparent, rounded plate: the ground for text on a picture.
void drawPlate(cv::Mat& picture, const cv::Rect& rect, double cornerRadius);

}  // namespace quorvel::kit
