// SPDX-License-Identifier: Apache-2.0
#include "calib/region_growth.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "library/calib_support.h"
#include "library/fast_forms.h"
#include "library/plain/normal_map.h"
#include "library/plain/region_growth.h"
#include "support/loop_variants.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

const cv::Vec3f kFlat(0.0F, 0.0F, 1.0F);  // band (63.5, 191.5), (63.5, 191.5), (191, 319)
const cv::Vec3f kInBand(127.5F, 127.5F, 255.0F);
const cv::Vec3f kOutside(20.0F, 20.0F, 20.0F);
const cv::Vec3f kAbsent(0.0F, 0.0F, 0.0F);

/// A scene drawn with characters: 'S' a seed whose colour is outside the band, 's' a seed inside the band, '.' a pixel
/// inside the band, '#' one outside.
struct Drawing {
    explicit Drawing(const std::vector<std::string>& rows) {
        const cv::Size size(static_cast<int>(rows.front().size()), static_cast<int>(rows.size()));
        full.create(size, CV_32FC3);
        map.create(size, CV_32FC3);
        seeds = cv::Mat::zeros(size, CV_32FC3);
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
                const char kind = rows.at(static_cast<std::size_t>(y)).at(static_cast<std::size_t>(x));
                const cv::Vec3f point(static_cast<float>(x), static_cast<float>(y), 1000.0F);
                full.at<cv::Vec3f>(y, x) = point;
                map.at<cv::Vec3f>(y, x) = kind == '.' || kind == 's' ? kInBand : kOutside;
                if (kind == 's' || kind == 'S') {
                    seeds.at<cv::Vec3f>(y, x) = point;
                }
            }
        }
    }
    cv::Mat full;
    cv::Mat map;
    cv::Mat seeds;
};

/// \return the grown region, 'x' for a pixel that is kept
std::vector<std::string> grown(const Drawing& drawing, const cv::Vec3f& normal = kFlat) {
    cv::Mat cloud = drawing.seeds.clone();
    EXPECT_EQ(fast::growPlaneRegion(drawing.full, drawing.map, normal, cloud), 0);
    std::vector<std::string> rows;
    for (int y = 0; y < cloud.rows; ++y) {
        rows.emplace_back();
        for (int x = 0; x < cloud.cols; ++x) {
            const auto point = cloud.at<cv::Vec3f>(y, x);
            EXPECT_TRUE(point == kAbsent || point == drawing.full.at<cv::Vec3f>(y, x)) << point;
            rows.back() += point == kAbsent ? '-' : 'x';
        }
    }
    return rows;
}

using Rows = std::vector<std::string>;

TEST(GrowPlaneRegion, SpreadsOverThePixelsOfTheOrientation) {
    EXPECT_EQ(grown(Drawing({"########",  //
                             "#...####",  //
                             "#.s.#..#",  //
                             "#...#..#",  //
                             "########"})),
              (Rows{"--------",  //
                    "-xxx----",  //
                    "-xxx----",  //
                    "-xxx----",  //
                    "--------"}));
}

TEST(GrowPlaneRegion, TakesTheFourNeighboursOnly) {
    EXPECT_EQ(grown(Drawing({"######",  //
                             "#ss###",  //
                             "###..#",  //
                             "######"})),
              (Rows{"------",  //
                    "-xx---",  //
                    "------",  //
                    "------"}));
}

TEST(GrowPlaneRegion, InteriorSeedsAreKeptWhateverTheirColour) {
    EXPECT_EQ(grown(Drawing({"#####",  //
                             "#S#S#",  //
                             "#####"})),
              (Rows{"-----",  //
                    "-x-x-",  //
                    "-----"}));
}

TEST(GrowPlaneRegion, ANeighbourOfASeedAloneIsNotKept) {
    // It starts the flood, but no pixel of the flood reaches it.
    EXPECT_EQ(grown(Drawing({"#####",  //
                             "#s.##",  //
                             "#####"})),
              (Rows{"-----",  //
                    "-x---",  //
                    "-----"}));
}

TEST(GrowPlaneRegion, ANeighbourOfASeedIsKeptWhenTheFloodComesBack) {
    EXPECT_EQ(grown(Drawing({"######",  //
                             "#s..##",  //
                             "######"})),
              (Rows{"------",  //
                    "-xxx--",  //
                    "------"}));
}

TEST(GrowPlaneRegion, TwoSeedNeighboursSideBySideReachEachOther) {
    EXPECT_EQ(grown(Drawing({"####",  //
                             "#SS#",  //
                             "#..#",  //
                             "####"})),
              (Rows{"----",  //
                    "-xx-",  //
                    "-xx-",  //
                    "----"}));
}

