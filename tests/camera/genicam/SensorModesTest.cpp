#include "camera/Resolution.h"
#include "camera/genicam/SensorModes.h"

#include <gtest/gtest.h>

using namespace tavix;
using SensorModes::Limits;
using SensorModes::Mode;

namespace {

// A mode as the tests write it: its size, binning and region offset.
struct Expected {
    QSize size;
    int binning;
    QPoint offset;
};

struct Case {
    const char* name;
    Limits limits;
    std::vector<Expected> modes;
};

Limits camera(QSize sensor, std::vector<int> binnings = {1})
{
    Limits l;
    l.sensor = sensor;
    l.maximum = sensor;
    l.binnings = std::move(binnings);
    return l;
}

Limits withoutSensorSize()
{
    Limits l = camera(QSize(), {1, 2});
    l.maximum = QSize(1280, 1024);
    return l;
}

Limits withHeightMinimumAndWidthStep()
{
    Limits l = camera(QSize(1936, 1216));
    l.heightMin = 600;
    l.widthStep = 32;  // 752 is no multiple of 32 (from a minimum of 32), 1936 rounds down to 1920
    l.widthMin = 32;
    return l;
}

const Case kCases[] = {
    {"Sensor2448x2048_Binning1To4",
     camera(QSize(2448, 2048), {1, 2, 3, 4}),
     {{{2448, 2048}, 1, {0, 0}},
      {{1224, 1024}, 2, {0, 0}},
      {{816, 682}, 3, {0, 0}},
      {{612, 512}, 4, {0, 0}},
      {{2048, 1536}, 1, {200, 256}},
      {{1920, 1200}, 1, {264, 424}},
      {{1600, 1200}, 1, {424, 424}},
      {{1280, 1024}, 1, {584, 512}},
      {{1024, 768}, 2, {100, 128}},
      {{800, 600}, 3, {8, 41}},
      {{752, 480}, 3, {32, 101}},
      {{640, 480}, 3, {88, 101}},
      {{320, 240}, 4, {146, 136}}}},
    {"Sensor1920x1080_NoBinning",
     camera(QSize(1920, 1080)),
     {{{1920, 1080}, 1, {0, 0}},
      {{1280, 1024}, 1, {320, 28}},
      {{1024, 768}, 1, {448, 156}},
      {{800, 600}, 1, {560, 240}},
      {{752, 480}, 1, {584, 300}},
      {{640, 480}, 1, {640, 300}},
      {{320, 240}, 1, {800, 420}}}},
    {"Sensor1440x1080_Binning2",
     camera(QSize(1440, 1080), {1, 2}),
     {{{1440, 1080}, 1, {0, 0}},
      {{720, 540}, 2, {0, 0}},
      {{1280, 1024}, 1, {80, 28}},
      {{1024, 768}, 1, {208, 156}},
      {{800, 600}, 1, {320, 240}},
      {{752, 480}, 1, {344, 300}},
      {{640, 480}, 2, {40, 30}},
      {{320, 240}, 2, {200, 150}}}},
    {"Sensor160x120_GetsItsOwnSize", camera(QSize(160, 120), {1, 2}), {{{160, 120}, 1, {0, 0}}}},
    {"WithoutSensorSize_TakesWidthAndHeightMax",
     withoutSensorSize(),
     {{{1280, 1024}, 1, {0, 0}},
      {{640, 512}, 2, {0, 0}},
      {{1024, 768}, 1, {128, 128}},
      {{800, 600}, 1, {240, 212}},
      {{752, 480}, 1, {264, 272}},
      {{640, 480}, 2, {0, 16}},
      {{320, 240}, 2, {160, 136}}}},
    {"HeightMinimumAndWidthStep_DropTheSizesTheCameraRefuses",
     withHeightMinimumAndWidthStep(),
     {{{1920, 1216}, 1, {8, 0}},
      {{1920, 1200}, 1, {8, 8}},
      {{1600, 1200}, 1, {168, 8}},
      {{1280, 1024}, 1, {328, 96}},
      {{1024, 768}, 1, {456, 224}},
      {{800, 600}, 1, {568, 308}}}},
};

class SensorModesList : public ::testing::TestWithParam<Case> {};

}  // namespace

TEST_P(SensorModesList, WholeSensorAtEachBinningFirst_ThenTheTableSizesThatFit)
{
    const Case& c = GetParam();
    const std::vector<Mode> modes = SensorModes::list(c.limits);
    const auto text = [](QSize size, int binning, QPoint offset) {
        return QStringLiteral("%1x%2 b%3 @%4,%5")
            .arg(size.width())
            .arg(size.height())
            .arg(binning)
            .arg(offset.x())
            .arg(offset.y())
            .toStdString();
    };
    std::vector<std::string> got, want;
    for (const Mode& m : modes) {
        EXPECT_EQ(Resolution::size(m.index), m.region.size()) << "the index names the region's size";
        got.push_back(text(Resolution::size(m.index), m.binning, m.region.topLeft()));
    }
    for (const Expected& e : c.modes)
        want.push_back(text(e.size, e.binning, e.offset));
    EXPECT_EQ(got, want);
}

INSTANTIATE_TEST_SUITE_P(Cameras, SensorModesList, ::testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(SensorModes, TableSizes_KeepTheirIndices_OthersGetResolutionIndexOf)
{
    const std::vector<Mode> modes = SensorModes::list(camera(QSize(2448, 2048), {1}));
    ASSERT_GE(modes.size(), 2u);
    EXPECT_EQ(modes[0].index, Resolution::indexOf(QSize(2448, 2048)));
    EXPECT_EQ(modes[1].index, 7);  // 2048x1536
}

TEST(SensorModes, ASensorThatIsATableSize_IsListedOnce)
{
    const std::vector<Mode> modes = SensorModes::list(camera(QSize(2048, 1536), {1, 2}));
    ASSERT_GE(modes.size(), 2u);
    EXPECT_EQ(modes[0].index, 7);
    EXPECT_EQ(modes[1].index, 4);  // 1024x768 at binning 2: the whole sensor again
    EXPECT_EQ(modes[1].region, QRect(0, 0, 1024, 768));
    EXPECT_EQ(std::count_if(modes.begin(), modes.end(), [](const Mode& m) { return m.index == 4; }), 1);
}

TEST(SensorModes, OffsetsAreMultiplesOfTheCamerasStep)
{
    Limits l = camera(QSize(2048, 2048));
    l.offsetStep = 8;
    for (const Mode& m : SensorModes::list(l)) {
        EXPECT_EQ(m.region.x() % 8, 0) << m.index;
        EXPECT_EQ(m.region.y() % 8, 0) << m.index;
    }
}
