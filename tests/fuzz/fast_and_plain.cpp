// SPDX-License-Identifier: Apache-2.0
// The stages and their plain forms on hostile values, bit for bit, with every variant of the pixel loops. The first
// byte chooses the stage.
#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "calib/calibration_input.h"
#include "calib/least_squares.h"
#include "calib/normal_map.h"
#include "calib/ransac_plane.h"
#include "calib/reference_fit.h"
#include "calib/region_growth.h"
#include "fuzz/input.h"
#include "fuzz/target.h"
#include "geometry/plane_model.h"
#include "geometry/selection.h"
#include "image/back_projection.h"
#include "library/fast_forms.h"
#include "library/plain/back_projection.h"
#include "library/plain/calibration_region.h"
#include "library/plain/detection_area.h"
#include "library/plain/dominant_normal.h"
#include "library/plain/footprint.h"
#include "library/plain/height_cut.h"
#include "library/plain/least_squares.h"
#include "library/plain/normal_map.h"
#include "library/plain/object_chain.h"
#include "library/plain/object_component.h"
#include "library/plain/object_points.h"
#include "library/plain/ransac_plane.h"
#include "library/plain/reference_fit.h"
#include "library/plain/region_growth.h"
#include "library/plain/select_kth.h"
#include "library/plain/solve3x3.h"
#include "library/plain/surface_filter.h"
#include "library/same_result.h"
#include "measure/box_geometry.h"
#include "measure/detection_area.h"
#include "measure/footprint.h"
#include "measure/ground_removal.h"
#include "measure/height_cut.h"
#include "measure/object_chain.h"
#include "measure/object_component.h"
#include "measure/object_points.h"
#include "measure/object_window.h"
#include "measure/surface_filter.h"
#include "support/loop_variants.h"
#include "support/random.h"
#include "support/same_bits.h"