TEST(GrowPlaneRegion, ASeedOnTheBorderIsKeptOnlyWhenItIsReached) {
    EXPECT_EQ(grown(Drawing({"s####",  //
                             "#####",  //
                             "#####"})),
              (Rows{"-----",  //
                    "-----",  //
                    "-----"}))
        << "it starts nothing";
    EXPECT_EQ(grown(Drawing({"##s##",  //
                             "#s..#",  //
                             "#####"})),
              (Rows{"--x--",  //
                    "-xxx-",  //
                    "-----"}))
        << "the pixel below reaches it";
    EXPECT_EQ(grown(Drawing({"##S##",  //
                             "#s..#",  //
                             "#####"})),
              (Rows{"-----",  //
                    "-xxx-",  //
                    "-----"}))
        << "its colour is outside the band";
}

TEST(GrowPlaneRegion, TheFloodReachesTheBorderAndDoesNotGoOnFromIt) {
    EXPECT_EQ(grown(Drawing({"......",  //
                             "#s..##",  //
                             "######"})),
              (Rows{"--xx--",  //
                    "-xxx--",  //
                    "------"}));
}

TEST(GrowPlaneRegion, WithoutSeedsNothingIsKept) {
    EXPECT_EQ(grown(Drawing({".....",  //
                             ".....",  //
                             "....."})),
              (Rows{"-----", "-----", "-----"}));
}

TEST(GrowPlaneRegion, AcceptsImagesWithoutAnInterior) {
    EXPECT_EQ(grown(Drawing({"s"})), (Rows{"-"}));
    EXPECT_EQ(grown(Drawing({"ss", "ss"})), (Rows{"--", "--"}));
    EXPECT_EQ(grown(Drawing({"sss", "sss", "sss"})), (Rows{"---", "-x-", "---"}));
}

/// Whether a pixel of this colour belongs to the orientation: whether the flood from a seed on its left passes it.
bool follows(const cv::Vec3f& colour, const cv::Vec3f& normal = kFlat) {
    Drawing drawing({"######",  //
                     "#S..##",  //
                     "######"});
    drawing.map.at<cv::Vec3f>(1, 2) = colour;
    drawing.map.at<cv::Vec3f>(1, 3) = colour;
    return grown(drawing, normal)[1] == "-xxx--";
}

TEST(GrowPlaneRegion, ColoursAreRoundedWithTiesToEvenBeforeTheComparison) {
    EXPECT_TRUE(follows({63.5F, 127.5F, 255.0F})) << "rounds up to 64, above 63.5";
    EXPECT_FALSE(follows({63.4F, 127.5F, 255.0F})) << "rounds down to 63";
    EXPECT_TRUE(follows({127.5F, 191.4F, 255.0F})) << "rounds down to 191, below 191.5";
    EXPECT_FALSE(follows({127.5F, 191.5F, 255.0F})) << "rounds up to 192";
    EXPECT_FALSE(follows({127.5F, 127.5F, 191.4F})) << "rounds down to 191, the open end";
    EXPECT_TRUE(follows({127.5F, 127.5F, 191.5F})) << "rounds up to 192";
    // Normal 0.5 in x: centre 191.25, band (127.25, 255.25) around 127.5 and 126.5, which round to 128 and 126.
    EXPECT_TRUE(follows({127.5F, 127.5F, 255.0F}, {0.5F, 0.0F, 1.0F}));
    EXPECT_FALSE(follows({126.5F, 127.5F, 255.0F}, {0.5F, 0.0F, 1.0F}));
}

TEST(GrowPlaneRegion, ColoursSaturateAt0And255) {
    EXPECT_TRUE(follows({127.5F, 127.5F, 330.0F})) << "330 counts as 255, inside (191, 319)";
    EXPECT_TRUE(follows({127.5F, 127.5F, -20.0F}, {0.0F, 0.0F, -0.6F})) << "-20 counts as 0, inside (-13, 115)";
    EXPECT_FALSE(follows({127.5F, 127.5F, -20.0F}, {0.0F, 0.0F, -0.4F})) << "0 is not inside (12.5, 140.5)";
}

TEST(GrowPlaneRegion, ColoursThatAreNoNumberCountAs0) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_FALSE(follows({127.5F, 127.5F, nan}));
    EXPECT_FALSE(follows({127.5F, 127.5F, infinity})) << "beyond int, not beyond 255";
    EXPECT_TRUE(follows({127.5F, 127.5F, nan}, {0.0F, 0.0F, -1.0F})) << "0 is inside (-64, 64)";
    EXPECT_FALSE(follows(kInBand, {nan, nan, nan})) << "the plane itself is NaN";
}

