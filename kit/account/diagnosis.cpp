// SPDX-License-Identifier: Apache-2.0
#include "kit/account/diagnosis.h"

#include <algorithm>
#include <array>

#include "kit/account/text_format.h"
#include "measure/detection_area.h"

namespace quorvel::kit {

namespace {

using Numbers = std::vector<std::pair<std::string, double>>;

using internal::MeasureAccount;

constexpr const char* kTryNegativeWeight =
    "a tilted camera needs a negative weight: try --filter-weight -1, which leaves the separation to the height";

std::string mm(double value) {
    return fixed(value, 1) + " mm";
}

std::string groundCutText(const MeasureAccount& account) {
    return "deeper than " + mm(static_cast<double>(account.groundDepth)) + " (plane distance times 1 - filter weight " +
           fixed(static_cast<double>(account.filterWeight), 3) + ")";
}

std::string rangeText(double x0, double x1, double y0, double y1) {
    return "x " + fixed(x0, 0) + " to " + fixed(x1, 0) + ", y " + fixed(y0, 0) + " to " + fixed(y1, 0);
}

Numbers heightNumbers(const MeasureAccount& account) {
    return {{"highest_mm", account.survey->highest},
            {"min_height_mm", static_cast<double>(account.minHeight)},
            {"measured_pixels", account.survey->measured},
            {"ground_depth_mm", static_cast<double>(account.groundDepth)},
            {"removed_as_ground_pixels", account.survey->removedAsGround},
            {"raised_but_removed_pixels", account.raisedButRemoved()}};
}

Diagnosis nothingHighEnough(const MeasureAccount& account) {
    const std::string minHeight = mm(static_cast<double>(account.minHeight));
    Diagnosis diagnosis{Reason::NothingHighEnough, "", heightNumbers(account)};
    if (account.survey->measured == 0) {
        diagnosis.message =
            "the frame has no depth at all: 0 pixels of the small picture are measured; check the "
            "depth image";
    } else if (account.raisedButRemoved() > 0) {
        diagnosis.reason = Reason::RemovedAsGround;
        diagnosis.message = "all " + std::to_string(account.raisedButRemoved()) + " pixels that stand " + minHeight +
                            " or more above the plane (the highest " + mm(account.survey->highest) + ") lie " +
                            groundCutText(account) + " and were dropped as ground; " + kTryNegativeWeight;
    } else {
        diagnosis.message = "no pixel stands " + minHeight + " or more above the plane; the highest of " +
                            std::to_string(account.survey->measured) + " measured pixels stands " +
                            mm(account.survey->highest) + ", and the ground cut dropped " +
                            std::to_string(account.survey->removedAsGround);
    }
    return diagnosis;
}

Diagnosis regionTooSmall(const MeasureAccount& account) {
    Diagnosis diagnosis{Reason::RegionTooSmall, "", heightNumbers(account)};
    diagnosis.numbers.emplace_back("candidate_pixels", account.component.candidates);
    diagnosis.numbers.emplace_back("largest_region_pixels", account.component.largest);
    diagnosis.numbers.emplace_back("min_object_pixels", account.minPixels);
    diagnosis.message = "the largest raised region has " + std::to_string(account.component.largest) +
                        " pixels of the small picture, and more than " + std::to_string(account.minPixels) +
                        " are needed (a 50 mm x 50 mm square at " + mm(static_cast<double>(account.plane.offset)) + ")";
    if (account.raisedButRemoved() > 0) {
        diagnosis.message += "; another " + std::to_string(account.raisedButRemoved()) + " raised pixels lie " +
                             groundCutText(account) + " and were dropped as ground; " + kTryNegativeWeight;
    }
    return diagnosis;
}

Diagnosis tooFewSurfacePoints(const MeasureAccount& account) {
    return {Reason::TooFewSurfacePoints,
            "the surface filter left " + std::to_string(account.footprint.points) + " points of the object (a raised " +
                "region of up to " + std::to_string(account.component.largest) + " pixels of the small picture), and " +
                std::to_string(internal::kLeastFootprintPoints) +
                " are needed: points on steep flanks, beside holes and far from "
                "the object's mean height are dropped; give it a flatter or larger top, or a steadier depth",
            {{"surface_points", static_cast<double>(account.footprint.points)},
             {"needed_points", static_cast<double>(internal::kLeastFootprintPoints)},
             {"largest_region_pixels", account.component.largest}}};
}

Numbers areaNumbers(const cv::Rect& area) {
    return {{"area_x_min", area.x},
            {"area_x_max", area.x + area.width},
            {"area_y_min", area.y},
            {"area_y_max", area.y + area.height}};
}

/// The corners of the box's top face.
std::array<cv::Point2f, 4> topFace(const internal::Box& box) {
    return {box.corners[4], box.corners[5], box.corners[6], box.corners[7]};
}

Diagnosis missesArea(const MeasureAccount& account) {
    const cv::Rect& area = account.detectionArea;
    Diagnosis diagnosis{Reason::MissesArea, "", areaNumbers(area)};
    const std::string where =
        "the detection area " + rangeText(area.x, area.x + area.width, area.y, area.y + area.height);
    const std::array<cv::Point2f, 4> top = topFace(*account.footprint.box);
    if (!internal::topFaceMeetsRegion(top, cv::Rect(cv::Point(), account.picture), account.picture)) {
        diagnosis.message = "the box's top face lies outside the picture, and so outside " + where +
                            "; move the object towards the middle";
        return diagnosis;
    }
    const auto byX = [](const cv::Point2f& a, const cv::Point2f& b) { return a.x < b.x; };
    const auto byY = [](const cv::Point2f& a, const cv::Point2f& b) { return a.y < b.y; };
    const auto [left, right] = std::minmax_element(top.begin(), top.end(), byX);
    const auto [upper, lower] = std::minmax_element(top.begin(), top.end(), byY);
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

Diagnosis outOfView(const MeasureAccount& account) {
    const internal::Footprint& footprint = account.footprint;
    const internal::UsableArea& usable = footprint.usable;
    const auto& corners = footprint.box->corners;
    const auto outside = [&usable](const cv::Point2f& corner) { return !internal::isInside(corner, usable); };
    const auto first = std::find_if(corners.begin(), corners.end(), outside);
    if (first == corners.end()) {
        return {Reason::OutOfView, "the box is reported as out of view", {}};
    }
    const auto index = first - corners.begin();
    const auto count = std::count_if(corners.begin(), corners.end(), outside);
    const internal::Sides& sides = footprint.box->rawSides;
    const auto longer = static_cast<double>(std::max(sides.a, sides.b));
    const auto shorter = static_cast<double>(std::min(sides.a, sides.b));
    const auto left = static_cast<double>(usable.left);
    const auto right = static_cast<double>(usable.right);
    const auto height = static_cast<double>(usable.bottom);
    std::string message = "corner " + std::to_string(index) + " of the box (" + fixed(longer, 0) + " mm x " +
                          fixed(shorter, 0) + " mm on the plane) at (" + fixed(static_cast<double>(first->x), 1) +
                          ", " + fixed(static_cast<double>(first->y), 1) + ") leaves the usable picture " +
                          rangeText(left, right, 0.0, height);
    message += " (" + std::to_string(count) + " of 8 corners outside); move the object towards the middle";
    if (footprint.sideMargin > 0.0F) {
        message += ", or choose a smaller --side-band";
    }
    return {Reason::OutOfView,
            message,
            {{"corner", static_cast<double>(index)},
             {"corner_x", static_cast<double>(first->x)},
             {"corner_y", static_cast<double>(first->y)},
             {"footprint_length_mm", longer},
             {"footprint_width_mm", shorter},
             {"corners_outside", static_cast<double>(count)},
             {"usable_x_min", left},
             {"usable_x_max", right},
             {"usable_y_min", 0.0},
             {"usable_y_max", height}}};
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

Diagnosis diagnose(const MeasureAccount& account) {
    switch (account.outcome) {
        case internal::Outcome::Measured:
            return {};
        case internal::Outcome::NothingHighEnough:
        case internal::Outcome::RemovedAsGround:
            return nothingHighEnough(account);
        case internal::Outcome::RegionTooSmall:
            return regionTooSmall(account);
        case internal::Outcome::TooFewSurfacePoints:
            return tooFewSurfacePoints(account);
        case internal::Outcome::MissesArea:
            return missesArea(account);
        case internal::Outcome::OutOfView:
            return outOfView(account);
        case internal::Outcome::NoPlane:
            return noPlane("there is no reference plane; calibrate first", {});
        case internal::Outcome::PlaneUnusable:
            return noPlane("the reference plane cannot be measured from: " + internal::planeProblem(account.plane) +
                               "; calibrate again",
                           {});
        case internal::Outcome::NoFrame:
            break;
    }
    return {Reason::NothingHighEnough, "there is no frame to measure; take one in first", {}};
}

Diagnosis noPlane(std::string message, std::vector<std::pair<std::string, double>> numbers) {
    return {Reason::NoPlane, std::move(message), std::move(numbers)};
}

std::string groundCutWarning(const MeasureAccount& account, Reason reason) {
    const bool told = reason == Reason::RemovedAsGround || reason == Reason::RegionTooSmall;
    if (told || account.raisedButRemoved() <= account.minPixels) {
        return {};
    }
    return "an object may be missed or measured too small: " + std::to_string(account.raisedButRemoved()) +
           " raised pixels of the small picture lie " + groundCutText(account) + " and were dropped as ground; " +
           kTryNegativeWeight;
}

}  // namespace quorvel::kit
