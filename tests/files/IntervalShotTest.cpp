#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"
#include "camera/sim/SimCamera.h"
#include "common/Clock.h"
#include "common/ErrorLog.h"
#include "files/IntervalShot.h"
#include "media/BmpFile.h"
#include "media/FrameViewOf.h"
#include "media/JpegWriter.h"

#include <gtest/gtest.h>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <cstdlib>
#include <functional>

using namespace tavix;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

namespace {

SimCamera::Options quietCamera()
{
    SimCamera::Options o;
    o.defaultMode = 1;
    o.noise = false;
    o.threaded = false;
    return o;
}

// Runs a hook whenever the program sleeps: a camera finishing its file meanwhile.
class HookedClock : public ManualClock {
public:
    std::function<void(int sleepNumber)> onSleep;
    int sleeps = 0;
    void sleepMs(int ms) override
    {
        ManualClock::sleepMs(ms);
        ++sleeps;
        if (onSleep)
            onSleep(sleeps);
    }
};

// A camera that only writes files, as the vendor's library does, complete on return.
class FileCamera : public SimCamera {
public:
    using SimCamera::SimCamera;
    bool canGrabFrame() const override { return false; }
};

// One that reports its file as written in the background.
class BackgroundCamera : public FileCamera {
public:
    using FileCamera::FileCamera;
    bool savesInBackground() const override { return true; }
};

class IntervalShotTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(cam.Init(), 1);
        ASSERT_EQ(cam.Open(0), 0);
        frame = cam.renderFrame();
        ASSERT_FALSE(frame.isNull());
    }

    IntervalShot::Job job(const QString& finalName, bool crosses) const
    {
        IntervalShot::Job j;
        j.finalFile = dir.file(finalName);
        j.temporaryFile = dir.file(QStringLiteral("TavixStill_001.bmp"));
        j.crosses.draw = crosses;
        j.crosses.count = 2;
        j.crosses.points = {QPoint(100, 50), QPoint(300, 200)};
        j.crosses.color = kLineColor;
        j.jpegQuality = 95;
        j.stillWaitMs = 400;
        return j;
    }
    QString log() const { return QString::fromUtf8(dir.read(QStringLiteral("Error.Log"))); }

    // The camera's call that hands its frame over fails with `status` while
    // a picture with crosses is saved as `name`.
    void expectFrameCallFailure(const QString& call, int status, const QString& name)
    {
        prompter.answers = {Prompter::Answer::Ok};
        cam.failCall(call, status);
        EXPECT_EQ(shot.save(job(name, true)), IntervalShot::Outcome::CameraFailed);
        EXPECT_TRUE(log().endsWith(QStringLiteral(" Error: ICubeSDK_SaveToFile(%1)\r\n").arg(status)));
        ASSERT_EQ(prompter.messages.size(), 1u);
        EXPECT_EQ(prompter.messages[0].text, messages.text(30011));
        EXPECT_FALSE(dir.exists(name));
    }

    static constexpr QRgb kLineColor = 0xff00ff00;  // bright green: clear in a JPEG's brightness too
    TempDir dir;
    SimCamera cam{quietCamera()};
    QImage frame;
    HookedClock clock;
    ErrorLog errorLog{dir.file(QStringLiteral("Error.Log"))};
    MessageTable messages = test::shippedMessages();
    ScriptedPrompter prompter;
    IntervalShot shot{cam, errorLog, messages, prompter, clock};
};

double luma(QRgb c)
{
    return 0.299 * qRed(c) + 0.587 * qGreen(c) + 0.114 * qBlue(c);
}

// How far green is above the stronger of red and blue.
int greenLead(QRgb c)
{
    return qGreen(c) - std::max(qRed(c), qBlue(c));
}

}  // namespace

