#include "ScriptedPrompter.h"
#include "TempDir.h"
#include "app/frmMain.h"
#include "camera/SimCamera.h"
#include "camera/ui/CameraPanel.h"
#include "camera/ui/StillViewWidget.h"
#include "common/Clock.h"
#include "files/BmpFile.h"
#include "files/JpegWriter.h"
#include "files/PictureFiles.h"
#include "measure/ResultTable.h"
#include "measure/ui/MeasurePanel.h"

#include <gtest/gtest.h>
#include <QAbstractButton>
#include <QElapsedTimer>
#include <QTest>
#include <random>

using namespace tavix;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

namespace {

QImage sample()
{
    QImage image(64, 48, QImage::Format_RGB888);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixelColor(x, y, QColor(x * 4, y * 5, (x * y) % 256));
    return image;
}

// A damaged copy of a good file, as a bad disk, a cut download or a wrong
// program leaves one: bytes flipped, the end cut off, a header field
// overwritten, bytes dropped or repeated.
QByteArray damaged(const QByteArray& good, std::mt19937& random)
{
    QByteArray bytes = good;
    auto at = [&](qsizetype from) {
        return std::uniform_int_distribution<qsizetype>(from, bytes.size() - 1)(random);
    };
    switch (std::uniform_int_distribution<int>(0, 4)(random)) {
        case 0:  // a few bits flipped anywhere
            for (int i = std::uniform_int_distribution<int>(1, 8)(random); i > 0; --i)
                bytes[at(0)] = char(bytes[at(0)] ^ (1 << (random() % 8)));
            break;
        case 1:  // cut short
            bytes.truncate(at(0));
            break;
        case 2: {  // a header field (sizes, depth, offsets, markers) overwritten
            const qsizetype field = std::uniform_int_distribution<qsizetype>(
                2, std::min<qsizetype>(200, bytes.size() - 4))(random);
            const quint32 value =
                std::uniform_int_distribution<int>(0, 5)(random) == 0 ? 0u : quint32(random());
            for (int i = 0; i < 4; ++i)
                bytes[field + i] = char(value >> (8 * i));
            break;
        }
        case 3:  // a run of bytes dropped
            bytes.remove(at(2), std::uniform_int_distribution<int>(1, 64)(random));
            break;
        default: {  // a run of bytes repeated
            const qsizetype from = at(2);
            bytes.insert(from, bytes.mid(from, std::uniform_int_distribution<int>(1, 256)(random)));
            break;
        }
    }
    return bytes;
}

class BrokenPictures : public ::testing::Test {
protected:
    void SetUp() override
    {
        test::copyShippedData(dir);
        auto factory = [](AppData& data) {
            data.settings.KEEPRESULT = 1;  // no question before each load
            return std::unique_ptr<CameraDriver>(std::make_unique<SimCamera>());
        };
        w = std::make_unique<frmMain>(dir.path(), prompter, clock, factory);
        ASSERT_TRUE(w->Form_Load());
        w->resize(1200, 800);
        w->show();
        QElapsedTimer timer;
        timer.start();
        while (w->camera().liveView().counters().received == 0 && timer.elapsed() < 20000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        click("cmdPlayStop");
        ASSERT_TRUE(w->camera().stillShown());
        measure();
    }

    void click(const char* name)
    {
        auto* button = w->findChild<QAbstractButton*>(QLatin1String(name));
        ASSERT_NE(button, nullptr) << name;
        QTest::mouseClick(button, Qt::LeftButton);
    }

    // One two-point distance on whatever still is shown.
    void measure()
    {
        click("cmdMeasure(0)");
        auto* still = w->camera().stillView();
        QTest::mouseClick(still, Qt::LeftButton, {}, QPoint(5, 5));
        QTest::mouseClick(still, Qt::LeftButton, {}, QPoint(40, 30));
        ASSERT_GT(w->measure().results().count(), 0);
    }

    TempDir dir;
    ScriptedPrompter prompter;
    SystemClock clock;
    std::unique_ptr<frmMain> w;
};

}  // namespace

// A thousand damaged bitmaps and JPEGs through Load picture: each unreadable
// one is told to the user and logged, and leaves the still, its results and
// the window as they were; a readable one is shown.
TEST_F(BrokenPictures, AThousandDamagedFiles_AreEachReadOrRefusedClearly)
{
    QByteArray bmp, jpeg;
    ASSERT_TRUE(BmpFile::encode(sample(), bmp));
    ASSERT_EQ(JpegWriter::encode(sample(), 80, jpeg), JpegWriter::kOk);
    std::mt19937 random(20261123);
    int refused = 0, shown = 0;
    for (int i = 0; i < 1000; ++i) {
        const bool isBmp = i % 2 == 0;
        const QString path = dir.write(QStringLiteral("damaged%1.%2").arg(i).arg(isBmp ? "bmp" : "jpg"),
                                       damaged(isBmp ? bmp : jpeg, random));
        if (w->measure().results().count() == 0)
            measure();
        const QImage stillBefore = w->camera().still();
        const int resultsBefore = w->measure().results().count();
        const size_t messagesBefore = prompter.messages.size();
        prompter.fileNames.push_back(path);
        click("cmdPicLoad");

        if (prompter.messages.size() > messagesBefore) {
            ++refused;
            ASSERT_EQ(prompter.messages.size(), messagesBefore + 1) << path.toStdString();
            ASSERT_EQ(prompter.messages.back().text,
                      w->data().messages.text(PictureFiles::kMsgPictureNotRead, path));
            ASSERT_EQ(w->camera().still(), stillBefore) << "the still stays after " << path.toStdString();
            ASSERT_EQ(w->measure().results().count(), resultsBefore);
        } else {
            ++shown;
            const QImage read = PictureFiles::loadPicture(path).picture;
            ASSERT_FALSE(read.isNull()) << path.toStdString();
            ASSERT_EQ(w->camera().still().size(), read.size()) << "the picture read is shown";
        }
        ASSERT_TRUE(w->isVisible());
    }
    const QString log = QString::fromUtf8(dir.read(QStringLiteral("Error.Log")));
    EXPECT_EQ(log.count(QStringLiteral("frmMain:cmdPicLoad Error.(")), refused);
    EXPECT_GT(refused, 100);
    EXPECT_GT(shown, 100);
    std::printf("[ figures  ] 1000 damaged pictures: %d refused with a message, %d read and shown\n", refused,
                shown);
}
