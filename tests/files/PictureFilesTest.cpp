#include "FakeResultTable.h"
#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"
#include "common/ErrorLog.h"
#include "files/PictureFiles.h"
#include "media/BmpFile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>
#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <cmath>
#include <csignal>
#include <ostream>
#include <string>

using namespace tavix;
using tavix::test::FakeResultTable;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;
using Outcome = PictureFiles::SaveResult::Outcome;
using Kind = PictureFiles::Kind;

namespace {

// A still with smooth areas, edges and a little noise, as a camera gives.
QImage still(int width = 320, int height = 240, quint32 seed = 5, int noise = 7)
{
    QImage image(width, height, QImage::Format_RGB32);
    QRandomGenerator rng(seed);
    for (int y = 0; y < height; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const int n = static_cast<int>(rng.bounded(noise));
            line[x] = qRgb((40 + x * 180 / width + n) & 255, (30 + y * 200 / height + n) & 255,
                           (90 + (x + y) / 8 + n) & 255);
        }
    }
    QPainter painter(&image);
    painter.setPen(QPen(Qt::black, 2));
    for (int x = 8; x < width; x += 16)
        painter.drawLine(x, height / 5, x, height / 5 + (x % 80 == 8 ? 30 : 15));
    painter.setBrush(QColor(30, 30, 30));
    painter.drawEllipse(QPoint(width / 3, height * 2 / 3), width / 8, width / 8);
    painter.end();
    return image.convertToFormat(QImage::Format_RGB888);  // as read from the camera's bitmap
}

// The overlay of a measurement: a red line and a label box, in picture pixels.
void drawOverlay(QPainter& painter, const QTransform& pictureToImage)
{
    painter.setTransform(pictureToImage);
    painter.setPen(QPen(QColor(255, 0, 0), 2));
    painter.drawLine(QPointF(20, 30), QPointF(200, 120));
    painter.fillRect(QRectF(150, 40, 60, 20), QColor(255, 255, 0));
}

QImage withOverlay(const QImage& picture)
{
    QImage out = picture.convertToFormat(QImage::Format_RGB32);
    QPainter painter(&out);
    drawOverlay(painter, QTransform());
    return out;
}

::testing::AssertionResult samePixels(const QImage& a, const QImage& b)
{
    if (a.size() != b.size())
        return ::testing::AssertionFailure() << "sizes differ";
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            if ((a.pixel(x, y) & 0xffffff) != (b.pixel(x, y) & 0xffffff))
                return ::testing::AssertionFailure() << "pixel " << x << "," << y << ": " << std::hex
                                                     << a.pixel(x, y) << " vs " << b.pixel(x, y);
    return ::testing::AssertionSuccess();
}

double meanAbsoluteDifference(const QImage& a, const QImage& b)
{
    const QImage p = a.convertToFormat(QImage::Format_RGB888);
    const QImage q = b.convertToFormat(QImage::Format_RGB888);
    double sum = 0;
    for (int y = 0; y < p.height(); ++y)
        for (int i = 0; i < p.width() * 3; ++i)
            sum += std::abs(int(p.constScanLine(y)[i]) - int(q.constScanLine(y)[i]));
    return sum / (double(p.width()) * p.height() * 3);
}

QByteArray qtJpeg(const QImage& image, int quality)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(quality);
    writer.write(image);
    return bytes;
}

// The picture as the JPEG path hands it on: written as a bitmap and read back.
QImage throughBitmap(const QImage& image)
{
    QByteArray bytes;
    BmpFile::encode(image, bytes);
    return BmpFile::decode(bytes);
}

// Makes every file write past `bytes` fail as a full disk does, for the
// lifetime of the object; root is not spared, unlike with permissions.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &saved_);
        rlimit small = saved_;
        small.rlim_cur = bytes;
        previous_ = std::signal(SIGXFSZ, SIG_IGN);
        active_ = setrlimit(RLIMIT_FSIZE, &small) == 0;
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &saved_);
        std::signal(SIGXFSZ, previous_);
    }
    bool active() const { return active_; }

private:
    rlimit saved_{};
    void (*previous_)(int) = nullptr;
    bool active_ = false;
};

class PictureFilesTest : public ::testing::Test {
protected:
    PictureFiles::SaveRequest request(const QString& name, const QImage& source = still())
    {
        PictureFiles::SaveRequest r;
        r.fileName = dir.file(name);
        r.source = source;
        r.jpegQuality = 75;
        r.tempBitmapPath = dir.file(QStringLiteral("program/Temp.bmp"));
        return r;
    }
    QStringList filesInFolder() const { return QDir(dir.path()).entryList(QDir::Files | QDir::Hidden); }

    TempDir dir;
    MessageTable messages = test::shippedMessages();
    ScriptedPrompter prompter;
    ErrorLog log{dir.file(QStringLiteral("Error.Log"))};

    void SetUp() override { QDir(dir.path()).mkpath(QStringLiteral("program")); }
};

}  // namespace

// --- names ---

struct KindCase {
    const char* name;
    Kind kind;
};

void PrintTo(const KindCase& c, std::ostream* os)
{
    *os << '"' << c.name << "\" -> " << static_cast<int>(c.kind);
}

class PictureFilesKind : public ::testing::TestWithParam<KindCase> {};

TEST_P(PictureFilesKind, KindOf_GoesByTheLastFourCharactersInAnyCase)
{
    EXPECT_EQ(PictureFiles::kindOf(QString::fromUtf8(GetParam().name)), GetParam().kind);
}

