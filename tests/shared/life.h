// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include <quorvel/quorvel.h>

#include "library/depth_scene.h"
#include "numbers/member_record.h"
#include "support/random.h"

namespace quorvel::test {

/// What a host sees of one scene.
struct Views {
    DepthScene scene;
    cv::Mat color;                  ///< CV_8UC3
    cv::Mat empty;                  ///< CV_16UC1, mm, the surface alone
    std::vector<cv::Mat> occupied;  ///< CV_16UC1, mm, at least one
};

/// \return small scenes, and scenes large enough for the fit on every frame
std::vector<Views> drawViews();

/// One ruler that is used in every order, through every public call; what each call does is recorded. The current
/// folder is its own and empty at the start.
class Life {
public:
    /// \param views,record outlive this object
    Life(std::uint32_t seed, const std::vector<Views>& views, MemberRecord& record);

    void live();
    /// \return how often a measurement has found a box
    int boxes() const { return boxes_; }

private:
    void start();
    void step();
    void calibrate();
    void takeFrame();
    void takeProperFrame();
    void takeBatch();
    void measure();
    void measureBatch();
    void useMode();
    void useRegions();
    void useSettings();
    void ask();
    void useParameterFile();
    void saveCapture();
    void replayCapture();
    void copyRuler();
    void writeMember();

    const cv::Mat& anyDepth();
    void recordFiles();
    void done(const std::string& call, int returned);

    Draws draws_;
    MemberRecord& record_;
    const Views& views_;
    Quorvel ruler_;
    std::size_t captures_ = 0;
    int boxes_ = 0;
};

}  // namespace quorvel::test
