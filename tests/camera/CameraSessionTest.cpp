#include "ICubeStandIn.h"
#include "ScriptedPrompter.h"
#include "TempDir.h"
#include "camera/CameraSession.h"
#include "camera/icube/ICubeDriver.h"
#include "common/ErrorLog.h"
#include "common/MessageTable.h"
#include "common/Settings.h"

#include <gtest/gtest.h>
#include <QDir>

using namespace tavix;
using tavix::test::ICubeStandIn;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

namespace {

MessageTable shippedMessages()
{
    QFile f(QDir(QStringLiteral(TAVIX_SOURCE_DATA_DIR)).filePath(QStringLiteral("Message_E.txt")));
    f.open(QIODevice::ReadOnly);
    MessageTable m;
    m.parse(QString::fromUtf8(f.readAll()));
    return m;
}

class CameraSessionOnStandIn : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(driver.loaded()) << driver.errorText().toStdString();
        standIn.reset();
        standIn.setCameraCount(1);
        standIn.setVersion("2.1.0");
        standIn.setName("TX-500");
        standIn.setModeList({1, 5, 8});
        standIn.setMode(5);
        view.window = 0x5a5a;
        view.placeCameraView = [this](QSize s) { placed = s; };
        view.showResolution = [this](const QString& t) { resolution = t; };
        view.endProgram = [this] {
            ++ended;
            startedWhenEnded = standIn.isStarted();
            openWhenEnded = standIn.isOpen();
        };
    }

    QString log() const { return QString::fromUtf8(dir.read(QStringLiteral("Error.Log"))); }
    bool logHas(const QString& line) const
    {
        return log().contains(QLatin1Char(' ') + line + QStringLiteral("\r\n"));
    }
    bool open() { return session.open(view); }

    TempDir dir;
    ErrorLog errorLog{dir.file(QStringLiteral("Error.Log"))};
    Settings settings;
    MessageTable messages = shippedMessages();
    ScriptedPrompter prompter;
    ICubeDriver driver{QStringList{ICubeStandIn::path()}};
    ICubeStandIn standIn;
    CameraSession session{driver, settings, messages, errorLog, prompter};
    CameraSession::View view;
    QSize placed;
    QString resolution;
    int ended = 0;
    bool startedWhenEnded = false;
    bool openWhenEnded = false;
};

}  // namespace

TEST_F(CameraSessionOnStandIn, Open_LogsVersionAndName_AndStartsIntoTheWindow)
{
    ASSERT_TRUE(open());
    EXPECT_TRUE(logHas(QStringLiteral("ICubeSDK API Version 2.1.0")));
    EXPECT_TRUE(logHas(QStringLiteral("Camera Name:TX-500")));
    EXPECT_EQ(standIn.lastArgs("ICubeSDK_SetCamParameter"), QStringLiteral("0,43,1"));
    EXPECT_EQ(standIn.lastArgs("ICubeSDK_SetDisplayMode"), QStringLiteral("0,1,0,0,0,0"));
    EXPECT_EQ(standIn.lastWindow(), 0x5a5au);
    EXPECT_EQ(standIn.lastArgs("ICubeSDK_Start"), QStringLiteral("0,23130,-1,0"));
    EXPECT_TRUE(standIn.isStarted());
    EXPECT_EQ(resolution, QStringLiteral("Resolution:1280x1024"));
    EXPECT_EQ(placed, QSize(1280, 1024));
    EXPECT_TRUE(prompter.messages.empty());
}

TEST_F(CameraSessionOnStandIn, NoCamera_LogsAndReportsAndEnds)
{
    prompter.answers = {Prompter::Answer::Ok};
    standIn.setCameraCount(0);
    EXPECT_FALSE(open());
    EXPECT_TRUE(logHas(QStringLiteral("Error: ICubeSDK_Init(NumOfCam=0)")));
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text,
              messages.text(20104) + QStringLiteral("\r\n") + messages.text(20105));
    EXPECT_EQ(prompter.messages[0].title, messages.text(11103));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Critical);
    EXPECT_EQ(standIn.callCount("ICubeSDK_Start"), 0);
}