TEST_F(IntervalShotTest, WithoutCrosses_TheCameraWritesTheFinalBitmap)
{
    ASSERT_EQ(shot.save(job(QStringLiteral("cell_001.bmp"), false)), IntervalShot::Outcome::Saved);
    QImage read;
    ASSERT_EQ(BmpFile::read(dir.file(QStringLiteral("cell_001.bmp")), read), 0);
    EXPECT_EQ(read, frame);
    EXPECT_FALSE(dir.exists(QStringLiteral("TavixStill_001.bmp")));
}

TEST_F(IntervalShotTest, WithoutCrosses_TheCameraWritesAJpegByTheExtension)
{
    ASSERT_EQ(shot.save(job(QStringLiteral("cell_001.JPG"), false)), IntervalShot::Outcome::Saved);
    QImageReader reader(dir.file(QStringLiteral("cell_001.JPG")));
    EXPECT_EQ(reader.format(), QByteArray("jpeg"));
    EXPECT_EQ(reader.read().size(), frame.size());
}

TEST_F(IntervalShotTest, Crosses_AreDrawnIntoTheBitmap_AtTheirPicturePositions)
{
    ASSERT_EQ(shot.save(job(QStringLiteral("cell_001.bmp"), true)), IntervalShot::Outcome::Saved);
    QImage read;
    ASSERT_EQ(BmpFile::read(dir.file(QStringLiteral("cell_001.bmp")), read), 0);
    ASSERT_EQ(read.size(), frame.size());
    for (const QPoint p : {QPoint(100, 0), QPoint(100, read.height() - 1), QPoint(0, 50),
                           QPoint(read.width() - 1, 50), QPoint(300, 7), QPoint(9, 200)})
        EXPECT_EQ(read.pixel(p), kLineColor) << p.x() << "," << p.y();
    // Beside the lines the camera's picture is untouched.
    EXPECT_EQ(read.pixel(101, 7), frame.pixel(101, 7));
    EXPECT_EQ(read.pixel(9, 51), frame.pixel(9, 51));
    // The temporary bitmap has gone.
    EXPECT_FALSE(dir.exists(QStringLiteral("TavixStill_001.bmp")));
}

TEST_F(IntervalShotTest, Crosses_KeepTheirColour_InTheBitmapReadBackFromTheCamera)
{
    // Red and blue differ: a picture read back in the file's byte order gets them the right way round.
    FileCamera files(quietCamera());
    ASSERT_EQ(files.Init(), 1);
    ASSERT_EQ(files.Open(0), 0);
    const QImage filesFrame = files.renderFrame();
    IntervalShot fromFiles{files, errorLog, messages, prompter, clock};
    IntervalShot::Job j = job(QStringLiteral("cell_002.bmp"), true);
    j.crosses.color = qRgb(250, 20, 5);
    ASSERT_EQ(fromFiles.save(j), IntervalShot::Outcome::Saved);
    QImage read;
    ASSERT_EQ(BmpFile::read(dir.file(QStringLiteral("cell_002.bmp")), read), 0);
    EXPECT_EQ(read.pixel(100, 0), qRgb(250, 20, 5));
    EXPECT_EQ(read.pixel(101, 7), filesFrame.pixel(101, 7));
}

TEST_F(IntervalShotTest, Crosses_AreDrawnIntoTheJpeg_AtItsQuality)
{
    ASSERT_EQ(shot.save(job(QStringLiteral("cell_001.jpg"), true)), IntervalShot::Outcome::Saved);
    QImageReader reader(dir.file(QStringLiteral("cell_001.jpg")));
    ASSERT_EQ(reader.format(), QByteArray("jpeg"));
    const QImage read = reader.read();
    ASSERT_EQ(read.size(), frame.size());
    // A JPEG keeps brightness per pixel but shares colour between neighbours:
    // on a one-pixel line the brightness is the line's and green leads.
    for (const QPoint p :
         {QPoint(100, 5), QPoint(100, 250), QPoint(20, 50), QPoint(300, 120), QPoint(40, 200)}) {
        EXPECT_NEAR(luma(read.pixel(p)), luma(kLineColor), 12) << p.x() << "," << p.y();
        EXPECT_GT(greenLead(read.pixel(p)), 60) << p.x() << "," << p.y();
        EXPECT_LT(greenLead(frame.pixel(p)), 0) << p.x() << "," << p.y();
    }
    EXPECT_LT(greenLead(read.pixel(110, 7)), 0) << "beside the lines";
    EXPECT_FALSE(dir.exists(QStringLiteral("TavixStill_001.bmp")));
}

