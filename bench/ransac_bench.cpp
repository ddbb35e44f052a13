// SPDX-License-Identifier: Apache-2.0
// The robust sampling fit on the cloud of 80 % of the empty picture.
#include <cstdlib>
#include <memory>

#include "bench_scene.h"
#include "calib/ransac_plane.h"
#include "library/fast_forms.h"
#include "library/plain/ransac_plane.h"
#include "stage_input.h"
#include "work.h"

namespace quorvel::bench {

namespace {

struct State {
    cv::Vec3f normal;
    float offset = 0.0F;
};

template <typename Fit>
Run samplingFit(Fit fit) {
    auto state = std::make_shared<State>();
    const FitInput& input = fitInput();
    return {[] { std::srand(1); },
            [state, &input, fit] { fit(input.regionCloud, input.regionMap, input.bin, state->normal, state->offset); },
            [state] { return static_cast<double>(state->offset); }};
}

void fitPlain(const cv::Mat& cloud, const cv::Mat& map, const cv::Vec3f& bin, cv::Vec3f& normal, float& offset) {
    test::plain::ransacFitPlane(cloud, map, bin, normal, offset);
}

}  // namespace

Works ransacWorks() {
    const cv::Size size(640, 480);
    return {{"sampling-fit", sizeName(size), 2 * 12 * pixelCounts(size).full, [] { return samplingFit(fitPlain); },
             [] { return samplingFit(test::fast::ransacFitPlane); }}};
}

}  // namespace quorvel::bench
