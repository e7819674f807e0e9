#include "measure/ToolFactory.h"

#include "common/Settings.h"

#include "ToolTestSupport.h"

using namespace tavix;
using namespace tavix::test;

namespace {

struct ButtonCase {
    const char* name;
    int index;
    qint16 twoPointMode, circleArc, angleMode;
    int expected;
};

class ToolForButton : public ::testing::TestWithParam<ButtonCase> {};

TEST_P(ToolForButton, PicksTheToolOfTheButtonAndSetting)
{
    const ButtonCase& c = GetParam();
    Settings settings;
    settings._2POINTCOMMANDMODE = c.twoPointMode;
    settings.CIRCLEARCSELECT = c.circleArc;
    settings.ANGLECOMMANDMODE = c.angleMode;
    const std::optional<int> tool = ToolFactory::toolForButton(c.index, settings);
    ASSERT_TRUE(tool);
    EXPECT_EQ(*tool, c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    ToolFactory, ToolForButton,
    ::testing::Values(ButtonCase{"TwoPointButtonInTwoPointMode", 0, 0, 1, 1, 101},
                      ButtonCase{"TwoPointButtonInLineAndPointMode", 0, 1, 0, 0, 108},
                      ButtonCase{"TwoPointButtonAnyOtherModeIsLineAndPoint", 0, 2, 0, 0, 108},
                      ButtonCase{"CircleButtonSelectingCircle", 1, 1, 0, 1, 102},
                      ButtonCase{"CircleButtonSelectingArc", 1, 0, 1, 0, 109},
                      ButtonCase{"CircleToCircleButton", 2, 1, 1, 1, 103},
                      ButtonCase{"PerpendicularButton", 3, 1, 1, 1, 104},
                      ButtonCase{"AreaButton", 4, 1, 1, 1, 105},
                      ButtonCase{"AngleButtonFourClicks", 5, 1, 1, 0, 106},
                      ButtonCase{"AngleButtonFiveClicks", 5, 0, 0, 1, 107},
                      ButtonCase{"AngleButtonAnyOtherModeIsFiveClicks", 5, 0, 0, -1, 107},
                      ButtonCase{"PointCountButton", 6, 1, 1, 1, 100},
                      ButtonCase{"CaliperButton", 7, 1, 1, 1, 110},
                      ButtonCase{"OneClickCircleButton", 8, 1, 1, 1, 111}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ToolFactory, ToolForButton_IsNothing_OutsideTheNineButtons)
{
    const Settings settings;
    EXPECT_FALSE(ToolFactory::toolForButton(-1, settings));
    EXPECT_FALSE(ToolFactory::toolForButton(9, settings));
}

struct GuidanceCase {
    int tool;
    int guidance;
};

class FirstGuidance : public ::testing::TestWithParam<GuidanceCase> {};

TEST_P(FirstGuidance, IsTheToolsFirstGuidanceNumber)
{
    EXPECT_EQ(ToolFactory::firstGuidance(GetParam().tool), GetParam().guidance);
}

INSTANTIATE_TEST_SUITE_P(ToolFactory, FirstGuidance,
                         ::testing::Values(GuidanceCase{100, 30}, GuidanceCase{101, 32},
                                           GuidanceCase{108, 57}, GuidanceCase{102, 34},
                                           GuidanceCase{109, 60}, GuidanceCase{103, 37},
                                           GuidanceCase{104, 43}, GuidanceCase{105, 50},
                                           GuidanceCase{106, 47}, GuidanceCase{107, 52}, GuidanceCase{21, 70},
                                           GuidanceCase{22, 71}, GuidanceCase{23, 72}, GuidanceCase{24, 73},
                                           GuidanceCase{110, 80}, GuidanceCase{111, 82}, GuidanceCase{10, 0},
                                           GuidanceCase{11, 0}, GuidanceCase{112, 0}),
                         [](const auto& info) { return "Tool" + std::to_string(info.param.tool); });

class CreatedTool : public ::testing::TestWithParam<int> {};

TEST_P(CreatedTool, CarriesItsNumber_AndStartsWithoutPoints)
{
    const std::unique_ptr<MeasureTool> tool = ToolFactory::create(GetParam());
    ASSERT_TRUE(tool);
    EXPECT_EQ(tool->number(), GetParam());
    EXPECT_EQ(tool->clickCount(), 0);
    EXPECT_FALSE(tool->complete());
}

INSTANTIATE_TEST_SUITE_P(ToolFactory, CreatedTool,
                         ::testing::Values(100, 101, 102, 103, 104, 105, 106, 107, 108, 109, 110, 111, 21, 22,
                                           23, 24));

TEST(ToolFactory, Create_GivesNoTool_ForCrossPlacementOrUnknownNumbers)
{
    EXPECT_FALSE(ToolFactory::create(10));
    EXPECT_FALSE(ToolFactory::create(11));
    EXPECT_FALSE(ToolFactory::create(0));
    EXPECT_FALSE(ToolFactory::create(112));
}

TEST(ToolFactory, ToolForCalibrationRequest_MapsAxisAndMode)
{
    EXPECT_EQ(ToolFactory::toolForCalibrationRequest(1), 21);
    EXPECT_EQ(ToolFactory::toolForCalibrationRequest(2), 22);
    EXPECT_EQ(ToolFactory::toolForCalibrationRequest(11), 23);
    EXPECT_EQ(ToolFactory::toolForCalibrationRequest(12), 24);
    EXPECT_FALSE(ToolFactory::toolForCalibrationRequest(-1));
    EXPECT_FALSE(ToolFactory::toolForCalibrationRequest(3));
}

TEST(ToolFactory, Measure_GivesWhatTheClickedToolGave)
{
    const std::vector<PointD> clicks{{0, 0}, {100, 0}, {40, 25}};
    const std::unique_ptr<MeasureTool> tool = ToolFactory::create(104);
    clickAll(*tool, clicks);
    const std::optional<Measurement> clicked = tool->result(contextWith(0.5, 0.5));
    const std::optional<Measurement> again = ToolFactory::measure(104, clicks, contextWith(0.5, 0.5));
    ASSERT_TRUE(clicked && again);
    EXPECT_EQ(again->values[0].value, clicked->values[0].value);
    EXPECT_EQ(again->shape.lines, clicked->shape.lines);
}

TEST(ToolFactory, Measure_RecomputesAPolygonWithoutADoubleClick)
{
    const std::optional<Measurement> m =
        ToolFactory::measure(105, {{0, 0}, {10, 0}, {10, 10}, {0, 10}}, contextWith(1, 1));
    ASSERT_TRUE(m);
    EXPECT_EQ(m->values[0].value, 100);
}

TEST(ToolFactory, Measure_IsNothing_ForTooFewPointsOrAnUnknownTool)
{
    EXPECT_FALSE(ToolFactory::measure(101, {{0, 0}}, contextWith(1, 1)));
    EXPECT_FALSE(ToolFactory::measure(10, {{0, 0}, {1, 1}}, contextWith(1, 1)));
}

}  // namespace
