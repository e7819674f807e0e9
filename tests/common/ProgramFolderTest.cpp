#include "TempDir.h"
#include "common/ProgramFolder.h"

#include <gtest/gtest.h>
#include <QDir>

using namespace tavix;
using tavix::test::TempDir;

TEST(ProgramFolder, HomeOptionComesFirst)
{
    ProgramFolder::Sources s;
    s.homeOption = QStringLiteral("/opt/a/");
    s.homeEnvironment = QStringLiteral("/opt/b");
    EXPECT_EQ(ProgramFolder::resolve(s), QStringLiteral("/opt/a"));
}

TEST(ProgramFolder, EnvironmentComesBeforeExecutableFolder)
{
    TempDir exe;
    exe.write(QStringLiteral("Tavix.Ini"), "[COMMON]\r\n");
    ProgramFolder::Sources s;
    s.homeEnvironment = QStringLiteral("/opt/b");
    s.executableFolder = exe.path();
    EXPECT_EQ(ProgramFolder::resolve(s), QStringLiteral("/opt/b"));
}

TEST(ProgramFolder, ExecutableFolderUsed_WhenItHoldsIni)
{
    TempDir exe;
    exe.write(QStringLiteral("Tavix.Ini"), "[COMMON]\r\n");
    ProgramFolder::Sources s;
    s.executableFolder = exe.path();
    s.xdgDataHome = QStringLiteral("/nonexistent");
    EXPECT_EQ(ProgramFolder::resolve(s), exe.path());
}

TEST(ProgramFolder, UserDataFolderSeededFromDefaults_OnFirstStart)
{
    TempDir exe, defaults, data;
    defaults.write(QStringLiteral("Tavix.Ini"), "[COMMON]\r\nAPPNAME=x\r\n");
    defaults.write(QStringLiteral("Message_E.txt"), "1,One\r\n");
    ProgramFolder::Sources s;
    s.executableFolder = exe.path();
    s.xdgDataHome = data.path();
    s.installedDefaults = defaults.path();
    const QString folder = ProgramFolder::resolve(s);
    EXPECT_EQ(folder, data.path() + QStringLiteral("/tavix"));
    EXPECT_EQ(data.read(QStringLiteral("tavix/Message_E.txt")), QByteArray("1,One\r\n"));
}

TEST(ProgramFolder, UserDataFolderNotOverwritten_OnLaterStarts)
{
    TempDir defaults, data;
    defaults.write(QStringLiteral("Tavix.Ini"), "[COMMON]\r\nAPPNAME=default\r\n");
    data.write(QStringLiteral("tavix/Tavix.Ini"), "[COMMON]\r\nAPPNAME=mine\r\n");
    ProgramFolder::Sources s;
    s.xdgDataHome = data.path();
    s.installedDefaults = defaults.path();
    ProgramFolder::resolve(s);
    EXPECT_EQ(data.read(QStringLiteral("tavix/Tavix.Ini")), QByteArray("[COMMON]\r\nAPPNAME=mine\r\n"));
}

TEST(ProgramFolder, UserDataFolderDefaultsToLocalShare)
{
    TempDir home;
    ProgramFolder::Sources s;
    s.userHome = home.path();
    EXPECT_EQ(ProgramFolder::resolve(s), home.path() + QStringLiteral("/.local/share/tavix"));
}

TEST(ProgramFolder, AppendAndJoinNormaliseBackslashes)
{
    EXPECT_EQ(ProgramFolder::append(QStringLiteral("/p"), QStringLiteral("\\Message_E.txt")),
              QStringLiteral("/p/Message_E.txt"));
    EXPECT_EQ(ProgramFolder::join(QStringLiteral("/p"), QStringLiteral("sub\\Camera.grf")),
              QStringLiteral("/p/sub/Camera.grf"));
}

TEST(ProgramFolder, InstalledDefaults_BesideTheExecutablesBinFolder)
{
    // An unpacked package: root/usr/bin/tavix and root/usr/share/tavix/Tavix.Ini.
    TempDir root;
    root.write(QStringLiteral("usr/share/tavix/Tavix.Ini"), "[COMMON]\r\n");
    QDir().mkpath(root.file(QStringLiteral("usr/bin")));
    EXPECT_EQ(ProgramFolder::installedDefaults(root.file(QStringLiteral("usr/bin")), QStringLiteral("/x")),
              root.file(QStringLiteral("usr/share/tavix")));
}

TEST(ProgramFolder, InstalledDefaults_ConfiguredFolder_WhenNoneBesideTheExecutable)
{
    TempDir root;
    QDir().mkpath(root.file(QStringLiteral("usr/bin")));
    EXPECT_EQ(ProgramFolder::installedDefaults(root.file(QStringLiteral("usr/bin")),
                                               QStringLiteral("/usr/share/tavix")),
              QStringLiteral("/usr/share/tavix"));
}