TEST_F(CameraSessionOnStandIn, TwoCameras_LogUnknownNameAndUseTheFirst)
{
    standIn.setCameraCount(2);
    ASSERT_TRUE(open());
    EXPECT_TRUE(logHas(QStringLiteral("Camera Name:Unkown")));
    EXPECT_EQ(standIn.callCount("ICubeSDK_GetName"), 0);
    EXPECT_EQ(standIn.lastArgs("ICubeSDK_Open"), QStringLiteral("0"));
}

TEST_F(CameraSessionOnStandIn, OpenReturningMinus24_CountsAsOpen)
{
    standIn.setResult("ICubeSDK_Open", -24);
    EXPECT_TRUE(open());
    EXPECT_FALSE(log().contains(QStringLiteral("ICubeSDK_Open(")));
}

TEST_F(CameraSessionOnStandIn, Parameter43ReturningMinus2_IsSuccess)
{
    standIn.setResult("ICubeSDK_SetCamParameter", -2);
    EXPECT_TRUE(open());
    EXPECT_FALSE(log().contains(QStringLiteral("SetCamParameter")));
}

TEST_F(CameraSessionOnStandIn, Parameter43Failing_IsOnlyLogged)
{
    standIn.setResult("ICubeSDK_SetCamParameter", -7);
    EXPECT_TRUE(open());
    EXPECT_TRUE(logHas(QStringLiteral("Error: ICubeSDK_SetCamParameter(-7)")));
    EXPECT_TRUE(prompter.messages.empty());
}

TEST_F(CameraSessionOnStandIn, DefaultResolutionNotSet_KeepsTheCamerasMode)
{
    settings.DEFAULTRESOLUTION = -1;
    ASSERT_TRUE(open());
    EXPECT_EQ(standIn.callCount("ICubeSDK_SetMode"), 0);
    EXPECT_EQ(session.currentMode(), 5);
}

TEST_F(CameraSessionOnStandIn, DefaultResolutionNotListed_KeepsTheCamerasMode)
{
    settings.DEFAULTRESOLUTION = 3;
    ASSERT_TRUE(open());
    EXPECT_EQ(standIn.callCount("ICubeSDK_SetMode"), 0);
    EXPECT_EQ(session.currentMode(), 5);
    EXPECT_EQ(resolution, QStringLiteral("Resolution:1280x1024"));
}

TEST_F(CameraSessionOnStandIn, ListedDefaultResolution_IsSet)
{
    settings.DEFAULTRESOLUTION = 8;
    ASSERT_TRUE(open());
    EXPECT_EQ(standIn.lastArgs("ICubeSDK_SetMode"), QStringLiteral("0,8"));
    EXPECT_EQ(session.currentMode(), 8);
    EXPECT_EQ(placed, QSize(2592, 1944));
}

struct FatalCase {
    const char* name;
    const char* function;
    int status;
    const char* logLine;
    bool noCameraMessage;
};

class CameraSessionFatal : public CameraSessionOnStandIn, public ::testing::WithParamInterface<FatalCase> {};

TEST_P(CameraSessionFatal, LogsReportsAndShutsDown)
{
    prompter.answers = {Prompter::Answer::Ok};
    const FatalCase& c = GetParam();
    settings.DEFAULTRESOLUTION = 8;
    standIn.setResult(c.function, c.status);
    EXPECT_FALSE(open());
    EXPECT_TRUE(logHas(QLatin1String(c.logLine))) << log().toStdString();
    ASSERT_EQ(prompter.messages.size(), 1u);
    const auto& m = prompter.messages[0];
    EXPECT_EQ(m.icon, Prompter::Icon::Critical);
    if (c.noCameraMessage) {
        EXPECT_EQ(m.title, messages.text(11103));
    } else {
        EXPECT_EQ(m.text, messages.text(26999, c.status));
        EXPECT_EQ(m.title, messages.text(26998));
    }
    EXPECT_FALSE(standIn.isStarted());
    // The camera is stopped and closed first, then every window unloads.
    EXPECT_EQ(ended, 1);
    EXPECT_FALSE(startedWhenEnded);
    EXPECT_FALSE(openWhenEnded);
}

