// SPDX-License-Identifier: Apache-2.0
#include "stage_input.h"

#include <opencv2/imgproc.hpp>

#include "bench_scene.h"
#include "library/plain/calibration_region.h"
#include "library/plain/dominant_normal.h"
#include "library/plain/frame_intake.h"
#include "library/plain/height_cut.h"
#include "library/plain/normal_map.h"
#include "library/plain/object_chain.h"
#include "library/plain/object_component.h"
#include "library/plain/surface_filter.h"

namespace quorvel::bench {

namespace plain = test::plain;

namespace {

const cv::Size kSize(640, 480);

MeasureInput makeMeasureInput() {
    Quorvel ruler = calibratedRuler(parcelScene(kSize).camera, KIOSK);
    const Frame& frame = parcelFrames(kSize).occupied;
    plain::takeFrame(ruler, frame.color, frame.depth);
    plain::chooseMinHeight(ruler);
    MeasureInput input;
    input.normal = ruler.refPlaneNormal;
    input.offset = ruler.refPlaneOffset;
    input.minHeight = ruler.minObjectHeight;
    input.minPixels = ruler.minObjectPixels;
    input.depth = frame.depth;
    input.depthSmall = ruler.depthSmall.clone();
    input.cloudSmall = ruler.pointCloudSmallCopy;
    input.footprint = plain::footprintInput(ruler, ruler.depthSmall.size());

    input.cutDepth = ruler.depthSmall.clone();
    input.cutMask = cv::Mat::zeros(input.cutDepth.size(), CV_8UC1);
    plain::removeGround(input.cutDepth, ruler.filterWeight, input.offset);
    plain::cutAboveReferencePlane(input.cutDepth, input.cloudSmall, input.normal, input.offset, input.minHeight,
                                  input.cutMask);
    cv::Mat mask = input.cutMask.clone();
    plain::selectObjectComponent(input.cutDepth, input.minPixels, mask);
    cv::resize(mask, mask, kSize, 0.0, 0.0, cv::INTER_AREA);
    input.objectCloud = ruler.pointCloud.clone();
    input.objectCloud.setTo(cv::Scalar::all(0.0), mask < 255);
    input.surfaceCloud = input.objectCloud.clone();
    plain::filterSurfacePoints(input.surfaceCloud, input.normal, input.offset, mask);
    return input;
}

FitInput makeFitInput() {
    Quorvel ruler = makeRuler(parcelScene(kSize).camera, KIOSK);
    const Frame& frame = parcelFrames(kSize).empty;
    float t = 0.0F;
    ruler.getCameraFrame(frame.color, frame.depth);
    ruler.calibRef(t, 0.0F);
    FitInput input;
    input.fullCloud = ruler.calibFullCloud.clone();
    input.regionCloud = ruler.calibCloud.clone();
    input.fullMap = plain::computeNormalMap(input.fullCloud);
    input.regionMap = plain::computeNormalMap(input.regionCloud);
    input.bin = plain::dominantNormalBin(input.regionMap);
    input.minPoints = plain::halfRegionArea({ruler.calibPoints[0], ruler.calibPoints[1], ruler.calibPoints[2]});
    return input;
}

}  // namespace

const MeasureInput& measureInput() {
    static const MeasureInput input = makeMeasureInput();
    return input;
}

const FitInput& fitInput() {
    static const FitInput input = makeFitInput();
    return input;
}

}  // namespace quorvel::bench
