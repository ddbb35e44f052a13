// SPDX-License-Identifier: Apache-2.0
#include "measure/object_chain.h"

#include "common/frame_size.h"
#include "common/scratch.h"
#include "measure/footprint.h"
#include "measure/height_cut.h"
#include "measure/object_component.h"
#include "measure/object_window.h"
#include "measure/surface_filter.h"

namespace quorvel::internal {

namespace {

struct MaskScratch {
    cv::Mat mask;
};

MeasureResult footprint(const cv::Mat& depthSmall, const cv::Mat& object, const MeasureSettings& s) {
    const Projection& camera = s.camera;
    if (s.variant == FootprintVariant::WithoutMargin) {
        return measureFootprintWithoutMargin(depthSmall, object, s.plane.normal, s.plane.offset, camera.cx, camera.cy,
                                             camera.fx, camera.fy, s.downScale, s.effectiveRegion);
    }
    return measureFootprint(depthSmall, object, s.plane.normal, s.plane.offset, camera.cx, camera.cy, camera.fx,
                            camera.fy, s.downScale, s.cameraTypeSet, s.cameraType, s.effectiveRegion);
}

}  // namespace

bool imagesFit(const FrameImages& frame, const cv::Size& fullSize) {
    const auto hasForm = [](const cv::Mat& image, const cv::Size& size, int type) {
        return !image.empty() && image.dims == 2 && image.size() == size && image.type() == type;
    };
    const cv::Size smallSize(frame.depthSmall.cols, frame.depthSmall.rows);
    return isFrameSize(smallSize.width, smallSize.height) && isFrameSize(fullSize.width, fullSize.height) &&
           hasForm(frame.depthSmall, smallSize, CV_16UC1) && hasForm(frame.cloudSmall, smallSize, CV_32FC3) &&
           hasForm(frame.cloud, fullSize, CV_32FC3);
}

int measureObject(const FrameImages& frame, const MeasureSettings& settings, MeasureResult& result, StageTimes* times) {
    const cv::Vec3f& normal = settings.plane.normal;
    const float offset = settings.plane.offset;
    StageWatch watch(times);
    const Borrowed<MaskScratch> scratch;
    cv::Mat& mask = scratch->mask;
    mask.create(frame.depthSmall.size(), CV_8UC1);
    mask.setTo(0);
    const int cut =
        cutAboveReferencePlane(frame.depthSmall, frame.cloudSmall, normal, offset, settings.minHeight, mask);
    watch.lap(&StageTimes::heightCut);
    const int selected = selectObjectComponent(frame.depthSmall, settings.minPixels, mask);
    watch.lap(&StageTimes::component);
    if (cut + selected != 0 || !planeProblem(settings.plane).empty()) {
        return 1;
    }
    // From here on only the object's window of the cloud holds points: the stages see nothing else.
    cv::Mat object = frame.cloud(isolateObject(mask, frame.cloud));
    watch.lap(&StageTimes::window);
    keepSurfacePoints(object, normal, offset);
    watch.lap(&StageTimes::surfaceFilter);
    result = footprint(frame.depthSmall, object, settings);
    watch.lap(&StageTimes::footprint);
    return 0;
}

}  // namespace quorvel::internal
