// SPDX-License-Identifier: Apache-2.0
#include "ruler/measure_multiple.h"

#include <cstddef>
#include <iostream>
#include <utility>
#include <vector>

#include "image/kept_images.h"
#include "measure/distance_bands.h"
#include "measure/object_chain.h"
#include "ruler/batch_intake.h"
#include "ruler/measure_once.h"
#include "ruler/members.h"

namespace quorvel::internal {

namespace {

/// The buffers are public: a host may have changed them since the intake.
bool buffersComplete(const Quorvel& ruler) {
    const std::size_t count = ruler.depthSmallBuffer.size();
    return ruler.colorFrameBuffer.size() == count && ruler.depthFrameBuffer.size() == count &&
           ruler.pointCloudSmallCopyBuffer.size() == count && ruler.pointCloudBuffer.size() == count;
}

/// GROUND_GROWING and KIOSK_LOW_OBJECT measure no batches: every frame is passed over.
std::size_t framesToMeasure(const Quorvel& ruler) {
    const bool measures = ruler.productType == KIOSK || ruler.productType == GROUND_TRACKING;
    return measures ? ruler.depthSmallBuffer.size() : 0;
}

/// Measures one frame of the batch. Unlike a single shot it chooses no minimum height for a frame that does not fit,
/// and lowers no height in GROUND_TRACKING.
MeasureAccount measureBatchFrame(Quorvel& ruler, std::size_t i, const AccountDetail& detail) {
    if (!buffersComplete(ruler)) {
        return accountWithoutSearch(Outcome::NoFrame, measureSettings(ruler));
    }
    const FrameImages frame{ruler.depthSmallBuffer[i], ruler.pointCloudSmallCopyBuffer[i], ruler.pointCloudBuffer[i]};
    const cv::Size fullSize(ruler.imageWidth, ruler.imageHeight);
    if (ruler.productType == KIOSK && imagesFit(frame, fullSize)) {
        ruler.minObjectHeight = kioskMinHeight(ruler.refPlaneOffset, ruler.minObjectHeight);
    }
    return measureFrame(frame, fullSize, measureSettings(ruler), detail);
}

std::vector<MeasureAccount> measureFrames(Quorvel& ruler, const BatchDetail& detail, std::ostream* lines) {
    std::vector<MeasureAccount> frames;
    for (std::size_t i = 0; i < framesToMeasure(ruler); ++i) {
        frames.push_back(measureBatchFrame(ruler, i, detail.frame));
        printSearch(frames.back(), ruler.debugMode, lines);
        if (frames.back().outcome == Outcome::NoFrame && ruler.debugMode) {
            printPlaneRefusal(referencePlane(ruler), lines);
        }
        if (hasRecord(frames.back())) {
            continue;
        }
        if (!detail.everyFrame) {
            break;
        }
        // The batch has failed; what is measured from here on is for the account alone.
        lines = nullptr;
    }
    return frames;
}

/// The mean sizes, with the corners and flags of the last frame, which becomes the current one.
void keepMean(const BatchAccount& account, Quorvel& ruler) {
    storeRecord(account.frames.back(), ruler.result);
    ruler.result.length = account.mean.length;
    ruler.result.width = account.mean.width;
    ruler.result.height = account.mean.height;
    // Until now the two were the library's own copies of the first frame.
    KeptImages::instance().giveBack(std::move(ruler.colorImage));
    KeptImages::instance().giveBack(std::move(ruler.depthImage));
    ruler.colorImage = ruler.colorFrameBuffer.back();
    ruler.depthImage = ruler.depthFrameBuffer.back();
}

void printVerdict(BatchOutcome outcome, bool debugMode, std::ostream* lines) {
    if (lines == nullptr) {
        return;
    }
    switch (outcome) {
        case BatchOutcome::NoPlane:
            if (debugMode) {
                *lines << "No calibration data." << std::endl;
            }
            break;
        case BatchOutcome::NoFrames:
            *lines << "ERROR !! result is empty." << std::endl;
            break;
        case BatchOutcome::FrameWithoutSizes:
        case BatchOutcome::FramesDisagree:
            *lines << "ERROR !! The result did not reach the threshold" << std::endl;
            break;
        case BatchOutcome::FrameNotMeasured:
        case BatchOutcome::Agreed:
            break;
    }
}

}  // namespace

BatchAccount measureBatch(Quorvel& ruler, const Sizes& tolerances, const BatchDetail& detail, std::ostream* lines) {
    resetResult(ruler.result);
    BatchAccount account;
    if (framesToMeasure(ruler) > 0 && ruler.productType == KIOSK && !ruler.calibStatus) {
        // The one exit that keeps the batch: a host that loads its plane now can measure it.
        account.outcome = BatchOutcome::NoPlane;
        account.tolerances = tolerances;
    } else {
        account = judgeBatch(measureFrames(ruler, detail, lines), tolerances);
        if (account.outcome == BatchOutcome::Agreed) {
            keepMean(account, ruler);
        }
        emptyBatch(ruler);
    }
    printVerdict(account.outcome, ruler.debugMode, lines);
    return account;
}

}  // namespace quorvel::internal

int Quorvel::measureMultiple(float lengthTolerance, float widthTolerance, float heightTolerance) {
    using namespace quorvel::internal;
    const BatchAccount account =
        measureBatch(*this, {lengthTolerance, widthTolerance, heightTolerance}, {}, &std::cout);
    return account.outcome == BatchOutcome::Agreed ? 0 : 1;
}
