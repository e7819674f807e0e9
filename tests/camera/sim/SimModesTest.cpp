#include "camera/sim/SimCallLog.h"
#include "camera/sim/SimModes.h"

#include <gtest/gtest.h>

using namespace tavix;

TEST(SimModes, UnknownModesAreLeftOut_AndTheDefaultIsOffered)
{
    const SimModes modes({-1, 3, 11, 8}, 5);
    EXPECT_EQ(modes.list(10, false), (std::vector<std::int32_t>{3, 8}));
    EXPECT_EQ(modes.defaultMode(), 3);
    EXPECT_TRUE(modes.offers(8));
    EXPECT_FALSE(modes.offers(5));
    EXPECT_EQ(SimModes({42}, 42).list(10, false), std::vector<std::int32_t>{5});
}

TEST(SimModes, List_KeepsToTheCapacity_AndCanOmitTheDefault)
{
    const SimModes modes({1, 3, 5, 8}, 5);
    EXPECT_EQ(modes.list(2, false), (std::vector<std::int32_t>{1, 3}));
    EXPECT_EQ(modes.list(10, true), (std::vector<std::int32_t>{1, 3, 8}));
}

TEST(SimCallLog, RecordsCallsWhileAsked_AndAnswersScriptedStatuses_TypeFirst)
{
    SimCallLog log;
    const std::map<QString, int> failWith{{QStringLiteral("SetCamParameter"), -1},
                                          {QStringLiteral("SetCamParameter:7"), -4}};
    EXPECT_EQ(log.enter(failWith, "SetCamParameter", 7, 0, 7, 100), -4);
    EXPECT_EQ(log.enter(failWith, "SetCamParameter", 8, 0, 8, 100), -1);
    EXPECT_EQ(log.enter(failWith, "Open", -1, 0), std::nullopt);
    EXPECT_TRUE(log.calls().isEmpty());
    log.setRecording(true);
    log.enter(failWith, "SaveToFile", -1, 0, QStringLiteral("a.bmp"));
    EXPECT_EQ(log.calls(), QStringList{QStringLiteral("SaveToFile(0,a.bmp)")});
    log.clear();
    EXPECT_TRUE(log.calls().isEmpty());
}
