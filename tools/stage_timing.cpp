// SPDX-License-Identifier: Apache-2.0
// Only public fields of the ruler are read here: the class itself stays the shared library's.
#include "stage_timing.h"

#include "measure/ground_removal.h"
#include "measure/object_chain.h"
#include "ruler/measure_settings.h"
#include "stopwatch.h"

namespace quorvel::command {

StageMilliseconds timeStages(const Quorvel& ruler) {
    cv::Mat depthSmall = ruler.depthSmall.clone();
    cv::Mat cloud = ruler.pointCloud.clone();
    StageMilliseconds stages;
    const Stopwatch watch;
    internal::removeGround(depthSmall, ruler.filterWeight, ruler.refPlaneOffset);
    stages.groundRemoval = watch.milliseconds();

    internal::StageTimes times;
    MeasureResult result;
    const internal::FrameImages frame{depthSmall, ruler.pointCloudSmallCopy, cloud};
    stages.objectFound = internal::measureObject(frame, internal::measureSettings(ruler), result, &times) == 0;
    stages.heightCut = times.heightCut;
    stages.objectComponent = times.component;
    stages.objectWindow = times.window;
    stages.surfaceFilter = times.surfaceFilter;
    stages.footprint = times.footprint;
    return stages;
}

}  // namespace quorvel::command
