#include "ICubeStandIn.h"
#include "TempDir.h"
#include "camera/icube/ICubeDriver.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <functional>
#include <ostream>
#include <set>
#include <string>

using namespace tavix;
using tavix::test::ICubeStandIn;
using tavix::test::TempDir;

namespace {

QString lib(const QString& folder)
{
    return folder + QStringLiteral("/libICubeSDK.so");
}

QString copyStandIn(const TempDir& dir)
{
    const QString target = lib(dir.path());
    if (!QFile::copy(ICubeStandIn::path(), target))
        throw std::runtime_error("cannot copy the stand-in");
    return target;
}

std::string text(const QString& s)
{
    return s.toStdString();
}

// A driver over the stand-in, and the stand-in's controls on the same handle.
class ICubeDriverTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(driver.loaded()) << text(driver.errorText());
        standIn.reset();
    }

    ICubeDriver driver{QStringList{ICubeStandIn::path()}};
    ICubeStandIn standIn;
    TempDir dir;
};

}  // namespace

// ---- Finding the library ------------------------------------------------------

TEST(ICubeDriverLoad, Candidates_AreProgramFolderCopyThenSystemName)
{
    EXPECT_EQ(ICubeDriver::candidates(QStringLiteral("/opt/tavix")),
              (QStringList{QStringLiteral("/opt/tavix/libICubeSDK.so"), QStringLiteral("libICubeSDK.so")}));
}

TEST(ICubeDriverLoad, Candidates_AreSystemNameOnly_WhenNoProgramFolder)
{
    EXPECT_EQ(ICubeDriver::candidates(QString()), QStringList{QStringLiteral("libICubeSDK.so")});
}

TEST(ICubeDriverLoad, Load_UsesProgramFolderCopy_BeforeTheSystemOne)
{
    // The original stays loaded under its soname, so the bare name would find it.
    ICubeStandIn system;
    system.reset();
    system.setVersion("SYSTEM");
    TempDir folder;
    const QString copy = copyStandIn(folder);

    ICubeDriver driver(folder.path());

    ASSERT_TRUE(driver.loaded()) << text(driver.errorText());
    EXPECT_EQ(driver.libraryPath(), copy);
    EXPECT_EQ(ICubeStandIn(driver.libraryPath()).libraryPath(), copy);
    QString version;
    EXPECT_EQ(driver.GetVersion(1, version), 0);
    EXPECT_EQ(version, QStringLiteral("2.1.0"));
    EXPECT_EQ(system.callCount("ICubeSDK_GetVersion"), 0);
}

TEST(ICubeDriverLoad, Load_FallsBackToSystemName_WhenProgramFolderLacksLibrary)
{
    // The dynamic loader answers a bare name with a library of that soname that
    // the process holds already, before it searches the system library path:
    // holding the stand-in makes the system branch reachable in-process.
    ICubeStandIn system;
    system.reset();
    system.setVersion("SYSTEM");
    TempDir emptyFolder;

    ICubeDriver driver(emptyFolder.path());

    ASSERT_TRUE(driver.loaded()) << text(driver.errorText());
    EXPECT_EQ(QFileInfo(driver.libraryPath()).canonicalFilePath(),
              QFileInfo(ICubeStandIn::path()).canonicalFilePath());
    QString version;
    EXPECT_EQ(driver.GetVersion(1, version), 0);
    EXPECT_EQ(version, QStringLiteral("SYSTEM"));
}

TEST(ICubeDriverLoad, Load_TriesNextCandidate_WhenOneIsMissing)
{
    TempDir emptyFolder;
    ICubeDriver driver(QStringList{lib(emptyFolder.path()), ICubeStandIn::path()});
    ASSERT_TRUE(driver.loaded()) << text(driver.errorText());
    EXPECT_EQ(driver.libraryPath(), ICubeStandIn::path());
    EXPECT_TRUE(driver.errorText().isEmpty());
}

