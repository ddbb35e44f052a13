// SPDX-License-Identifier: Apache-2.0
#include "simd/loop_variant.h"

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

namespace quorvel::test {

namespace {

using internal::LoopVariant;

/// Turns OpenCV's own optimisations on or off for as long as the value lives.
class OptimizedOpenCv {
public:
    explicit OptimizedOpenCv(bool on) : before_(cv::useOptimized()) { cv::setUseOptimized(on); }
    ~OptimizedOpenCv() { cv::setUseOptimized(before_); }
    OptimizedOpenCv(const OptimizedOpenCv&) = delete;
    OptimizedOpenCv& operator=(const OptimizedOpenCv&) = delete;

private:
    bool before_;
};

TEST(LoopVariants, DoNotFollowOpenCvsSwitch) {
    const OptimizedOpenCv on(true);
    const std::vector<LoopVariant> expected = internal::runnableLoopVariants();
    const OptimizedOpenCv off(false);
    EXPECT_EQ(internal::runnableLoopVariants(), expected);
}

TEST(LoopVariants, ThePlainestStandFirst) {
    const std::vector<LoopVariant> variants = internal::runnableLoopVariants();
    EXPECT_TRUE(std::is_sorted(variants.begin(), variants.end()));
    ASSERT_GE(variants.size(), 2U);
    EXPECT_EQ(variants.front(), LoopVariant::Plain);
}

#if defined(__linux__) && defined(QUORVEL_AVX2_LOOPS)

TEST(LoopVariants, TheWidestIsThereWhereTheSystemNamesIt) {
    std::ifstream file("/proc/cpuinfo");
    std::string word;
    bool listed = false;
    bool named = false;
    while (file >> word) {
        listed = listed || word == "flags";
        named = named || word == "avx2";
    }
    if (!listed) {
        GTEST_SKIP() << "the system does not say what its processor can do";
    }
    EXPECT_EQ(internal::runnableLoopVariants().back() == LoopVariant::Avx2, named);
}

#endif

}  // namespace

}  // namespace quorvel::test