TEST(GrowPlaneRegion, APointIsASeedUnlessAllThreeCoordinatesAreZero) {
    Drawing drawing({"#######",  //
                     "#######",  //
                     "#######"});
    drawing.seeds.at<cv::Vec3f>(1, 1) = {0.0F, 0.0F, 5.0F};
    drawing.seeds.at<cv::Vec3f>(1, 2) = {0.0F, -1.0F, 0.0F};
    drawing.seeds.at<cv::Vec3f>(1, 3) = {-0.0F, 0.0F, -0.0F};
    drawing.seeds.at<cv::Vec3f>(1, 4) = {std::numeric_limits<float>::quiet_NaN(), 0.0F, 0.0F};
    EXPECT_EQ(grown(drawing), (Rows{"-------", "-xx-x--", "-------"}));
}

TEST(GrowPlaneRegion, TheGrownCloudIsTheFullCloudNotTheSeeds) {
    Drawing drawing({"#####",  //
                     "#S###",  //
                     "#####"});
    drawing.seeds.at<cv::Vec3f>(1, 1) = {9.0F, 9.0F, 9.0F};
    cv::Mat cloud = drawing.seeds.clone();
    fast::growPlaneRegion(drawing.full, drawing.map, kFlat, cloud);
    EXPECT_EQ(cloud.at<cv::Vec3f>(1, 1), cv::Vec3f(1.0F, 1.0F, 1000.0F));
}

TEST(GrowPlaneRegion, WritesIntoNobodyElsesPixels) {
    const Drawing drawing({"#####",  //
                           "#s..#",  //
                           "#####"});
    const cv::Mat fullBefore = drawing.full.clone();
    const cv::Mat mapBefore = drawing.map.clone();
    const cv::Mat seedsBefore = drawing.seeds.clone();
    cv::Mat cloud = drawing.seeds;  // shares its pixels
    fast::growPlaneRegion(drawing.full, drawing.map, kFlat, cloud);
    EXPECT_TRUE(sameBits(drawing.full, fullBefore));
    EXPECT_TRUE(sameBits(drawing.map, mapBefore));
    EXPECT_TRUE(sameBits(drawing.seeds, seedsBefore));
}

void expectAsPlain(const cv::Mat& full, const cv::Mat& map, const cv::Vec3f& normal, const cv::Mat& seeds, int input) {
    const cv::Mat expected = plain::growPlaneRegion(full, map, normal, seeds);
    forEachLoopVariant([&] {
        cv::Mat cloud = seeds.clone();
        fast::growPlaneRegion(full, map, normal, cloud);
        EXPECT_TRUE(sameBits(cloud, expected)) << "input " << input;
        cv::Mat part = calib::asSubMatrix(seeds);
        fast::growPlaneRegion(calib::asSubMatrix(full), calib::asSubMatrix(map), normal, part);
        EXPECT_TRUE(sameBits(part, expected)) << "input " << input << " as parts of wider matrices";
    });
}

/// A map of few colours, so that regions hang together; sometimes a colour of NaN.
cv::Mat patchyMap(Draws& random, int rows, int columns) {
    const int outside = random.between(10, 70);
    cv::Mat map(rows, columns, CV_32FC3);
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            auto& colour = map.at<cv::Vec3f>(row, column);
            colour = random.chance(outside) ? kOutside : kInBand;
            if (random.chance(5)) {
                colour[random.below(3)] = calib::randomCoordinate(random, calib::CloudKind::kWithNonFinite);
            }
        }
    }
    return map;
}

TEST(GrowPlaneRegion, AgreesWithThePlainFormOnPatchyMaps) {
    Draws random(121);
    for (int i = 0; i < 2000; ++i) {
        const int rows = random.between(1, 16);
        const int columns = random.chance(10) ? random.between(60, 140) : random.between(1, 16);
        const cv::Mat full =
            calib::randomCloud(random, rows, columns, static_cast<calib::CloudKind>(random.below(3)), 20);
        const cv::Mat seeds = calib::randomCloud(random, rows, columns, calib::CloudKind::kFloats,
                                                 random.chance(20) ? 0 : random.between(50, 100));
        const float slopeX = random.real(-1, 1);
        const float slopeY = random.real(-1, 1);
        const cv::Vec3f normal = random.chance(70) ? kFlat : cv::Vec3f(slopeX, slopeY, 1);
        expectAsPlain(full, patchyMap(random, rows, columns), normal, seeds, i);
    }
}

