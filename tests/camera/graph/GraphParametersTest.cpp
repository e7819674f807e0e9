#include "camera/graph/GraphDriver.h"
#include "camera/graph/GraphParameters.h"

#include <gtest/gtest.h>

using namespace tavix;

TEST(GraphParameters, WithoutADevice_NothingIsEnabled_AndEveryCallIsRefused)
{
    GraphParameters parameters;
    parameters.open(QStringLiteral("/nonexistent/video0"));
    for (const int type : {1, 3, 6, 7, 13, 111}) {
        EXPECT_FALSE(parameters.range(type).enabled) << type;
        std::int32_t value = 0;
        EXPECT_EQ(parameters.get(type, value), GraphDriver::kNotSupported) << type;
        EXPECT_EQ(parameters.set(type, 0), GraphDriver::kNotSupported) << type;
        EXPECT_EQ(parameters.getAuto(type, value), GraphDriver::kNotSupported) << type;
        EXPECT_EQ(parameters.setAuto(type, 1), GraphDriver::kNotSupported) << type;
        EXPECT_EQ(parameters.setAutoDefault(type), GraphDriver::kNotSupported) << type;
    }
    EXPECT_EQ(parameters.onePush(6), GraphDriver::kNotSupported);
}
