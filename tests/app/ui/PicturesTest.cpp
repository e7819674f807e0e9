#include "ScriptedPrompter.h"
#include "SmallDisk.h"
#include "TempDir.h"
#include "app/frmMain.h"
#include "camera/sim/SimCamera.h"
#include "camera/ui/CameraPanel.h"
#include "camera/ui/StillViewWidget.h"
#include "common/Clock.h"
#include "files/PictureFiles.h"
#include "files/ui/PicturePanel.h"
#include "measure/MeasureSession.h"
#include "measure/MeasurementStore.h"
#include "measure/ResultTable.h"
#include "measure/ui/MeasurePanel.h"
#include "media/BmpFile.h"
#include "media/JpegWriter.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSlider>
#include <QStandardPaths>
#include <QTest>
#include <QToolButton>
#include <csetjmp>
#include <cstdio>
#include <random>

#include <jpeglib.h>

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

struct JpegFailure {
    jpeg_error_mgr manager;
    std::jmp_buf jump;
};

// Reads the rows into `picture`; a fatal error of the decoder jumps out.
void readJpegRows(jpeg_decompress_struct& info, QImage& picture)
{
    info.out_color_space = JCS_RGB;
    jpeg_start_decompress(&info);
    picture = QImage(int(info.output_width), int(info.output_height), QImage::Format_RGB888);
    while (info.output_scanline < info.output_height) {
        JSAMPROW row = picture.scanLine(int(info.output_scanline));
        jpeg_read_scanlines(&info, &row, 1);
    }
    jpeg_finish_decompress(&info);
}

// The picture as a decoder other than the program's reads it: Qt's bitmap
// reader (the program reads bitmaps itself) or libjpeg called directly (the
// program reads JPEG through Qt's image plug-in). Damage the decoder can read
// past (a warning) still gives a picture; null when it gives up.
QImage independentlyDecoded(const QString& path, bool bmp)
{
    if (bmp)
        return QImageReader(path, "bmp").read();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray data = file.readAll();
    QImage picture;
    jpeg_decompress_struct info{};
    JpegFailure failure{};
    info.err = jpeg_std_error(&failure.manager);
    failure.manager.error_exit = [](j_common_ptr c) {
        std::longjmp(reinterpret_cast<JpegFailure*>(c->err)->jump, 1);
    };
    failure.manager.output_message = [](j_common_ptr) {};
    jpeg_create_decompress(&info);
    if (setjmp(failure.jump) != 0) {
        jpeg_destroy_decompress(&info);
        return {};
    }
    jpeg_mem_src(&info, reinterpret_cast<const unsigned char*>(data.constData()),
                 static_cast<unsigned long>(data.size()));
    jpeg_read_header(&info, TRUE);
    readJpegRows(info, picture);
    jpeg_destroy_decompress(&info);
    return picture;
}

// The mean difference of two pictures of one size, per channel (0..255):
// two JPEG decoders may round a little differently.
double meanDifference(const QImage& a, const QImage& b)
{
    qint64 sum = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            sum +=
                std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) + std::abs(qBlue(p) - qBlue(q));
        }
    return double(sum) / (3.0 * a.width() * a.height());
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

