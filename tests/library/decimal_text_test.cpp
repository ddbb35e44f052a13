// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "files/text_file.h"
#include "support/random.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

using internal::DecimalReader;
using internal::sixDecimals;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kUntouched = -77.0F;

std::string printed(float value) {
    std::array<char, 80> text{};
    const int length = std::snprintf(text.data(), text.size(), "%f", static_cast<double>(value));
    return {text.data(), static_cast<std::size_t>(length)};
}

/// A float of any sign, exponent and mantissa, infinities and NaN included.
float anyFloat(Draws& random) {
    const auto high = static_cast<std::uint32_t>(random.below(65536));
    const std::uint32_t bits = high << 16U | static_cast<std::uint32_t>(random.below(65536));
    float value = 0.0F;
    std::memcpy(&value, &bits, sizeof(value));
    return value;
}

TEST(SixDecimals, WritesSixDigitsAfterThePoint) {
    EXPECT_EQ(sixDecimals(0.0F), "0.000000");
    EXPECT_EQ(sixDecimals(1.0F), "1.000000");
    EXPECT_EQ(sixDecimals(1000.5F), "1000.500000");
    EXPECT_EQ(sixDecimals(-0.25F), "-0.250000");
    EXPECT_EQ(sixDecimals(0.1F), "0.100000");
    EXPECT_EQ(sixDecimals(16777216.0F), "16777216.000000");
}

TEST(SixDecimals, KeepsTheMinusOfNegativeZero) {
    EXPECT_EQ(sixDecimals(-0.0F), "-0.000000");
    EXPECT_EQ(sixDecimals(-1e-9F), "-0.000000");
}

TEST(SixDecimals, RoundsHalvesToEven) {
    // 2^-7 = 0.0078125 lies between 0.007812 and 0.007813, 3 * 2^-7 = 0.0234375 between 0.023437 and 0.023438.
    EXPECT_EQ(sixDecimals(0.0078125F), "0.007812");
    EXPECT_EQ(sixDecimals(0.0234375F), "0.023438");
}

TEST(SixDecimals, WritesTheLargestFloatInFull) {
    EXPECT_EQ(sixDecimals(-std::numeric_limits<float>::max()), "-340282346638528859811704183484516925440.000000");
}

TEST(SixDecimals, NamesWhatIsNoNumber) {
    EXPECT_EQ(sixDecimals(kInfinity), "inf");
    EXPECT_EQ(sixDecimals(-kInfinity), "-inf");
    EXPECT_EQ(sixDecimals(std::numeric_limits<float>::quiet_NaN()), "nan");
}

TEST(SixDecimals, AgreesWithPrintfForAnyFloat) {
    Draws random(21);
    for (int i = 0; i < 5000; ++i) {
        const float value = random.chance(50) ? anyFloat(random) : random.real(-2000.0F, 2000.0F);
        if (std::isnan(value)) {
            // Whether the sign of it is shown differs between the C libraries.
            EXPECT_NE(sixDecimals(value).find("nan"), std::string::npos);
        } else {
            EXPECT_EQ(sixDecimals(value), printed(value));
        }
    }
}

TEST(DecimalReader, ReadsOneNumberAfterTheOther) {
    DecimalReader reader("0.25 -0.5\n\t1e2 +3");
    float value = 0.0F;
    for (const float expected : {0.25F, -0.5F, 100.0F, 3.0F}) {
        ASSERT_TRUE(reader.read(value)) << "before " << expected;
        EXPECT_EQ(value, expected);
    }
    EXPECT_FALSE(reader.read(value)) << "the text is used up";
    EXPECT_EQ(value, 3.0F);
}

TEST(DecimalReader, LeavesTheValueWhenNoNumberFollows) {
    for (const char* text : {"", " \n", "abc", "-", "+", ".", "+-1", "-+1", "++1", "- 1", ",5"}) {
        DecimalReader reader(text);
        float value = kUntouched;
        EXPECT_FALSE(reader.read(value)) << '"' << text << '"';
        EXPECT_EQ(value, kUntouched) << '"' << text << '"';
        DecimalReader whole(text);
        int number = -77;
        EXPECT_FALSE(whole.read(number)) << '"' << text << '"';
        EXPECT_EQ(number, -77) << '"' << text << '"';
    }
}

TEST(DecimalReader, StopsAtADecimalComma) {
    DecimalReader reader("1,5");
    float value = kUntouched;
    EXPECT_TRUE(reader.read(value));
    EXPECT_EQ(value, 1.0F);
    value = kUntouched;
    EXPECT_FALSE(reader.read(value));
    EXPECT_EQ(value, kUntouched);
}

