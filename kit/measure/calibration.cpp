// SPDX-License-Identifier: Apache-2.0
#include "kit/measure/calibration.h"

#include <cmath>
#include <filesystem>
#include <optional>
#include <system_error>

#include "calib/ransac_plane.h"
#include "files/text_file.h"
#include "files/whole_file.h"
#include "kit/account/text_format.h"
#include "kit/input/input_error.h"
#include "kit/input/input_file.h"
#include "kit/measure/stopwatch.h"
#include "kit/output/output_file.h"

namespace quorvel::kit {

namespace {

namespace fs = std::filesystem;

fs::path absolutePath(const std::string& path) {
    return fs::absolute(path).lexically_normal();
}

/// The parameter folder while a calibration may still fail.
class ParameterFolder {
public:
    /// Makes the folder when it is missing.
    /// \throws InputError when one of the calibration's files could not be written or replaced
    explicit ParameterFolder(const Ruler& ruler)
        : plane_(absolutePath(ruler.planeFile())),
          depth_(absolutePath(ruler.depthFile())),
          existed_(fs::exists(plane_.parent_path())) {
        std::error_code ignored;
        fs::create_directory(plane_.parent_path(), ignored);
        for (const fs::path& path : {plane_, depth_}) {
            requireOrdinaryFile(path.string());
            requireWritable(path);
        }
        old_ = internal::readTextFile(plane_.string());
    }

    const fs::path& plane() const { return plane_; }
    const fs::path& depth() const { return depth_; }

    /// Brings the folder back to what it was: without the new plane file, and gone when it was not there.
    /// \return one sentence that says what it holds now
    std::string leave() const {
        std::error_code ignored;
        if (!old_) {
            fs::remove(plane_, ignored);
        } else if (internal::readTextFile(plane_.string()) != old_) {
            internal::writeWholeFile(plane_.string(), *old_, internal::FileContent::Text);
        }
        const std::string folder = plane_.parent_path().string();
        if (!existed_) {
            fs::remove(plane_.parent_path(), ignored);  // only when it is empty
        }
        return old_ ? "The previous calibration in " + folder + " stays."
                    : "No calibration was left in " + folder + ".";
    }

private:
    fs::path plane_;
    fs::path depth_;
    bool existed_;
    std::optional<std::string> old_;
};

void setArea(Ruler& ruler, const std::optional<Region>& area) {
    if (area) {
        std::visit([&ruler](const auto& region) { ruler.setCalibrationArea(region); }, *area);
    }
}

void countPixels(const Ruler& ruler, double offset, CalibrationOutcome& outcome) {
    const cv::Rect inside = outcome.area & cv::Rect({0, 0}, ruler.cloud().size());
    const cv::Mat_<cv::Vec3f> points = ruler.cloud()(inside);
    for (const cv::Vec3f& point : points) {
        if (!isPresent(point)) {
            continue;
        }
        ++outcome.measuredPixels;
        const double fromFittedPlane = static_cast<double>(heightAbove(outcome.plane, point)) - offset;
        if (std::abs(fromFittedPlane) <= kNearPlane) {
            ++outcome.pixelsNearPlane;
        }
    }
}

std::string fitProblem(ProductType mode, const CalibrationOutcome& outcome) {
    const int areaPixels = outcome.area.width * outcome.area.height;
    std::string text = "no plane could be fitted: the calibration area " + rectangleText(outcome.area) + " has " +
                       std::to_string(outcome.measuredPixels) + " pixels with depth out of " +
                       std::to_string(areaPixels) + "; ";
    if (mode == GROUND_GROWING) {
        return text + "ground-growing needs half of them, " + std::to_string(areaPixels / 2) +
               ", on a surface in front of the camera. Clear the surface, or choose another --calibration-area.";
    }
    text += "kiosk needs more than " + std::to_string(internal::kLeastOriented) + " that face one way. ";
    if (areaPixels <= static_cast<int>(internal::kLeastOriented)) {
        return text + "Choose a larger --calibration-area.";
    }
    return text + "Clear and flatten the surface, or choose another --calibration-area.";
}

}  // namespace

CalibrationOutcome calibrate(Ruler& ruler, const FramePair& empty, const CalibrationSettings& settings) {
    const ParameterFolder folder(ruler);
    CalibrationOutcome outcome;
    outcome.planeFile = folder.plane().string();
    outcome.depthFile = folder.depth().string();

    setArea(ruler, settings.area);
    ruler.takeFrame(empty.color, empty.depth);
    // After a failed fit there is no plane, rather than that of an earlier calibration.
    ruler.forgetPlane();
    const auto shift = static_cast<float>(settings.offset);
    const Stopwatch watch;
    const internal::FitAccount fit = ruler.fitPlane(shift);
    outcome.plane = ruler.state().plane;
    outcome.area = ruler.state().calibrationArea;
    countPixels(ruler, settings.offset, outcome);
    const Plane fitted{outcome.plane.normal, outcome.plane.offset - shift};
    if (fit.outcome != internal::FitOutcome::Fitted || !isUsable(fitted) || !isUsable(outcome.plane)) {
        outcome.problem = fitProblem(ruler.state().mode, outcome) + " " + folder.leave();
        return outcome;
    }
    const internal::StoredCalibration stored = ruler.storeCalibration();
    outcome.milliseconds = watch.milliseconds();
    if (!stored.plane || !stored.depth) {
        throw InputError(folder.plane().parent_path().string() +
                         ": the new plane cannot be stored whole; check the space on the disk. " + folder.leave());
    }
    return outcome;
}

}  // namespace quorvel::kit