class Pictures : public ::testing::Test {
protected:
    void SetUp() override
    {
        test::copyShippedData(dir);
        auto factory = [](AppData& data) {
            data.settings.STILL1XSAVE = 1;
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
        // The user's comments, typed before a tool's hints take the comment lines.
        w->findChild<QLineEdit*>(QStringLiteral("txtComment(0)"))
            ->setText(QStringLiteral("Sample 7, polished"));
        w->findChild<QLineEdit*>(QStringLiteral("txtComment(1)"))->setText(QStringLiteral("x10 objective"));
        // One red two-point line across the still.
        click("cmdMeasure(0)");
        auto* still = w->camera().stillView();
        QTest::mouseClick(still, Qt::LeftButton, {}, QPoint(100, 700));
        QTest::mouseClick(still, Qt::LeftButton, {}, QPoint(500, 700));
        ASSERT_EQ(w->measure().results().count(), 1);
    }

    void click(const char* name)
    {
        auto* button = w->findChild<QAbstractButton*>(QLatin1String(name));
        ASSERT_NE(button, nullptr) << name;
        QTest::mouseClick(button, Qt::LeftButton);
    }

    // One two-point distance near the top-left corner, inside any picture.
    void measureOnSmallPicture()
    {
        click("cmdMeasure(0)");
        auto* still = w->camera().stillView();
        QTest::mouseClick(still, Qt::LeftButton, {}, QPoint(5, 5));
        QTest::mouseClick(still, Qt::LeftButton, {}, QPoint(40, 30));
        ASSERT_GT(w->measure().results().count(), 0);
    }

    QLineEdit* comment(int i) { return w->findChild<QLineEdit*>(QStringLiteral("txtComment(%1)").arg(i)); }
    QComboBox* zoom() { return w->findChild<QComboBox*>(QStringLiteral("cboScale")); }

    // Picks a zoom as the user does, with the arrow keys on cboScale.
    void chooseZoom(const char* text)
    {
        const int target = zoom()->findText(QLatin1String(text));
        ASSERT_GE(target, 0) << text;
        for (int i = 0; i < zoom()->count() && zoom()->currentIndex() != target; ++i)
            QTest::keyClick(zoom(), zoom()->currentIndex() < target ? Qt::Key_Down : Qt::Key_Up);
        ASSERT_EQ(zoom()->currentText(), QLatin1String(text));
    }

    QString log() const { return QString::fromUtf8(dir.read(QStringLiteral("Error.Log"))); }

    // ImageMagick, installed by the dependency script, reads the file as the format it claims.
    static void expectIdentified(const QString& path, const QByteArray& format)
    {
        const QString identify = QStandardPaths::findExecutable(QStringLiteral("identify"));
        ASSERT_FALSE(identify.isEmpty())
            << "ImageMagick's identify is not on the PATH (scripts/deps.sh installs it)";
        QProcess p;
        p.start(identify, {path});
        ASSERT_TRUE(p.waitForFinished(20000));
        EXPECT_EQ(p.exitCode(), 0);
        const QByteArray out = p.readAllStandardOutput();
        EXPECT_TRUE(out.contains(" " + format) && out.contains(" 1280x1024 ")) << out.constData();
    }

    static bool reddish(QRgb c) { return qRed(c) > 200 && qGreen(c) < 80 && qBlue(c) < 80; }

    TempDir dir;
    ScriptedPrompter prompter;
    SystemClock clock;
    std::unique_ptr<frmMain> w;
};

}  // namespace

TEST_F(Pictures, BitmapWithMeasurements_RoundTripsWithItsComment)
{
    const QString path = dir.file(QStringLiteral("sample.bmp"));
    prompter.fileNames.push_back(path);
    click("cmdPicSave");
    QImage saved(path);
    ASSERT_FALSE(saved.isNull());
    EXPECT_EQ(saved.size(), w->camera().still().size());
    EXPECT_TRUE(reddish(saved.pixel(300, 700))) << "the measurement is drawn into the picture";
    EXPECT_EQ(dir.read(QStringLiteral("sample.txt")), QByteArray("Sample 7, polished\r\nx10 objective\r\n"));
    expectIdentified(path, "BMP");  // a version 3 bitmap: "BMP3"

    w->guidance().HideGuidance();
    w->findChild<QLineEdit*>(QStringLiteral("txtComment(0)"))->clear();
    w->findChild<QLineEdit*>(QStringLiteral("txtComment(1)"))->clear();
    chooseZoom("x 2.0");
    ASSERT_EQ(w->camera().stillView()->magnification(), 2.0);
    prompter.answers.push_back(Prompter::Answer::Yes);  // the unsaved result may go
    prompter.fileNames.push_back(path);
    click("cmdPicLoad");
    EXPECT_EQ(w->camera().still().convertToFormat(QImage::Format_RGB32),
              saved.convertToFormat(QImage::Format_RGB32));
    EXPECT_EQ(w->findChild<QLineEdit*>(QStringLiteral("txtComment(0)"))->text(),
              QStringLiteral("Sample 7, polished"));
    EXPECT_EQ(w->findChild<QLineEdit*>(QStringLiteral("txtComment(1)"))->text(),
              QStringLiteral("x10 objective"));
    EXPECT_EQ(zoom()->currentText(), QStringLiteral("x 1.0"));
    EXPECT_EQ(w->camera().stillView()->magnification(), 1.0);
    EXPECT_EQ(w->measure().results().count(), 0);
}

