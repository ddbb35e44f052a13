// SPDX-License-Identifier: Apache-2.0
// Properties of ray casting over random scenes.
#include "sim/cast.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "sim/test_scenes.h"

namespace quorvel::sim {
namespace {

/// A scene as a set of points, written down from its definition alone.
class Matter {
public:
    explicit Matter(const Scene& scene) : scene_(scene) {
        const double a = radians(scene.surface.tiltXDeg);
        const double b = radians(scene.surface.tiltYDeg);
        normal_ = {std::cos(a) * std::sin(b), -std::sin(a), std::cos(a) * std::cos(b)};
        x_ = {std::cos(b), 0.0, -std::sin(b)};
        y_ = {std::sin(a) * std::sin(b), std::cos(a), std::sin(a) * std::cos(b)};
        foot_ = {0.0, 0.0, scene.surface.distance / normal_[2]};
    }

    bool inObject(const cv::Vec3d& point) const {
        const double x = x_.dot(point - foot_);
        const double y = y_.dot(point - foot_);
        const double up = scene_.surface.distance - normal_.dot(point);
        for (const Box& box : scene_.boxes) {
            const double c = std::cos(radians(box.yawDeg));
            const double s = std::sin(radians(box.yawDeg));
            const double along = c * (x - box.x) + s * (y - box.y);
            const double across = c * (y - box.y) - s * (x - box.x);
            if (up <= box.height && up >= 0.0 && std::abs(along) <= box.length / 2.0 &&
                std::abs(across) <= box.width / 2.0) {
                return true;
            }
        }
        return std::any_of(scene_.cylinders.begin(), scene_.cylinders.end(), [&](const Cylinder& cylinder) {
            return up <= cylinder.height && up >= 0.0 &&
                   std::hypot(x - cylinder.x, y - cylinder.y) <= cylinder.diameter / 2.0;
        });
    }

    bool inGround(const cv::Vec3d& point) const { return normal_.dot(point) >= scene_.surface.distance; }

private:
    static double radians(double degrees) { return degrees * CV_PI / 180.0; }

    Scene scene_;
    cv::Vec3d normal_;
    cv::Vec3d x_;
    cv::Vec3d y_;
    cv::Vec3d foot_;
};

TEST(Cast, EveryHitIsTheFirstEntryIntoMatter) {
    constexpr double kMargin = 1e-5;  // mm
    constexpr double kStride = 3.0;   // mm between the places tried before the hit
    int onObjects = 0;
    for (std::uint32_t seed = 0; seed < 60; ++seed) {
        const Scene scene = randomScene(seed);
        const View view = makeView(scene);
        const Matter matter(scene);
        for (int row = 1; row < scene.camera.height; row += 6) {
            for (int col = 1; col < scene.camera.width; col += 6) {
                const Hit hit = castRay(view, col, row);
                const cv::Vec3d ray = rayThrough(scene.camera, col, row);
                const auto where = [&] {
                    return ::testing::Message() << "seed " << seed << ", pixel (" << col << ", " << row << ")";
                };
                ASSERT_NE(hit.face, Face::Nothing) << where();
                const cv::Vec3d beyond = (hit.z + kMargin) * ray;
                EXPECT_TRUE(hit.solid >= 0 ? matter.inObject(beyond) : matter.inGround(beyond)) << where();
                double z = hit.z - kMargin;
                while (z > 0.0) {
                    ASSERT_FALSE(matter.inObject(z * ray) || matter.inGround(z * ray)) << where() << ", z " << z;
                    z -= kStride;
                }
                onObjects += hit.solid >= 0 ? 1 : 0;
            }
        }
    }
    EXPECT_GT(onObjects, 500) << "too few rays met an object for this test to mean anything";
}

TEST(Cast, RestrictingObjectsToTheirAreaLosesNothing) {
    for (std::uint32_t seed = 0; seed < 200; ++seed) {
        Scene scene = randomScene(seed);
        if (seed % 4 == 0) {
            // A wall beside a camera that looks along the surface: it begins behind the camera.
            scene.surface = {360.0, 80.0, 0.0, 0.0};
            scene.boxes[0] = {100.0, -1500.0, 90.0, 2000.0, 60.0, 340.0, cv::Vec3b()};
        }
        const View view = makeView(scene);
        const std::vector<Hit> hits = castImage(view);
        ASSERT_EQ(hits.size(), static_cast<std::size_t>(scene.camera.width * scene.camera.height));
        auto hit = hits.begin();
        for (int row = 0; row < scene.camera.height; ++row) {
            for (int col = 0; col < scene.camera.width; ++col, ++hit) {
                const Hit plain = castRay(view, col, row);
                ASSERT_TRUE(hit->z == plain.z && hit->solid == plain.solid && hit->face == plain.face)
                    << "seed " << seed << ", pixel (" << col << ", " << row << "): " << hit->z << " of solid "
                    << hit->solid << ", without areas " << plain.z << " of solid " << plain.solid;
            }
        }
    }
}

TEST(Cast, FacesAreNamedByTheLocalAxes) {
    Scene scene = flatScene();
    scene.boxes = {{300.0, 0.0, 0.0, 100.0, 100.0, 200.0, cv::Vec3b()},
                   {-300.0, 0.0, 0.0, 100.0, 100.0, 200.0, cv::Vec3b()},
                   {0.0, 200.0, 0.0, 100.0, 100.0, 200.0, cv::Vec3b()},
                   {0.0, -200.0, 0.0, 100.0, 100.0, 200.0, cv::Vec3b()}};
    scene.cylinders = {{300.0, 250.0, 100.0, 200.0, cv::Vec3b()}};
    const View view = makeView(scene);
    EXPECT_EQ(castRay(view, 490, 240).face, Face::SideMinusX);
    EXPECT_EQ(castRay(view, 150, 240).face, Face::SidePlusX);
    EXPECT_EQ(castRay(view, 320, 340).face, Face::SideMinusY);
    EXPECT_EQ(castRay(view, 320, 140).face, Face::SidePlusY);
    EXPECT_EQ(castRay(view, 540, 240).face, Face::Top);
    EXPECT_EQ(castRay(view, 320, 240).face, Face::Surface);
    EXPECT_EQ(castRay(view, 545, 427).face, Face::Top) << "lid of the cylinder";
    EXPECT_EQ(castRay(view, 480, 375).face, Face::Round);
    EXPECT_EQ(castRay(view, 480, 375).solid, 4) << "cylinders follow the boxes";
}

}  // namespace
}  // namespace quorvel::sim