TEST(ICubeDriverLoad, Load_ReportsEveryPlaceTried_WhenNoneHoldsTheLibrary)
{
    TempDir folder;
    const QString notALibrary = folder.write(QStringLiteral("libICubeSDK.so"), "not a shared object");
    const QString missing = QStringLiteral("/nonexistent/tavix/libICubeSDK.so");

    ICubeDriver driver(QStringList{notALibrary, missing});

    EXPECT_FALSE(driver.loaded());
    EXPECT_TRUE(driver.libraryPath().isEmpty());
    EXPECT_TRUE(
        driver.errorText().startsWith(QStringLiteral("ICubeSDK library not found (libICubeSDK.so): ")))
        << text(driver.errorText());
    EXPECT_TRUE(driver.errorText().contains(notALibrary)) << text(driver.errorText());
    EXPECT_TRUE(driver.errorText().contains(missing)) << text(driver.errorText());
}

TEST(ICubeDriverLoad, Load_ReportsNotFound_WhenProgramFolderAndSystemLackLibrary)
{
    if (void* system = dlopen("libICubeSDK.so", RTLD_LAZY | RTLD_NOLOAD)) {
        dlclose(system);
        GTEST_SKIP() << "a library of that name is loaded already";
    }
    if (void* system = dlopen("libICubeSDK.so", RTLD_LAZY)) {
        dlclose(system);
        GTEST_SKIP() << "this machine has the library on its system path";
    }
    TempDir emptyFolder;

    ICubeDriver driver(emptyFolder.path());

    EXPECT_FALSE(driver.loaded());
    EXPECT_TRUE(
        driver.errorText().startsWith(QStringLiteral("ICubeSDK library not found (libICubeSDK.so): ")));
    EXPECT_TRUE(driver.errorText().contains(lib(emptyFolder.path()))) << text(driver.errorText());
    EXPECT_TRUE(driver.errorText().contains(QStringLiteral("; libICubeSDK.so"))) << text(driver.errorText());
}

TEST(ICubeDriverLoad, Load_NamesMissingFunction_AndLeavesDriverUnloaded)
{
    const QString incomplete = lib(ICubeStandIn::withoutStartFolder());

    ICubeDriver driver(ICubeStandIn::withoutStartFolder());

    EXPECT_FALSE(driver.loaded());
    EXPECT_TRUE(driver.libraryPath().isEmpty());
    EXPECT_EQ(driver.errorText(),
              QStringLiteral("ICubeSDK library lacks ICubeSDK_Start (") + incomplete + ")");
    EXPECT_EQ(driver.Init(), 0);
    EXPECT_EQ(driver.Start(0, 42, nullptr, -1, 0), ICubeDriver::kNotLoaded);
    void* stillLoaded = dlopen(incomplete.toLocal8Bit().constData(), RTLD_LAZY | RTLD_NOLOAD);
    EXPECT_EQ(stillLoaded, nullptr) << "the incomplete library is let go";
    if (stillLoaded)
        dlclose(stillLoaded);
}

TEST(ICubeDriverLoad, Destructor_UnloadsTheLibrary)
{
    const QByteArray file = ICubeStandIn::path().toLocal8Bit();
    {
        ICubeDriver driver(QStringList{ICubeStandIn::path()});
        ASSERT_TRUE(driver.loaded());
    }
    void* stillLoaded = dlopen(file.constData(), RTLD_LAZY | RTLD_NOLOAD);
    EXPECT_EQ(stillLoaded, nullptr);
    if (stillLoaded)
        dlclose(stillLoaded);
}

TEST(ICubeDriverLoad, Load_DoesNotPassOverAnIncompleteLibrary_ForAnotherCopy)
{
    ICubeStandIn complete;  // the bare name would find this one

    ICubeDriver driver(ICubeStandIn::withoutStartFolder());

    EXPECT_FALSE(driver.loaded());
    EXPECT_TRUE(driver.errorText().contains(QStringLiteral("lacks ICubeSDK_Start")))
        << text(driver.errorText());
}

