#include "MeasuringFixture.h"

#include <gtest/gtest.h>

using namespace tavix;

namespace {

// A calibration of 1E+307 units per pixel: any length of a pixel or more
// overflows a double once converted.
class MeasuringFault : public test::Measuring {
protected:
    void SetUp() override
    {
        Measuring::SetUp();
        dir.write(QStringLiteral("Proof.dat"), QByteArray("\"Huge\",1E+307,1E+307,\"MIC\",0,0\r\n"));
    }

    int countOf(const QString& line) const { return static_cast<int>(log().count(line)); }
};

}  // namespace

TEST_F(MeasuringFault, TwoPointOverflow_LogsMouseUpOnce_AddsNoRow_AndTakesNewClicks)
{
    start();
    tool(0);
    click(100, 100);
    click(400, 500);
    EXPECT_EQ(results().count(), 0);
    EXPECT_EQ(w->measuring().store().size(), 0);
    EXPECT_EQ(countOf(QStringLiteral(" frmMain:picStillView_MouseUp Error.(6)\r\n")), 1)
        << log().toStdString();

    // Two clicks on one spot: a length of 0 converts without a fault.
    click(200, 200);
    click(200, 200);
    ASSERT_EQ(results().count(), 1);
    EXPECT_EQ(cell(1, 2), QStringLiteral("0.00"));
    EXPECT_EQ(w->measuring().store().size(), 1);
    EXPECT_EQ(countOf(QStringLiteral("Error.(")), 1) << log().toStdString();
}

TEST_F(MeasuringFault, AreaOverflow_LogsDblClickOnce_AddsNoRow_AndTakesNewClicks)
{
    start();
    tool(4);
    click(100, 100);
    click(300, 100);
    doubleClick(300, 200);
    EXPECT_EQ(results().count(), 0);
    EXPECT_EQ(countOf(QStringLiteral(" frmMain:picStillView_DblClick Error.(6)\r\n")), 1)
        << log().toStdString();

    // Three corners on one line enclose nothing: an area of 0 converts without a fault.
    click(100, 300);
    click(200, 300);
    doubleClick(300, 300);
    ASSERT_EQ(results().count(), 1);
    EXPECT_EQ(cell(1, 2), QStringLiteral("0.00"));
    EXPECT_EQ(countOf(QStringLiteral("Error.(")), 1) << log().toStdString();
}
