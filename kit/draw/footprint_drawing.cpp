// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>

#include <opencv2/imgproc.hpp>

#include "kit/account/text_format.h"
#include "kit/draw/color_scale.h"
#include "kit/draw/drawing.h"
#include "kit/draw/plane_basis.h"
#include "kit/draw/stage_drawings.h"
#include "kit/draw/stage_sheet.h"

namespace quorvel::kit {

namespace {

constexpr int kSide = 640;  // of the drawing, pixels
constexpr double kTextHeight = 9.0;

const cv::Scalar kBackground(26, 24, 22);
const cv::Scalar kGridColor(64, 60, 56);
const cv::Scalar kInk(200, 200, 200);
const cv::Scalar kRectangleColor(40, 150, 255);

/// A measured point laid onto the plane.
struct FootprintPoint {
    cv::Point2d foot;
    double height = 0.0;
};

std::vector<FootprintPoint> footprintPoints(const PlaneBasis& basis, const Plane& plane,
                                            const cv::Mat_<cv::Vec3f>& cloud) {
    std::vector<FootprintPoint> points;
    for (const cv::Vec3f& point : cloud) {
        if (isPresent(point)) {
            points.push_back({footOnPlane(basis, cv::Vec3d(point)), static_cast<double>(heightAbove(plane, point))});
        }
    }
    return points;
}

/// The square part of the plane that is drawn, and its place on the drawing.
class MapView {
public:
    explicit MapView(const std::vector<cv::Point2d>& shown) {
        constexpr double kRoom = 1.25;  // air around what is shown
        cv::Point2d low = shown.front();
        cv::Point2d high = low;
        for (const cv::Point2d& point : shown) {
            low = {std::min(low.x, point.x), std::min(low.y, point.y)};
            high = {std::max(high.x, point.x), std::max(high.y, point.y)};
        }
        side = std::max({high.x - low.x, high.y - low.y, 1.0}) * kRoom;
        origin = (low + high) / 2.0 - cv::Point2d(side, side) / 2.0;
    }

    cv::Point2d toPicture(cv::Point2d point) const { return (point - origin) * (kSide / side); }

    /// Upper left corner and side of the square, mm.
    cv::Point2d origin;
    double side;
};

/// The multiples of `step` in a range that begins at `from`.
std::vector<double> gridValues(double from, double span, double step) {
    const int first = cvCeil(from / step);
    const int last = cvFloor((from + span) / step);
    std::vector<double> values;
    for (int k = first; k <= last; ++k) {
        values.push_back(k * step);
    }
    return values;
}

void drawGrid(cv::Mat& picture, const MapView& view) {
    constexpr int kParts = 6;
    const double step = roundStep(view.side, kParts);
    for (const double x : gridValues(view.origin.x, view.side, step)) {
        const int col = cvRound(view.toPicture({x, 0.0}).x);
        cv::line(picture, {col, 0}, {col, kSide - 1}, kGridColor, 1);
        const std::string text = fixed(x, 0);
        if (col + 3 + textSize(text, kTextHeight).width < kSide) {
            drawText(picture, text, {col + 3, kSide - 16}, kTextHeight, kInk);
        }
    }
    for (const double y : gridValues(view.origin.y, view.side, step)) {
        const int row = cvRound(view.toPicture({0.0, y}).y);
        cv::line(picture, {0, row}, {kSide - 1, row}, kGridColor, 1);
        drawText(picture, fixed(y, 0), {4, row - 14}, kTextHeight, kInk);
    }
}

/// The ground corners on the plane; empty without a box.
std::vector<cv::Point2d> groundRectangle(const PlaneBasis& basis, const Camera& camera, const Measurement& m) {
    const std::vector<cv::Point2f> corners = m.corners();
    std::vector<cv::Point2d> rectangle;
    for (std::size_t k = 0; k < 4 && k < corners.size(); ++k) {
        rectangle.push_back(footOnPlane(basis, pixelOnPlane(camera, m.state.plane, corners[k])));
    }
    return rectangle;
}

std::string caption(const Measurement& m) {
    if (m.diagnosis.reason != Reason::None) {
        return "The measured points laid onto the plane, mm, and their smallest rectangle.";
    }
    return "The measured points laid onto the plane, mm, and their smallest rectangle: length " +
           fixed(static_cast<double>(m.result.length), 1) + " mm, width " +
           fixed(static_cast<double>(m.result.width), 1) + " mm after the side correction.";
}

}  // namespace

cv::Mat drawFootprintStage(const Camera& camera, const Measurement& measurement) {
    const PlaneBasis basis = basisOf(measurement.state.plane);
    const auto points = footprintPoints(basis, measurement.state.plane, measurement.surfaceCloud);
    const std::vector<cv::Point2d> rectangle = groundRectangle(basis, camera, measurement);
    std::vector<cv::Point2d> shown = rectangle;
    double lowest = points.empty() ? 0.0 : points.front().height;
    double highest = lowest;
    for (const FootprintPoint& point : points) {
        lowest = std::min(lowest, point.height);
        highest = std::max(highest, point.height);
        shown.push_back(point.foot);
    }
    if (shown.empty()) {
        shown.emplace_back(0.0, 0.0);
    }
    const MapView view(shown);
    const ColorScale scale(lowest, highest);
    cv::Mat picture(kSide, kSide, CV_8UC3, kBackground);
    drawGrid(picture, view);
    for (const FootprintPoint& point : points) {
        const cv::Vec3b color = scale.color(point.height);
        cv::circle(picture, view.toPicture(point.foot), 1, cv::Scalar(color[0], color[1], color[2]), cv::FILLED);
    }
    for (std::size_t k = 0; k < rectangle.size(); ++k) {
        drawLine(picture, view.toPicture(rectangle[k]), view.toPicture(rectangle[(k + 1) % rectangle.size()]),
                 kRectangleColor, 2);
    }
    return makeSheet(picture, {"6  Footprint", caption(measurement), "height, mm"}, scale);
}

}  // namespace quorvel::kit
