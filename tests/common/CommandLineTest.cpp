#include "common/CommandLine.h"

#include <gtest/gtest.h>

using namespace tavix;

namespace {

CommandLine parse(QStringList arguments)
{
    arguments.prepend(QStringLiteral("tavix"));
    return CommandLine::parse(arguments, QStringLiteral("1.2.3"));
}

}  // namespace

TEST(CommandLine, NoArguments_Run)
{
    const CommandLine line = parse({});
    EXPECT_EQ(line.action, CommandLine::Action::Run);
    EXPECT_EQ(line.exitCode(), 0);
    EXPECT_TRUE(line.home.isEmpty());
    EXPECT_TRUE(line.camera.isEmpty());
    EXPECT_TRUE(line.picture.isEmpty());
}

TEST(CommandLine, HomeCameraAndPicture)
{
    const CommandLine line = parse({QStringLiteral("--home"), QStringLiteral("/data/t"),
                                    QStringLiteral("--camera=sim"), QStringLiteral("/pictures/a b.jpg")});
    EXPECT_EQ(line.action, CommandLine::Action::Run);
    EXPECT_EQ(line.home, QStringLiteral("/data/t"));
    EXPECT_EQ(line.camera, QStringLiteral("sim"));
    EXPECT_EQ(line.picture, QStringLiteral("/pictures/a b.jpg"));
}

TEST(CommandLine, CameraName_MatchedWithoutCase)
{
    EXPECT_EQ(parse({QStringLiteral("--camera"), QStringLiteral("GenICam")}).action,
              CommandLine::Action::Run);
}

TEST(CommandLine, Help_ListsEveryOption_OneLineEach)
{
    for (const QString& option : {QStringLiteral("--help"), QStringLiteral("-h")}) {
        const CommandLine line = parse({option});
        EXPECT_EQ(line.action, CommandLine::Action::Help);
        EXPECT_EQ(line.exitCode(), 0);
        const QStringList lines = line.output.split(QLatin1Char('\n'));
        for (const char* name : {"--help", "--version", "--home <DIR>", "--camera <NAME>"}) {
            const auto count = std::count_if(lines.cbegin(), lines.cend(), [name](const QString& l) {
                return l.contains(QLatin1String(name));
            });
            EXPECT_EQ(count, 1) << name << "\n" << line.output.toStdString();
        }
        EXPECT_TRUE(line.output.contains(QStringLiteral("sim, icube, genicam"))) << line.output.toStdString();
        EXPECT_TRUE(line.output.contains(QStringLiteral("picture"))) << line.output.toStdString();
    }
}

TEST(CommandLine, Version_PrintsNameAndVersion)
{
    for (const QString& option : {QStringLiteral("--version"), QStringLiteral("-v")}) {
        const CommandLine line = parse({option});
        EXPECT_EQ(line.action, CommandLine::Action::Version);
        EXPECT_EQ(line.output, QStringLiteral("Tavix 1.2.3\n"));
        EXPECT_EQ(line.exitCode(), 0);
    }
}

TEST(CommandLine, UnknownOption_IsAnErrorWithExitCode2)
{
    const CommandLine line = parse({QStringLiteral("--frobnicate")});
    EXPECT_EQ(line.action, CommandLine::Action::Error);
    EXPECT_EQ(line.exitCode(), 2);
    EXPECT_TRUE(line.output.contains(QStringLiteral("frobnicate"))) << line.output.toStdString();
    EXPECT_TRUE(line.output.contains(QStringLiteral("--help"))) << line.output.toStdString();
}

TEST(CommandLine, OptionWithoutItsValue_IsAnError)
{
    const CommandLine line = parse({QStringLiteral("--home")});
    EXPECT_EQ(line.action, CommandLine::Action::Error);
    EXPECT_EQ(line.exitCode(), 2);
    EXPECT_TRUE(line.output.contains(QStringLiteral("home"))) << line.output.toStdString();
}

TEST(CommandLine, UnknownCameraDriver_IsAnError_NamingTheDrivers)
{
    const CommandLine line = parse({QStringLiteral("--camera"), QStringLiteral("webcam")});
    EXPECT_EQ(line.action, CommandLine::Action::Error);
    EXPECT_EQ(line.exitCode(), 2);
    EXPECT_TRUE(line.output.contains(QStringLiteral("'webcam'"))) << line.output.toStdString();
    EXPECT_TRUE(line.output.contains(QStringLiteral("auto, sim"))) << line.output.toStdString();
}

TEST(CommandLine, TwoPictures_AreAnError)
{
    const CommandLine line = parse({QStringLiteral("a.jpg"), QStringLiteral("b.jpg")});
    EXPECT_EQ(line.action, CommandLine::Action::Error);
    EXPECT_EQ(line.exitCode(), 2);
}

TEST(CommandLine, HelpWins_OverOtherOptions)
{
    EXPECT_EQ(parse({QStringLiteral("--camera=sim"), QStringLiteral("--help")}).action,
              CommandLine::Action::Help);
}

TEST(CommandLine, ListCameras_ListsAndStops)
{
    const CommandLine line = parse({QStringLiteral("--list-cameras")});
    EXPECT_EQ(line.action, CommandLine::Action::ListCameras);
    EXPECT_EQ(line.exitCode(), 0);
    EXPECT_TRUE(parse({QStringLiteral("--help")}).output.contains(QStringLiteral("--list-cameras")));
}