TEST_F(IntervalShotTest, Crosses_TakeTheFrameFromACameraThatHandsFramesOver_WithoutAFile)
{
    cam.setRecordCalls(true);
    ASSERT_EQ(shot.save(job(QStringLiteral("cell_001.bmp"), true)), IntervalShot::Outcome::Saved);
    const QString calls = cam.calls().join(QLatin1Char(' '));
    EXPECT_TRUE(calls.contains(QStringLiteral("GrabFrame"))) << calls.toStdString();
    EXPECT_FALSE(calls.contains(QStringLiteral("SaveToFile"))) << calls.toStdString();
    EXPECT_EQ(clock.sleeps, 0);
}

TEST_F(IntervalShotTest, FileCamera_CompleteOnReturn_IsReadAtOnce)
{
    FileCamera files(quietCamera());
    ASSERT_EQ(files.Init(), 1);
    ASSERT_EQ(files.Open(0), 0);
    files.renderFrame();
    IntervalShot fileShot(files, errorLog, messages, prompter, clock);
    const IntervalShot::Job j = job(QStringLiteral("cell_001.bmp"), true);
    ASSERT_EQ(fileShot.save(j), IntervalShot::Outcome::Saved);
    EXPECT_EQ(clock.sleeps, 0);
    QImage read;
    ASSERT_EQ(BmpFile::read(j.finalFile, read), 0);
    EXPECT_EQ(read.pixel(300, 9), kLineColor);
    EXPECT_FALSE(QFileInfo::exists(j.temporaryFile)) << "the temporary bitmap has gone";
}

TEST_F(IntervalShotTest, GrabFailure_IsLoggedAndReported)
{
    expectFrameCallFailure(QStringLiteral("GrabFrame"), -8, QStringLiteral("cell_001.bmp"));
}

TEST_F(IntervalShotTest, ReadFailure_ForAJpeg_IsLoggedAndReported)
{
    expectFrameCallFailure(QStringLiteral("readFrame"), -10, QStringLiteral("cell_001.jpg"));
}

TEST_F(IntervalShotTest, JpegWithCrosses_IsCompressedFromTheFrameWhereItLies_AsFromAGrabbedCopy)
{
    cam.setRecordCalls(true);
    const IntervalShot::Job j = job(QStringLiteral("cell_001.jpg"), true);
    ASSERT_EQ(shot.save(j), IntervalShot::Outcome::Saved);
    const QString calls = cam.calls().join(QLatin1Char(' '));
    EXPECT_TRUE(calls.contains(QStringLiteral("readFrame"))) << calls.toStdString();
    EXPECT_FALSE(calls.contains(QStringLiteral("GrabFrame"))) << calls.toStdString();
    EXPECT_FALSE(calls.contains(QStringLiteral("SaveToFile"))) << calls.toStdString();

    QImage drawn = frame.copy();
    IntervalShot::drawCrosses(drawn, j.crosses);
    QByteArray expected;
    ASSERT_EQ(JpegWriter::encode(drawn, j.jpegQuality, expected), JpegWriter::kOk);
    EXPECT_TRUE(dir.read(QStringLiteral("cell_001.jpg")) == expected) << "not the grabbed copy's file";
    EXPECT_FALSE(dir.exists(QStringLiteral("TavixStill_001.bmp")));
}

namespace {

// A frame camera whose frames are grey: compressed from a colour copy, so
// that the lines keep their colour.
class GreyCamera : public SimCamera {
public:
    using SimCamera::SimCamera;
    int readFrame(int, const FrameReader& read) override
    {
        ++reads;
        read(frameViewOf(grey));
        return 0;
    }
    int GrabFrame(int, QImage& frame) override
    {
        ++grabs;
        frame = grey;
        return 0;
    }
    QImage grey;
    int reads = 0, grabs = 0;
};

}  // namespace

