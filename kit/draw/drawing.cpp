// SPDX-License-Identifier: Apache-2.0
#include "kit/draw/drawing.h"

#include <algorithm>
#include <cmath>

#include <opencv2/imgproc.hpp>

namespace quorvel::kit {

namespace {

/// Sub-pixel bits of OpenCV's drawing functions.
constexpr int kShift = 4;
/// Text and plates are drawn this many times larger and averaged down: smoother than the drawing functions are.
constexpr int kOversampling = 4;
constexpr int kFont = cv::FONT_HERSHEY_SIMPLEX;
/// Height of the font's capitals at scale 1, pixels.
constexpr double kFontCapHeight = 21.0;
/// Positions beyond this, pixels, are far outside every picture, and would overflow OpenCV's fixed-point positions.
constexpr double kFarthest = 30000.0;

const cv::Scalar kDark(18, 18, 18);

bool drawable(cv::Point2d point) {
    return std::isfinite(point.x) && std::isfinite(point.y) && std::abs(point.x) < kFarthest &&
           std::abs(point.y) < kFarthest;
}

cv::Point subPixel(cv::Point2d point) {
    constexpr double kScale = 1 << kShift;
    return {cvRound(point.x * kScale), cvRound(point.y * kScale)};
}

int textThickness(double capHeight) {
    // A stroke of about a seventh of the letters' height reads best.
    return std::max(1, cvRound(capHeight * kOversampling / 7.0));
}

/// Blends a colour into the picture, weighted by a mask whose upper left corner lies at `place`.
void blend(cv::Mat& picture, const cv::Mat& mask, cv::Point place, const cv::Scalar& color, double opacity) {
    const cv::Rect visible = cv::Rect(place, mask.size()) & cv::Rect({0, 0}, picture.size());
    for (int row = visible.y; row < visible.y + visible.height; ++row) {
        for (int col = visible.x; col < visible.x + visible.width; ++col) {
            const double alpha = opacity * mask.at<uchar>(row - place.y, col - place.x) / 255.0;
            auto& pixel = picture.at<cv::Vec3b>(row, col);
            for (int channel = 0; channel < 3; ++channel) {
                pixel[channel] = cv::saturate_cast<uchar>(pixel[channel] * (1.0 - alpha) + color[channel] * alpha);
            }
        }
    }
}

cv::Mat averagedDown(const cv::Mat& largeMask) {
    cv::Mat mask;
    cv::resize(largeMask, mask, largeMask.size() / kOversampling, 0.0, 0.0, cv::INTER_AREA);
    return mask;
}

/// Draws a half transparent dark stroke below a line.
void drawLineBorder(cv::Mat& picture, cv::Point2d from, cv::Point2d to, int thickness) {
    constexpr double kOpacity = 0.55;
    const int reach = thickness + 2;
    const cv::Point low(cvFloor(std::min(from.x, to.x)) - reach, cvFloor(std::min(from.y, to.y)) - reach);
    const cv::Point high(cvCeil(std::max(from.x, to.x)) + reach, cvCeil(std::max(from.y, to.y)) + reach);
    const cv::Rect visible = cv::Rect(low, high) & cv::Rect({0, 0}, picture.size());
    if (visible.empty()) {
        return;
    }
    cv::Mat mask = cv::Mat::zeros(visible.size(), CV_8UC1);
    const cv::Point2d origin = visible.tl();
    cv::line(mask, subPixel(from - origin), subPixel(to - origin), 255, thickness, cv::LINE_AA, kShift);
    blend(picture, mask, visible.tl(), kDark, kOpacity);
}

}  // namespace

void drawLine(cv::Mat& picture, cv::Point2d from, cv::Point2d to, const cv::Scalar& color, int thickness) {
    if (!drawable(from) || !drawable(to)) {
        return;
    }
    drawLineBorder(picture, from, to, thickness + 2);
    cv::line(picture, subPixel(from), subPixel(to), color, thickness, cv::LINE_AA, kShift);
}

void drawDashedRectangle(cv::Mat& picture, const cv::Rect& rect, const cv::Scalar& color, int thickness, double dash) {
    const cv::Point2d topLeft = rect.tl();
    const cv::Point2d bottomRight(rect.x + rect.width - 1, rect.y + rect.height - 1);
    const cv::Point2d topRight(bottomRight.x, topLeft.y);
    const cv::Point2d bottomLeft(topLeft.x, bottomRight.y);
    for (const auto& [from, to] : {std::pair(topLeft, topRight), std::pair(topRight, bottomRight),
                                   std::pair(bottomRight, bottomLeft), std::pair(bottomLeft, topLeft)}) {
        const double length = cv::norm(to - from);
        // An odd number of equal pieces makes every side begin and end with a dash, so the corners are closed.
        const int pieces = 2 * std::max(1, cvRound(length / dash / 2.0)) + 1;
        for (int piece = 0; piece < pieces; piece += 2) {
            const cv::Point2d step = (to - from) / pieces;
            drawLine(picture, from + step * piece, from + step * (piece + 1), color, thickness);
        }
    }
}

void fillPolygon(cv::Mat& picture, const std::vector<cv::Point2f>& polygon, const cv::Scalar& color, double opacity) {
    std::vector<cv::Point> points;
    for (const cv::Point2d point : polygon) {
        if (!drawable(point)) {
            return;
        }
        points.push_back(subPixel(point));
    }
    cv::Mat layer = picture.clone();
    cv::fillConvexPoly(layer, points, color, cv::LINE_AA, kShift);
    cv::addWeighted(layer, opacity, picture, 1.0 - opacity, 0.0, picture);
}

cv::Size textSize(const std::string& text, double capHeight) {
    int below = 0;
    const double scale = capHeight * kOversampling / kFontCapHeight;
    const cv::Size large = cv::getTextSize(text, kFont, scale, textThickness(capHeight), &below);
    return {large.width / kOversampling + 2, cvRound(capHeight * 1.5) + 2};
}

void drawText(cv::Mat& picture, const std::string& text, cv::Point topLeft, double capHeight, const cv::Scalar& color) {
    const cv::Size size = textSize(text, capHeight);
    const int border = std::max(1, cvRound(capHeight / 8.0));
    cv::Mat letters = cv::Mat::zeros((size + cv::Size(2 * border, 2 * border)) * kOversampling, CV_8UC1);
    const cv::Point base((border + 1) * kOversampling, cvRound((border + 1 + capHeight) * kOversampling));
    cv::putText(letters, text, base, kFont, capHeight * kOversampling / kFontCapHeight, 255, textThickness(capHeight),
                cv::LINE_AA);
    cv::Mat outline;
    const int reach = 2 * border * kOversampling + 1;
    cv::dilate(letters, outline, cv::getStructuringElement(cv::MORPH_ELLIPSE, {reach, reach}));
    const cv::Point place = topLeft - cv::Point(border, border);
    blend(picture, averagedDown(outline), place, kDark, 1.0);
    blend(picture, averagedDown(letters), place, color, 1.0);
}

void drawPlate(cv::Mat& picture, const cv::Rect& rect, double cornerRadius) {
    if (rect.empty()) {
        return;
    }
    constexpr double kOpacity = 0.72;
    const cv::Size large = rect.size() * kOversampling;
    const int radius = std::min({cvRound(cornerRadius * kOversampling), large.width / 2, large.height / 2});
    cv::Mat mask = cv::Mat::zeros(large, CV_8UC1);
    cv::rectangle(mask, cv::Rect(radius, 0, large.width - 2 * radius, large.height), 255, cv::FILLED);
    cv::rectangle(mask, cv::Rect(0, radius, large.width, large.height - 2 * radius), 255, cv::FILLED);
    for (const int x : {radius, large.width - 1 - radius}) {
        for (const int y : {radius, large.height - 1 - radius}) {
            cv::circle(mask, {x, y}, radius, 255, cv::FILLED);
        }
    }
    blend(picture, averagedDown(mask), rect.tl(), kDark, kOpacity);
}

}  // namespace quorvel::kit