TEST_F(Pictures, JpegWithoutMeasurements_KeepsThePictureClean)
{
    w->findChild<QCheckBox*>(QStringLiteral("chkMeasureSave"))->setChecked(false);
    const QString path = dir.file(QStringLiteral("sample.JPG"));
    prompter.fileNames.push_back(path);
    click("cmdPicSave");
    QImageReader reader(path);
    EXPECT_EQ(reader.format(), QByteArray("jpeg"));
    const QImage saved = reader.read();
    ASSERT_FALSE(saved.isNull());
    EXPECT_FALSE(reddish(saved.pixel(300, 700)));
    expectIdentified(path, "JPEG");
}

TEST_F(Pictures, NameEndingInJpeg_WritesNoPictureButTheComment)
{
    const QString path = dir.file(QStringLiteral("sample.jpeg"));
    prompter.fileNames.push_back(path);
    click("cmdPicSave");
    EXPECT_FALSE(dir.exists(QStringLiteral("sample.jpeg")));
    // The comment file replaces the name's last four characters.
    EXPECT_EQ(dir.read(QStringLiteral("sample..txt")), QByteArray("Sample 7, polished\r\nx10 objective\r\n"));
}

TEST_F(Pictures, JpegQualityLabel_ShowsJustTheQuality_AlsoAfterItsDialog)
{
    auto* label = w->findChild<QLabel*>(QStringLiteral("lblJpegQty"));
    ASSERT_NE(label, nullptr);
    EXPECT_EQ(label->text(), QStringLiteral("90"));  // JPEGQTY of the shipped settings file

    w->pictures().setDialogRunner([](QDialog& d) {
        d.show();
        d.findChild<QSlider*>(QStringLiteral("sldJpegQty"))->setValue(37);
        QTest::mouseClick(d.findChild<QPushButton*>(QStringLiteral("cmdOK")), Qt::LeftButton);
        return d.result();
    });
    QTest::mouseClick(label, Qt::LeftButton);

    EXPECT_EQ(w->data().settings.JPEGQTY, 37);
    EXPECT_EQ(label->text(), QStringLiteral("37"));
}

TEST_F(Pictures, DisplayedSave_IsExactlyTheVisibleArea_OfAMagnifiedScrolledStill)
{
    w->data().settings.STILL1XSAVE = 0;
    w->findChild<QCheckBox*>(QStringLiteral("chkMeasureSave"))->setChecked(false);
    chooseZoom("x 2.0");
    auto* scroll = w->findChild<QScrollArea*>(QStringLiteral("scrStillView"));
    ASSERT_NE(scroll, nullptr);
    QApplication::processEvents();
    ASSERT_TRUE(scroll->horizontalScrollBar()->isVisible());
    ASSERT_TRUE(scroll->verticalScrollBar()->isVisible());
    const QPoint scrolled(333, 517);
    scroll->horizontalScrollBar()->setValue(scrolled.x());
    scroll->verticalScrollBar()->setValue(scrolled.y());
    QApplication::processEvents();
    ASSERT_EQ(scroll->horizontalScrollBar()->value(), scrolled.x());
    ASSERT_EQ(scroll->verticalScrollBar()->value(), scrolled.y());
    const QSize visible = scroll->viewport()->size();
    const QSize area = w->findChild<QWidget*>(QStringLiteral("picViewArea"))->contentsRect().size();
    ASSERT_LT(visible.width(), area.width()) << "the vertical scroll bar takes part of the area";
    ASSERT_LT(visible.height(), area.height()) << "the horizontal scroll bar takes part of the area";

    const QString path = dir.file(QStringLiteral("shown.bmp"));
    prompter.fileNames.push_back(path);
    click("cmdPicSave");

    const QImage saved = QImage(path).convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(saved.size(), visible);
    const QImage still = w->camera().still().convertToFormat(QImage::Format_RGB32);
    int differing = 0;
    for (int y = 0; y < saved.height(); ++y)
        for (int x = 0; x < saved.width(); ++x)
            differing += saved.pixel(x, y) != still.pixel((x + scrolled.x()) / 2, (y + scrolled.y()) / 2);
    EXPECT_EQ(differing, 0) << "of " << saved.width() * saved.height() << " pixels";
}

