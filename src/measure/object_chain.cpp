// SPDX-License-Identifier: Apache-2.0
#include "measure/object_chain.h"

#include <opencv2/imgproc.hpp>

#include "measure/footprint.h"
#include "measure/height_cut.h"
#include "measure/object_component.h"
#include "measure/surface_filter.h"

namespace quorvel::internal {

namespace {

/// Scales the mask to the cloud's size. The interpolation leaves 255 only where a pixel lies wholly in the object.
void scaleMask(cv::Mat& mask, const cv::Size& fullSize) {
    cv::resize(mask, mask, fullSize, 0.0, 0.0, cv::INTER_AREA);
}

void clearOutsideMask(cv::Mat& cloud, const cv::Mat& mask) {
    cloud.setTo(cv::Scalar::all(0.0), mask < 255);
}

MeasureResult footprint(const FrameImages& frame, const MeasureSettings& s) {
    const Projection& camera = s.camera;
    if (s.variant == FootprintVariant::WithoutMargin) {
        return measureFootprintWithoutMargin(frame.depthSmall, frame.cloud, s.plane.normal, s.plane.offset, camera.cx,
                                             camera.cy, camera.fx, camera.fy, s.downScale, s.effectiveRegion);
    }
    return measureFootprint(frame.depthSmall, frame.cloud, s.plane.normal, s.plane.offset, camera.cx, camera.cy,
                            camera.fx, camera.fy, s.downScale, s.cameraTypeSet, s.cameraType, s.effectiveRegion);
}

}  // namespace

bool imagesFit(const FrameImages& frame, const cv::Size& fullSize) {
    return !frame.depthSmall.empty() && frame.depthSmall.type() == CV_16UC1 && frame.depthSmall.dims == 2 &&
           frame.cloudSmall.type() == CV_32FC3 && frame.cloudSmall.dims == 2 &&
           frame.cloudSmall.size() == frame.depthSmall.size() && !frame.cloud.empty() &&
           frame.cloud.type() == CV_32FC3 && frame.cloud.dims == 2 && frame.cloud.size() == fullSize;
}

int measureObject(const FrameImages& frame, const MeasureSettings& settings, MeasureResult& result) {
    const cv::Vec3f& normal = settings.plane.normal;
    const float offset = settings.plane.offset;
    cv::Mat mask = cv::Mat::zeros(frame.depthSmall.size(), CV_8UC1);
    const int cut =
        cutAboveReferencePlane(frame.depthSmall, frame.cloudSmall, normal, offset, settings.minHeight, mask);
    const int selected = selectObjectComponent(frame.depthSmall, settings.minPixels, mask);
    if (cut + selected != 0) {
        return 1;
    }
    scaleMask(mask, frame.cloud.size());
    clearOutsideMask(frame.cloud, mask);
    filterSurfacePoints(frame.cloud, normal, offset, mask);
    result = footprint(frame, settings);
    return 0;
}

}  // namespace quorvel::internal