INSTANTIATE_TEST_SUITE_P(
    Table, PictureFilesKind,
    ::testing::Values(KindCase{"/p/still.bmp", Kind::Bitmap}, KindCase{"/p/still.BMP", Kind::Bitmap},
                      KindCase{"/p/still.bMp", Kind::Bitmap}, KindCase{".bmp", Kind::Bitmap},
                      KindCase{"/p/still.jpg", Kind::Jpeg}, KindCase{"/p/still.JPG", Kind::Jpeg},
                      KindCase{"/p/still.Jpg", Kind::Jpeg}, KindCase{"/p/still.jpeg", Kind::None},
                      KindCase{"/p/still.JPEG", Kind::None}, KindCase{"/p/still.png", Kind::None},
                      KindCase{"/p/still.avi", Kind::None}, KindCase{"/p/stillbmp", Kind::None},
                      KindCase{"/p/still.jpg ", Kind::None}, KindCase{"bmp", Kind::None},
                      KindCase{"", Kind::None}));

struct RecordingCase {
    const char* name;
    bool recording;
};

void PrintTo(const RecordingCase& c, std::ostream* os)
{
    *os << '"' << c.name << "\" -> " << c.recording;
}

class PictureFilesRecording : public ::testing::TestWithParam<RecordingCase> {};

TEST_P(PictureFilesRecording, IsRecording_GoesByTheLastThreeCharactersInAnyCase)
{
    EXPECT_EQ(PictureFiles::isRecording(QString::fromUtf8(GetParam().name)), GetParam().recording);
}

INSTANTIATE_TEST_SUITE_P(
    Table, PictureFilesRecording,
    ::testing::Values(RecordingCase{"/p/clip.avi", true}, RecordingCase{"/p/clip.AVI", true},
                      RecordingCase{"/p/clip.Avi", true}, RecordingCase{"/p/clipavi", true},
                      RecordingCase{"AVI", true}, RecordingCase{"VI", false},
                      RecordingCase{"/p/clip.avi.jpg", false}, RecordingCase{"/p/clip.avi ", false},
                      RecordingCase{"/p/clip.bmp", false}));

struct CommentNameCase {
    const char* picture;
    const char* comment;
};

void PrintTo(const CommentNameCase& c, std::ostream* os)
{
    *os << '"' << c.picture << "\" -> \"" << c.comment << '"';
}

class PictureFilesCommentName : public ::testing::TestWithParam<CommentNameCase> {};

TEST_P(PictureFilesCommentName, CommentFileName_ReplacesTheLastFourCharacters)
{
    EXPECT_EQ(PictureFiles::commentFileName(QString::fromUtf8(GetParam().picture)),
              QString::fromUtf8(GetParam().comment));
}

INSTANTIATE_TEST_SUITE_P(Table, PictureFilesCommentName,
                         ::testing::Values(CommentNameCase{"/p/still.jpg", "/p/still.txt"},
                                           CommentNameCase{"/p/still.BMP", "/p/still.txt"},
                                           CommentNameCase{"/p/still.jpeg", "/p/still..txt"},
                                           CommentNameCase{"/p/a.b.bmp", "/p/a.b.txt"},
                                           CommentNameCase{"abcd", ".txt"}, CommentNameCase{"abc", ""},
                                           CommentNameCase{"", ""}));

// --- the picture to save ---

TEST(PictureFilesView, VisiblePart_HasTheAreasSize_AndShowsTheMagnifiedScrolledPart)
{
    const QImage picture = still(320, 240);
    PictureFiles::View view;
    view.magnification = 2.0;
    view.scrollOffset = QPoint(101, 51);
    view.areaSize = QSize(300, 200);

    const QImage part = PictureFiles::visiblePart(picture, view);

    ASSERT_EQ(part.size(), QSize(300, 200));
    for (const QPoint p : {QPoint(0, 0), QPoint(1, 0), QPoint(0, 1), QPoint(150, 99), QPoint(299, 199),
                           QPoint(298, 198), QPoint(77, 13)}) {
        const QPoint source((p.x() + 101) / 2, (p.y() + 51) / 2);
        EXPECT_EQ(part.pixel(p) & 0xffffff, picture.pixel(source) & 0xffffff)
            << p.x() << "," << p.y() << " from " << source.x() << "," << source.y();
    }
}

TEST(PictureFilesView, VisiblePart_FillsTheAreaAroundASmallCentredPicture)
{
    const QImage picture = still(320, 240);
    PictureFiles::View view;
    view.magnification = 0.5;              // 160 x 120 on screen
    view.scrollOffset = QPoint(-70, -40);  // centred in 300 x 200
    view.areaSize = QSize(300, 200);
    view.background = QColor(10, 20, 30);

    const QImage part = PictureFiles::visiblePart(picture, view);

    ASSERT_EQ(part.size(), QSize(300, 200));
    EXPECT_EQ(part.pixel(0, 0), QColor(10, 20, 30).rgb());
    EXPECT_EQ(part.pixel(69, 100), QColor(10, 20, 30).rgb());
    EXPECT_EQ(part.pixel(230, 100), QColor(10, 20, 30).rgb());
    EXPECT_EQ(part.pixel(150, 39), QColor(10, 20, 30).rgb());
    EXPECT_EQ(part.pixel(150, 160), QColor(10, 20, 30).rgb());
    EXPECT_NE(part.pixel(70, 40), QColor(10, 20, 30).rgb());
    EXPECT_NE(part.pixel(229, 159), QColor(10, 20, 30).rgb());
}