TEST_F(Pictures, DisplayedSave_OfASmallCentredStill_IsWhatTheAreaShows_BackgroundIncluded)
{
    click("cmdPlayStop");
    click("cmdPlayStop");  // a fresh still, with nothing measured on it yet
    ASSERT_TRUE(w->camera().stillShown());
    ASSERT_TRUE(w->measuring().store().entries().empty());
    w->data().settings.STILL1XSAVE = 0;
    chooseZoom("x 0.5");
    auto* scroll = w->findChild<QScrollArea*>(QStringLiteral("scrStillView"));
    ASSERT_NE(scroll, nullptr);
    QApplication::processEvents();
    ASSERT_FALSE(scroll->horizontalScrollBar()->isVisible());
    const QImage screen = scroll->viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    ASSERT_NE(w->camera().stillView()->pos(), QPoint(0, 0)) << "the still is centred in the area";

    const QString path = dir.file(QStringLiteral("small.bmp"));
    prompter.fileNames.push_back(path);
    click("cmdPicSave");

    const QImage saved = QImage(path).convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(saved.size(), screen.size());
    EXPECT_EQ(saved.pixel(0, 0), screen.pixel(0, 0)) << "the area around the picture";
    int differing = 0;
    for (int y = 0; y < saved.height(); ++y)
        for (int x = 0; x < saved.width(); ++x)
            differing += saved.pixel(x, y) != screen.pixel(x, y);
    EXPECT_EQ(differing, 0) << "of " << saved.width() * saved.height() << " pixels";
}

TEST_F(Pictures, UnwritableJpeg_IsReported_AndItsCommentFileStillWritten)
{
    prompter.answers = {Prompter::Answer::Ok};
    const QString path = dir.file(QStringLiteral("blocked.jpg"));
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("blocked.jpg")));  // a folder in the picture's place
    prompter.fileNames.push_back(path);
    const size_t before = prompter.messages.size();
    click("cmdPicSave");

    ASSERT_EQ(prompter.messages.size(), before + 1) << "a lost picture is never silent";
    EXPECT_EQ(prompter.messages.back().text,
              w->data().messages.text(PictureFiles::kMsgPictureNotSaved, path));
    EXPECT_EQ(prompter.messages.back().icon, Prompter::Icon::Exclamation);
    EXPECT_TRUE(log().contains(QStringLiteral("frmMain:cmdPicSave Error.("))) << log().toStdString();
    EXPECT_EQ(dir.read(QStringLiteral("blocked.txt")), QByteArray("Sample 7, polished\r\nx10 objective\r\n"));
    EXPECT_TRUE(QFileInfo(path).isDir());
}

TEST_F(Pictures, UnreadablePicture_FromTheLiveView_FreezesAndResetsTheZoomFirst_ThenSaysSo)
{
    chooseZoom("x 2.0");
    click("cmdPlayStop");
    ASSERT_FALSE(w->camera().stillShown());
    const QString path = dir.write(QStringLiteral("broken.jpg"), "no picture in here");
    prompter.answers.push_back(Prompter::Answer::Yes);  // should the results be asked about
    prompter.fileNames.push_back(path);
    const size_t before = prompter.messages.size();
    click("cmdPicLoad");

    EXPECT_TRUE(w->camera().stillShown()) << "frozen before the file is read";
    EXPECT_EQ(zoom()->currentText(), QStringLiteral("x 1.0"));
    EXPECT_EQ(w->camera().stillView()->magnification(), 1.0);
    EXPECT_EQ(w->camera().still().size(), QSize(1280, 1024)) << "the frozen camera picture stays";
    ASSERT_EQ(prompter.messages.size(), before + 1);
    EXPECT_EQ(prompter.messages.back().text, w->data().messages.text(PictureFiles::kMsgPictureNotRead, path));
    EXPECT_EQ(prompter.messages.back().icon, Prompter::Icon::Exclamation);
    EXPECT_TRUE(log().contains(QStringLiteral("frmMain:cmdPicLoad Error.(481)"))) << log().toStdString();
}

TEST_F(Pictures, UnreadablePicture_OnAStill_KeepsItsPictureResultsAndComments)
{
    const QImage still = w->camera().still();
    const QString comments[2] = {comment(0)->text(), comment(1)->text()};
    chooseZoom("x 2.0");
    const QString path = dir.write(QStringLiteral("broken.bmp"), "BM but no bitmap after that");
    prompter.answers.push_back(Prompter::Answer::Yes);  // the unsaved result may go
    prompter.answers.push_back(Prompter::Answer::Ok);   // the picture could not be read
    prompter.fileNames.push_back(path);
    click("cmdPicLoad");

    EXPECT_TRUE(w->camera().stillShown());
    EXPECT_EQ(zoom()->currentText(), QStringLiteral("x 1.0"));
    EXPECT_EQ(w->camera().stillView()->magnification(), 1.0);
    EXPECT_EQ(w->camera().still(), still);
    EXPECT_EQ(w->measure().results().count(), 1) << "nothing replaced the picture they belong to";
    EXPECT_EQ(comment(0)->text(), comments[0]);
    EXPECT_EQ(comment(1)->text(), comments[1]);
    ASSERT_FALSE(prompter.messages.empty());
    EXPECT_EQ(prompter.messages.back().text, w->data().messages.text(PictureFiles::kMsgPictureNotRead, path));
}

