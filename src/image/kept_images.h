// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <atomic>
#include <cstddef>

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// Storage of images that nobody uses at the moment, for the next batch of any ruler of the process. A batch's buffers
/// are emptied when it has been measured; without this their memory would go back to the system and be mapped and
/// cleared anew for every batch, which takes longer than the batch on some machines.
///
/// At most kMostBytes and kMostImages stay; what comes later takes the place of what was there, so that the storage of
/// a camera that is gone goes too. Threads take turns without locks, as in IdleScratch.
class KeptImages {
public:
    /// Eight frames of 1920 x 1080, or 56 of 640 x 480, with all that a batch derives from them.
    static constexpr std::size_t kMostBytes = std::size_t{256} << 20U;
    /// A frame of a batch has five.
    static constexpr std::size_t kMostImages = 320;

    /// The process' own.
    static KeptImages& instance();

    KeptImages() = default;
    ~KeptImages();
    KeptImages(const KeptImages&) = delete;
    KeptImages& operator=(const KeptImages&) = delete;

    /// \return an image of this size and type, continuous, that nobody else holds; its pixels hold anything and have to
    ///         be overwritten, all of them
    cv::Mat take(const cv::Size& size, int type);

    /// Keeps an image's storage. It is let go as always when somebody else holds its pixels, or when it is not storage
    /// of OpenCV's own, whole and continuous.
    /// \param image empty afterwards
    void giveBack(cv::Mat&& image);

    /// \return bytes of the pixels kept, never more than kMostBytes once a call has returned
    std::size_t bytes() const { return bytes_.load(std::memory_order_relaxed); }

private:
    using Slot = std::atomic<cv::Mat*>;

    void drop(cv::Mat* image);
    bool makeRoom(std::size_t bytes);
    Slot& nextInTurn();

    std::array<Slot, kMostImages> slots_{};
    std::atomic<std::size_t> bytes_{0};
    std::atomic<std::size_t> turn_{0};  ///< whose storage has to make room next
};

/// Deep copy of an image of the host into storage that nobody else holds: the copy's own, or what a batch has left.
/// \param from of any form; the third image of a frame and the images of an empty one are not looked at
void keepCopy(const cv::Mat& from, cv::Mat& to);

}  // namespace quorvel::internal