TEST_F(IntervalShotTest, JpegWithCrosses_OfAGreyFrame_IsCompressedFromAColourCopy)
{
    GreyCamera greyCam(quietCamera());
    greyCam.grey = frame.convertToFormat(QImage::Format_Grayscale8);
    IntervalShot greyShot(greyCam, errorLog, messages, prompter, clock);
    ASSERT_EQ(greyShot.save(job(QStringLiteral("cell_001.jpg"), true)), IntervalShot::Outcome::Saved);
    EXPECT_EQ(greyCam.reads, 1);
    EXPECT_EQ(greyCam.grabs, 1);
    const QImage read(dir.file(QStringLiteral("cell_001.jpg")));
    ASSERT_EQ(read.size(), frame.size());
    EXPECT_GT(greenLead(read.pixel(100, 250)), 60);
    EXPECT_LT(std::abs(greenLead(read.pixel(110, 7))), 8) << "grey beside the lines";
}

TEST_F(IntervalShotTest, BackgroundCamera_IsReadAfterTheWait_UpToThreeTimes)
{
    BackgroundCamera background(quietCamera());
    ASSERT_EQ(background.Init(), 1);
    ASSERT_EQ(background.Open(0), 0);
    background.renderFrame();
    background.failCall(QStringLiteral("SaveToFile"), 0);  // success, but the file comes later
    const IntervalShot::Job j = job(QStringLiteral("cell_001.bmp"), true);
    // The file is complete during the third wait.
    clock.onSleep = [&](int n) {
        if (n == 3) {
            ASSERT_EQ(BmpFile::write(j.temporaryFile, frame), 0);
        }
    };
    IntervalShot backgroundShot(background, errorLog, messages, prompter, clock);
    ASSERT_EQ(backgroundShot.save(j), IntervalShot::Outcome::Saved);
    EXPECT_EQ(clock.sleeps, 3);
    EXPECT_EQ(clock.tickMs(), 3 * 400);
    QImage read;
    ASSERT_EQ(BmpFile::read(j.finalFile, read), 0);
    EXPECT_EQ(read.pixel(100, 0), kLineColor);
    EXPECT_TRUE(prompter.messages.empty());
}

TEST_F(IntervalShotTest, TemporaryBitmapNeverComplete_IsLoggedAndReported_AfterThreeReads)
{
    prompter.answers = {Prompter::Answer::Ok};
    FileCamera files(quietCamera());
    ASSERT_EQ(files.Init(), 1);
    ASSERT_EQ(files.Open(0), 0);
    files.failCall(QStringLiteral("SaveToFile"), 0);  // success, but no file
    IntervalShot fileShot(files, errorLog, messages, prompter, clock);
    EXPECT_EQ(fileShot.save(job(QStringLiteral("cell_001.bmp"), true)), IntervalShot::Outcome::CameraFailed);
    EXPECT_EQ(clock.sleeps, 2);  // the first read needs no wait from this camera
    EXPECT_TRUE(log().endsWith(QStringLiteral(" Error:IS_DrawCrossLine FileCheck Error.\r\n")));
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, messages.text(30011));
    EXPECT_EQ(prompter.messages[0].title, messages.text(30012));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Critical);
    EXPECT_FALSE(dir.exists(QStringLiteral("cell_001.bmp")));
}

TEST_F(IntervalShotTest, CameraWriteFailure_IsLoggedAndReported)
{
    prompter.answers = {Prompter::Answer::Ok};
    cam.failCall(QStringLiteral("SaveToFile"), -8);
    EXPECT_EQ(shot.save(job(QStringLiteral("cell_001.jpg"), false)), IntervalShot::Outcome::CameraFailed);
    EXPECT_TRUE(log().endsWith(QStringLiteral(" Error: ICubeSDK_SaveToFile(-8)\r\n")));
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, messages.text(30011));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Critical);
}

