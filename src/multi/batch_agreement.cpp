// SPDX-License-Identifier: Apache-2.0
#include "multi/batch_agreement.h"

#include <cmath>
#include <cstddef>

namespace quorvel::internal {

namespace {

bool isUsable(const MeasureResult& record) {
    return record.inView && !record.corners.empty();
}

/// A difference equal to its tolerance passes.
bool agree(const MeasureResult& a, const MeasureResult& b, const BatchTolerances& tolerances) {
    return !(std::fabs(a.height - b.height) > tolerances.height) &&
           !(std::fabs(a.width - b.width) > tolerances.width) && !(std::fabs(a.length - b.length) > tolerances.length);
}

}  // namespace

bool recordsAgree(const std::vector<MeasureResult>& records, const BatchTolerances& tolerances) {
    for (std::size_t k = 0; k < records.size(); ++k) {
        if (!isUsable(records[k])) {
            return false;
        }
        for (std::size_t j = k + 1; j < records.size(); ++j) {
            if (!agree(records[k], records[j], tolerances)) {
                return false;
            }
        }
    }
    return true;
}

MeasureResult meanRecord(const std::vector<MeasureResult>& records) {
    MeasureResult mean = records.back();
    mean.length = 0.0F;
    mean.width = 0.0F;
    mean.height = 0.0F;
    for (const MeasureResult& record : records) {
        mean.length += record.length;
        mean.width += record.width;
        mean.height += record.height;
    }
    const auto count = static_cast<float>(records.size());
    mean.length /= count;
    mean.width /= count;
    mean.height /= count;
    return mean;
}

}  // namespace quorvel::internal
