#include "measure/Measurement.h"

#include "common/MessageTable.h"

#include <gtest/gtest.h>

using namespace tavix;

namespace {

TEST(Measurement, ValueLabel_UsesTheNumberOfDecimals)
{
    EXPECT_EQ(valueLabel({12.3456, 11132, UnitKind::Length}, 0), "12");
    EXPECT_EQ(valueLabel({12.3456, 11132, UnitKind::Length}, 3), "12.346");
}

TEST(Measurement, ValueLabel_PutsADegreeSignAfterAnAngle)
{
    EXPECT_EQ(valueLabel({90, 11134, UnitKind::Angle}, 1), QString("90.0") + QChar(0x00B0));
}

TEST(Measurement, UnitText_FollowsTheKindOfValue)
{
    MessageTable messages;
    messages.parse(QStringLiteral("11131,points\r\n11134,angle\r\n11142,deg\r\n"));
    const QString mic = QStringLiteral("MIC");
    EXPECT_EQ(unitText({1, 11132, UnitKind::Length}, mic, messages), "MIC");
    EXPECT_EQ(unitText({1, 11138, UnitKind::Area}, mic, messages), QStringLiteral("MIC") + QChar(0x00B2));
    EXPECT_EQ(unitText({1, 11134, UnitKind::Angle}, mic, messages), "deg");
    EXPECT_EQ(unitText({1, 11130, UnitKind::Count}, mic, messages), "points");
    EXPECT_EQ(unitText({1, 0, UnitKind::Pixels}, mic, messages), "px");
}

TEST(Measurement, Relabel_RewritesValueLabelsButNotPointNumbers)
{
    Measurement m;
    m.tool = 101;
    m.values = {{2.5, 11132, UnitKind::Length}};
    m.shape.labels = {{{0, 0}, "old", 0}, {{1, 1}, "7", -1}};
    m.relabel(2);
    EXPECT_EQ(m.shape.labels[0].text, "2.50");
    EXPECT_EQ(m.shape.labels[1].text, "7");
}

TEST(Measurement, AddsResultRows_OnlyForMeasuringTools)
{
    Measurement m;
    m.tool = 100;
    EXPECT_TRUE(m.addsResultRows());
    m.tool = 24;
    EXPECT_FALSE(m.addsResultRows());
}

}  // namespace