// ---- Every call: arguments in, status out, and the unloaded answer -------------

namespace {

struct SdkCall {
    const char* function;
    std::function<int(ICubeDriver&, const QString& dir)> invoke;  // always camera 3
    const char* args;  // as the stand-in records them; %DIR% is the test's folder
    int whenNotLoaded;
};

void PrintTo(const SdkCall& call, std::ostream* os)
{
    *os << call.function;
}

const SdkCall kCalls[] = {
    {"ICubeSDK_GetVersion",
     [](ICubeDriver& d, const QString&) {
         QString v;
         return d.GetVersion(1, v);
     },
     "1", 1},
    {"ICubeSDK_Init", [](ICubeDriver& d, const QString&) { return d.Init(); }, "", 0},
    {"ICubeSDK_GetName",
     [](ICubeDriver& d, const QString&) {
         QString n;
         return d.GetName(3, n);
     },
     "3", ICubeDriver::kNotLoaded},
    {"ICubeSDK_Open", [](ICubeDriver& d, const QString&) { return d.Open(3); }, "3", ICubeDriver::kNotLoaded},
    {"ICubeSDK_IsOpen", [](ICubeDriver& d, const QString&) { return d.IsOpen(3); }, "3",
     ICubeDriver::kNotLoaded},
    {"ICubeSDK_Close", [](ICubeDriver& d, const QString&) { return d.Close(3); }, "3",
     ICubeDriver::kNotLoaded},
    {"ICubeSDK_SetCamParameter", [](ICubeDriver& d, const QString&) { return d.SetCamParameter(3, 43, 1); },
     "3,43,1", ICubeDriver::kNotLoaded},
    {"ICubeSDK_GetCamParameter",
     [](ICubeDriver& d, const QString&) {
         std::int32_t v = 0;
         return d.GetCamParameter(3, 24, v);
     },
     "3,24,ptr", ICubeDriver::kNotLoaded},
    {"ICubeSDK_GetCamParameterRange",
     [](ICubeDriver& d, const QString&) {
         CamParamRange r;
         return d.GetCamParameterRange(3, 7, r);
     },
     "3,7,ptr", ICubeDriver::kNotLoaded},
    {"ICubeSDK_GetModeList",
     [](ICubeDriver& d, const QString&) {
         std::vector<std::int32_t> m;
         return d.GetModeList(3, m);
     },
     "3,ptr,10", ICubeDriver::kNotLoaded},
    {"ICubeSDK_GetMode",
     [](ICubeDriver& d, const QString&) {
         std::int32_t m = 0;
         return d.GetMode(3, m);
     },
     "3,ptr", ICubeDriver::kNotLoaded},
    {"ICubeSDK_SetMode", [](ICubeDriver& d, const QString&) { return d.SetMode(3, 5); }, "3,5",
     ICubeDriver::kNotLoaded},
    {"ICubeSDK_SetDisplayMode",
     [](ICubeDriver& d, const QString&) { return d.SetDisplayMode(3, 1, 2, 4, 5, 6); }, "3,1,2,4,5,6",
     ICubeDriver::kNotLoaded},
    {"ICubeSDK_Start", [](ICubeDriver& d, const QString&) { return d.Start(3, 4242, nullptr, -1, 0); },
     "3,4242,-1,0", ICubeDriver::kNotLoaded},
    {"ICubeSDK_IsStarted", [](ICubeDriver& d, const QString&) { return d.IsStarted(3); }, "3", 0},
    {"ICubeSDK_Stop", [](ICubeDriver& d, const QString&) { return d.Stop(3); }, "3", ICubeDriver::kNotLoaded},
    {"ICubeSDK_GetGoodFrames",
     [](ICubeDriver& d, const QString&) {
         std::int32_t n = 0;
         return d.GetGoodFrames(3, n);
     },
     "3,ptr", ICubeDriver::kNotLoaded},
    {"ICubeSDK_GetBrokenFrames",
     [](ICubeDriver& d, const QString&) {
         std::int32_t n = 0;
         return d.GetBrokenFrames(3, n);
     },
     "3,ptr", ICubeDriver::kNotLoaded},
    {"ICubeSDK_SaveToFile",
     [](ICubeDriver& d, const QString& dir) { return d.SaveToFile(3, dir + QStringLiteral("/still.bmp")); },
     "3,%DIR%/still.bmp", ICubeDriver::kNotLoaded},
    {"ICubeSDK_SaveAvi",
     [](ICubeDriver& d, const QString& dir) {
         return d.SaveAvi(3, dir + QStringLiteral("/clip.avi"), 0, 60);
     },
     "3,%DIR%/clip.avi,0,60", ICubeDriver::kNotLoaded},
    {"ICubeSDK_GetExposure",
     [](ICubeDriver& d, const QString&) {
         float ms = 0;
         return d.GetExposure(3, ms);
     },
     "3,ptr", ICubeDriver::kNotLoaded},
    {"ICubeSDK_GetParamAuto",
     [](ICubeDriver& d, const QString&) {
         std::int32_t f = 0;
         return d.GetParamAuto(3, 12, f);
     },
     "3,12,ptr", ICubeDriver::kNotLoaded},
    {"ICubeSDK_SetParamAuto", [](ICubeDriver& d, const QString&) { return d.SetParamAuto(3, 7, 1); }, "3,7,1",
     ICubeDriver::kNotLoaded},
    {"ICubeSDK_SetParamAutoDef", [](ICubeDriver& d, const QString&) { return d.SetParamAutoDef(3, 8); },
     "3,8", ICubeDriver::kNotLoaded},
    {"ICubeSDK_SetParamOnePush", [](ICubeDriver& d, const QString&) { return d.SetParamOnePush(3, 6); },
     "3,6", ICubeDriver::kNotLoaded},
};

class ICubeDriverCall : public ICubeDriverTest, public ::testing::WithParamInterface<SdkCall> {};

std::string callName(const ::testing::TestParamInfo<SdkCall>& info)
{
    return std::string(info.param.function).substr(sizeof("ICubeSDK_") - 1);
}

}  // namespace

