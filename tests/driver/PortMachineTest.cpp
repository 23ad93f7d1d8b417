// What a link does with its port, whatever is spoken on it.
#include "../fakes/HsmsRig.h"
#include "../fakes/Secs1Rig.h"
#include <gtest/gtest.h>

namespace hexmire::test {
namespace {

using link::LinkError;

template <class Rig>
class PortMachineTest : public testing::Test {};
using Rigs = testing::Types<HsmsRig, Secs1Rig>;
TYPED_TEST_SUITE(PortMachineTest, Rigs);

TYPED_TEST(PortMachineTest, FailuresOfTheShellAreLimitedLikeThoseOfTheLink) {
    TypeParam rig(TypeParam::Settings());
    rig.FullTexts = true;
    rig.Machine().Report(LinkError::Internal, "Internal failure: one", rig.Now());
    EXPECT_EQ(rig.Do("advance 10"), "Error 3099 \"Internal failure: one\"");
    for (int count = 1; count < 53; ++count)
        rig.Machine().Report(LinkError::Internal, "Internal failure: more", rig.Now());
    rig.Do("advance 10");
    EXPECT_EQ(rig.Do("advance 1000"), "Error 3099 \"Internal failure: 3 more left out\"");
    EXPECT_EQ(rig.Statistics().InternalFailures, 53U);
    EXPECT_EQ(rig.Statistics().ErrorsLeftOut, 3U);
}

TYPED_TEST(PortMachineTest, WhatTellsOfALossIsNeverLeftOut) {
    TypeParam rig(TypeParam::Settings());
    for (int count = 0; count < 60; ++count)
        rig.Machine().Report(LinkError::HostileBody, "Hostile body refused", rig.Now());
    const std::string told = rig.Do("advance 10");
    EXPECT_EQ(static_cast<int>(told.size()), 60 * 10 + 59 * 2) << told;
}

}  // namespace
}  // namespace hexmire::test