TEST(PictureFilesView, VisiblePart_DrawsTheOverlayWhereTheViewShowsIt)
{
    const QImage picture(100, 100, QImage::Format_RGB888);
    QImage black = picture;
    black.fill(Qt::black);
    PictureFiles::View view;
    view.magnification = 3.0;
    view.scrollOffset = QPoint(30, 60);
    view.areaSize = QSize(120, 90);
    QTransform seen;

    const QImage part = PictureFiles::visiblePart(black, view, [&](QPainter& painter, const QTransform& t) {
        seen = t;
        painter.fillRect(t.mapRect(QRectF(20, 25, 1, 1)), Qt::red);  // one picture pixel
    });

    // Picture pixel (20, 25) is screen pixels 60..62 x 75..77, scrolled by (30, 60).
    EXPECT_EQ(seen.map(QPointF(20, 25)), QPointF(30, 15));
    EXPECT_EQ(part.pixel(30, 15), qRgb(255, 0, 0));
    EXPECT_EQ(part.pixel(32, 17), qRgb(255, 0, 0));
    EXPECT_EQ(part.pixel(33, 15), qRgb(0, 0, 0));
    EXPECT_EQ(part.pixel(29, 15), qRgb(0, 0, 0));
}

TEST(PictureFilesView, SourcePicture_IsTheFullSizeStill_WhenStill1xSaveIs1)
{
    const QImage picture = still(320, 240);
    PictureFiles::View view{2.0, QPoint(50, 50), QSize(100, 80)};

    const QImage source = PictureFiles::sourcePicture(1, picture, view);

    EXPECT_EQ(source.size(), QSize(320, 240));
    EXPECT_TRUE(samePixels(source, picture));
}

TEST(PictureFilesView, SourcePicture_DrawsTheOverlayUnscaledOnTheFullSizeStill)
{
    const QImage picture = still(320, 240);
    PictureFiles::View view{2.0, QPoint(50, 50), QSize(100, 80)};

    const QImage source = PictureFiles::sourcePicture(1, picture, view, drawOverlay);

    EXPECT_EQ(source.size(), QSize(320, 240));
    EXPECT_EQ(source.pixel(160, 50) & 0xffffff, 0xffff00u);  // inside the label box
    EXPECT_TRUE(samePixels(source, withOverlay(picture)));
    EXPECT_FALSE(samePixels(picture, withOverlay(picture)));  // the overlay did change something
}

TEST(PictureFilesView, SourcePicture_IsTheVisiblePart_WhenStill1xSaveIs0)
{
    const QImage picture = still(320, 240);
    PictureFiles::View view{2.0, QPoint(50, 50), QSize(100, 80)};

    const QImage source = PictureFiles::sourcePicture(0, picture, view);

    EXPECT_EQ(source.size(), QSize(100, 80));
    EXPECT_TRUE(samePixels(source, PictureFiles::visiblePart(picture, view)));
}

// --- saving ---

TEST_F(PictureFilesTest, SavePicture_WritesAJpeg_WhenTheNameEndsInUpperCaseJPG)
{
    const PictureFiles::SaveResult result = PictureFiles::savePicture(request(QStringLiteral("STILL.JPG")));

    EXPECT_EQ(result.outcome, Outcome::Written);
    EXPECT_TRUE(result.pictureWritten);
    QImageReader reader(dir.file(QStringLiteral("STILL.JPG")));
    EXPECT_EQ(reader.format(), QByteArray("jpeg"));
    EXPECT_EQ(reader.read().size(), QSize(320, 240));
}

TEST_F(PictureFilesTest, SavePicture_WritesABitmap_WhenTheNameEndsInUpperCaseBMP)
{
    const PictureFiles::SaveResult result = PictureFiles::savePicture(request(QStringLiteral("STILL.BMP")));

    EXPECT_EQ(result.outcome, Outcome::Written);
    QImageReader reader(dir.file(QStringLiteral("STILL.BMP")));
    EXPECT_EQ(reader.format(), QByteArray("bmp"));
    EXPECT_EQ(reader.read().size(), QSize(320, 240));
}

TEST_F(PictureFilesTest, SavePicture_WritesNoPicture_WhenTheNameEndsInJpeg)
{
    const PictureFiles::SaveResult result = PictureFiles::savePicture(request(QStringLiteral("still.jpeg")));

    EXPECT_EQ(result.outcome, Outcome::NoPicture);
    EXPECT_FALSE(result.pictureWritten);
    EXPECT_FALSE(dir.exists(QStringLiteral("still.jpeg")));
    EXPECT_TRUE(filesInFolder().isEmpty());
}

TEST_F(PictureFilesTest, SavePicture_StillWritesTheCommentFile_ForAnUnknownExtension)
{
    PictureFiles::SaveRequest r = request(QStringLiteral("still.png"));
    r.comments = {QStringLiteral("Sample 7"), QString()};

    const PictureFiles::SaveResult result = PictureFiles::savePicture(r);

    EXPECT_EQ(result.outcome, Outcome::NoPicture);
    EXPECT_TRUE(result.commentWritten);
    EXPECT_FALSE(dir.exists(QStringLiteral("still.png")));
    EXPECT_EQ(dir.read(QStringLiteral("still.txt")), QByteArray("Sample 7\r\n\r\n"));
}

TEST_F(PictureFilesTest, SavePicture_LeavesAnOlderCommentFileUntouched_WhenBothCommentsAreBlank)
{
    const QByteArray older = "older comment\r\nsecond line\r\n";
    dir.write(QStringLiteral("still.txt"), older);
    PictureFiles::SaveRequest r = request(QStringLiteral("still.bmp"));
    r.comments = {QStringLiteral("   "), QStringLiteral("\t")};

    const PictureFiles::SaveResult result = PictureFiles::savePicture(r);

    EXPECT_EQ(result.outcome, Outcome::Written);
    EXPECT_FALSE(result.commentWritten);
    EXPECT_EQ(dir.read(QStringLiteral("still.txt")), older);
}