// The table holds every ICubeSDK_ function the stand-in library exports, as
// its dynamic symbol table lists them, and nothing else.
TEST(ICubeDriverCallTable, CoversEveryBoundFunction)
{
    QProcess nm;
    nm.start(QStringLiteral("nm"),
             {QStringLiteral("-D"), QStringLiteral("--defined-only"), ICubeStandIn::path()});
    ASSERT_TRUE(nm.waitForFinished(20000)) << "nm (binutils) did not run";
    ASSERT_EQ(nm.exitCode(), 0) << nm.readAllStandardError().constData();
    std::set<std::string> exported;
    for (const QByteArray& line : nm.readAllStandardOutput().split('\n')) {
        const QByteArray name = line.split(' ').last();
        if (name.startsWith("ICubeSDK_"))
            exported.insert(name.toStdString());
    }
    std::set<std::string> table;
    for (const SdkCall& call : kCalls)
        EXPECT_TRUE(table.insert(call.function).second) << call.function << " twice";
    EXPECT_EQ(table, exported);
    EXPECT_EQ(exported.size(), 25u);
}

TEST_P(ICubeDriverCall, PassesItsArgumentsToTheLibrary)
{
    GetParam().invoke(driver, dir.path());
    EXPECT_EQ(standIn.callCount(GetParam().function), 1);
    EXPECT_EQ(standIn.lastArgs(GetParam().function),
              QString::fromUtf8(GetParam().args).replace("%DIR%", dir.path()));
}

TEST_P(ICubeDriverCall, ReturnsTheLibrarysStatus)
{
    standIn.setResult(GetParam().function, -77);
    EXPECT_EQ(GetParam().invoke(driver, dir.path()), -77);
}

