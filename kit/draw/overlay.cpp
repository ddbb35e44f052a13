// SPDX-License-Identifier: Apache-2.0
#include "kit/draw/overlay.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <sstream>

#include "kit/account/text_format.h"
#include "kit/draw/drawing.h"
#include "kit/draw/label_placement.h"
#include "kit/draw/plane_basis.h"

namespace quorvel::kit {

namespace {

const cv::Scalar kGroundColor(40, 150, 255);
const cv::Scalar kTopColor(110, 235, 90);
const cv::Scalar kUprightColor(255, 190, 70);
const cv::Scalar kWhite(255, 255, 255);
const cv::Scalar kLeaderColor(215, 215, 215);

/// Sizes of pen and letters, in proportion to the picture and never too small to read.
struct Pen {
    explicit Pen(cv::Size picture)
        : thickness(std::max(1, cvRound(picture.width / 360.0))),
          capHeight(std::clamp(picture.width / 58.0, 8.0, 40.0)) {}
    int thickness;
    double capHeight;
};

using Corners = std::vector<cv::Point2f>;

std::pair<cv::Point2d, cv::Point2d> edge(const Corners& corners, std::size_t a, std::size_t b) {
    return {corners[a], corners[b]};
}

void drawBox(cv::Mat& picture, const Corners& corners, const Pen& pen) {
    constexpr double kTopOpacity = 0.14;
    fillPolygon(picture, Corners(corners.begin() + 4, corners.end()), kTopColor, kTopOpacity);
    for (std::size_t k = 0; k < 4; ++k) {
        drawLine(picture, corners[k], corners[(k + 1) % 4], kGroundColor, pen.thickness);
    }
    for (std::size_t k = 0; k < 4; ++k) {
        drawLine(picture, corners[k], corners[k + 4], kUprightColor, pen.thickness);
    }
    for (std::size_t k = 0; k < 4; ++k) {
        drawLine(picture, corners[k + 4], corners[(k + 1) % 4 + 4], kTopColor, pen.thickness);
    }
}

cv::Size plateSize(const std::string& text, const Pen& pen) {
    const int padding = cvRound(pen.capHeight * 0.6);
    return textSize(text, pen.capHeight) + cv::Size(2 * padding, padding);
}

void drawLabel(cv::Mat& picture, const cv::Rect& plate, const std::string& text, const Pen& pen,
               const cv::Scalar& color) {
    drawPlate(picture, plate, pen.capHeight * 0.5);
    const cv::Size size = textSize(text, pen.capHeight);
    // Below the line there is room for letters such as g. Half of that room puts capitals into the middle.
    const cv::Point topLeft(plate.x + (plate.width - size.width) / 2,
                            plate.y + cvRound((plate.height - pen.capHeight) / 2.0) - 1);
    drawText(picture, text, topLeft, pen.capHeight, color);
}

struct SizeLabel {
    std::string text;
    cv::Scalar color;
    LabelRequest request;
};

std::array<SizeLabel, 3> sizeLabels(const Camera& camera, const Measurement& m, const Pen& pen) {
    const Corners& c = m.result.corners;
    const std::vector firstSides{edge(c, 4, 5), edge(c, 6, 7)};
    const std::vector secondSides{edge(c, 5, 6), edge(c, 7, 4)};
    std::vector uprights{edge(c, 0, 4), edge(c, 1, 5), edge(c, 2, 6), edge(c, 3, 7)};
    // At the upright that looks longest it is clearest which edge the label belongs to.
    std::stable_sort(uprights.begin(), uprights.end(), [](const auto& a, const auto& b) {
        return cv::norm(a.second - a.first) > cv::norm(b.second - b.first);
    });
    const cv::Size2d sides = groundSides(camera, m.state.plane, c);
    const bool firstIsLength = sides.width >= sides.height;
    const auto label = [&pen](const char* letter, float size, const cv::Scalar& color, const auto& edges) {
        const std::string text = std::string(letter) + " " + fixed(static_cast<double>(size), 1) + " mm";
        return SizeLabel{text, color, {edges, plateSize(text, pen)}};
    };
    return {label("L", m.result.length, kTopColor, firstIsLength ? firstSides : secondSides),
            label("W", m.result.width, kTopColor, firstIsLength ? secondSides : firstSides),
            label("H", m.result.height, kUprightColor, uprights)};
}

cv::Point2d nearestOnPlate(const cv::Rect& plate, cv::Point2d to) {
    return {std::clamp(to.x, static_cast<double>(plate.x), static_cast<double>(plate.x + plate.width)),
            std::clamp(to.y, static_cast<double>(plate.y), static_cast<double>(plate.y + plate.height))};
}

void drawSizes(cv::Mat& picture, const Camera& camera, const Measurement& m, const Pen& pen) {
    const auto labels = sizeLabels(camera, m, pen);
    std::vector<LabelRequest> requests;
    requests.reserve(labels.size());
    for (const SizeLabel& label : labels) {
        requests.push_back(label.request);
    }
    cv::Point2f sum(0.0F, 0.0F);
    for (const cv::Point2f& corner : m.result.corners) {
        sum += corner;
    }
    const cv::Point2d center = sum / static_cast<float>(m.result.corners.size());
    const auto places = placeLabels(requests, center, picture.size(), pen.capHeight * 0.8);
    for (std::size_t i = 0; i < labels.size(); ++i) {
        drawLine(picture, places[i].anchor, nearestOnPlate(places[i].plate, places[i].anchor), kLeaderColor, 1);
    }
    for (std::size_t i = 0; i < labels.size(); ++i) {
        drawLabel(picture, places[i].plate, labels.at(i).text, pen, labels.at(i).color);
    }
}

/// Writes the reason at the top of the picture, or at the bottom when it would hide the box there.
void drawReason(cv::Mat& picture, const std::string& message, const Corners& corners, const Pen& pen) {
    const int margin = cvRound(pen.capHeight);
    const int lineHeight = cvRound(pen.capHeight * 1.9);
    const auto lines = wrapText("Nothing measured: " + message, picture.cols - 4 * margin, pen.capHeight);
    cv::Rect plate(margin, margin, picture.cols - 2 * margin, static_cast<int>(lines.size()) * lineHeight + margin);
    const auto isHidden = [&plate](const cv::Point2f& corner) {
        return corner.y >= 0.0F && corner.y <= static_cast<float>(plate.br().y);
    };
    if (std::any_of(corners.begin(), corners.end(), isHidden)) {
        plate.y = picture.rows - margin - plate.height;
    }
    drawPlate(picture, plate, pen.capHeight * 0.6);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        drawText(picture, lines[i], {2 * margin, plate.y + margin * 3 / 4 + static_cast<int>(i) * lineHeight},
                 pen.capHeight, kWhite);
    }
}

}  // namespace

std::vector<std::string> wrapText(const std::string& text, int width, double capHeight) {
    std::vector<std::string> lines(1);
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        const std::string longer = lines.back().empty() ? word : lines.back() + " " + word;
        if (lines.back().empty() || textSize(longer, capHeight).width <= width) {
            lines.back() = longer;
        } else {
            lines.push_back(word);
        }
    }
    return lines;
}

cv::Mat drawOverlay(const cv::Mat& color, const Camera& camera, const Measurement& measurement) {
    const Pen pen(color.size());
    cv::Mat picture = color.clone();
    drawDashedRectangle(picture, measurement.state.detectionArea, kWhite, 1, pen.capHeight * 0.6);
    const bool measured = measurement.diagnosis.reason == Reason::None;
    const Corners& corners = measurement.corners();
    if (corners.size() == 8) {
        drawBox(picture, corners, pen);
    }
    if (measured) {
        drawSizes(picture, camera, measurement, pen);
    } else {
        drawReason(picture, measurement.diagnosis.message, corners, pen);
    }
    return picture;
}

}  // namespace quorvel::kit