INSTANTIATE_TEST_SUITE_P(
    EachStep, CameraSessionFatal,
    ::testing::Values(
        FatalCase{"Version", "ICubeSDK_GetVersion", 1, "Error: ICubeSDK_GetVersion(1)", false},
        FatalCase{"Name", "ICubeSDK_GetName", -3, "Error: ICubeSDK_GetName(-3)", true},
        FatalCase{"Open", "ICubeSDK_Open", -5, "Error: ICubeSDK_Open(-5)", false},
        FatalCase{"ModeList", "ICubeSDK_GetModeList", -6, "Error: ICubeSDK_GetModeList(-6)", false},
        FatalCase{"Mode", "ICubeSDK_GetMode", -4, "ICubeSDK_GetMode(-4)", false},
        FatalCase{"SetMode", "ICubeSDK_SetMode", -8, "Error: ICubeSDK_SetMode(-8)", false},
        FatalCase{"DisplayMode", "ICubeSDK_SetDisplayMode", -9, "Error: ICubeSDK_SetDisplayMode(-9)", false},
        FatalCase{"Start", "ICubeSDK_Start", -10, "Error: ICubeSDK_Start(-10)", false}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(CameraSessionOnStandIn, GetModeFailure_IsLoggedWithoutErrorPrefix)
{
    prompter.answers = {Prompter::Answer::Ok};
    standIn.setResult("ICubeSDK_GetMode", -4);
    EXPECT_FALSE(open());
    EXPECT_FALSE(log().contains(QStringLiteral("Error: ICubeSDK_GetMode")));
}

TEST_F(CameraSessionOnStandIn, Exit_StopsAndCloses)
{
    ASSERT_TRUE(open());
    session.exit();
    EXPECT_FALSE(standIn.isStarted());
    EXPECT_EQ(standIn.callCount("ICubeSDK_Close"), 1);
    EXPECT_FALSE(log().contains(QStringLiteral("Stop(")));
}

TEST_F(CameraSessionOnStandIn, Exit_LogsFailuresAndGoesOn)
{
    ASSERT_TRUE(open());
    standIn.setResult("ICubeSDK_Stop", -11);
    standIn.setResult("ICubeSDK_Close", -12);
    session.exit();
    EXPECT_TRUE(logHas(QStringLiteral("Error: ICubeSDK_Stop(-11)")));
    EXPECT_TRUE(logHas(QStringLiteral("Error: ICubeSDK_Close(-12)")));
    EXPECT_TRUE(prompter.messages.empty());
}

TEST_F(CameraSessionOnStandIn, ChangeMode_StopsSetsAndStartsAgain_AndKeepsTheChoice)
{
    ASSERT_TRUE(open());
    ASSERT_TRUE(session.changeMode(1));
    EXPECT_EQ(standIn.mode(), 1);
    EXPECT_TRUE(standIn.isStarted());
    EXPECT_EQ(settings.DEFAULTRESOLUTION, 1);
    EXPECT_EQ(resolution, QStringLiteral("Resolution:640x480"));
}

TEST_F(CameraSessionOnStandIn, Parameter43Failing_DoesNotEndTheProgram)
{
    standIn.setResult("ICubeSDK_SetCamParameter", -7);
    ASSERT_TRUE(open());
    EXPECT_EQ(ended, 0);
}

TEST_F(CameraSessionOnStandIn, ChangeModeFailure_ClosesTheCamera_AndTheStartThatFollowsDecides)
{
    prompter.answers = {Prompter::Answer::Ok};
    ASSERT_TRUE(open());
    standIn.setResult("ICubeSDK_SetMode", -8);
    EXPECT_FALSE(session.changeMode(1));
    EXPECT_TRUE(logHas(QStringLiteral("Error: ICubeSDK_SetMode(-8)")));
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, messages.text(26999, -8));
    EXPECT_EQ(prompter.messages[0].title, messages.text(26998));
    EXPECT_EQ(standIn.callCount("ICubeSDK_Close"), 1);
    EXPECT_EQ(settings.DEFAULTRESOLUTION, 1);
    // This camera starts again although it was closed: nothing was fatal.
    EXPECT_TRUE(standIn.isStarted());
    EXPECT_EQ(ended, 0);
}

TEST_F(CameraSessionOnStandIn, StartFailingAfterAModeChange_EndsTheProgram)
{
    prompter.answers = {Prompter::Answer::Ok};
    ASSERT_TRUE(open());
    standIn.setResult("ICubeSDK_Start", -10);
    session.changeMode(1);
    EXPECT_TRUE(logHas(QStringLiteral("Error: ICubeSDK_Start(-10)")));
    EXPECT_EQ(ended, 1);
    EXPECT_FALSE(openWhenEnded);
}
