// SPDX-License-Identifier: Apache-2.0
#include <cstddef>
#include <iostream>
#include <utility>
#include <vector>

#include <quorvel/quorvel.h>

#include "measure/ground_removal.h"
#include "measure/object_chain.h"
#include "multi/batch_agreement.h"
#include "ruler/distance_bands.h"
#include "ruler/measure_settings.h"
#include "ruler/members.h"

using namespace quorvel::internal;

namespace {

/// The buffers are public: a host may have changed them since the intake.
bool buffersComplete(const Quorvel& ruler) {
    const std::size_t count = ruler.depthSmallBuffer.size();
    return ruler.colorFrameBuffer.size() == count && ruler.depthFrameBuffer.size() == count &&
           ruler.pointCloudSmallCopyBuffer.size() == count && ruler.pointCloudBuffer.size() == count;
}

/// Measures one frame of the batch, which is in a mode that measures batches. Unlike a single shot it removes the
/// ground before it chooses the minimum height, and lowers no height in GROUND_TRACKING.
/// \return 0, or 1 without an object or with buffers that do not fit together
int measureBatchFrame(Quorvel& ruler, std::size_t i, MeasureResult& record) {
    if (!buffersComplete(ruler)) {
        return 1;
    }
    const FrameImages frame{ruler.depthSmallBuffer[i], ruler.pointCloudSmallCopyBuffer[i], ruler.pointCloudBuffer[i]};
    if (!imagesFit(frame, {ruler.imageWidth, ruler.imageHeight})) {
        return 1;
    }
    removeGround(frame.depthSmall, ruler.filterWeight, ruler.refPlaneOffset);
    if (ruler.productType == KIOSK) {
        ruler.minObjectHeight = kioskMinHeight(ruler.refPlaneOffset, ruler.minObjectHeight);
    }
    return measureObject(frame, measureSettings(ruler), record);
}

}  // namespace

int Quorvel::measureMultiple(float lengthTolerance, float widthTolerance, float heightTolerance) {
    resetResult(result);
    std::vector<MeasureResult> records;
    // GROUND_GROWING and KIOSK_LOW_OBJECT measure no batches: every frame is passed over.
    const bool measures = productType == KIOSK || productType == GROUND_TRACKING;
    const std::size_t frames = measures ? depthSmallBuffer.size() : 0;
    if (frames > 0 && productType == KIOSK && !calibStatus) {
        // The one exit that keeps the batch: a host that loads its plane now can measure it.
        if (debugMode) {
            std::cout << "No calibration data." << std::endl;
        }
        return 1;
    }
    for (std::size_t i = 0; i < frames; ++i) {
        MeasureResult record;
        if (measureBatchFrame(*this, i, record) != 0) {
            printPlaneRefusal(*this);
            ClearBuffer();
            return 1;
        }
        records.push_back(std::move(record));
    }
    if (records.empty()) {
        std::cout << "ERROR !! result is empty." << std::endl;
        ClearBuffer();
        return 1;
    }
    if (!recordsAgree(records, {lengthTolerance, widthTolerance, heightTolerance})) {
        std::cout << "ERROR !! The result did not reach the threshold" << std::endl;
        ClearBuffer();
        return 1;
    }
    result = meanRecord(records);
    colorImage = colorFrameBuffer.back();
    depthImage = depthFrameBuffer.back();
    ClearBuffer();
    return 0;
}