namespace quorvel::fuzz {

namespace {

using test::forEachLoopVariant;
using test::sameBits;
using test::plain::FootprintInput;

constexpr int kLargestSide = 72;  // pixels; 72 x 72 is enough for the fit, which wants more than 4000

cv::Size anySize(Input& input) {
    const int width = 1 + input.below(kLargestSide);
    return {width, 1 + input.below(kLargestSide)};
}

/// A surface with steps, the same with some hostile values, or hostile values alone.
cv::Mat anyDepth(Input& input, const cv::Size& size) {
    cv::Mat depth = anyStorage(input, size, CV_16UC1);
    const int kind = input.below(4);
    const int floor = input.word();
    const int step = input.below(256);
    const int patch = 1 + input.below(16);
    test::Draws noise(input.byte());
    for (int row = 0; row < size.height; ++row) {
        for (int column = 0; column < size.width; ++column) {
            const bool raised = ((row / patch) + (column / patch)) % 2 != 0;
            int value = floor - (raised ? step : 0);
            if (kind == 1) {
                value = noise.below(65536);
            } else if (kind == 2) {
                value = noise.below(100) < step ? 0 : value;
            } else if (kind == 3) {
                value = noise.below(2) * 65535;
            }
            depth.at<ushort>(row, column) = cv::saturate_cast<ushort>(value);
        }
    }
    for (int count = input.below(16); count > 0; --count) {
        const int row = input.byte() % size.height;
        const int column = input.byte() % size.width;
        depth.at<ushort>(row, column) = input.word();
    }
    return depth;
}

/// What a camera sees of a tilted surface with steps on it, with noise, gaps and hostile values.
cv::Mat anyCloud(Input& input, const cv::Size& size) {
    cv::Mat cloud = anyStorage(input, size, CV_32FC3);
    const float distance = input.real(1.0F, 3000.0F);
    const float slopeX = input.flag() ? 0.0F : input.real(-2.0F, 2.0F);
    const float slopeY = input.flag() ? 0.0F : input.real(-2.0F, 2.0F);
    const float spacing = input.real(0.0F, 12.0F);
    const int step = input.below(256);
    const int patch = 1 + input.below(64);
    const int grain = 1 + input.below(16);
    const int absent = input.flag() ? 0 : input.below(101);
    test::Draws noise(input.byte());
    for (int row = 0; row < size.height; ++row) {
        for (int column = 0; column < size.width; ++column) {
            if (noise.below(100) < absent) {
                continue;
            }
            const bool raised = ((row / patch) + (column / patch)) % 2 != 0;
            const float x = spacing * static_cast<float>(column - size.width / 2);
            const float y = spacing * static_cast<float>(row - size.height / 2);
            const auto bump = static_cast<float>((raised ? step : 0) + noise.below(grain));
            cloud.at<cv::Vec3f>(row, column) = {x, y, distance + slopeX * x + slopeY * y - bump};
        }
    }
    const int strewn = input.below(4);
    const float hostile = strewn == 0 ? 0.0F : input.anyReal();
    for (int count = strewn == 0 ? 0 : input.below(256); count > 0; --count) {
        const int row = noise.below(size.height);
        const int column = noise.below(size.width);
        cloud.at<cv::Vec3f>(row, column)[noise.below(3)] = hostile;
    }
    for (int count = input.below(16); count > 0; --count) {
        const int row = input.byte() % size.height;
        const int column = input.byte() % size.width;
        cloud.at<cv::Vec3f>(row, column) = input.anyVector();
    }
    return cloud;
}

/// A unit normal that leans a little, or any three numbers.
cv::Vec3f anyNormal(Input& input) {
    const int kind = input.below(4);
    if (kind == 0) {
        return {0.0F, 0.0F, 1.0F};
    }
    if (kind == 1) {
        return input.anyVector();
    }
    const float x = input.real(-0.6F, 0.6F);
    const float y = kind == 2 ? 0.0F : input.real(-0.6F, 0.6F);
    const float length = std::sqrt(x * x + y * y + 1.0F);
    return {x / length, y / length, 1.0F / length};
}

float anyDistance(Input& input) {
    return input.flag() ? input.real(1.0F, 3000.0F) : input.anyReal();
}

void compareBackProjections(Input& input) {
    const cv::Mat depth = anyDepth(input, anySize(input));
    const internal::BackProjection camera{input.anyReal(), input.anyReal(), input.anyReal(), input.anyReal()};
    const cv::Mat expected = test::plain::backProject(depth, camera.cx, camera.cy, camera.invFx, camera.invFy);
    forEachLoopVariant([&](const std::string& name) {
        cv::Mat cloud;
        internal::backProject(depth, camera, cloud);
        require(sameBits(cloud, expected), name);
    });
}

void compareGroundRemovals(Input& input) {
    const cv::Mat depth = anyDepth(input, anySize(input));
    const float weight = input.anyReal();
    const float offset = anyDistance(input);
    cv::Mat expected = depth.clone();
    test::plain::removeGround(expected, weight, offset);
    cv::Mat removed = depth.clone();
    internal::removeGround(removed, weight, offset);
    require(sameBits(removed, expected), "the ground removed");
}

void compareHeightCuts(Input& input) {
    const cv::Size size = anySize(input);
    const cv::Mat depth = anyDepth(input, size);
    const cv::Mat cloud = anyCloud(input, size);
    const cv::Vec3f normal = anyNormal(input);
    const float offset = anyDistance(input);
    const float minHeight = input.anyReal();
    cv::Mat expectedDepth = depth.clone();
    cv::Mat expectedMask = cv::Mat::zeros(size, CV_8UC1);
    const int expected =
        test::plain::cutAboveReferencePlane(expectedDepth, cloud, normal, offset, minHeight, expectedMask);
    forEachLoopVariant([&](const std::string& name) {
        cv::Mat left = depth.clone();
        cv::Mat mask = cv::Mat::zeros(size, CV_8UC1);
        require(test::fast::cutAboveReferencePlane(left, cloud, normal, offset, minHeight, mask) == expected, name);
        require(sameBits(left, expectedDepth), name + ", depth");
        require(sameBits(mask, expectedMask), name + ", mask");
    });
}

void compareComponents(Input& input) {
    const cv::Mat depth = anyDepth(input, anySize(input));
    const int minPixels = input.flag() ? input.below(64) : input.anyInt();
    const cv::Mat before = depth != 0;
    cv::Mat expectedMask = before.clone();
    const int expected = test::plain::selectObjectComponent(depth, minPixels, expectedMask);
    forEachLoopVariant([&](const std::string& name) {
        cv::Mat mask = before.clone();
        require(test::fast::selectObjectComponent(depth, minPixels, mask) == expected, name);
        require(sameBits(mask, expectedMask), name + ", mask");
    });
}

void compareSurfaceFilters(Input& input) {
    const cv::Size size = anySize(input);
    const cv::Mat cloud = anyCloud(input, size);
    const cv::Vec3f normal = anyNormal(input);
    const float offset = anyDistance(input);
    cv::Mat expected = cloud.clone();
    cv::Mat expectedMask = cv::Mat::zeros(size, CV_8UC1);
    test::plain::filterSurfacePoints(expected, normal, offset, expectedMask);
    forEachLoopVariant([&](const std::string& name) {
        cv::Mat filtered = cloud.clone();
        cv::Mat mask = cv::Mat::zeros(size, CV_8UC1);
        internal::filterSurfacePoints(filtered, normal, offset, mask);
        require(sameBits(filtered, expected), name + ", cloud");
        require(sameBits(mask, expectedMask), name + ", mask");
        cv::Mat kept = cloud.clone();
        internal::keepSurfacePoints(kept, normal, offset);
        require(sameBits(kept, expected), name + ", cloud without a mask");
    });
}

void compareIsolations(Input& input) {
    const cv::Size small = anySize(input);
    const bool multiple = input.flag();
    const int scale = 1 + input.below(4);
    const cv::Size full = multiple ? small * scale : small + anySize(input);
    const cv::Mat mask = anyDepth(input, small) != 0;
    cv::Mat cloud = anyCloud(input, full);
    cv::Mat fullMask;
    cv::resize(mask, fullMask, full, 0.0, 0.0, cv::INTER_AREA);
    cv::Mat expected = cv::Mat::zeros(full, CV_32FC3);
    cloud.copyTo(expected, fullMask == 255);
    const cv::Rect window = internal::isolateObject(mask, cloud);
    require(sameBits(cloud, expected), "the isolated cloud");
    require((window & cv::Rect({0, 0}, full)) == window && !window.empty(), "the window lies in the cloud");
    expected(window).setTo(cv::Scalar::all(0));
    require(sameBits(expected, cv::Mat::zeros(full, CV_32FC3)), "a point lies outside the window");
}

/// The plain form draws into a picture; corners far out would take it minutes or overflow in it.
bool isDrawable(const cv::Point2f& corner) {
    constexpr float kFarthest = 10000.0F;
    return std::fabs(corner.x) <= kFarthest && std::fabs(corner.y) <= kFarthest;
}

void compareDetectionAreas(Input& input) {
    const cv::Size picture = anySize(input);
    std::array<cv::Point2f, 4> face;
    bool drawable = true;
    for (cv::Point2f& corner : face) {
        const bool near = input.below(8) != 0;
        corner.x = near ? input.real(-100.0F, 200.0F) : input.anyReal();
        corner.y = near ? input.real(-100.0F, 200.0F) : input.anyReal();
        drawable = drawable && isDrawable(corner);
    }
    cv::Rect region = input.anyRect();
    if (input.below(8) != 0) {
        region = {input.below(100) - 20, input.below(100) - 20, input.below(100) - 2, input.below(100) - 2};
    } else {
        drawable = false;  // the plain form would overflow int
    }
    const bool meets = internal::topFaceMeetsRegion(face, region, picture);
    require(!drawable || meets == test::plain::topFaceMeetsRegion(face, region, picture), "the detection area");
}

void compareQuantiles(Input& input) {
    const int count = 1 + input.word() % 5000;
    const int distinct = 1 + input.word();
    std::vector<float> heights(static_cast<std::size_t>(count));
    test::Draws noise(input.byte());
    for (float& height : heights) {
        height = static_cast<float>(noise.below(distinct)) * 0.25F;
    }
    for (int odd = input.below(64); odd > 0; --odd) {
        heights[static_cast<std::size_t>(noise.below(count))] = std::fabs(input.anyReal());
    }
    const float expected = test::plain::heightQuantile(heights);
    forEachLoopVariant([&](const std::string& name) {
        require(sameBits(internal::heightQuantile(heights.data(), heights.size()), expected), name);
    });
}

FootprintInput anyFootprintInput(Input& input) {
    FootprintInput in;
    in.small = anySize(input);
    in.normal = anyNormal(input);
    in.offset = anyDistance(input);
    in.downScale = 1 + input.below(6);
    const bool camera = input.below(4) != 0;
    in.cx = camera ? input.real(-10.0F, 300.0F) : input.anyReal();
    in.cy = camera ? input.real(-10.0F, 300.0F) : input.anyReal();
    in.fx = camera ? input.real(10.0F, 600.0F) : input.anyReal();
    in.fy = camera ? input.real(10.0F, 600.0F) : input.anyReal();
    in.cameraTypeSet = input.flag();
    in.cameraType = input.anyInt();
    in.effectiveRegion = {input.below(256) - 20, input.below(256) - 20, input.below(256), input.below(256)};
    return in;
}

/// \return whether the plain form can draw the top of the box that it finds
bool boxIsDrawable(const cv::Mat& cloud, const FootprintInput& in) {
    const auto points =
        test::plain::collectObjectPoints(cloud, in.normal, in.offset, test::plain::planeBasis(in.normal));
    if (points.footprint.size() < 4) {
        return true;
    }
    internal::FootprintCorners rectangle;
    try {
        cv::minAreaRect(points.footprint).points(rectangle.data());
    } catch (const cv::Exception&) {
        return true;  // there is no rectangle around points so far out
    }
    const auto corners = internal::boxCorners(rectangle, internal::planeBasis(in.normal), {in.normal, in.offset},
                                              points.largest, {in.cx, in.cy, in.fx, in.fy});
    return isDrawable(corners[4]) && isDrawable(corners[5]) && isDrawable(corners[6]) && isDrawable(corners[7]);
}

void compareFootprints(Input& input) {
    const FootprintInput in = anyFootprintInput(input);
    const cv::Mat cloud = anyCloud(input, anySize(input));
    const bool drawable = boxIsDrawable(cloud, in);
    const MeasureResult general = drawable ? test::plain::measureFootprint(cloud, in) : MeasureResult();
    const MeasureResult bare = drawable ? test::plain::measureFootprintWithoutMargin(cloud, in) : MeasureResult();
    forEachLoopVariant([&](const std::string& name) {
        const MeasureResult a = test::fast::measureFootprint(cloud, in);
        const MeasureResult b = test::fast::measureFootprintWithoutMargin(cloud, in);
        if (drawable) {
            require(test::sameResult(a, general), name + ", general");
            require(test::sameResult(b, bare), name + ", without margin");
        }
    });
}

void compareChains(Input& input) {
    const FootprintInput in = anyFootprintInput(input);
    const bool general = input.flag();
    const float minHeight = input.below(4) == 0 ? input.anyReal() : input.real(0.0F, 20.0F);
    const int minPixels = input.below(4) == 0 ? input.anyInt() : input.below(32);
    const cv::Mat depth = anyDepth(input, in.small);
    const cv::Mat cloudSmall = anyCloud(input, in.small);
    const cv::Size full = input.flag() ? in.small * in.downScale : anySize(input);
    const cv::Mat cloud = anyCloud(input, full);

    internal::MeasureSettings settings;
    settings.plane = {in.normal, in.offset};
    settings.minHeight = minHeight;
    settings.minPixels = minPixels;
    settings.camera = {in.cx, in.cy, in.fx, in.fy};
    settings.downScale = in.downScale;
    settings.sideBand = in.cameraTypeSet ? std::optional(in.cameraType) : std::nullopt;
    settings.detectionArea = in.effectiveRegion;
    settings.variant = general ? internal::FootprintVariant::General : internal::FootprintVariant::WithoutMargin;
    MeasureResult firstResult;
    cv::Mat firstDepth;
    cv::Mat firstCloud;
    int firstStatus = 0;
    bool first = true;
    bool drawable = true;
    test::plain::ChainFrame expected{depth.clone(), cloudSmall.clone(), cloud.clone()};
    MeasureResult expectedResult;
    forEachLoopVariant([&](const std::string& name) {
        cv::Mat leftDepth = depth.clone();
        cv::Mat leftCloud = cloud.clone();
        MeasureResult result;
        const int status = test::fast::measureObject({leftDepth, cloudSmall, leftCloud}, settings, result);
        if (first) {
            first = false;
            // The remaining points of the cloud are the object, from which the plain form would draw the same box.
            drawable = status != 0 || boxIsDrawable(leftCloud, in);
            firstResult = result;
            firstDepth = leftDepth;
            firstCloud = leftCloud;
            firstStatus = status;
            if (drawable) {
                require(
                    test::plain::measureObject(expected, minHeight, minPixels, in, general, expectedResult) == status,
                    name + ", status");
                require(sameBits(leftDepth, expected.depthSmall), name + ", depth");
                require(sameBits(leftCloud, expected.cloud), name + ", cloud");
                require(test::sameResult(result, expectedResult), name + ", result");
            }
        }
        require(status == firstStatus, name + ", status of the plainest loops");
        require(sameBits(leftDepth, firstDepth), name + ", depth of the plainest loops");
        require(sameBits(leftCloud, firstCloud), name + ", cloud of the plainest loops");
        require(test::sameResult(result, firstResult), name + ", result of the plainest loops");
    });
}

/// Normal colours as a map holds them, with any values among them.
cv::Mat anyColours(Input& input, const cv::Size& size) {
    cv::Mat map = input.flag() ? test::plain::computeNormalMap(anyCloud(input, size)) : anyCloud(input, size);
    test::Draws noise(input.byte());
    for (int count = input.below(256); count > 0; --count) {
        const int row = noise.below(size.height);
        const int column = noise.below(size.width);
        map.at<cv::Vec3f>(row, column) = {static_cast<float>(noise.below(256)), static_cast<float>(noise.below(256)),
                                          static_cast<float>(noise.below(256))};
    }
    return map;
}

void compareNormalMaps(Input& input) {
    const cv::Mat cloud = anyCloud(input, anySize(input));
    const cv::Mat expected = test::plain::computeNormalMap(cloud);
    const cv::Vec3f expectedBin = test::plain::dominantNormalBin(expected);
    forEachLoopVariant([&](const std::string& name) {
        require(sameBits(internal::computeNormalMap(cloud), expected), name + ", map");
        cv::Vec3f bin;
        bin = internal::dominantNormalBin(expected);
        require(sameBits(bin, expectedBin), name + ", bin of the map");
    });
}

void compareDominantBins(Input& input) {
    const cv::Mat map = anyColours(input, anySize(input));
    const cv::Vec3f expected = test::plain::dominantNormalBin(map);
    forEachLoopVariant([&](const std::string& name) {
        cv::Vec3f bin;
        bin = internal::dominantNormalBin(map);
        require(sameBits(bin, expected), name);
    });
}

void compareLeastSquares(Input& input) {
    const cv::Mat cloud = anyCloud(input, anySize(input));
    const float minPoints = input.anyReal();
    const cv::Vec3f before = input.anyVector();
    cv::Vec3f expectedNormal = before;
    float expectedOffset = 7.0F;
    const int expected = test::plain::fitPlaneLeastSquares(cloud, expectedNormal.val, expectedOffset, minPoints);
    forEachLoopVariant([&](const std::string& name) {
        cv::Vec3f normal = before;
        float offset = 7.0F;
        require(test::fast::fitPlaneLeastSquares(cloud, normal, offset, minPoints) == expected, name);
        require(sameBits(normal, expectedNormal), name + ", normal");
        require(sameBits(offset, expectedOffset), name + ", offset");
    });
}

void compareGrowths(Input& input) {
    const cv::Size size = anySize(input);
    const cv::Mat cloud = anyCloud(input, size);
    const cv::Mat map = anyColours(input, size);
    const cv::Vec3f normal = anyNormal(input);
    const cv::Mat seeds = anyCloud(input, size);
    const cv::Mat expected = test::plain::growPlaneRegion(cloud, map, normal, seeds);
    forEachLoopVariant([&](const std::string& name) {
        cv::Mat grown = seeds.clone();
        require(test::fast::growPlaneRegion(cloud, map, normal, grown) == 0, name);
        require(sameBits(grown, expected), name);
    });
}

void compareRansacs(Input& input) {
    const cv::Size size = input.below(8) == 0 ? anySize(input) : cv::Size(kLargestSide, kLargestSide);
    const cv::Mat cloud = anyCloud(input, size);
    const cv::Mat map = input.flag() ? anyColours(input, size) : test::plain::computeNormalMap(cloud);
    cv::Vec3f bin = test::plain::dominantNormalBin(map);
    if (input.below(8) == 0) {
        bin = {static_cast<float>(input.below(4)), static_cast<float>(input.below(4)),
               static_cast<float>(input.below(4))};
    }
    const unsigned seed = input.byte();
    const cv::Vec3f before(0.25F, 0.5F, 0.75F);
    cv::Vec3f expectedNormal = before;
    float expectedOffset = 7.0F;
    std::srand(seed);
    const int expected = test::plain::ransacFitPlane(cloud, map, bin, expectedNormal, expectedOffset);
    const int expectedDraw = std::rand();
    forEachLoopVariant([&](const std::string& name) {
        cv::Vec3f normal = before;
        float offset = 7.0F;
        std::srand(seed);
        require(test::fast::ransacFitPlane(cloud, map, bin, normal, offset) == expected, name);
        require(std::rand() == expectedDraw, name + ", number of draws");
        require(sameBits(normal, expectedNormal), name + ", normal");
        require(sameBits(offset, expectedOffset), name + ", offset");
    });
}

void compareReferenceFits(Input& input) {
    const cv::Size size = input.below(4) == 0 ? anySize(input) : cv::Size(kLargestSide, kLargestSide);
    const cv::Mat cloud = anyCloud(input, size);
    const internal::Plane previous{anyNormal(input), anyDistance(input)};
    const unsigned seed = input.byte();
    const bool growing = input.flag();
    const float minPoints = input.flag() ? input.real(0.0F, 6000.0F) : input.anyReal();
    cv::Mat part = cv::Mat::zeros(size, CV_32FC3);
    const cv::Rect inside =
        cv::Rect{input.below(80), input.below(80), input.below(80), input.below(80)} & cv::Rect({0, 0}, size);
    if (!inside.empty()) {
        cloud(inside).copyTo(part(inside));
    }
    internal::Plane expected = previous;
    std::srand(seed);
    if (growing) {
        test::plain::fitGrownPlane(cloud, part, minPoints, expected.normal, expected.offset);
    } else {
        test::plain::fitDominantPlane(cloud, expected.normal, expected.offset);
    }
    forEachLoopVariant([&](const std::string& name) {
        std::srand(seed);
        const internal::Plane plane = growing ? internal::fitGrownPlane(cloud, part, minPoints, previous).plane
                                              : internal::fitDominantPlane(cloud, previous).plane;
        require(sameBits(plane.normal, expected.normal), name + ", normal");
        require(sameBits(plane.offset, expected.offset), name + ", offset");
    });
}

void compareRegions(Input& input) {
    const cv::Mat cloud = anyCloud(input, anySize(input));
    cv::Rect region = input.anyRect();
    if (input.flag()) {
        region = {input.below(100) - 20, input.below(100) - 20, input.below(100) - 20, input.below(100) - 20};
    }
    const internal::RegionCorners corners = internal::regionCorners(region);
    const cv::Mat expected = test::plain::pointsInsideRegion(cloud, corners);
    require(sameBits(internal::halfRegionArea(corners), test::plain::halfRegionArea(corners)), "half the area");
    cv::Mat inside;
    internal::pointsInsideRegion(cloud, corners, inside);
    require(sameBits(inside, expected), "the points inside the region");
}

void compareSmoothings(Input& input) {
    const cv::Mat depth = anyDepth(input, anySize(input));
    cv::Mat once;
    cv::Mat expected;
    cv::GaussianBlur(depth.clone(), once, cv::Size(5, 5), 0.0, 0.0, cv::BORDER_REFLECT_101);
    cv::GaussianBlur(once, expected, cv::Size(5, 5), 0.0, 0.0, cv::BORDER_REFLECT_101);
    require(sameBits(internal::smoothDepth(depth), expected), "the smoothed image");
}

void compareSelections(Input& input) {
    const int n = 1 + input.below(256);
    const int k = input.below(256) % n;
    std::vector<float> values(static_cast<std::size_t>(n));
    test::Draws noise(input.byte());
    for (float& value : values) {
        value = input.empty() ? static_cast<float>(noise.below(100)) : input.anyReal();
    }
    require(sameBits(internal::selectKth(values, n, k), test::plain::selectKth(values, n, k)), "the k-th value");
}

void compareSolutions(Input& input) {
    std::array<float, 9> a{};
    std::array<float, 3> b{};
    for (float& value : a) {
        value = input.anyReal();
    }
    for (float& value : b) {
        value = input.anyReal();
    }
    std::array<float, 3> x{1.0F, 2.0F, 3.0F};
    const int status = test::fast::solve3x3(a, b, x);
    std::array<float, 3> expected{1.0F, 2.0F, 3.0F};
    require(status == test::plain::solve3x3(a.data(), b.data(), expected.data()), "whether it can be solved");
    require(sameBits(std::vector<float>(x.begin(), x.end()), std::vector<float>(expected.begin(), expected.end())),
            "the solution");
}

void comparePixelMinima(Input& input) {
    const float offset = input.anyReal();
    const float fxSmall = input.anyReal();
    const double edge = static_cast<double>(50.0F / offset * fxSmall);
    if (!std::isnan(edge)) {  // the plain form converts NaN, which is undefined
        require(internal::objectPixelMinimum(offset, fxSmall) == test::plain::objectPixelMinimum(offset, fxSmall),
                "the smallest object region");
    }
}

constexpr std::array<void (*)(Input&), 21> kStages{
    compareBackProjections, compareGroundRemovals, compareHeightCuts,   compareComponents, compareSurfaceFilters,
    compareIsolations,      compareDetectionAreas, compareQuantiles,    compareFootprints, compareChains,
    compareNormalMaps,      compareDominantBins,   compareLeastSquares, compareGrowths,    compareRansacs,
    compareReferenceFits,   compareRegions,        compareSmoothings,   compareSelections, compareSolutions,
    comparePixelMinima};

}  // namespace

}  // namespace quorvel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return quorvel::fuzz::workThrough(quorvel::fuzz::kStages, data, size);
}
