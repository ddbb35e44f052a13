// SPDX-License-Identifier: Apache-2.0
#include "image/kept_images.h"

#include <memory>
#include <utility>

#include "image/image_form.h"

namespace quorvel::internal {

namespace {

std::size_t bytesOf(const cv::Mat& image) {
    return image.total() * image.elemSize();
}

bool isOwnStorage(const cv::Mat& image) {
    return isPicture(image) && image.isContinuous() && !image.isSubmatrix() && isExclusive(image);
}

/// \return whether the image stands in the slot now
bool put(std::atomic<cv::Mat*>& slot, cv::Mat* image) {
    cv::Mat* empty = nullptr;
    return slot.compare_exchange_strong(empty, image, std::memory_order_release, std::memory_order_relaxed);
}

/// Looks before it takes: an exchange is slow, and most slots are empty.
std::unique_ptr<cv::Mat> takeFrom(std::atomic<cv::Mat*>& slot) {
    const bool empty = slot.load(std::memory_order_relaxed) == nullptr;
    return std::unique_ptr<cv::Mat>(empty ? nullptr : slot.exchange(nullptr, std::memory_order_acquire));
}

}  // namespace

KeptImages& KeptImages::instance() {
    static KeptImages kept;
    return kept;
}

KeptImages::~KeptImages() {
    for (Slot& slot : slots_) {
        const std::unique_ptr<cv::Mat> owned = takeFrom(slot);
    }
}

cv::Mat KeptImages::take(const cv::Size& size, int type) {
    for (Slot& slot : slots_) {
        std::unique_ptr<cv::Mat> found = takeFrom(slot);
        if (!found) {
            continue;
        }
        if (hasForm(*found, size, type)) {
            bytes_ -= bytesOf(*found);
            return std::move(*found);
        }
        if (put(slot, found.get())) {
            static_cast<void>(found.release());  // the slot owns it again
        } else {
            drop(found.release());
        }
    }
    return {size, type};
}

void KeptImages::giveBack(cv::Mat&& image) {
    auto kept = std::make_unique<cv::Mat>(std::move(image));
    if (!isOwnStorage(*kept) || !makeRoom(bytesOf(*kept))) {
        return;
    }
    for (Slot& slot : slots_) {
        if (slot.load(std::memory_order_relaxed) == nullptr && put(slot, kept.get())) {
            static_cast<void>(kept.release());  // the slot owns it now
            return;
        }
    }
    drop(nextInTurn().exchange(kept.release(), std::memory_order_acq_rel));
}

/// Frees an image that was counted.
void KeptImages::drop(cv::Mat* image) {
    const std::unique_ptr<cv::Mat> owned(image);
    if (owned) {
        bytes_ -= bytesOf(*owned);
    }
}

/// Counts these bytes in before they come, so that threads that come together stay within the bound too.
/// \return whether there is room; nothing is counted otherwise
bool KeptImages::makeRoom(std::size_t bytes) {
    if (bytes > kMostBytes) {
        return false;
    }
    bytes_ += bytes;
    for (std::size_t i = 0; i < slots_.size() && this->bytes() > kMostBytes; ++i) {
        drop(takeFrom(nextInTurn()).release());
    }
    const bool fits = this->bytes() <= kMostBytes;
    if (!fits) {
        bytes_ -= bytes;
    }
    return fits;
}

KeptImages::Slot& KeptImages::nextInTurn() {
    return slots_[turn_.fetch_add(1, std::memory_order_relaxed) % slots_.size()];
}

void keepCopy(const cv::Mat& from, cv::Mat& to) {
    if (!isPicture(from)) {
        to = from.clone();
        return;
    }
    if (!isExclusive(to)) {
        to = KeptImages::instance().take(from.size(), from.type());
    }
    copyExclusive(from, to);
}

}  // namespace quorvel::internal
