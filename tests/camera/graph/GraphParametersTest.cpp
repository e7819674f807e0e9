#include "camera/graph/GraphDriver.h"
#include "camera/graph/GraphParameters.h"
#include "common/Clock.h"

#include <gtest/gtest.h>

using namespace tavix;

TEST(GraphParameters, WithoutADevice_NothingIsEnabled_AndEveryCallIsRefused)
{
    ManualClock clock;
    GraphParameters parameters(clock);
    parameters.open(nullptr);
    for (const int type : {1, 3, 6, 7, 13, 111, ExtraParam::kFocus, ExtraParam::kPowerLineFrequency}) {
        CamParamRange range;
        range.enabled = 7;
        EXPECT_EQ(parameters.range(type, range), 0) << type;
        EXPECT_FALSE(range.enabled) << type;
        std::int32_t value = 0;
        EXPECT_EQ(parameters.get(type, value), GraphDriver::kNotSupported) << type;
        EXPECT_EQ(parameters.set(type, 0), GraphDriver::kNotSupported) << type;
        EXPECT_EQ(parameters.getAuto(type, value), GraphDriver::kNotSupported) << type;
        EXPECT_EQ(parameters.setAuto(type, 1), GraphDriver::kNotSupported) << type;
        EXPECT_EQ(parameters.setAutoDefault(type), GraphDriver::kNotSupported) << type;
    }
    EXPECT_EQ(parameters.onePush(6), GraphDriver::kNotSupported);
}
