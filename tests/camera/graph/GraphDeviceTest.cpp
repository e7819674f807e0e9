#include "TempDir.h"
#include "camera/graph/GraphDevice.h"

#include <gtest/gtest.h>
#include <QFile>

using namespace tavix;

namespace {
const QString kById = QStringLiteral("/dev/v4l/by-id/usb-Scope_USB_Microscope_SN42-video-index0");

QString readAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

void writeAll(const QString& path, const QString& text)
{
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(text.toUtf8());
}
}  // namespace

struct GraphDeviceCase {
    const char* before;
    const char* after;
};

class GraphDeviceText : public ::testing::TestWithParam<GraphDeviceCase> {};

TEST_P(GraphDeviceText, WithDevice_SetsTheFirstV4l2srcDevice)
{
    const QString after = GraphDevice::withDevice(QString::fromUtf8(GetParam().before), kById);
    EXPECT_EQ(after.toStdString(), QString::fromUtf8(GetParam().after).arg(kById).toStdString());
}

INSTANTIATE_TEST_SUITE_P(
    Pipelines, GraphDeviceText,
    ::testing::Values(
        GraphDeviceCase{"v4l2src device=/dev/video0 name=Camera", "v4l2src device=%1 name=Camera"},
        GraphDeviceCase{"v4l2src name=Camera", "v4l2src device=%1 name=Camera"},
        GraphDeviceCase{"v4l2src", "v4l2src device=%1"},
        GraphDeviceCase{
            "# v4l2src device=/dev/video9\nv4l2src device=/dev/video0 ! jpegdec ! identity name=Camera",
            "# v4l2src device=/dev/video9\nv4l2src device=%1 ! jpegdec ! identity name=Camera"},
        GraphDeviceCase{"v4l2src device=\"/dev/my cam\" io-mode=2 !\nimage/jpeg ! identity name=Camera",
                        "v4l2src device=%1 io-mode=2 !\nimage/jpeg ! identity name=Camera"},
        // The device= of a later element is not the source's.
        GraphDeviceCase{"v4l2src name=Camera ! fakesink device=x",
                        "v4l2src device=%1 name=Camera ! fakesink device=x"}));

TEST(GraphDevice, WithDevice_APathWithABlankIsQuoted)
{
    EXPECT_EQ(GraphDevice::withDevice(QStringLiteral("v4l2src name=Camera"), QStringLiteral("/dev/my cam")),
              QStringLiteral("v4l2src device=\"/dev/my cam\" name=Camera"));
}

TEST(GraphDevice, WithDevice_NoV4l2srcIsNull)
{
    EXPECT_TRUE(
        GraphDevice::withDevice(QStringLiteral("videotestsrc ! identity name=Camera"), kById).isNull());
    // A name that merely contains the word is no v4l2src.
    EXPECT_TRUE(GraphDevice::withDevice(QStringLiteral("myv4l2srcx name=Camera"), kById).isNull());
}

TEST(GraphDevice, Choose_WritesTheStablePathIntoTheFile)
{
    test::TempDir dir;
    const QString path = dir.path() + QStringLiteral("/Camera.grf");
    writeAll(path, QStringLiteral("# the first camera\nv4l2src device=/dev/video0 name=Camera\n"));
    EXPECT_EQ(GraphDevice::choose(path, kById), 0);
    EXPECT_EQ(readAll(path),
              QStringLiteral("# the first camera\nv4l2src device=%1 name=Camera\n").arg(kById));
}

TEST(GraphDevice, Choose_AFileWithoutV4l2srcIsLeftAsItWas)
{
    test::TempDir dir;
    const QString path = dir.path() + QStringLiteral("/TestSource.grf");
    const QString text = QStringLiteral("videotestsrc ! identity name=Camera\n");
    writeAll(path, text);
    EXPECT_EQ(GraphDevice::choose(path, kById), 5);
    EXPECT_EQ(readAll(path), text);
}

TEST(GraphDevice, Choose_AMissingFileIs53)
{
    test::TempDir dir;
    EXPECT_EQ(GraphDevice::choose(dir.path() + QStringLiteral("/none.grf"), kById), 53);
}

TEST(GraphDevice, DeviceIn_TheFirstV4l2srcsDevice)
{
    EXPECT_EQ(GraphDevice::deviceIn(
                  QStringLiteral("# v4l2src device=/dev/video9\nv4l2src device=/dev/video2 name=Camera")),
              QStringLiteral("/dev/video2"));
    EXPECT_EQ(GraphDevice::deviceIn(QStringLiteral("v4l2src device=\"/dev/my cam\" ! identity name=Camera")),
              QStringLiteral("/dev/my cam"));
    EXPECT_EQ(GraphDevice::deviceIn(QStringLiteral("v4l2src name=Camera")), QString());
    EXPECT_EQ(GraphDevice::deviceIn(QStringLiteral("videotestsrc ! identity name=Camera")), QString());
}

TEST(GraphDevice, DeviceIn_ReadsWhatWithDeviceWrote)
{
    const QString text = GraphDevice::withDevice(QStringLiteral("v4l2src name=Camera"), kById);
    EXPECT_EQ(GraphDevice::deviceIn(text), kById);
}
