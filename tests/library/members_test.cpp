// SPDX-License-Identifier: Apache-2.0
#include "support/members.h"

#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

namespace quorvel::test {

namespace {

#define NAME(name) name
#define NEXT_NAME(name) , name
#define EXPECT_AT_ITS_PLACE(name) EXPECT_EQ(static_cast<const void*>(&name), &whole.name) << #name;

// A structured binding needs a name for every member, no more and no fewer, and gives the first name to the member that
// is declared first.

TEST(Members, AreAllInTheListAndInTheirOrder) {
    const Quorvel whole(600, 500, 321, 239, 640, 480, false, "");
    const auto& [QUORVEL_TEST_MEMBERS(NAME, NEXT_NAME)] = whole;
    QUORVEL_TEST_MEMBERS(EXPECT_AT_ITS_PLACE, EXPECT_AT_ITS_PLACE)
    EXPECT_EQ(static_cast<const void*>(&colorImage), &whole) << "nothing stands before the first member";
}

TEST(Members, OfARecordAreAllInTheListAndInTheirOrder) {
    const MeasureResult whole;
    const auto& [QUORVEL_TEST_FIELDS(NAME, NEXT_NAME)] = whole;
    QUORVEL_TEST_FIELDS(EXPECT_AT_ITS_PLACE, EXPECT_AT_ITS_PLACE)
}

/// \return the names of the members of one type, in their order
template <typename Value>
std::string namesOf() {
    std::string names;
    for (const auto& member : membersOf<Value>()) {
        names += std::string(member.name) + " ";
    }
    return names;
}

TEST(Members, AreFoundByTheirType) {
    EXPECT_EQ(namesOf<bool>(), "calibStatus offlineMode cameraTypeSet debugMode ");
    EXPECT_EQ(namesOf<cv::Rect>(), "calibrationRoI effectiveRegion ");
    EXPECT_EQ(namesOf<MeasureResult>(), "result ");
    EXPECT_EQ(rulerImages().size(), 16U);
    EXPECT_EQ(rulerBuffers().size(), 10U);
    std::size_t all = 0;
    forEachMember([&](const char* /*name*/, auto /*pointer*/) { ++all; });
    EXPECT_EQ(all, 64U);
}

}  // namespace

}  // namespace quorvel::test
