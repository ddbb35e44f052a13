// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <type_traits>
#include <vector>

#include <quorvel/quorvel.h>

/// Every data member of Quorvel and every field of MeasureResult, each once, in the order of their declaration. The
/// tests that go through all of them go through these lists; a member that is missing here does not compile in
/// tests/library/members_test.cpp.
/// \param first,next macros that are given the names; the first name may be written without what parts it from the
/// others
#define QUORVEL_TEST_MEMBERS(first, next)                                                                             \
    first(colorImage) next(depthImage) next(auxImage) next(colorFrameBuffer) next(depthFrameBuffer) next(result)      \
        next(calibPoints) next(pointCloud) next(calibFullCloud) next(pointCloudSmall) next(colorSmall)                \
            next(depthSmall) next(calibImage) next(pointCloudSmallCopy) next(calibCloud) next(pointCloudBuffer)       \
                next(spareBuffer1) next(pointCloudSmallBuffer) next(colorSmallBuffer) next(depthSmallBuffer)          \
                    next(spareBuffer2) next(pointCloudSmallCopyBuffer) next(spareBuffer3) next(spareImage1)           \
                        next(spareImage2) next(spareImage3) next(spareImage4) next(spareImage5) next(refPlaneNormal)  \
                            next(calibrationRoI) next(effectiveRegion) next(refPlaneOffset) next(cameraType) next(fx) \
                                next(fy) next(invFx) next(invFy) next(cx) next(cy) next(fxSmall) next(fySmall)        \
                                    next(invFxSmall) next(invFySmall) next(cxSmall) next(cySmall) next(imageWidth)    \
                                        next(imageHeight) next(downScale) next(minObjectHeight) next(productType)     \
                                            next(calibStatus) next(minObjectPixels) next(reservedValue)               \
                                                next(offlineMode) next(paramDir) next(calFilePath)                    \
                                                    next(backgroundPath) next(offlineDir) next(cameraTypeSet)         \
                                                        next(debugMode) next(spareFloat1) next(cameraHeight)          \
                                                            next(spareFloat2) next(filterWeight)
#define QUORVEL_TEST_FIELDS(first, next) \
    first(corners) next(length) next(width) next(height) next(inView) next(onTarget) next(sideMargin)

namespace quorvel::test {

/// Calls `visit(name, pointer)` for every member of Quorvel: the name as text, and the pointer to member.
template <typename Visit>
void forEachMember(Visit visit) {
#define QUORVEL_TEST_VISIT(name) visit(#name, &Quorvel::name);
    QUORVEL_TEST_MEMBERS(QUORVEL_TEST_VISIT, QUORVEL_TEST_VISIT)
#undef QUORVEL_TEST_VISIT
}

/// Calls `visit(name, pointer)` for every field of MeasureResult.
template <typename Visit>
void forEachField(Visit visit) {
#define QUORVEL_TEST_VISIT(name) visit(#name, &MeasureResult::name);
    QUORVEL_TEST_FIELDS(QUORVEL_TEST_VISIT, QUORVEL_TEST_VISIT)
#undef QUORVEL_TEST_VISIT
}

template <typename Value>
struct Member {
    const char* name;
    Value Quorvel::*pointer;
};

/// \return the members of one type, in the order of their declaration
template <typename Value>
std::vector<Member<Value>> membersOf() {
    std::vector<Member<Value>> members;
    forEachMember([&](const char* name, auto pointer) {
        if constexpr (std::is_same_v<decltype(pointer), Value Quorvel::*>) {
            members.push_back({name, pointer});
        }
    });
    return members;
}

/// \return every image of a ruler
inline std::vector<Member<cv::Mat>> rulerImages() {
    return membersOf<cv::Mat>();
}

/// \return every buffer of a ruler
inline std::vector<Member<std::vector<cv::Mat>>> rulerBuffers() {
    return membersOf<std::vector<cv::Mat>>();
}

}  // namespace quorvel::test
