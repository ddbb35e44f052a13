// SPDX-License-Identifier: Apache-2.0
#include "measure/object_chain.h"

#include <chrono>

#include "image/image_form.h"
#include "image/scratch.h"
#include "measure/ground_removal.h"
#include "measure/height_cut.h"
#include "measure/object_window.h"
#include "measure/surface_filter.h"

namespace quorvel::internal {

namespace {

/// Notes the time since the last stage; does nothing when `times` is null.
class StageWatch {
public:
    /// \param times filled in; may be null
    explicit StageWatch(StageTimes* times) : times_(times) {
        if (times_ != nullptr) {
            last_ = Clock::now();
        }
    }

    /// \param stage that has just ended
    void lap(double StageTimes::*stage) {
        if (times_ != nullptr) {
            const Clock::time_point now = Clock::now();
            times_->*stage = std::chrono::duration<double, std::milli>(now - last_).count();
            last_ = now;
        }
    }

private:
    using Clock = std::chrono::steady_clock;

    StageTimes* times_;
    Clock::time_point last_;
};

struct MaskScratch {
    cv::Mat mask;
};

/// Cuts at the minimum height and chooses the object's region. A frame without a plane is searched too: whether there
/// is a region decides what a single shot prints.
/// \param mask CV_8UC1, small; left with the object's pixels
void findObject(const FrameImages& frame, const MeasureSettings& settings, bool withSizes, cv::Mat& mask,
                StageWatch& watch, MeasureAccount& account) {
    mask.create(frame.depthSmall.size(), CV_8UC1);
    mask.setTo(0);
    account.raisedPixels = cutAboveReferencePlane(frame.depthSmall, frame.cloudSmall, settings.plane.normal,
                                                  settings.plane.offset, settings.minHeight, mask)
                               .value_or(0);
    watch.lap(&StageTimes::heightCut);
    account.component = selectObjectComponent(frame.depthSmall, settings.minPixels, mask, withSizes);
    watch.lap(&StageTimes::component);
}

/// Why a search ended before the box; nothing when it goes on.
std::optional<Outcome> searchProblem(const MeasureAccount& account) {
    if (!hasPlane(account.plane.normal)) {
        return Outcome::NoPlane;
    }
    if (!planeProblem(account.plane).empty()) {
        return Outcome::PlaneUnusable;
    }
    if (account.component.chosen) {
        return std::nullopt;
    }
    if (account.component.candidates > 0) {
        return Outcome::RegionTooSmall;
    }
    return account.raisedPixels > 0 ? Outcome::RemovedAsGround : Outcome::NothingHighEnough;
}

Footprint footprintOf(const cv::Mat& object, const MeasureAccount& account, const MeasureSettings& settings) {
    const FootprintSettings footprint{settings.plane, settings.camera, account.picture, settings.sideBand,
                                      settings.detectionArea};
    return settings.variant == FootprintVariant::General ? measureFootprint(object, footprint)
                                                         : measureFootprintWithoutMargin(object, footprint);
}

Outcome outcomeOf(const Footprint& footprint) {
    if (!footprint.box) {
        return Outcome::TooFewSurfacePoints;
    }
    if (!footprint.meetsArea) {
        return Outcome::MissesArea;
    }
    return footprint.inView ? Outcome::Measured : Outcome::OutOfView;
}

/// The stages from the height cut on; those before it have had their lap.
void measureStages(const FrameImages& frame, const MeasureSettings& settings, bool withSizes, StageWatch& watch,
                   MeasureAccount& account) {
    account.searched = true;
    account.picture = pictureSize(frame.depthSmall.size(), settings.downScale);
    const Borrowed<MaskScratch> scratch;
    findObject(frame, settings, withSizes, scratch->mask, watch, account);
    const std::optional<Outcome> problem = searchProblem(account);
    if (problem) {
        account.outcome = *problem;
        return;
    }
    // The remaining stages work only on the object's window, because the rest of the cloud has no points any more.
    cv::Mat object = frame.cloud(isolateObject(scratch->mask, frame.cloud));
    watch.lap(&StageTimes::window);
    keepSurfacePoints(object, settings.plane.normal, settings.plane.offset);
    watch.lap(&StageTimes::surfaceFilter);
    account.footprint = footprintOf(object, account, settings);
    account.outcome = outcomeOf(account.footprint);
    watch.lap(&StageTimes::footprint);
}

/// \param begin the first stage, with the watch to lap
template <typename Begin>
MeasureAccount measure(const FrameImages& frame, const MeasureSettings& settings, const AccountDetail& detail,
                       const Begin& begin) {
    MeasureAccount account = accountWithoutSearch(Outcome::NoFrame, settings);
    StageTimes times;
    StageWatch watch(detail.times ? &times : nullptr);
    begin(watch);
    measureStages(frame, settings, detail.regions, watch, account);
    if (detail.times) {
        account.times = times;
    }
    if (detail.survey) {
        account.survey = surveyHeights(frame.cloudSmall, settings.plane, account.groundDepth);
    }
    return account;
}

}  // namespace

bool imagesFit(const FrameImages& frame, const cv::Size& fullSize) {
    const cv::Mat& small = frame.depthSmall;
    return isFrameSize(small.cols, small.rows) && isFrameSize(fullSize.width, fullSize.height) &&
           hasForm(small, {small.cols, small.rows}, CV_16UC1) &&
           hasForm(frame.cloudSmall, {small.cols, small.rows}, CV_32FC3) && hasForm(frame.cloud, fullSize, CV_32FC3);
}

MeasureAccount accountWithoutSearch(Outcome outcome, const MeasureSettings& settings) {
    MeasureAccount account;
    account.outcome = outcome;
    account.plane = settings.plane;
    account.groundDepth = groundDepth(settings.filterWeight, settings.plane.offset);
    account.filterWeight = settings.filterWeight;
    account.minHeight = settings.minHeight;
    account.minPixels = settings.minPixels;
    account.detectionArea = settings.detectionArea;
    return account;
}

MeasureAccount measureFrame(const FrameImages& frame, const cv::Size& fullSize, const MeasureSettings& settings,
                            const AccountDetail& detail) {
    if (!imagesFit(frame, fullSize)) {
        return accountWithoutSearch(Outcome::NoFrame, settings);
    }
    return measure(frame, settings, detail, [&](StageWatch& watch) {
        removeGround(frame.depthSmall, settings.filterWeight, settings.plane.offset);
        watch.lap(&StageTimes::groundRemoval);
    });
}

MeasureAccount measureObject(const FrameImages& frame, const MeasureSettings& settings, const AccountDetail& detail) {
    return measure(frame, settings, detail, [](StageWatch& /*watch*/) {});
}

}  // namespace quorvel::internal