// A thousand damaged bitmaps and JPEGs through Load picture: each unreadable
// one is told to the user and logged, and leaves the still, its results and
// the window as they were; a readable one is shown.
TEST_F(Pictures, AThousandDamagedFiles_AreEachReadOrRefusedClearly)
{
    w->data().settings.KEEPRESULT = 1;  // no question before each load
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
            measureOnSmallPicture();
        const QImage stillBefore = w->camera().still();
        const int resultsBefore = w->measure().results().count();
        const size_t messagesBefore = prompter.messages.size();
        prompter.fileNames.push_back(path);
        prompter.answers.push_back(Prompter::Answer::Ok);  // the refusal, if it comes
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
            prompter.answers.clear();
            const QImage other = independentlyDecoded(path, isBmp);
            ASSERT_FALSE(other.isNull()) << "shown, yet another decoder refuses " << path.toStdString();
            ASSERT_EQ(w->camera().still().size(), other.size()) << path.toStdString();
            const QImage still = w->camera().still().convertToFormat(QImage::Format_RGB32);
            if (isBmp)
                ASSERT_EQ(still, other.convertToFormat(QImage::Format_RGB32)) << path.toStdString();
            else
                ASSERT_LE(meanDifference(still, other.convertToFormat(QImage::Format_RGB32)), 2.0)
                    << path.toStdString();
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

// On a really full disk a picture save and a result save are each refused
// with a message and a log line, the files saved before stay as they were,
// and both work again once there is room.
TEST_F(Pictures, SavesOntoAFullDisk_AreRefusedClearly_AndKeepTheEarlierFiles)
{
    test::SmallDisk disk(16 << 20);
    if (!disk.mounted())
        GTEST_SKIP() << "no right to mount a small filesystem here";
    prompter.answers = {Prompter::Answer::Ok, Prompter::Answer::Ok, Prompter::Answer::Ok,
                        Prompter::Answer::Ok};
    const QString picture = disk.file(QStringLiteral("sample.jpg"));
    const QString results = disk.file(QStringLiteral("results.csv"));
    prompter.fileNames.push_back(picture);
    click("cmdPicSave");
    prompter.fileNames.push_back(results);
    click("cmdResultSave");
    const QByteArray earlierPicture = test::SmallDisk::read(picture);
    const QByteArray earlierResults = test::SmallDisk::read(results);
    ASSERT_FALSE(earlierPicture.isEmpty());
    ASSERT_FALSE(earlierResults.isEmpty());
    comment(0)->setText(QStringLiteral("Sample 8, etched"));
    click("cmdMeasure(0)");
    QTest::mouseClick(w->camera().stillView(), Qt::LeftButton, {}, QPoint(100, 500));
    QTest::mouseClick(w->camera().stillView(), Qt::LeftButton, {}, QPoint(700, 500));
    disk.fill();
    const size_t before = prompter.messages.size();

    prompter.fileNames.push_back(picture);
    click("cmdPicSave");
    prompter.fileNames.push_back(results);
    click("cmdResultSave");

    ASSERT_EQ(prompter.messages.size(), before + 2);
    EXPECT_EQ(prompter.messages[before].text,
              w->data().messages.text(PictureFiles::kMsgPictureNotSaved, picture));
    EXPECT_EQ(prompter.messages[before + 1].text,
              w->data().messages.text(ResultTable::kMsgSaveFailed, results));
    EXPECT_TRUE(log().contains(QStringLiteral("frmMain:cmdPicSave Error.(61)"))) << log().toStdString();
    EXPECT_TRUE(log().contains(QStringLiteral("frmMain:cmdResultSave Error.(61)"))) << log().toStdString();
    EXPECT_EQ(test::SmallDisk::read(picture), earlierPicture);
    EXPECT_EQ(test::SmallDisk::read(results), earlierResults);

    disk.makeRoom();
    prompter.fileNames.push_back(picture);
    click("cmdPicSave");
    prompter.fileNames.push_back(results);
    click("cmdResultSave");
    EXPECT_NE(test::SmallDisk::read(picture), earlierPicture);
    EXPECT_NE(test::SmallDisk::read(results), earlierResults);
}
