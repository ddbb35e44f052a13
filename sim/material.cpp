// SPDX-License-Identifier: Apache-2.0
#include "sim/material.h"

#include <algorithm>
#include <cmath>

#include "sim/grain.h"

namespace quorvel::sim {

namespace {

cv::Vec3d blend(const cv::Vec3d& from, const cv::Vec3d& to, double share) {
    return from + (to - from) * share;
}

/// Place on a face, mm: x along the face, y across; toEdge is the distance to the face's nearest edge.
struct FacePlace {
    double x;
    double y;
    double toEdge;
};

FacePlace placeOn(const Solid& box, Face face, const cv::Vec3d& local) {
    const double toX = box.halfLength - std::abs(local[0]);
    const double toY = box.halfWidth - std::abs(local[1]);
    if (face == Face::Top) {
        return {local[0], local[1], std::min(toX, toY)};
    }
    const double toTop = std::min(local[2], box.height - local[2]);
    if (face == Face::SideMinusX || face == Face::SidePlusX) {
        return {local[1], local[2], std::min(toY, toTop)};
    }
    return {local[0], local[2], std::min(toX, toTop)};
}

/// Coverage 0 ... 1 of the tape, which runs along the length axis over the middle of the top and down both ends.
double tapeCoverage(const Solid& box, Face face, const cv::Vec3d& local) {
    if (face == Face::SideMinusY || face == Face::SidePlusY) {
        return 0.0;
    }
    const double halfTape = std::min(24.0, 0.22 * box.halfWidth);
    const double sideways = 1.0 - smoothStep(halfTape - 0.8, halfTape + 0.8, std::abs(local[1]));
    if (face == Face::Top) {
        return sideways;
    }
    const double lowest = box.height - std::min(55.0, 0.45 * box.height);
    return sideways * smoothStep(lowest - 0.8, lowest + 0.8, local[2]);
}

/// A white label with a bar code above two lines of text; x, y in 0 ... 1 across the label, from its upper left.
cv::Vec3d labelColor(double x, double y) {
    const cv::Vec3d paper(0.91, 0.94, 0.95);
    const cv::Vec3d ink(0.16, 0.15, 0.15);
    const bool withinPrint = x > 0.08 && x < 0.92;
    if (withinPrint && y > 0.12 && y < 0.52) {
        return hashNoise(static_cast<std::int64_t>(x * 42.0), 0, 31U) < 0.48 ? ink : paper;
    }
    const bool firstLine = y > 0.62 && y < 0.69 && x < 0.8;
    const bool secondLine = y > 0.79 && y < 0.86 && x < 0.6;
    return withinPrint && (firstLine || secondLine) ? blend(paper, ink, 0.6) : paper;
}

/// Draws the label onto the top where it fits between the tape and the edge.
void drawLabel(cv::Vec3d& color, const Solid& box, const cv::Vec3d& local) {
    constexpr double kSmallestRoom = 35.0;  // mm
    const double room = 0.78 * box.halfWidth;
    const double labelWidth = std::min(0.85 * box.halfLength, 95.0);
    const double labelHeight = std::min(0.75 * room, 60.0);
    if (room < kSmallestRoom || labelWidth < kSmallestRoom) {
        return;
    }
    const double x = (local[0] - (0.9 * box.halfLength - labelWidth)) / labelWidth;
    const double y = (local[1] - (0.92 * box.halfWidth - labelHeight)) / labelHeight;
    if (x >= 0.0 && x < 1.0 && y >= 0.0 && y < 1.0) {
        color = labelColor(x, y);
    }
}

}  // namespace

cv::Vec3d boxColor(const Solid& box, Face face, const cv::Vec3d& local, std::uint32_t salt) {
    const cv::Vec3d tape(0.50, 0.70, 0.82);
    const FacePlace place = placeOn(box, face, local);
    cv::Vec3d color = cardboardColor(box.color, place.x, place.y, salt * 16U + static_cast<std::uint32_t>(face));
    if (face == Face::Top) {
        // The gap where the two flaps meet shows through the tape.
        color *= 0.72 + 0.28 * smoothStep(0.3, 1.6, std::abs(local[1]));
        drawLabel(color, box, local);
    }
    color = blend(color, tape, 0.55 * tapeCoverage(box, face, local));
    // Folded edges are worn to a lighter tone.
    return color * (1.0 + 0.13 * (1.0 - smoothStep(0.0, 2.5, place.toEdge)));
}

cv::Vec3d cylinderColor(const Solid& cylinder, Face face, const cv::Vec3d& local) {
    const cv::Vec3d paper(0.88, 0.92, 0.93);
    const cv::Vec3d metal(0.78, 0.77, 0.75);
    if (face == Face::Round) {
        const double share = local[2] / cylinder.height;
        const double band = smoothStep(0.28, 0.3, share) * (1.0 - smoothStep(0.7, 0.72, share));
        return blend(cylinder.color, paper, 0.85 * band);
    }
    const double radius = cylinder.halfLength;
    const double inward = radius - std::sqrt(local[0] * local[0] + local[1] * local[1]);
    const double rim = std::min(4.0, 0.12 * radius);
    const double groove = smoothStep(rim * 0.8, rim, inward) * (1.0 - smoothStep(rim * 1.6, rim * 1.9, inward));
    return blend(metal, cylinder.color, 0.8 * smoothStep(rim * 0.8, rim, inward)) * (1.0 - 0.3 * groove);
}

}  // namespace quorvel::sim