TEST_F(PictureFilesTest, SavePicture_WritesNoCommentFile_WhenBothCommentsAreEmpty)
{
    const PictureFiles::SaveResult result = PictureFiles::savePicture(request(QStringLiteral("still.bmp")));

    EXPECT_FALSE(result.commentWritten);
    EXPECT_FALSE(dir.exists(QStringLiteral("still.txt")));
}

TEST_F(PictureFilesTest, SavePicture_WritesBothCommentsAsTyped_InUtf8WithCrLf)
{
    PictureFiles::SaveRequest r = request(QStringLiteral("still.jpg"));
    r.comments = {QStringLiteral(" Probe \"A\", 5 µm "), QStringLiteral("測定 2")};

    const PictureFiles::SaveResult result = PictureFiles::savePicture(r);

    EXPECT_TRUE(result.commentWritten);
    EXPECT_EQ(dir.read(QStringLiteral("still.txt")),
              QStringLiteral(" Probe \"A\", 5 µm \r\n測定 2\r\n").toUtf8());
}

TEST_F(PictureFilesTest, SavePicture_WritesTheCommentFile_WhenOnlyTheSecondCommentHasText)
{
    PictureFiles::SaveRequest r = request(QStringLiteral("still.bmp"));
    r.comments = {QStringLiteral("  "), QStringLiteral("x")};

    PictureFiles::savePicture(r);

    EXPECT_EQ(dir.read(QStringLiteral("still.txt")), QByteArray("  \r\nx\r\n"));
}

TEST_F(PictureFilesTest, SavePicture_OverwritesAnOlderCommentFile_WhenThereIsAComment)
{
    dir.write(QStringLiteral("still.txt"), "older comment\r\nsecond line\r\n");
    PictureFiles::SaveRequest r = request(QStringLiteral("still.bmp"));
    r.comments = {QStringLiteral("new"), QString()};

    PictureFiles::savePicture(r);

    EXPECT_EQ(dir.read(QStringLiteral("still.txt")), QByteArray("new\r\n\r\n"));
}

TEST_F(PictureFilesTest,
       SavePicture_SavesExactlyTheVisibleAreasSize_WhenStill1xSaveIs0AndTheViewIsMagnifiedAndScrolled)
{
    const QImage picture = still(640, 480);
    const PictureFiles::View view{2.0, QPoint(333, 217), QSize(410, 275)};
    const QImage source = PictureFiles::sourcePicture(0, picture, view, drawOverlay);

    ASSERT_EQ(PictureFiles::savePicture(request(QStringLiteral("view.bmp"), source)).outcome,
              Outcome::Written);
    ASSERT_EQ(PictureFiles::savePicture(request(QStringLiteral("view.jpg"), source)).outcome,
              Outcome::Written);

    EXPECT_EQ(QImageReader(dir.file(QStringLiteral("view.bmp"))).size(), QSize(410, 275));
    EXPECT_EQ(QImageReader(dir.file(QStringLiteral("view.jpg"))).size(), QSize(410, 275));
    EXPECT_TRUE(samePixels(QImage(dir.file(QStringLiteral("view.bmp"))), source));
}

TEST_F(PictureFilesTest, SavePicture_MakesTheJpegFromTheTemporaryBitmap)
{
    const QImage source = withOverlay(still());  // 32-bit, as drawn on
    PictureFiles::SaveRequest r = request(QStringLiteral("still.jpg"), source);
    r.jpegQuality = 60;

    ASSERT_EQ(PictureFiles::savePicture(r).outcome, Outcome::Written);

    QImage temporary;
    ASSERT_EQ(BmpFile::read(r.tempBitmapPath, temporary), 0);
    EXPECT_TRUE(samePixels(temporary, source));
    EXPECT_EQ(temporary.format(), QImage::Format_RGB888);
    EXPECT_EQ(dir.read(QStringLiteral("still.jpg")), qtJpeg(throughBitmap(source), 60));
}

class PictureFilesQuality : public PictureFilesTest,
                            public ::testing::WithParamInterface<std::pair<int, int>> {};

TEST_P(PictureFilesQuality, SavePicture_HandsJpegQtyToTheEncoder_CutAt100)
{
    const auto [jpegQty, encoded] = GetParam();
    PictureFiles::SaveRequest r = request(QStringLiteral("still.jpg"));
    r.jpegQuality = static_cast<quint8>(jpegQty);

    ASSERT_EQ(PictureFiles::savePicture(r).outcome, Outcome::Written);

    const QByteArray written = dir.read(QStringLiteral("still.jpg"));
    EXPECT_EQ(written, qtJpeg(throughBitmap(r.source), encoded));
    EXPECT_NE(written, qtJpeg(throughBitmap(r.source), encoded == 100 ? 99 : encoded + 1));
}

INSTANTIATE_TEST_SUITE_P(Table, PictureFilesQuality,
                         ::testing::Values(std::pair{10, 10}, std::pair{100, 100}, std::pair{150, 100},
                                           std::pair{255, 100}));

TEST_F(PictureFilesTest, SavePicture_StillWritesTheJpeg_WhenTheTemporaryBitmapCannotBeWritten)
{
    PictureFiles::SaveRequest r = request(QStringLiteral("still.jpg"));
    r.tempBitmapPath = dir.file(QStringLiteral("no such folder/Temp.bmp"));

    const PictureFiles::SaveResult result = PictureFiles::savePicture(r);

    EXPECT_EQ(result.outcome, Outcome::Written);
    EXPECT_EQ(dir.read(QStringLiteral("still.jpg")), qtJpeg(throughBitmap(r.source), 75));
}

