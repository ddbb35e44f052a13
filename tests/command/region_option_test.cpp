// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "kit/input/input_error.h"
#include "kit/input/numbers.h"
#include "kit/input/region.h"

namespace quorvel::command {

using namespace kit;
namespace {

const cv::Size kPicture{640, 480};

std::string complaint(const std::string& text) {
    try {
        requireInside(parseRegion(text, "--area"), kPicture, "--area");
    } catch (const InputError& error) {
        return error.what();
    }
    return "accepted";
}

TEST(RegionOption, OneNumberIsARatio) {
    EXPECT_FLOAT_EQ(std::get<float>(parseRegion("0.35", "--area")), 0.35F);
    EXPECT_FLOAT_EQ(std::get<float>(parseRegion("1", "--area")), 1.0F);
}

TEST(RegionOption, FourNumbersAreARectangle) {
    EXPECT_EQ(std::get<cv::Rect>(parseRegion("160,120,320,240", "--area")), cv::Rect(160, 120, 320, 240));
}

TEST(RegionOption, RatioAndWholePictureAreInside) {
    EXPECT_EQ(complaint("1"), "accepted");
    EXPECT_EQ(complaint("0,0,640,480"), "accepted");
    EXPECT_EQ(complaint("639,479,1,1"), "accepted");
}

TEST(RegionOption, BadTextIsRefusedInOneLineThatNamesTheOption) {
    for (const char* text : {"", "x", "0", "-0.5", "1.01", "nan", "inf", "1,2", "1,2,3", "1,2,3,4,5", "1,2,3,",
                             "1,,3,4", "1.5,2,3,4", "0,0,0,10", "0,0,10,-1", "1 2 3 4", "0.5x", "1e99,0,1,1"}) {
        const std::string message = complaint(text);
        EXPECT_EQ(message.rfind("--area: ", 0), 0U) << "\"" << text << "\": " << message;
        EXPECT_EQ(message.find('\n'), std::string::npos) << text;
    }
}

TEST(RegionOption, RectangleThatLeavesThePictureIsRefused) {
    for (const char* text :
         {"-1,0,10,10", "0,-1,10,10", "600,0,41,10", "0,470,10,11", "0,0,641,480", "2147483647,0,2147483647,1"}) {
        EXPECT_NE(complaint(text).find("leaves the picture of 640 x 480"), std::string::npos)
            << text << ": " << complaint(text);
    }
}

TEST(Numbers, AreSeparatedByCommas) {
    EXPECT_EQ(parseNumbers("1,-2.5,3e2", "--x"), (std::vector<double>{1.0, -2.5, 300.0}));
}

}  // namespace
}  // namespace quorvel::command
