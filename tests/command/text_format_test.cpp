// SPDX-License-Identifier: Apache-2.0
#include "kit/account/text_format.h"

#include <gtest/gtest.h>

namespace quorvel::command {

using namespace kit;
namespace {

TEST(TextFormat, FixedDecimals) {
    EXPECT_EQ(fixed(241.349, 1), "241.3");
    EXPECT_EQ(fixed(-7.25, 0), "-7");
    EXPECT_EQ(fixed(-0.04, 1), "0.0") << "no negative zero";
    EXPECT_EQ(fixed(1e300, 0).size(), 301U);
}

TEST(TextFormat, RectangleAndVector) {
    EXPECT_EQ(rectangleText({270, 190, 100, 90}), "100 x 90 from (270, 190)");
    EXPECT_EQ(vectorText({0.0F, -0.25F, 1.0F}), "(0.0000, -0.2500, 1.0000)");
}

TEST(TextFormat, OneLineJoinsBrokenText) {
    EXPECT_EQ(oneLine("  a\n  b\tc \r\n"), "a b c");
    EXPECT_EQ(oneLine(""), "");
}

TEST(TextFormat, TableAlignsValues) {
    EXPECT_EQ(tableText({{"a", "1"}, {"", ""}, {"long", "2"}}), "  a      1\n\n  long   2\n");
}

}  // namespace
}  // namespace quorvel::command