TEST_F(PictureFilesTest, SavePicture_FailsWith76AndWritesNothing_WhenTheFolderIsMissing)
{
    for (const char* name : {"missing/still.bmp", "missing/still.jpg"}) {
        PictureFiles::SaveRequest r = request(QLatin1String(name));
        r.comments = {QStringLiteral("comment"), QString()};

        const PictureFiles::SaveResult result = PictureFiles::savePicture(r);

        EXPECT_EQ(result.outcome, Outcome::Failed) << name;
        EXPECT_EQ(result.error, 76) << name;
        EXPECT_EQ(result.failedFile, r.fileName);
        EXPECT_EQ(result.messageId, PictureFiles::kMsgPictureNotSaved);
        EXPECT_FALSE(result.commentWritten);
        EXPECT_FALSE(dir.exists(QStringLiteral("missing")));
    }
}

class PictureFilesFullDisk : public PictureFilesTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(PictureFilesFullDisk, SavePicture_FailsCleanly_AndKeepsTheEarlierFileByteIdentical)
{
    prompter.answers = {Prompter::Answer::Ok};
    const QString name = QLatin1String(GetParam());
    QByteArray earlier;
    BmpFile::encode(still(30, 20, 11), earlier);  // 1.8 KB, a different picture
    if (PictureFiles::kindOf(name) == Kind::Jpeg)
        earlier = qtJpeg(still(30, 20, 11), 75);
    dir.write(name, earlier);
    dir.write(QStringLiteral("still.txt"), "earlier comment\r\n");
    PictureFiles::SaveRequest r = request(name, still(400, 300));
    r.comments = {QStringLiteral("new comment"), QString()};
    r.tempBitmapPath.clear();

    PictureFiles::SaveResult result;
    {
        const FileSizeLimit limit(4096);
        ASSERT_TRUE(limit.active());
        result = PictureFiles::savePicture(r);
    }

    EXPECT_EQ(result.outcome, Outcome::Failed);
    EXPECT_EQ(result.error, 61);
    EXPECT_EQ(result.failedFile, r.fileName);
    EXPECT_EQ(result.messageId, PictureFiles::kMsgPictureNotSaved);
    EXPECT_FALSE(result.pictureWritten);
    EXPECT_EQ(dir.read(name), earlier);
    // A bitmap that cannot be written ends the save; a JPEG's status does not hold up the comment.
    const QByteArray comment = PictureFiles::kindOf(name) == Kind::Jpeg ? QByteArray("new comment\r\n\r\n")
                                                                        : QByteArray("earlier comment\r\n");
    EXPECT_EQ(dir.read(QStringLiteral("still.txt")), comment);
    EXPECT_EQ(result.commentWritten, PictureFiles::kindOf(name) == Kind::Jpeg);
    EXPECT_EQ(filesInFolder(), QStringList({name, QStringLiteral("still.txt")}));

    PictureFiles::reportSaveFailure(result, prompter, messages, log);
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(
        prompter.messages[0].text,
        QStringLiteral("The picture could not be saved to %1. The file there is unchanged.").arg(r.fileName));
    EXPECT_EQ(prompter.messages[0].title, messages.text(PictureFiles::kMsgSaveTitle));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Exclamation);
    QFile logFile(log.path());
    ASSERT_TRUE(logFile.open(QIODevice::ReadOnly));
    EXPECT_TRUE(logFile.readAll().contains("frmMain:cmdPicSave Error.(61)"));
}

INSTANTIATE_TEST_SUITE_P(Formats, PictureFilesFullDisk, ::testing::Values("still.bmp", "still.jpg"));

TEST_F(PictureFilesTest, SavePicture_WritesTheCommentButReportsTheLostPicture_WhenTheJpegCannotBeWritten)
{
    prompter.answers = {Prompter::Answer::Ok};
    QDir(dir.path()).mkdir(QStringLiteral("still.jpg"));  // a folder in the picture's place
    PictureFiles::SaveRequest r = request(QStringLiteral("still.jpg"));
    r.comments = {QStringLiteral("comment"), QStringLiteral("second")};

    const PictureFiles::SaveResult result = PictureFiles::savePicture(r);

    EXPECT_EQ(result.outcome, Outcome::Failed);
    EXPECT_FALSE(result.pictureWritten);
    EXPECT_NE(result.jpegStatus, 0);
    EXPECT_NE(result.error, 0);
    EXPECT_EQ(result.failedFile, r.fileName);
    EXPECT_EQ(result.messageId, PictureFiles::kMsgPictureNotSaved);
    EXPECT_TRUE(result.commentWritten);
    EXPECT_EQ(dir.read(QStringLiteral("still.txt")), QByteArray("comment\r\nsecond\r\n"));
    PictureFiles::reportSaveFailure(result, prompter, messages, log);
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, messages.text(PictureFiles::kMsgPictureNotSaved, r.fileName));
}

TEST_F(PictureFilesTest, SavePicture_WritesNoComment_WhenTheBitmapCannotBeWritten)
{
    QDir(dir.path()).mkdir(QStringLiteral("still.bmp"));  // a folder in the picture's place
    PictureFiles::SaveRequest r = request(QStringLiteral("still.bmp"));
    r.comments = {QStringLiteral("comment"), QString()};

    const PictureFiles::SaveResult result = PictureFiles::savePicture(r);

    EXPECT_EQ(result.outcome, Outcome::Failed);
    EXPECT_EQ(result.messageId, PictureFiles::kMsgPictureNotSaved);
    EXPECT_FALSE(result.commentWritten);
    EXPECT_FALSE(dir.exists(QStringLiteral("still.txt")));
}