TEST(DecimalReader, ReadsWholeNumbers) {
    DecimalReader reader(" 640\n+48 -7 12.5");
    int value = 0;
    for (const int expected : {640, 48, -7, 12}) {
        ASSERT_TRUE(reader.read(value)) << "before " << expected;
        EXPECT_EQ(value, expected);
    }
    EXPECT_FALSE(reader.read(value)) << "\".5\" is no whole number";
    float rest = 0.0F;
    EXPECT_TRUE(reader.read(rest));
    EXPECT_EQ(rest, 0.5F);
}

TEST(DecimalReader, LeavesAWholeNumberThatIntCannotHold) {
    DecimalReader reader("2147483648 -2147483648 2147483647");
    int value = -77;
    EXPECT_FALSE(reader.read(value));
    EXPECT_EQ(value, -77);
    EXPECT_TRUE(reader.read(value));
    EXPECT_EQ(value, std::numeric_limits<int>::min());
    EXPECT_TRUE(reader.read(value));
    EXPECT_EQ(value, std::numeric_limits<int>::max());
}

TEST(DecimalReader, ReadsNumbersWithoutDigitsOnOneSideOfThePoint) {
    DecimalReader reader("5. .5 -.5");
    float value = 0.0F;
    for (const float expected : {5.0F, 0.5F, -0.5F}) {
        ASSERT_TRUE(reader.read(value)) << "before " << expected;
        EXPECT_EQ(value, expected);
    }
}

TEST(DecimalReader, ReadsInfinityAndNan) {
    DecimalReader reader("inf -inf nan INFINITY");
    float value = 0.0F;
    for (const float expected : {kInfinity, -kInfinity, std::numeric_limits<float>::quiet_NaN(), kInfinity}) {
        ASSERT_TRUE(reader.read(value)) << "before " << expected;
        EXPECT_TRUE(sameBits(value, expected)) << value << " is not " << expected;
    }
}

/// The numbers of a text as the C library converts them, in the rules that scanf's "%f" shares: up to `count`, ending
/// at the first field that is not a number.
std::vector<float> converted(const std::string& text, std::size_t count) {
    std::vector<float> values;
    const char* rest = text.c_str();
    while (values.size() < count) {
        char* end = nullptr;
        const float value = std::strtof(rest, &end);
        if (end == rest) {
            break;
        }
        values.push_back(value);
        rest = end;
    }
    return values;
}

std::vector<float> read(const std::string& text, std::size_t count) {
    DecimalReader reader(text);
    std::vector<float> values;
    float value = kUntouched;
    while (values.size() < count && reader.read(value)) {
        values.push_back(value);
    }
    return values;
}

TEST(DecimalReader, RefusesWhatFloatCannotHold) {
    for (const char* text : {"1e50 2", "-1e50 2", "1e-60 2", "-1e-60 2", "1e400 2"}) {
        float value = kUntouched;
        DecimalReader reader(text);
        EXPECT_FALSE(reader.read(value)) << text;
        EXPECT_EQ(value, kUntouched) << text;
    }
}

TEST(DecimalReader, ReadsDenormalFloats) {
    EXPECT_TRUE(sameBits(read("1e-42 -1e-44", 2), converted("1e-42 -1e-44", 2)));
}

TEST(DecimalReader, AgreesWithTheCLibraryOnRandomLines) {
    Draws random(22);
    for (int i = 0; i < 3000; ++i) {
        std::string line;
        for (int field = 0; field < 4; ++field) {
            const std::string number = printed(random.real(-3000.0F, 3000.0F));
            line += random.chance(3) ? "x" : (random.chance(3) ? "" : number);
            line += random.chance(50) ? " " : (random.chance(50) ? "\n" : "\t  ");
        }
        EXPECT_TRUE(sameBits(read(line, 4), converted(line, 4))) << line;
    }
}

TEST(DecimalReader, ReadsBackWhatWasWrittenToSixDecimals) {
    Draws random(23);
    for (int i = 0; i < 2000; ++i) {
        const float value = random.real(-2000.0F, 2000.0F);
        const std::string text = sixDecimals(value);
        float back = 0.0F;
        DecimalReader reader(text);
        ASSERT_TRUE(reader.read(back));
        EXPECT_NEAR(back, value, 1e-6) << text;
    }
}

}  // namespace

}  // namespace quorvel::test