TEST_F(IntervalShotTest, FinalFileThatCannotBeWritten_IsLoggedByTheDrawingRoutineWithoutABox)
{
    IntervalShot::Job j = job(QStringLiteral("gone/cell_001.jpg"), true);
    EXPECT_EQ(shot.save(j), IntervalShot::Outcome::WriteFailed);
    EXPECT_TRUE(log().endsWith(QStringLiteral(" frmMain:IS_DrawCrossLine Error.(76)\r\n")));
    EXPECT_TRUE(prompter.messages.empty());
    EXPECT_FALSE(dir.exists(QStringLiteral("TavixStill_001.bmp")));
}

TEST_F(IntervalShotTest, HeldStill_IsSavedInsteadOfACameraPicture)
{
    QImage still(64, 48, QImage::Format_RGB888);
    still.fill(Qt::darkBlue);
    IntervalShot::Job j = job(QStringLiteral("0001.jpg"), true);
    j.crosses.count = 1;
    j.crosses.points[0] = QPoint(10, 20);
    cam.failCall(QStringLiteral("SaveToFile"), -8);  // the camera is not asked
    ASSERT_EQ(shot.saveStill(still, j), IntervalShot::Outcome::Saved);
    const QImage read = QImageReader(j.finalFile).read();
    ASSERT_EQ(read.size(), still.size());
    EXPECT_NEAR(luma(read.pixel(10, 40)), luma(kLineColor), 15);
    EXPECT_NEAR(luma(read.pixel(30, 20)), luma(kLineColor), 15);
    EXPECT_LT(luma(read.pixel(30, 40)), 40);
    EXPECT_TRUE(prompter.messages.empty());
}

namespace {

QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A picture whose every pixel differs from its neighbours.
QImage pattern(QImage::Format format)
{
    QImage picture(40, 30, QImage::Format_RGB32);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixel(x, y, qRgb(x * 6, y * 8, (x * y) & 255));
    return picture.convertToFormat(format);
}

IntervalShot::Crosses crosses(int count, QPoint first, QPoint second = {})
{
    IntervalShot::Crosses c;
    c.draw = true;
    c.count = count;
    c.points = {first, second};
    c.color = QColor(250, 20, 5);
    return c;
}

class DrawCrosses : public ::testing::TestWithParam<QImage::Format> {};

}  // namespace

TEST_P(DrawCrosses, TwoCrosses_AreExactlyOneCrossDrawnTwice)
{
    QImage both = pattern(GetParam());
    QImage twice = both.copy();
    IntervalShot::drawCrosses(both, crosses(2, QPoint(5, 7), QPoint(31, 22)));
    IntervalShot::drawCrosses(twice, crosses(1, QPoint(5, 7)));
    IntervalShot::drawCrosses(twice, crosses(1, QPoint(31, 22)));

    EXPECT_EQ(both, twice);
    EXPECT_EQ(both.pixel(5, 29), qRgb(250, 20, 5));
    EXPECT_EQ(both.pixel(39, 22), qRgb(250, 20, 5));
    EXPECT_EQ(both.pixel(6, 8), pattern(GetParam()).pixel(6, 8));
}

TEST_P(DrawCrosses, LinesOutsideThePicture_AreLeftOut_AndTheOtherLineIsDrawn)
{
    const QImage original = pattern(GetParam());
    QImage picture = original;
    IntervalShot::drawCrosses(picture,
                              crosses(2, QPoint(-1, 30), QPoint(40, 3)));  // x and y one past the edges

    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            ASSERT_EQ(picture.pixel(x, y), y == 3 ? qRgb(250, 20, 5) : original.pixel(x, y)) << x << "," << y;
}

TEST_P(DrawCrosses, OnlyTheFirstCross_WhenOneIsShown)
{
    QImage picture = pattern(GetParam());
    IntervalShot::drawCrosses(picture, crosses(1, QPoint(2, 2), QPoint(20, 20)));

    EXPECT_EQ(picture.pixel(2, 25), qRgb(250, 20, 5));
    EXPECT_NE(picture.pixel(20, 25), qRgb(250, 20, 5));
}