TEST_F(PictureFilesTest, SavePicture_NamesTheCommentFile_WhenOnlyItCannotBeWritten)
{
    prompter.answers = {Prompter::Answer::Ok};
    // A folder in the comment file's place: the picture can be written, the comment cannot.
    QDir(dir.path()).mkdir(QStringLiteral("still.txt"));
    PictureFiles::SaveRequest r = request(QStringLiteral("still.bmp"));
    r.comments = {QStringLiteral("comment"), QString()};

    const PictureFiles::SaveResult result = PictureFiles::savePicture(r);

    EXPECT_EQ(result.outcome, Outcome::Failed);
    EXPECT_TRUE(result.pictureWritten);
    EXPECT_FALSE(result.commentWritten);
    EXPECT_NE(result.error, 0);
    EXPECT_EQ(result.failedFile, dir.file(QStringLiteral("still.txt")));
    EXPECT_EQ(result.messageId, PictureFiles::kMsgCommentNotSaved);
    PictureFiles::reportSaveFailure(result, prompter, messages, log);
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text,
              messages.text(PictureFiles::kMsgCommentNotSaved, dir.file(QStringLiteral("still.txt"))));
    EXPECT_TRUE(prompter.messages[0].text.contains(dir.file(QStringLiteral("still.txt"))));
}

TEST_F(PictureFilesTest, ReportSaveFailure_SaysNothing_WhenTheSaveWorked)
{
    const PictureFiles::SaveResult result = PictureFiles::savePicture(request(QStringLiteral("still.bmp")));

    PictureFiles::reportSaveFailure(result, prompter, messages, log);

    EXPECT_TRUE(prompter.messages.empty());
    EXPECT_FALSE(QFile::exists(log.path()));
}

// --- round trips ---

TEST_F(PictureFilesTest, RoundTrip_Bitmap_GivesTheSamePixelsAndBothComments)
{
    const QImage source = PictureFiles::sourcePicture(1, still(), {}, drawOverlay);
    PictureFiles::SaveRequest r = request(QStringLiteral("round.bmp"), source);
    r.comments = {QStringLiteral("Lens 10x, slide 4"), QStringLiteral("Grain ∅ 12 µm")};
    ASSERT_EQ(PictureFiles::savePicture(r).outcome, Outcome::Written);

    const PictureFiles::LoadResult loaded = PictureFiles::loadPicture(r.fileName);

    ASSERT_EQ(loaded.error, 0);
    EXPECT_EQ(loaded.picture.size(), source.size());
    EXPECT_TRUE(samePixels(loaded.picture, source));
    EXPECT_EQ(loaded.comments[0], r.comments[0]);
    EXPECT_EQ(loaded.comments[1], r.comments[1]);
}

TEST_F(PictureFilesTest, RoundTrip_Jpeg_GivesThePictureWithinTheQualitysErrorAndBothComments)
{
    const QImage source = PictureFiles::sourcePicture(1, still(), {}, drawOverlay);
    PictureFiles::SaveRequest r = request(QStringLiteral("round.jpg"), source);
    r.comments = {QStringLiteral("Lens 10x, slide 4"), QStringLiteral("Grain ∅ 12 µm")};
    r.jpegQuality = 75;
    ASSERT_EQ(PictureFiles::savePicture(r).outcome, Outcome::Written);

    const PictureFiles::LoadResult loaded = PictureFiles::loadPicture(r.fileName);

    ASSERT_EQ(loaded.error, 0);
    EXPECT_EQ(loaded.picture.size(), source.size());
    // 2.9 on this picture at quality 75, 0.7 at 100 and 5.8 at 10 (measured).
    const double mad = meanAbsoluteDifference(loaded.picture, source);
    EXPECT_LT(mad, 3.5);
    EXPECT_GT(mad, 0.0);  // it is a lossy file, not the bitmap
    // Exactly what Qt's own writer and reader make of the same picture.
    EXPECT_TRUE(samePixels(loaded.picture, QImage::fromData(qtJpeg(source, 75))));
    EXPECT_EQ(loaded.comments[0], r.comments[0]);
    EXPECT_EQ(loaded.comments[1], r.comments[1]);
}

TEST_F(PictureFilesTest, RoundTrip_JpegAtQuality100_IsCloserThanAtQuality10)
{
    const QImage source = still();
    PictureFiles::SaveRequest low = request(QStringLiteral("low.jpg"), source);
    low.jpegQuality = 10;
    PictureFiles::SaveRequest high = request(QStringLiteral("high.jpg"), source);
    high.jpegQuality = 100;
    ASSERT_EQ(PictureFiles::savePicture(low).outcome, Outcome::Written);
    ASSERT_EQ(PictureFiles::savePicture(high).outcome, Outcome::Written);

    const double lowError = meanAbsoluteDifference(PictureFiles::loadPicture(low.fileName).picture, source);
    const double highError = meanAbsoluteDifference(PictureFiles::loadPicture(high.fileName).picture, source);

    EXPECT_LT(highError, 1.5);
    EXPECT_GT(lowError, 2 * highError);
}

class PictureFilesIdentify : public PictureFilesTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(PictureFilesIdentify, SavedFile_IsReadByImageMagick)
{
    const QString identify = QStandardPaths::findExecutable(QStringLiteral("identify"));
    ASSERT_FALSE(identify.isEmpty())
        << "ImageMagick's identify is not on the PATH (scripts/deps.sh installs it)";
    const QString name = QLatin1String(GetParam());
    PictureFiles::SaveRequest r = request(name, withOverlay(still(321, 203)));
    ASSERT_EQ(PictureFiles::savePicture(r).outcome, Outcome::Written);

