// SPDX-License-Identifier: Apache-2.0
#include "diagnosis.h"

#include <algorithm>
#include <cmath>

#include "text_format.h"

namespace quorvel::command {

namespace {

using Numbers = std::vector<std::pair<std::string, double>>;

/// A footprint needs this many points.
constexpr int kFootprintPoints = 4;
constexpr const char* kTryNegativeWeight =
    "a tilted camera needs a negative weight: try --filter-weight -1, which leaves the separation to the height";

std::string mm(double value) {
    return fixed(value, 1) + " mm";
}

double groundDepth(const MeasurementFacts& facts) {
    return static_cast<double>((1.0F - facts.filterWeight) * facts.plane.offset);
}

std::string groundCutText(const MeasurementFacts& facts) {
    return "deeper than " + mm(groundDepth(facts)) + " (plane distance times 1 - filter weight " +
           fixed(static_cast<double>(facts.filterWeight), 3) + ")";
}

std::string rangeText(double x0, double x1, double y0, double y1) {
    return "x " + fixed(x0, 0) + " to " + fixed(x1, 0) + ", y " + fixed(y0, 0) + " to " + fixed(y1, 0);
}

Numbers heightNumbers(const MeasurementFacts& facts, const HeightSurvey& survey) {
    return {{"highest_mm", survey.highest},
            {"min_height_mm", static_cast<double>(facts.minObjectHeight)},
            {"measured_pixels", survey.measured},
            {"ground_depth_mm", groundDepth(facts)},
            {"removed_as_ground_pixels", survey.removedAsGround},
            {"raised_but_removed_pixels", survey.raisedButRemoved}};
}

Diagnosis nothingHighEnough(const MeasurementFacts& facts, const HeightSurvey& survey) {
    const std::string minHeight = mm(static_cast<double>(facts.minObjectHeight));
    Diagnosis diagnosis{Reason::NothingHighEnough, "", heightNumbers(facts, survey)};
    if (survey.measured == 0) {
        diagnosis.message =
            "the frame has no depth at all: 0 pixels of the small picture are measured; check the "
            "depth image";
    } else if (survey.raisedButRemoved > 0) {
        diagnosis.reason = Reason::RemovedAsGround;
        diagnosis.message = "all " + std::to_string(survey.raisedButRemoved) + " pixels that stand " + minHeight +
                            " or more above the plane (the highest " + mm(survey.highest) + ") lie " +
                            groundCutText(facts) + " and were dropped as ground; " + kTryNegativeWeight;
    } else {
        diagnosis.message = "no pixel stands " + minHeight + " or more above the plane; the highest of " +
                            std::to_string(survey.measured) + " measured pixels stands " + mm(survey.highest) +
                            ", and the ground cut dropped " + std::to_string(survey.removedAsGround);
    }
    return diagnosis;
}

Diagnosis regionTooSmall(const MeasurementFacts& facts, const HeightSurvey& survey) {
    Diagnosis diagnosis{Reason::RegionTooSmall, "", heightNumbers(facts, survey)};
    diagnosis.numbers.emplace_back("candidate_pixels", survey.candidates);
    diagnosis.numbers.emplace_back("largest_region_pixels", survey.largestRegion);
    diagnosis.numbers.emplace_back("min_object_pixels", facts.minObjectPixels);
    diagnosis.message = "the largest raised region has " + std::to_string(survey.largestRegion) +
                        " pixels of the small picture, and more than " + std::to_string(facts.minObjectPixels) +
                        " are needed (a 50 mm x 50 mm square at " + mm(static_cast<double>(facts.plane.offset)) + ")";
    if (survey.raisedButRemoved > 0) {
        diagnosis.message += "; another " + std::to_string(survey.raisedButRemoved) + " raised pixels lie " +
                             groundCutText(facts) + " and were dropped as ground; " + kTryNegativeWeight;
    }
    return diagnosis;
}

Diagnosis tooFewSurfacePoints(const MeasurementFacts& facts, const HeightSurvey& survey) {
    return {Reason::TooFewSurfacePoints,
            "the surface filter left " + std::to_string(facts.surfacePoints) + " points of the object (a raised " +
                "region of up to " + std::to_string(survey.largestRegion) + " pixels of the small picture), and " +
                std::to_string(kFootprintPoints) +
                " are needed: points on steep flanks, beside holes and far from "
                "the object's mean height are dropped; give it a flatter or larger top, or a steadier depth",
            {{"surface_points", facts.surfacePoints},
             {"needed_points", kFootprintPoints},
             {"largest_region_pixels", survey.largestRegion}}};
}

Numbers areaNumbers(const cv::Rect& area) {
    return {{"area_x_min", area.x},
            {"area_x_max", area.x + area.width},
            {"area_y_min", area.y},
            {"area_y_max", area.y + area.height}};
}

Diagnosis missesArea(const MeasurementFacts& facts) {
    const cv::Rect& area = facts.detectionArea;
    Diagnosis diagnosis{Reason::MissesArea, "", areaNumbers(area)};
    const std::string where =
        "the detection area " + rangeText(area.x, area.x + area.width, area.y, area.y + area.height);
    if (facts.cornersAnywhere.size() != 8) {
        diagnosis.message = "the box's top face lies outside the picture, and so outside " + where +
                            "; move the object towards the middle";
        return diagnosis;
    }
    const auto top = facts.cornersAnywhere.begin() + 4;
    const auto byX = [](const cv::Point2f& a, const cv::Point2f& b) { return a.x < b.x; };
    const auto byY = [](const cv::Point2f& a, const cv::Point2f& b) { return a.y < b.y; };
    const auto [left, right] = std::minmax_element(top, facts.cornersAnywhere.end(), byX);
    const auto [upper, lower] = std::minmax_element(top, facts.cornersAnywhere.end(), byY);
    diagnosis.message = "the box's top face at " +
                        rangeText(static_cast<double>(left->x), static_cast<double>(right->x),
                                  static_cast<double>(upper->y), static_cast<double>(lower->y)) +
                        " misses " + where + "; move the object, or enlarge the area with --area";
    diagnosis.numbers.insert(diagnosis.numbers.end(), {{"top_x_min", static_cast<double>(left->x)},
                                                       {"top_x_max", static_cast<double>(right->x)},
                                                       {"top_y_min", static_cast<double>(upper->y)},
                                                       {"top_y_max", static_cast<double>(lower->y)}});
    return diagnosis;
}

Diagnosis outOfView(const MeasurementFacts& facts) {
    const auto width = static_cast<float>(facts.usableSize.width);
    const auto height = static_cast<float>(facts.usableSize.height);
    const float left = std::trunc(facts.result.sideMargin);
    const float right = std::trunc(width - facts.result.sideMargin);
    const auto outside = [&](const cv::Point2f& corner) {
        return !(corner.x >= left && corner.x <= right && corner.y >= 0.0F && corner.y <= height);
    };
    const auto& corners = facts.result.corners;
    const auto first = std::find_if(corners.begin(), corners.end(), outside);
    if (first == corners.end()) {
        return {Reason::OutOfView, "the box is reported as out of view", {}};
    }
    const auto index = first - corners.begin();
    const auto count = std::count_if(corners.begin(), corners.end(), outside);
    std::string message =
        "corner " + std::to_string(index) + " of the box (" + fixed(facts.footprint.width, 0) + " mm x " +
        fixed(facts.footprint.height, 0) + " mm on the plane) at (" + fixed(static_cast<double>(first->x), 1) + ", " +
        fixed(static_cast<double>(first->y), 1) + ") leaves the usable picture " +
        rangeText(static_cast<double>(left), static_cast<double>(right), 0.0, static_cast<double>(height));
    message += " (" + std::to_string(count) + " of 8 corners outside); move the object towards the middle";
    if (facts.result.sideMargin > 0.0F) {
        message += ", or choose a smaller --side-band";
    }
    return {Reason::OutOfView,
            message,
            {{"corner", static_cast<double>(index)},
             {"corner_x", static_cast<double>(first->x)},
             {"corner_y", static_cast<double>(first->y)},
             {"footprint_length_mm", facts.footprint.width},
             {"footprint_width_mm", facts.footprint.height},
             {"corners_outside", static_cast<double>(count)},
             {"usable_x_min", static_cast<double>(left)},
             {"usable_x_max", static_cast<double>(right)},
             {"usable_y_min", 0.0},
             {"usable_y_max", static_cast<double>(height)}}};
}

}  // namespace

std::string reasonCode(Reason reason) {
    switch (reason) {
        case Reason::NoPlane:
            return "no_plane";
        case Reason::NothingHighEnough:
            return "nothing_high_enough";
        case Reason::RemovedAsGround:
            return "removed_as_ground";
        case Reason::RegionTooSmall:
            return "region_too_small";
        case Reason::TooFewSurfacePoints:
            return "too_few_surface_points";
        case Reason::MissesArea:
            return "misses_area";
        case Reason::OutOfView:
            return "out_of_view";
        case Reason::FramesDisagree:
            return "frames_disagree";
        case Reason::None:
            break;
    }
    return "none";
}

Diagnosis diagnose(const MeasurementFacts& facts, const HeightSurvey& survey) {
    if (facts.status != 0) {
        return survey.candidates == 0 ? nothingHighEnough(facts, survey) : regionTooSmall(facts, survey);
    }
    if (!facts.result.corners.empty()) {
        return facts.result.inView ? Diagnosis{} : outOfView(facts);
    }
    return facts.surfacePoints < kFootprintPoints ? tooFewSurfacePoints(facts, survey) : missesArea(facts);
}

Diagnosis noPlane(std::string message, std::vector<std::pair<std::string, double>> numbers) {
    return {Reason::NoPlane, std::move(message), std::move(numbers)};
}

std::string groundCutWarning(const MeasurementFacts& facts, const HeightSurvey& survey, Reason reason) {
    const bool told = reason == Reason::RemovedAsGround || reason == Reason::RegionTooSmall;
    if (told || survey.raisedButRemoved <= facts.minObjectPixels) {
        return {};
    }
    return "an object may be missed or measured too small: " + std::to_string(survey.raisedButRemoved) +
           " raised pixels of the small picture lie " + groundCutText(facts) + " and were dropped as ground; " +
           kTryNegativeWeight;
}

}  // namespace quorvel::command