/// Corridors one pixel wide between walls one pixel wide, winding inward; a seed at the outer end.
Drawing spiral(const cv::Size& size) {
    std::vector<std::string> rows(static_cast<std::size_t>(size.height),
                                  std::string(static_cast<std::size_t>(size.width), '#'));
    const auto at = [&rows](const cv::Point& p) -> char& {
        return rows.at(static_cast<std::size_t>(p.y)).at(static_cast<std::size_t>(p.x));
    };
    cv::Rect left(1, 1, size.width - 2, size.height - 2);
    cv::Point pixel(1, 1);
    const auto goTo = [&](const cv::Point& corner) {
        for (; pixel != corner; pixel += cv::Point((corner.x > pixel.x) - (corner.x < pixel.x),
                                                   (corner.y > pixel.y) - (corner.y < pixel.y))) {
            at(pixel) = '.';
        }
        at(pixel) = '.';
    };
    for (; left.width > 3 && left.height > 3;
         left = cv::Rect(left.x + 2, left.y + 2, left.width - 4, left.height - 4)) {
        goTo({left.x + left.width - 1, left.y});
        goTo({left.x + left.width - 1, left.y + left.height - 1});
        goTo({left.x, left.y + left.height - 1});
        goTo({left.x, left.y + 2});
        goTo({left.x + 2, left.y + 2});
    }
    at({1, 1}) = 's';
    return Drawing(rows);
}

/// Every second column a corridor, joined with the next one at the bottom and the top in turn.
Drawing meander(const cv::Size& size, bool upright) {
    std::vector<std::string> rows(static_cast<std::size_t>(size.height),
                                  std::string(static_cast<std::size_t>(size.width), '#'));
    for (int y = 1; y < size.height - 1; ++y) {
        for (int x = 1; x < size.width - 1; ++x) {
            const int across = upright ? x : y;
            const int end = (across / 2) % 2 == 0 ? 1 : (upright ? size.height : size.width) - 2;
            if (across % 2 == 1 || (upright ? y : x) == end) {
                rows.at(static_cast<std::size_t>(y)).at(static_cast<std::size_t>(x)) = '.';
            }
        }
    }
    rows.at(1).at(1) = 's';
    return Drawing(rows);
}

Drawing chessBoard(const cv::Size& size) {
    std::vector<std::string> rows(static_cast<std::size_t>(size.height));
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            rows.at(static_cast<std::size_t>(y)) += (x + y) % 2 == 0 ? '.' : (x % 14 == 3 ? 's' : '#');
        }
    }
    return Drawing(rows);
}

int countKept(const Drawing& drawing) {
    int kept = 0;
    for (const std::string& row : grown(drawing)) {
        kept += static_cast<int>(std::count(row.begin(), row.end(), 'x'));
    }
    return kept;
}

TEST(GrowPlaneRegion, AgreesWithThePlainFormInLabyrinths) {
    for (const cv::Size& size :
         {cv::Size(9, 9), cv::Size(63, 40), cv::Size(64, 41), cv::Size(65, 64), cv::Size(130, 129), cv::Size(200, 7)}) {
        for (const Drawing& drawing : {spiral(size), meander(size, true), meander(size, false), chessBoard(size)}) {
            expectAsPlain(drawing.full, drawing.map, kFlat, drawing.seeds, size.width);
        }
    }
    EXPECT_GT(countKept(spiral({65, 65})), 1500) << "the flood does not follow the spiral";
    EXPECT_GT(countKept(meander({65, 65}, true)), 1900) << "the flood does not follow the meander";
}

TEST(GrowPlaneRegion, AgreesWithThePlainFormOnNoisyFloors) {
    Draws random(122);
    for (int i = 0; i < 40; ++i) {
        calib::FloorView view;
        view.slopeX = random.real(-0.4F, 0.4F);
        view.slopeY = random.real(-0.4F, 0.4F);
        view.noise = random.real(0.0F, 12.0F);
        view.absent = random.between(0, 10);
        const cv::Mat full = calib::floorCloud(view, random);
        cv::Mat seeds = cv::Mat::zeros(full.size(), CV_32FC3);
        const int left = random.between(0, 40);
        const int top = random.between(0, 40);
        const int width = random.between(1, 30);
        const int height = random.between(1, 30);
        const cv::Rect region(left, top, width, height);
        full(region).copyTo(seeds(region));
        const float length = std::sqrt(view.slopeX * view.slopeX + view.slopeY * view.slopeY + 1.0F);
        const cv::Vec3f normal(-view.slopeX / length, -view.slopeY / length, 1.0F / length);
        expectAsPlain(full, plain::computeNormalMap(full), normal, seeds, i);
    }
}

}  // namespace

}  // namespace quorvel::test