INSTANTIATE_TEST_SUITE_P(Formats, DrawCrosses,
                         ::testing::Values(QImage::Format_RGB888, QImage::Format_BGR888,
                                           QImage::Format_RGB32));

TEST_F(IntervalShotTest, FileCamera_Jpeg_IsTheCamerasFrameWithItsCrosses_CompressedOnce)
{
    FileCamera files(quietCamera());
    ASSERT_EQ(files.Init(), 1);
    ASSERT_EQ(files.Open(0), 0);
    QImage expected = files.renderFrame();
    IntervalShot fileShot(files, errorLog, messages, prompter, clock);
    const IntervalShot::Job j = job(QStringLiteral("cell_001.jpg"), true);
    ASSERT_EQ(fileShot.save(j), IntervalShot::Outcome::Saved);

    IntervalShot::drawCrosses(expected, j.crosses);
    QByteArray bytes;
    ASSERT_EQ(JpegWriter::encode(expected, j.jpegQuality, bytes), JpegWriter::kOk);
    EXPECT_EQ(fileBytes(j.finalFile), bytes);
    EXPECT_FALSE(QFileInfo::exists(j.temporaryFile));
}

TEST_F(IntervalShotTest, FileCamera_Jpeg_OfABitmapOnlyQtReads_IsTheSameFile)
{
    // A camera that writes a palette bitmap: read through Qt into a picture, as before.
    FileCamera files(quietCamera());
    ASSERT_EQ(files.Init(), 1);
    ASSERT_EQ(files.Open(0), 0);
    files.failCall(QStringLiteral("SaveToFile"), 0);  // success, the file is written here
    const IntervalShot::Job j = job(QStringLiteral("cell_001.jpg"), true);
    QImage grey(64, 48, QImage::Format_Indexed8);
    QList<QRgb> table;
    for (int i = 0; i < 256; ++i)
        table.append(qRgb(i, i, i));
    grey.setColorTable(table);
    for (int y = 0; y < grey.height(); ++y)
        for (int x = 0; x < grey.width(); ++x)
            grey.scanLine(y)[x] = static_cast<uchar>(x * 4);
    const QString copy = dir.file(QStringLiteral("grey.bmp"));
    ASSERT_TRUE(grey.save(copy, "BMP"));
    QImage expected;
    ASSERT_EQ(BmpFile::readAsStored(copy, expected), 0);
    // The file is there for the second read.
    clock.onSleep = [&](int) { QFile::copy(copy, j.temporaryFile); };
    IntervalShot fileShot(files, errorLog, messages, prompter, clock);
    ASSERT_EQ(fileShot.save(j), IntervalShot::Outcome::Saved);

    IntervalShot::drawCrosses(expected, j.crosses);
    QByteArray bytes;
    ASSERT_EQ(JpegWriter::encode(expected, j.jpegQuality, bytes), JpegWriter::kOk);
    EXPECT_EQ(fileBytes(j.finalFile), bytes);
}

TEST_F(IntervalShotTest, HeldStill_Of32Bits_GivesTheFileOfIts24BitForm_AndStaysUndrawn)
{
    const QImage still = pattern(QImage::Format_RGB32);
    IntervalShot::Job j = job(QStringLiteral("0001.jpg"), true);
    j.crosses = crosses(2, QPoint(5, 7), QPoint(31, 22));
    ASSERT_EQ(shot.saveStill(still, j), IntervalShot::Outcome::Saved);

    QImage expected = still.convertToFormat(QImage::Format_RGB888);
    IntervalShot::drawCrosses(expected, j.crosses);
    QByteArray bytes;
    ASSERT_EQ(JpegWriter::encode(expected, j.jpegQuality, bytes), JpegWriter::kOk);
    EXPECT_EQ(fileBytes(j.finalFile), bytes);
    EXPECT_EQ(still, pattern(QImage::Format_RGB32));
}
