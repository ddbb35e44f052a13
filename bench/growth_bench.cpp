// SPDX-License-Identifier: Apache-2.0
// The parts of the growing fit: least squares over a cloud, and the growth from the calibration region.
#include <memory>

#include "bench_scene.h"
#include "calib/least_squares.h"
#include "calib/region_growth.h"
#include "library/plain/least_squares.h"
#include "library/plain/region_growth.h"
#include "stage_input.h"
#include "work.h"

namespace quorvel::bench {

namespace {

const cv::Vec3f kStraight(0.0F, 0.0F, 1.0F);

Run growthPlain() {
    auto grown = std::make_shared<cv::Mat>();
    const FitInput& input = fitInput();
    return {[] {},
            [grown, &input] {
                *grown = test::plain::growPlaneRegion(input.fullCloud, input.fullMap, kStraight, input.regionCloud);
            },
            [grown] { return cv::norm(*grown); }};
}

Run growthFast() {
    auto grown = std::make_shared<cv::Mat>();
    const FitInput& input = fitInput();
    return {[] {},
            [grown, &input] {
                *grown = internal::growPlaneRegion(input.fullCloud, input.fullMap, kStraight, input.regionCloud);
            },
            [grown] { return cv::norm(*grown); }};
}

template <typename Fit>
Run leastSquares(Fit fit) {
    auto offset = std::make_shared<float>(0.0F);
    const FitInput& input = fitInput();
    return {[] {}, [offset, &input, fit] { *offset = fit(input); }, [offset] { return static_cast<double>(*offset); }};
}

float leastSquaresPlain(const FitInput& input) {
    cv::Vec3f normal;
    float offset = 0.0F;
    test::plain::fitPlaneLeastSquares(input.fullCloud, normal.val, offset, input.minPoints);
    return offset;
}

float leastSquaresFast(const FitInput& input) {
    return internal::fitPlaneLeastSquares(input.fullCloud, input.minPoints).plane.value_or(internal::Plane()).offset;
}

}  // namespace

Works growthWorks() {
    const cv::Size size(640, 480);
    const double cloud = 12 * pixelCounts(size).full;
    return {{"region-growth", sizeName(size), 4 * cloud, growthPlain, growthFast},
            {"least-squares", sizeName(size), cloud, [] { return leastSquares(leastSquaresPlain); },
             [] { return leastSquares(leastSquaresFast); }}};
}

}  // namespace quorvel::bench