    QProcess process;
    process.start(identify, {QStringLiteral("-format"), QStringLiteral("%m %w %h"), r.fileName});
    ASSERT_TRUE(process.waitForFinished(30000));

    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    // BMP3: ImageMagick's name for a bitmap with the 40-byte Windows header.
    const std::string expected = PictureFiles::kindOf(name) == Kind::Jpeg ? "JPEG 321 203" : "BMP3 321 203";
    EXPECT_EQ(QString::fromUtf8(process.readAllStandardOutput()).trimmed().toStdString(), expected);
}

INSTANTIATE_TEST_SUITE_P(Formats, PictureFilesIdentify, ::testing::Values("id.bmp", "id.jpg"));

// --- loading ---

TEST_F(PictureFilesTest, LoadPicture_FillsComment0AndEmptiesComment1_WhenTheCompanionHasOneLine)
{
    ASSERT_EQ(PictureFiles::savePicture(request(QStringLiteral("one.bmp"))).outcome, Outcome::Written);
    dir.write(QStringLiteral("one.txt"), "only line\r\n");

    const PictureFiles::LoadResult loaded = PictureFiles::loadPicture(dir.file(QStringLiteral("one.bmp")));

    EXPECT_EQ(loaded.comments[0], QStringLiteral("only line"));
    EXPECT_EQ(loaded.comments[1], QString());
}

TEST_F(PictureFilesTest, LoadPicture_EmptiesBothComments_WhenThereIsNoCompanion)
{
    ASSERT_EQ(PictureFiles::savePicture(request(QStringLiteral("none.jpg"))).outcome, Outcome::Written);

    const PictureFiles::LoadResult loaded = PictureFiles::loadPicture(dir.file(QStringLiteral("none.jpg")));

    ASSERT_EQ(loaded.error, 0);
    EXPECT_EQ(loaded.comments[0], QString());
    EXPECT_EQ(loaded.comments[1], QString());
}

struct CompanionCase {
    const char* content;
    const char* first;
    const char* second;
};

void PrintTo(const CompanionCase& c, std::ostream* os)
{
    *os << ::testing::PrintToString(std::string(c.content)) << " -> \"" << c.first << "\", \"" << c.second
        << '"';
}

class PictureFilesCompanion : public PictureFilesTest, public ::testing::WithParamInterface<CompanionCase> {};

TEST_P(PictureFilesCompanion, ReadComments_TakesUpToTwoWholeLines)
{
    dir.write(QStringLiteral("p.txt"), GetParam().content);

    const PictureFiles::Comments comments = PictureFiles::readComments(dir.file(QStringLiteral("p.jpg")));

    EXPECT_EQ(comments[0], QString::fromUtf8(GetParam().first));
    EXPECT_EQ(comments[1], QString::fromUtf8(GetParam().second));
}

INSTANTIATE_TEST_SUITE_P(Table, PictureFilesCompanion,
                         ::testing::Values(CompanionCase{"a\r\nb\r\n", "a", "b"},
                                           CompanionCase{"a\nb\n", "a", "b"},
                                           CompanionCase{"a\r\nb", "a", "b"}, CompanionCase{"one", "one", ""},
                                           CompanionCase{"", "", ""},
                                           CompanionCase{"\r\nsecond\r\n", "", "second"},
                                           CompanionCase{"a\r\nb\r\nc\r\n", "a", "b"},
                                           CompanionCase{" x, \"y\" \r\n", " x, \"y\" ", ""},
                                           CompanionCase{"\xc2\xb5m\r\n\xe6\xb8\xac\r\n", "µm", "測"}));

TEST_F(PictureFilesTest, ReadComments_IsEmpty_ForANameShorterThanFourCharacters)
{
    const PictureFiles::Comments comments = PictureFiles::readComments(QStringLiteral("abc"));

    EXPECT_TRUE(comments[0].isEmpty());
    EXPECT_TRUE(comments[1].isEmpty());
}

TEST_F(PictureFilesTest, LoadPicture_Gives53_WhenTheFileIsMissing)
{
    dir.write(QStringLiteral("gone.txt"), "comment\r\n");

    const PictureFiles::LoadResult loaded = PictureFiles::loadPicture(dir.file(QStringLiteral("gone.jpg")));

    EXPECT_EQ(loaded.error, 53);
    EXPECT_TRUE(loaded.picture.isNull());
    EXPECT_TRUE(loaded.comments[0].isEmpty());
}

TEST_F(PictureFilesTest, LoadPicture_Gives481_WhenTheFileIsNoPicture)
{
    for (const char* name : {"text.jpg", "empty.bmp", "cut.bmp"}) {
        QByteArray content = "this is not a picture";
        if (QByteArray(name) == "empty.bmp")
            content.clear();
        if (QByteArray(name) == "cut.bmp") {
            BmpFile::encode(still(), content);
            content.truncate(content.size() / 2);
        }
        dir.write(QLatin1String(name), content);

        const PictureFiles::LoadResult loaded = PictureFiles::loadPicture(dir.file(QLatin1String(name)));

        EXPECT_EQ(loaded.error, 481) << name;
        EXPECT_TRUE(loaded.picture.isNull()) << name;
    }
}

TEST_F(PictureFilesTest, LoadPicture_GoesByTheContent_NotTheExtension)
{
    QByteArray bitmap;
    BmpFile::encode(still(), bitmap);
    dir.write(QStringLiteral("really-a-bitmap.jpg"), bitmap);
    dir.write(QStringLiteral("really-a-jpeg.bmp"), qtJpeg(still(), 90));

    const PictureFiles::LoadResult a =
        PictureFiles::loadPicture(dir.file(QStringLiteral("really-a-bitmap.jpg")));
    const PictureFiles::LoadResult b =
        PictureFiles::loadPicture(dir.file(QStringLiteral("really-a-jpeg.bmp")));

    EXPECT_EQ(a.error, 0);
    EXPECT_TRUE(samePixels(a.picture, still()));
    EXPECT_EQ(b.error, 0);
    EXPECT_EQ(b.picture.size(), still().size());
}