TEST_P(ICubeDriverCall, AnswersWithoutLibrary_WhenLibraryMissing)
{
    ICubeDriver missing(QStringList{QStringLiteral("/nonexistent/tavix/libICubeSDK.so")});
    ASSERT_FALSE(missing.loaded());
    EXPECT_EQ(GetParam().invoke(missing, dir.path()), GetParam().whenNotLoaded);
    EXPECT_EQ(standIn.callCount(GetParam().function), 0);
}

INSTANTIATE_TEST_SUITE_P(AllFunctions, ICubeDriverCall, ::testing::ValuesIn(kCalls), callName);

// ---- What comes back -------------------------------------------------------------

TEST_F(ICubeDriverTest, GetVersion_ReturnsVersionText)
{
    standIn.setVersion("1.02.3");
    QString version;
    EXPECT_EQ(driver.GetVersion(1, version), 0);
    EXPECT_EQ(version, QStringLiteral("1.02.3"));
}

TEST_F(ICubeDriverTest, GetVersion_KeepsAllNineCharacters_WhenLibraryFillsBuffer)
{
    standIn.setVersion("123456789");
    QString version;
    driver.GetVersion(1, version);
    EXPECT_EQ(version, QStringLiteral("123456789"));
}

TEST_F(ICubeDriverTest, GetVersion_ReportsFailureAsOne)
{
    standIn.setResult("ICubeSDK_GetVersion", 1);
    QString version;
    EXPECT_EQ(driver.GetVersion(1, version), 1);
}

TEST_F(ICubeDriverTest, Init_ReturnsCameraCount_WhenTwoCameras)
{
    standIn.setCameraCount(2);
    EXPECT_EQ(driver.Init(), 2);
}

TEST_F(ICubeDriverTest, Init_ReturnsZero_WhenNoCamera)
{
    standIn.setCameraCount(0);
    EXPECT_EQ(driver.Init(), 0);
}

TEST_F(ICubeDriverTest, GetName_ReturnsCameraName)
{
    standIn.setName("DN-900 Cam");
    QString name;
    EXPECT_EQ(driver.GetName(0, name), 0);
    EXPECT_EQ(name, QStringLiteral("DN-900 Cam"));
}

TEST_F(ICubeDriverTest, GetName_KeepsAllThirteenCharacters_WhenLibraryFillsBuffer)
{
    standIn.setName("ABCDEFGHIJKLM");
    QString name;
    driver.GetName(0, name);
    EXPECT_EQ(name, QStringLiteral("ABCDEFGHIJKLM"));
}

TEST_F(ICubeDriverTest, Open_PassesMinus24Through)
{
    standIn.setResult("ICubeSDK_Open", -24);
    EXPECT_EQ(driver.Open(0), -24);
    EXPECT_TRUE(standIn.isOpen());
}

TEST_F(ICubeDriverTest, IsOpen_FollowsOpenAndClose)
{
    EXPECT_EQ(driver.IsOpen(0), 1);
    driver.Open(0);
    EXPECT_EQ(driver.IsOpen(0), 0);
    driver.Close(0);
    EXPECT_EQ(driver.IsOpen(0), 1);
}

TEST_F(ICubeDriverTest, SetCamParameter_PassesMinus2Through)
{
    standIn.setResult("ICubeSDK_SetCamParameter", -2);
    EXPECT_EQ(driver.SetCamParameter(0, 43, 1), -2);
    EXPECT_EQ(standIn.param(43), 1);
}

TEST_F(ICubeDriverTest, GetCamParameter_ReturnsValue)
{
    standIn.setParam(13, -321);
    std::int32_t value = 0;
    EXPECT_EQ(driver.GetCamParameter(0, 13, value), 0);
    EXPECT_EQ(value, -321);
}

