// SPDX-License-Identifier: Apache-2.0
// The filter of the object's surface points on the full cloud.
#include <memory>

#include "bench_scene.h"
#include "library/plain/surface_filter.h"
#include "measure/surface_filter.h"
#include "stage_input.h"
#include "work.h"

namespace quorvel::bench {

namespace {

struct State {
    cv::Mat cloud;
    cv::Mat mask;
};

template <typename Filter>
Run surfaceFilter(Filter filter) {
    auto state = std::make_shared<State>();
    const MeasureInput& input = measureInput();
    return {[state, &input] {
                state->cloud = input.objectCloud.clone();
                state->mask = cv::Mat::zeros(state->cloud.size(), CV_8UC1);
            },
            [state, &input, filter] { filter(state->cloud, input.normal, input.offset, state->mask); },
            [state] { return static_cast<double>(cv::countNonZero(state->mask)); }};
}

}  // namespace

Works surfaceFilterWorks() {
    const cv::Size size(640, 480);
    Work work;
    work.name = "surface-filter";
    work.point = sizeName(size);
    work.bytes = (12 + 12 + 1) * pixelCounts(size).full;
    work.plain = [] { return surfaceFilter(test::plain::filterSurfacePoints); };
    work.fast = [] { return surfaceFilter(internal::filterSurfacePoints); };
    return {work};
}

}  // namespace quorvel::bench
