#include "ICubeStandIn.h"
#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"
#include "camera/StillCapture.h"
#include "camera/icube/ICubeDriver.h"
#include "camera/sim/SimCamera.h"
#include "common/Clock.h"
#include "common/ErrorLog.h"
#include "common/MessageTable.h"
#include "media/BmpFile.h"

#include <gtest/gtest.h>
#include <QRegularExpression>

using namespace tavix;
using tavix::test::ICubeStandIn;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

namespace {

// A still of a size no camera here makes, left behind by an earlier freeze.
QImage oldStill()
{
    QImage image(4, 3, QImage::Format_RGB888);
    image.fill(Qt::red);
    return image;
}

class StillCaptureTest : public ::testing::Test {
protected:
    QString log() const { return QString::fromUtf8(dir.read(QStringLiteral("Error.Log"))); }
    void leaveOldStill() const { ASSERT_EQ(BmpFile::write(tempBitmap, oldStill()), 0); }

    TempDir dir;
    QString tempBitmap = dir.file(QStringLiteral("TavixStill.bmp"));
    ErrorLog errorLog{dir.file(QStringLiteral("Error.Log"))};
    MessageTable messages = test::shippedMessages();
    ScriptedPrompter prompter;
};

// The vendor's library writes the file on its own thread after SaveToFile returned.
class StillCaptureOnStandIn : public StillCaptureTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(driver.loaded()) << driver.errorText().toStdString();
        standIn.reset();
        standIn.setFrameSize(16, 12);
    }

    ICubeDriver driver{QStringList{ICubeStandIn::path()}};
    ICubeStandIn standIn;
};

}  // namespace

TEST_F(StillCaptureOnStandIn, FileWrittenLate_IsWaitedFor_AndTheOldStillIsNeverShown)
{
    leaveOldStill();
    standIn.setSaveDelay(60, 60);  // missing, then half written, then complete
    SystemClock clock;
    StillCapture capture(driver, errorLog, messages, prompter, clock, &BmpFile::read);
    QImage still;
    ASSERT_TRUE(capture.capture(0, tempBitmap, 1000, still)) << log().toStdString();
    EXPECT_EQ(still.size(), QSize(16, 12));
    EXPECT_EQ(capture.displayErrors(), 0);
    EXPECT_FALSE(dir.exists(QStringLiteral("Error.Log")));
}

TEST_F(StillCaptureOnStandIn, FileNotWrittenInTime_LogsDispImageError_AndKeepsTheStill)
{
    leaveOldStill();
    standIn.setSaveDelay(300, 0);
    ManualClock clock;  // the wait passes at once; the camera is still busy
    StillCapture capture(driver, errorLog, messages, prompter, clock, &BmpFile::read);
    QImage still = oldStill();
    EXPECT_FALSE(capture.capture(0, tempBitmap, 250, still));
    EXPECT_GE(clock.tickMs(), 250);
    EXPECT_LT(clock.tickMs(), 260);
    EXPECT_EQ(still, oldStill());
    EXPECT_TRUE(log().endsWith(QStringLiteral(" Error:DispImage Error(Err=53 / Num=1)\r\n")))
        << log().toStdString();
    EXPECT_TRUE(prompter.messages.empty());
}

TEST_F(StillCaptureOnStandIn, EveryFailedDisplay_CountsInTheLogLine)
{
    standIn.setSaveDelay(0, 0);
    const QString unwritable = dir.file(QStringLiteral("no such folder/TavixStill.bmp"));
    ManualClock clock;
    StillCapture capture(driver, errorLog, messages, prompter, clock, &BmpFile::read);
    QImage still;
    EXPECT_FALSE(capture.capture(0, unwritable, 10, still));
    EXPECT_FALSE(capture.capture(0, unwritable, 10, still));
    EXPECT_TRUE(log().endsWith(QStringLiteral(" Error:DispImage Error(Err=53 / Num=2)\r\n")))
        << log().toStdString();
    EXPECT_EQ(capture.displayErrors(), 2);
}

TEST_F(StillCaptureOnStandIn, SaveToFileFailing_IsLoggedAndReported)
{
    prompter.answers = {Prompter::Answer::Ok};
    standIn.setResult("ICubeSDK_SaveToFile", -14);
    ManualClock clock;
    StillCapture capture(driver, errorLog, messages, prompter, clock, &BmpFile::read);
    QImage still = oldStill();
    EXPECT_FALSE(capture.capture(0, tempBitmap, 500, still));
    EXPECT_TRUE(log().endsWith(QStringLiteral(" Error: ICubeSDK_SaveToFile(-14)\r\n")));
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, messages.text(26999, -14));
    EXPECT_EQ(prompter.messages[0].title, messages.text(26998));
    EXPECT_EQ(still, oldStill());
}

// The simulated camera's file is complete when SaveToFile returns.
TEST_F(StillCaptureTest, SynchronousCamera_IsNotWaitedFor)
{
    SimCamera sim;
    sim.failCall(QStringLiteral("SaveToFile"), 0);  // reports success at once
    ManualClock clock;
    StillCapture capture(sim, errorLog, messages, prompter, clock,
                         [](const QString&, QImage&) { return 62; });
    QImage still;
    EXPECT_FALSE(capture.capture(0, tempBitmap, 1000, still));
    EXPECT_EQ(clock.tickMs(), 0);
    EXPECT_TRUE(log().endsWith(QStringLiteral(" Error:DispImage Error(Err=62 / Num=1)\r\n")));
}

TEST_F(StillCaptureTest, PreviousFileIsRemoved_BeforeTheCameraWrites)
{
    leaveOldStill();
    SimCamera sim;
    sim.failCall(QStringLiteral("SaveToFile"), 0);  // reports success, writes nothing
    ManualClock clock;
    StillCapture capture(sim, errorLog, messages, prompter, clock, &BmpFile::read);
    QImage still;
    EXPECT_FALSE(capture.capture(0, tempBitmap, 500, still));
    EXPECT_TRUE(still.isNull());
    EXPECT_FALSE(dir.exists(QStringLiteral("TavixStill.bmp")));
    EXPECT_TRUE(log().endsWith(QStringLiteral(" Error:DispImage Error(Err=53 / Num=1)\r\n")));
}