TEST_F(ICubeDriverTest, GetCamParameterRange_FillsFieldsInRecordOrder)
{
    standIn.setParamRange(7, 11, 22, 33, 44, -55, 66);
    CamParamRange range;
    EXPECT_EQ(driver.GetCamParameterRange(0, 7, range), 0);
    EXPECT_EQ(range.enabled, 11);
    EXPECT_EQ(range.autoMode, 22);
    EXPECT_EQ(range.third, 33);
    EXPECT_EQ(range.defaultValue, 44);
    EXPECT_EQ(range.minimum, -55);
    EXPECT_EQ(range.maximum, 66);
}

TEST_F(ICubeDriverTest, GetModeList_ReturnsModesInOrder)
{
    standIn.setModeList({8, 0, 3, 10});
    std::vector<std::int32_t> modes{99};
    EXPECT_EQ(driver.GetModeList(0, modes), 0);
    EXPECT_EQ(modes, (std::vector<std::int32_t>{8, 0, 3, 10}));
}

TEST_F(ICubeDriverTest, GetModeList_KeepsTen_WhenLibraryReportsMore)
{
    standIn.setModeList({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
    std::vector<std::int32_t> modes;
    driver.GetModeList(0, modes);
    EXPECT_EQ(modes, (std::vector<std::int32_t>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST_F(ICubeDriverTest, GetModeList_IsEmpty_WhenLibraryReportsNone)
{
    standIn.setModeList({});
    std::vector<std::int32_t> modes{1, 2};
    EXPECT_EQ(driver.GetModeList(0, modes), 0);
    EXPECT_TRUE(modes.empty());
}

TEST_F(ICubeDriverTest, GetModeAndSetMode_ReadAndWriteTheCamerasMode)
{
    standIn.setMode(4);
    std::int32_t mode = -1;
    EXPECT_EQ(driver.GetMode(0, mode), 0);
    EXPECT_EQ(mode, 4);
    EXPECT_EQ(driver.SetMode(0, 9), 0);
    EXPECT_EQ(standIn.mode(), 9);
}

TEST_F(ICubeDriverTest, Start_PassesFullWidthWindowHandle)
{
    const quintptr window = 0x1234'5678'9abcULL;  // wider than 32 bits
    EXPECT_EQ(driver.Start(0, window, nullptr, -1, 0), 0);
    EXPECT_EQ(standIn.lastWindow(), window);
    EXPECT_EQ(standIn.lastArgs("ICubeSDK_Start"), QStringLiteral("0,20015998343868,-1,0"));
}

TEST_F(ICubeDriverTest, IsStarted_IsOneWhileStreaming)
{
    EXPECT_EQ(driver.IsStarted(0), 0);
    driver.Start(0, 1, nullptr, -1, 0);
    EXPECT_EQ(driver.IsStarted(0), 1);
    driver.Stop(0);
    EXPECT_EQ(driver.IsStarted(0), 0);
}

TEST_F(ICubeDriverTest, ConnectionLost_IsFalse_AfterANormalStopAndClose_EvenWhenUnpluggedThen)
{
    driver.Open(0);
    ASSERT_EQ(driver.Start(0, 1, nullptr, -1, 0), 0);
    EXPECT_FALSE(driver.connectionLost(0)) << "streaming";
    driver.Stop(0);
    EXPECT_FALSE(driver.connectionLost(0)) << "stopped, still open";
    driver.Close(0);
    EXPECT_FALSE(driver.connectionLost(0)) << "closed by the program";
    standIn.unplug();
    EXPECT_FALSE(driver.connectionLost(0)) << "unplugged after the program was done with it";
}

TEST_F(ICubeDriverTest, ConnectionLost_IsTrue_WhenUnpluggedWhileStarted)
{
    driver.Open(0);
    ASSERT_EQ(driver.Start(0, 1, nullptr, -1, 0), 0);
    standIn.unplug();
    EXPECT_EQ(driver.IsStarted(0), 0);
    EXPECT_EQ(driver.IsOpen(0), 1);
    EXPECT_TRUE(driver.connectionLost(0));
    // Nothing that needs the camera works any more.
    std::int32_t count = 0;
    EXPECT_EQ(driver.GetGoodFrames(0, count), ICubeStandIn::kUnplugged);
    EXPECT_EQ(driver.SaveToFile(0, dir.file(QStringLiteral("still.bmp"))), ICubeStandIn::kUnplugged);
    EXPECT_FALSE(dir.exists(QStringLiteral("still.bmp")));
    EXPECT_EQ(driver.Start(0, 1, nullptr, -1, 0), ICubeStandIn::kUnplugged);
    EXPECT_TRUE(driver.connectionLost(0));
}

TEST_F(ICubeDriverTest, ConnectionLost_IsFalse_WhenTheStartFailed)
{
    driver.Open(0);
    standIn.setResult("ICubeSDK_Start", -9);
    ASSERT_EQ(driver.Start(0, 1, nullptr, -1, 0), -9);
    standIn.unplug();
    EXPECT_FALSE(driver.connectionLost(0));
}

TEST(ICubeDriverLoad, ConnectionLost_IsFalse_WithoutTheLibrary)
{
    ICubeDriver missing(QStringList{QStringLiteral("/nonexistent/tavix/libICubeSDK.so")});
    missing.Start(0, 1, nullptr, -1, 0);
    EXPECT_FALSE(missing.connectionLost(0));
}

TEST_F(ICubeDriverTest, FrameCounters_ReturnLibraryCounts)
{
    standIn.setFrames(12345, 67);
    std::int32_t good = 0;
    std::int32_t broken = 0;
    EXPECT_EQ(driver.GetGoodFrames(0, good), 0);
    EXPECT_EQ(driver.GetBrokenFrames(0, broken), 0);
    EXPECT_EQ(good, 12345);
    EXPECT_EQ(broken, 67);
}

TEST_F(ICubeDriverTest, SaveToFile_PassesFileNameAsUtf8)
{
    const QString path = dir.file(QStringLiteral("Bild äöü €.bmp"));
    EXPECT_EQ(driver.SaveToFile(0, path), 0);
    EXPECT_EQ(standIn.lastArgs("ICubeSDK_SaveToFile").toUtf8(), QByteArray("0,") + path.toUtf8());
    EXPECT_TRUE(QFile::exists(path));
}

TEST_F(ICubeDriverTest, SaveAvi_PassesFileNameAsUtf8AndLength)
{
    const QString path = dir.file(QStringLiteral("Aufnahme ß.avi"));
    EXPECT_EQ(driver.SaveAvi(0, path, 0, 900), 0);
    EXPECT_EQ(standIn.lastArgs("ICubeSDK_SaveAvi").toUtf8(), QByteArray("0,") + path.toUtf8() + ",0,900");
}

TEST_F(ICubeDriverTest, GetExposure_ReturnsMilliseconds)
{
    standIn.setExposure(12.375f);
    float ms = 0;
    EXPECT_EQ(driver.GetExposure(0, ms), 0);
    EXPECT_FLOAT_EQ(ms, 12.375f);
}

TEST_F(ICubeDriverTest, GetParamAuto_ReturnsFlag)
{
    standIn.setParamAuto(12, 1);
    std::int32_t flag = 0;
    EXPECT_EQ(driver.GetParamAuto(0, 12, flag), 0);
    EXPECT_EQ(flag, 1);
}

TEST_F(ICubeDriverTest, SetParamAuto_SwitchesTheParametersAutoMode)
{
    EXPECT_EQ(driver.SetParamAuto(0, 7, 1), 0);
    EXPECT_EQ(standIn.paramAuto(7), 1);
    EXPECT_EQ(driver.SetParamAuto(0, 7, 0), 0);
    EXPECT_EQ(standIn.paramAuto(7), 0);
}

TEST_F(ICubeDriverTest, DriverName_IsIcube)
{
    EXPECT_EQ(driver.driverName(), QStringLiteral("icube"));
}
