// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include <quorvel/quorvel.h>

#include "calib/reference_fit.h"
#include "files/capture_reader.h"
#include "geometry/camera.h"
#include "measure/account.h"
#include "measure/batch_account.h"
#include "ruler/calibration.h"
#include "ruler/measure_multiple.h"
#include "ruler/offline_capture.h"

namespace quorvel::internal {

/// What a ruler measures with.
struct RulerState {
    ProductType mode = KIOSK;
    Plane plane;
    cv::Rect calibrationArea;   ///< full-size pixels
    cv::Rect detectionArea;     ///< full-size pixels
    float filterWeight = 0.0F;  ///< fraction of the plane's distance
    float minHeight = 0.0F;     ///< mm
    int minPixels = 0;          ///< small-image pixels
};

/// A ruler as the faces of the library use it: class Quorvel with accounts in place of statuses, and with its lines
/// going where the face wants them. Every call does what the method of the class does, bit for bit.
class Ruler {
public:
    /// \param camera intrinsics, pixels
    /// \param picture frame size, pixels
    /// \param lines where the lines of the library go; null keeps it quiet. Must outlive the ruler and its copies
    Ruler(const Projection& camera, const cv::Size& picture, std::ostream* lines = nullptr);

    /// \return the version of the library, such as "3.6.4.1"
    static std::string version();

    // Settings

    void setDebugMode(bool on);
    /// Prints nothing from now on.
    void keepQuiet() { lines_ = nullptr; }
    /// Where the calibration's files go and come from, in place of ./param.
    void useParameterFolder(const std::string& folder);
    /// Puts the ruler into a mode. KIOSK loads the stored plane and chooses its detection area; GROUND_GROWING, which
    /// loads none in the class, loads it here too and keeps its area.
    void selectMode(ProductType mode);
    /// Loads the stored plane in any mode; mode and detection area stay.
    void loadStoredPlane();
    void setCalibrationArea(const cv::Rect& area);
    void setCalibrationArea(float ratio);
    void setDetectionArea(const cv::Rect& area);
    void setDetectionArea(float ratio);
    void setFilterWeight(float weight);
    /// \param millimetres width of the band that is kept clear at the left and right edge
    void setSideBand(int millimetres);
    void setMinHeight(float millimetres);
    /// Takes over the plane of another ruler for the same camera, with what follows from it.
    void usePlaneOf(const Ruler& other);
    /// There is no plane any more; `calibStatus` stays.
    void forgetPlane();

    // Frames and measurements

    /// \param color,depth CV_8UC3 and CV_16UC1 of the ruler's size; not the ruler's own images
    /// \return whether the frame was taken in
    bool takeFrame(const cv::Mat& color, const cv::Mat& depth);
    /// As takeFrame(), without the fit of GROUND_TRACKING: the frame is measured on the plane that is there.
    bool takeFrameOnPlane(const cv::Mat& color, const cv::Mat& depth);
    /// \return whether the whole batch was taken in
    bool takeBatch(const std::vector<cv::Mat>& colors, const std::vector<cv::Mat>& depths);
    /// \return nothing in a mode that measures nothing
    std::optional<MeasureAccount> measure(const AccountDetail& detail = {});
    BatchAccount measureBatch(const Sizes& tolerances, const BatchDetail& detail = {});

    // Calibration

    /// Fits the plane to the frame and adopts it; no file is written.
    /// \param shift added to the fitted distance, mm
    FitAccount fitPlane(float shift);
    /// Stores the plane and the frame that it was fitted to.
    StoredCalibration storeCalibration();
    /// Fits the plane of GROUND_TRACKING anew to the frame.
    FitAccount refitPlane();

    // Captures

    /// Writes state, last result and frame into a new folder under ./log.
    CaptureAccount saveCapture() const;
    /// A ruler in the state of a capture, ready for its frame; in a mode of the caller's choice, which a capture does
    /// not record. The reciprocals of the focal lengths are made whole again where the six decimals of the file are
    /// those of the focal lengths, so that a frame gives the bits that it gave.
    static Ruler fromCapture(const CaptureParameters& capture, ProductType mode);
    /// The offline start of the class: loads a capture folder and measures it once, with what the class can know.
    /// \param folder relative to the working directory
    static MeasureResult replayOffline(const std::string& folder);

    // What it holds

    RulerState state() const;
    const MeasureResult& result() const { return object_.result; }
    /// \return path of the calibration file, relative to the working directory
    const std::string& planeFile() const { return object_.calFilePath; }
    /// \return path of the depth image of the last calibration, relative to the working directory
    std::string depthFile() const { return object_.paramDir + "/depth.tif"; }
    const cv::Mat& depth() const { return object_.depthImage; }                ///< CV_16UC1, full size, mm
    const cv::Mat& depthSmall() const { return object_.depthSmall; }           ///< CV_16UC1, small, mm
    const cv::Mat& cloud() const { return object_.pointCloud; }                ///< CV_32FC3, full size, mm
    const cv::Mat& cloudSmall() const { return object_.pointCloudSmallCopy; }  ///< CV_32FC3, small, mm

private:
    Quorvel object_;
    std::ostream* lines_ = nullptr;
};

}  // namespace quorvel::internal