TEST_F(PictureFilesTest, LoadPicture_ReadsABitmapWrittenByQt)
{
    const QImage picture = withOverlay(still());
    ASSERT_TRUE(picture.save(dir.file(QStringLiteral("qt.bmp")), "BMP"));

    const PictureFiles::LoadResult loaded = PictureFiles::loadPicture(dir.file(QStringLiteral("qt.bmp")));

    ASSERT_EQ(loaded.error, 0);
    EXPECT_TRUE(samePixels(loaded.picture, picture));
}

TEST_F(PictureFilesTest, ReportLoadFailure_LogsAndNamesTheFile)
{
    prompter.answers = {Prompter::Answer::Ok};
    const QString path = dir.file(QStringLiteral("gone.jpg"));
    const PictureFiles::LoadResult loaded = PictureFiles::loadPicture(path);

    PictureFiles::reportLoadFailure(loaded, path, prompter, messages, log);

    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, QStringLiteral("The picture %1 could not be read.").arg(path));
    EXPECT_EQ(prompter.messages[0].title, messages.text(11020));
    EXPECT_EQ(prompter.messages[0].icon, Prompter::Icon::Exclamation);
    QFile logFile(log.path());
    ASSERT_TRUE(logFile.open(QIODevice::ReadOnly));
    EXPECT_TRUE(logFile.readAll().contains("frmMain:cmdPicLoad Error.(53)"));
}

// --- the load question ---

struct QuestionCase {
    bool results;
    qint16 keepResult;
    bool unsaved;
    bool asks;
};

void PrintTo(const QuestionCase& c, std::ostream* os)
{
    *os << "results " << c.results << ", KEEPRESULT " << c.keepResult << ", unsaved " << c.unsaved
        << " -> asks " << c.asks;
}

class PictureFilesLoadQuestion : public ::testing::TestWithParam<QuestionCase> {};

TEST_P(PictureFilesLoadQuestion, ConfirmLoad_AsksOnlyForUnsavedResultsThatWouldBeDropped)
{
    FakeResultTable table;
    table.results = GetParam().results;
    table.notSaved = GetParam().unsaved;
    ScriptedPrompter prompter;
    if (GetParam().asks)
        prompter.answers = {Prompter::Answer::No};
    const MessageTable messages = test::shippedMessages();

    const bool goOn = PictureFiles::confirmLoad(prompter, messages, table, GetParam().keepResult);

    EXPECT_EQ(PictureFiles::loadNeedsQuestion(table, GetParam().keepResult), GetParam().asks);
    EXPECT_EQ(prompter.messages.size(), GetParam().asks ? 1u : 0u);
    EXPECT_EQ(goOn, !GetParam().asks);  // asked: No stops the load
}

INSTANTIATE_TEST_SUITE_P(
    Table, PictureFilesLoadQuestion,
    ::testing::Values(QuestionCase{true, 0, true, true}, QuestionCase{true, 1, true, false},
                      QuestionCase{true, 0, false, false}, QuestionCase{false, 0, true, false},
                      QuestionCase{false, 0, false, false}, QuestionCase{false, 1, false, false}));

TEST(PictureFilesLoad, ConfirmLoad_AsksYesNoWithQuestionIconAndNoAsDefault)
{
    FakeResultTable table;
    table.results = true;
    table.notSaved = true;
    ScriptedPrompter prompter;
    prompter.answers.push_back(Prompter::Answer::Yes);
    const MessageTable messages = test::shippedMessages();

    const bool goOn = PictureFiles::confirmLoad(prompter, messages, table, 0);

    EXPECT_TRUE(goOn);
    ASSERT_EQ(prompter.messages.size(), 1u);
    const Prompter::Message& m = prompter.messages[0];
    EXPECT_EQ(m.text, messages.text(20020));
    EXPECT_EQ(m.title, messages.text(11020));
    EXPECT_EQ(m.icon, Prompter::Icon::Question);
    EXPECT_EQ(m.buttons, Prompter::Buttons::YesNo);
    EXPECT_EQ(m.defaultAnswer, Prompter::Answer::No);
    EXPECT_TRUE(table.clears.empty());  // clearing is the caller's, after the file is chosen
}

TEST(PictureFilesLoad, ConfirmLoad_StopsTheLoad_WhenTheAnswerIsNo)
{
    FakeResultTable table;
    table.results = true;
    table.notSaved = true;
    ScriptedPrompter prompter;
    prompter.answers.push_back(Prompter::Answer::No);

    EXPECT_FALSE(PictureFiles::confirmLoad(prompter, test::shippedMessages(), table, 0));
}

// --- the file dialogs ---

TEST(PictureFilesDialogs, SaveDialog_AsksForANewNameWithTheSaveFilterList)
{
    const MessageTable messages = test::shippedMessages();

    const Prompter::FileRequest r = PictureFiles::saveDialog(messages);

    EXPECT_TRUE(r.save);
    EXPECT_TRUE(r.fileName.isEmpty());
    EXPECT_EQ(r.filter, messages.text(11030));
    EXPECT_TRUE(r.filter.contains(QStringLiteral("*.avi")));
}

TEST(PictureFilesDialogs, LoadDialog_AsksForAnExistingFileWithTheLoadFilterList)
{
    const MessageTable messages = test::shippedMessages();

    const Prompter::FileRequest r = PictureFiles::loadDialog(messages);

    EXPECT_FALSE(r.save);
    EXPECT_TRUE(r.fileName.isEmpty());
    EXPECT_EQ(r.filter, messages.text(11021));
    EXPECT_EQ(r.title, messages.text(11020));
}
