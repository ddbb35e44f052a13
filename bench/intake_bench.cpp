// SPDX-License-Identifier: Apache-2.0
// Back-projection of a full depth image: most of what the intake of a frame costs.
#include <memory>

#include "bench_scene.h"
#include "image/back_projection.h"
#include "library/plain/back_projection.h"
#include "stage_input.h"
#include "work.h"

namespace quorvel::bench {

namespace {

/// \param project makes the cloud of a depth image
template <typename Project>
Run backProjection(Project project) {
    auto cloud = std::make_shared<cv::Mat>();
    const cv::Mat depth = measureInput().depth;
    return {[] {}, [cloud, depth, project] { *cloud = project(depth); }, [cloud] { return cv::norm(*cloud); }};
}

}  // namespace

Works intakeWorks() {
    const cv::Size size(640, 480);
    const sim::Camera camera = parcelScene(size).camera;
    const auto cx = static_cast<float>(camera.cx);
    const auto cy = static_cast<float>(camera.cy);
    const auto invFx = static_cast<float>(1.0 / camera.fx);
    const auto invFy = static_cast<float>(1.0 / camera.fy);
    Work work;
    work.name = "back-projection";
    work.point = sizeName(size);
    work.bytes = (2 + 12) * pixelCounts(size).full;
    work.plain = [=] {
        return backProjection(
            [=](const cv::Mat& depth) { return test::plain::backProject(depth, cx, cy, invFx, invFy); });
    };
    work.fast = [=] {
        return backProjection([=](const cv::Mat& depth) {
            cv::Mat cloud;
            internal::backProject(depth, {cx, cy, invFx, invFy}, cloud);
            return cloud;
        });
    };
    return {work};
}

}  // namespace quorvel::bench
