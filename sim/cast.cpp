// SPDX-License-Identifier: Apache-2.0
#include "sim/cast.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace quorvel::sim {

namespace {

/// A stretch of a ray, in depths, and the face it begins at.
struct Span {
    double enter = -std::numeric_limits<double>::infinity();
    double leave = std::numeric_limits<double>::infinity();
    Face face = Face::Nothing;
};

/// Cuts the span down to the slab low <= eye + z * slope <= high. A ray along the slab keeps its span inside the slab
/// and loses it outside.
void cut(Span& span, double eye, double slope, double low, double high, Face lowFace, Face highFace) {
    if (slope == 0.0) {
        if (eye < low || eye > high) {
            span.leave = -std::numeric_limits<double>::infinity();
        }
        return;
    }
    double first = (low - eye) / slope;
    double second = (high - eye) / slope;
    Face face = lowFace;
    if (first > second) {
        std::swap(first, second);
        face = highFace;
    }
    if (first > span.enter) {
        span.enter = first;
        span.face = face;
    }
    span.leave = std::min(span.leave, second);
}

/// Cuts the span down to the infinite upright cylinder |xy| <= radius.
void cutRound(Span& span, const cv::Vec3d& eye, const cv::Vec3d& ray, double radius) {
    const double a = ray[0] * ray[0] + ray[1] * ray[1];
    const double halfB = eye[0] * ray[0] + eye[1] * ray[1];
    const double c = eye[0] * eye[0] + eye[1] * eye[1] - radius * radius;
    const double discriminant = halfB * halfB - a * c;
    if (a == 0.0 || discriminant < 0.0) {
        if (c > 0.0) {
            span.leave = -std::numeric_limits<double>::infinity();
        }
        return;
    }
    const double root = std::sqrt(discriminant);
    const double first = (-halfB - root) / a;
    if (first > span.enter) {
        span.enter = first;
        span.face = Face::Round;
    }
    span.leave = std::min(span.leave, (-halfB + root) / a);
}

/// Keeps the nearer of the hit so far and the solid's.
void castSolid(Hit& nearest, const Solid& solid, int index, const cv::Vec3d& ray) {
    const cv::Vec3d local = solid.pose.directionToLocal(ray);
    Span span;
    // The camera stands above every object, so a ray that enters from below does not exist.
    cut(span, solid.eye[2], local[2], 0.0, solid.height, Face::Nothing, Face::Top);
    if (solid.shape == Shape::Box) {
        cut(span, solid.eye[0], local[0], -solid.halfLength, solid.halfLength, Face::SideMinusX, Face::SidePlusX);
        cut(span, solid.eye[1], local[1], -solid.halfWidth, solid.halfWidth, Face::SideMinusY, Face::SidePlusY);
    } else {
        cutRound(span, solid.eye, local, solid.halfLength);
    }
    const bool met = span.enter > 0.0 && span.enter <= span.leave;
    if (met && (nearest.face == Face::Nothing || span.enter < nearest.z)) {
        nearest = {span.enter, index, span.face};
    }
}

Hit castSurface(const View& view, const cv::Vec3d& ray) {
    const cv::Vec3d local = view.surface.directionToLocal(ray);
    if (!(local[2] < 0.0)) {
        return {};
    }
    const double z = view.distance / -local[2];
    if (view.halfExtent > 0.0) {
        const cv::Vec3d point = view.surface.pointToLocal(z * ray);
        if (std::abs(point[0]) > view.halfExtent || std::abs(point[1]) > view.halfExtent) {
            return {};
        }
    }
    return {z, -1, Face::Surface};
}

}  // namespace

Hit castRay(const View& view, double u, double v) {
    const cv::Vec3d ray = rayThrough(view.camera, u, v);
    Hit hit = castSurface(view, ray);
    for (std::size_t i = 0; i < view.solids.size(); ++i) {
        castSolid(hit, view.solids[i], static_cast<int>(i), ray);
    }
    return hit;
}

std::vector<Hit> castImage(const View& view) {
    const auto width = static_cast<std::size_t>(view.camera.width);
    std::vector<Hit> hits;
    hits.reserve(width * static_cast<std::size_t>(view.camera.height));
    for (int row = 0; row < view.camera.height; ++row) {
        for (int col = 0; col < view.camera.width; ++col) {
            hits.push_back(castSurface(view, rayThrough(view.camera, col, row)));
        }
    }
    for (std::size_t i = 0; i < view.solids.size(); ++i) {
        const cv::Rect& area = view.solids[i].area;
        for (int row = area.y; row < area.y + area.height; ++row) {
            for (int col = area.x; col < area.x + area.width; ++col) {
                Hit& hit = hits[static_cast<std::size_t>(row) * width + static_cast<std::size_t>(col)];
                castSolid(hit, view.solids[i], static_cast<int>(i), rayThrough(view.camera, col, row));
            }
        }
    }
    return hits;
}

}  // namespace quorvel::sim
