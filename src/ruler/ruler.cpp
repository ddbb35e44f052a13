// SPDX-License-Identifier: Apache-2.0
#include "ruler/ruler.h"

#include <cmath>

#include "files/platform.h"
#include "ruler/batch_intake.h"
#include "ruler/construction.h"
#include "ruler/frame_intake.h"
#include "ruler/measure_once.h"
#include "ruler/members.h"
#include "ruler/presets.h"
#include "ruler/settings.h"

namespace quorvel::internal {

namespace {

/// A capture keeps 1 / focal length with six decimals, three or four digits. When they are those of the focal length,
/// which is kept whole, the full value is the one that was measured with.
float wholeReciprocal(float kept, float focalLength) {
    constexpr double kHalfDigit = 0.5e-6;
    constexpr double kFloatRounding = 1e-9;
    const double whole = 1.0 / static_cast<double>(focalLength);
    return std::abs(static_cast<double>(kept) - whole) <= kHalfDigit + kFloatRounding ? static_cast<float>(whole)
                                                                                      : kept;
}

/// The small-image intrinsics follow from the full-size ones. For the usual factor 4 these are the bits that a ruler
/// computes at its start.
void scaleIntrinsics(Quorvel& ruler) {
    const auto scale = static_cast<float>(ruler.downScale);
    ruler.fxSmall = ruler.fx / scale;
    ruler.fySmall = ruler.fy / scale;
    ruler.cxSmall = ruler.cx / scale;
    ruler.cySmall = ruler.cy / scale;
    ruler.invFxSmall = ruler.invFx * scale;
    ruler.invFySmall = ruler.invFy * scale;
}

}  // namespace

Ruler::Ruler(const Projection& camera, const cv::Size& picture, std::ostream* lines)
    : object_(camera.fx, camera.fy, camera.cx, camera.cy, picture.width, picture.height, false, ""), lines_(lines) {}

std::string Ruler::version() {
    return QUORVEL_VERSION;
}

void Ruler::setDebugMode(bool on) {
    object_.debugMode = on;
}

void Ruler::useParameterFolder(const std::string& folder) {
    object_.paramDir = folder;
    object_.calFilePath = folder + "/cal.txt";
}

void Ruler::selectMode(ProductType mode) {
    if (mode == GROUND_GROWING) {
        const cv::Rect area = object_.effectiveRegion;
        internal::selectMode(object_, KIOSK, lines_);
        object_.effectiveRegion = area;
    }
    internal::selectMode(object_, mode, lines_);
}

void Ruler::loadStoredPlane() {
    const auto mode = static_cast<ProductType>(object_.productType);
    const cv::Rect area = object_.effectiveRegion;
    internal::selectMode(object_, KIOSK, lines_);
    internal::selectMode(object_, mode, lines_);
    object_.effectiveRegion = area;
}

void Ruler::setCalibrationArea(const cv::Rect& area) {
    object_.calibrationRoI = area;
}

void Ruler::setCalibrationArea(float ratio) {
    object_.calibrationRoI = centeredRegion(ratio, object_.imageWidth, object_.imageHeight);
}

void Ruler::setDetectionArea(const cv::Rect& area) {
    chooseDetectionArea(object_, area, lines_);
}

void Ruler::setDetectionArea(float ratio) {
    object_.effectiveRegion = centeredRegion(ratio, object_.imageWidth, object_.imageHeight);
}

void Ruler::setFilterWeight(float weight) {
    chooseFilterWeight(object_, weight, lines_);
}

void Ruler::setSideBand(int millimetres) {
    object_.setCameraType(true, millimetres);
}

void Ruler::setMinHeight(float millimetres) {
    object_.minObjectHeight = millimetres;
}

void Ruler::usePlaneOf(const Ruler& other) {
    object_.refPlaneNormal = other.object_.refPlaneNormal;
    object_.refPlaneOffset = other.object_.refPlaneOffset;
    object_.minObjectPixels = other.object_.minObjectPixels;
}

void Ruler::forgetPlane() {
    object_.refPlaneNormal = {0.0F, 0.0F, 0.0F};
    object_.refPlaneOffset = 0.0F;
}

bool Ruler::takeFrame(const cv::Mat& color, const cv::Mat& depth) {
    return internal::takeFrame(object_, color, depth, nullptr, lines_);
}

bool Ruler::takeFrameOnPlane(const cv::Mat& color, const cv::Mat& depth) {
    const int mode = object_.productType;
    object_.productType = KIOSK;
    const bool taken = takeFrame(color, depth);
    object_.productType = mode;
    return taken;
}

bool Ruler::takeBatch(const std::vector<cv::Mat>& colors, const std::vector<cv::Mat>& depths) {
    return internal::takeBatch(object_, colors, depths, lines_);
}

std::optional<MeasureAccount> Ruler::measure(const AccountDetail& detail) {
    return measureSingleShot(object_, detail, lines_);
}

BatchAccount Ruler::measureBatch(const Sizes& tolerances, const BatchDetail& detail) {
    return internal::measureBatch(object_, tolerances, detail, lines_);
}

FitAccount Ruler::fitPlane(float shift) {
    FitAccount account = fitReferencePlane(object_, shift, lines_);
    if (account.outcome != FitOutcome::NoFrame) {
        completeCalibration(object_);
    }
    return account;
}

StoredCalibration Ruler::storeCalibration() {
    return internal::storeCalibration(object_);
}

FitAccount Ruler::refitPlane() {
    return internal::refitPlane(object_, lines_);
}

CaptureAccount Ruler::saveCapture() const {
    return internal::saveCapture(object_);
}

Ruler Ruler::fromCapture(const CaptureParameters& capture, ProductType mode) {
    Ruler ruler({capture.cx, capture.cy, capture.fx, capture.fy}, {capture.imageWidth, capture.imageHeight});
    Quorvel& object = ruler.object_;
    if (mode == KIOSK) {
        object.effectiveRegion = kioskRegion(object);
    }
    object.productType = mode;
    object.downScale = capture.downScale;
    object.minObjectHeight = capture.minObjectHeight;
    object.invFx = wholeReciprocal(capture.invFx, capture.fx);
    object.invFy = wholeReciprocal(capture.invFy, capture.fy);
    scaleIntrinsics(object);
    adoptPlane(object, capture.plane);
    object.calibStatus = true;
    return ruler;
}

MeasureResult Ruler::replayOffline(const std::string& folder) {
    // Without a folder the constructor leaves the ruler as the offline start wants it.
    Quorvel object(0.0F, 0.0F, 0.0F, 0.0F, 0, 0, true, "");
    object.offlineDir = folder;
    if (isFolder(folder)) {
        startOffline(object, nullptr);
    }
    return object.result;
}

RulerState Ruler::state() const {
    return {static_cast<ProductType>(object_.productType),
            referencePlane(object_),
            object_.calibrationRoI,
            object_.effectiveRegion,
            object_.filterWeight,
            object_.minObjectHeight,
            object_.minObjectPixels};
}

}  // namespace quorvel::internal
