#include "WriteKinds.h"

#include "ScriptedPrompter.h"
#include "calib/ProofTable.h"
#include "camera/sim/SimCamera.h"
#include "common/Clock.h"
#include "common/ErrorLog.h"
#include "common/MessageTable.h"
#include "common/SettingsFile.h"
#include "files/IntervalShot.h"
#include "files/PictureFiles.h"
#include "measure/ResultTable.h"
#include "media/AviRecorder.h"
#include "media/BmpFile.h"
#include "media/JpegWriter.h"

#include <QDir>
#include <QFile>
#include <QPainter>
#include <chrono>
#include <cmath>
#include <map>
#include <thread>
#include <tuple>

namespace tavix::reliability {

namespace {

struct KindInfo {
    Kind kind;
    const char* name;
    const char* file;
};

const KindInfo kInfo[] = {
    {Kind::Settings, "settings", "Tavix.Ini"},  {Kind::Calibration, "calibration", "Proof.dat"},
    {Kind::Results, "results", "results.csv"},  {Kind::Bitmap, "bitmap", "picture.bmp"},
    {Kind::Jpeg, "jpeg", "picture.jpg"},        {Kind::Comment, "comment", "commented.txt"},
    {Kind::Series, "series", "series0001.jpg"}, {Kind::Recording, "recording", "clip.avi"},
};

const KindInfo& infoOf(Kind kind)
{
    for (const KindInfo& info : kInfo)
        if (info.kind == kind)
            return info;
    return kInfo[0];
}

// A picture large enough that writing it takes a few milliseconds, so that a
// kill lands inside the write most of the time.
// Made once, so that the writer loop spends its time writing.
QImage picture(int version, QSize size = QSize(1296, 972))
{
    static std::map<std::tuple<int, int, int>, QImage> made;
    QImage& image = made[{version, size.width(), size.height()}];
    if (!image.isNull())
        return image;
    image = QImage(size, QImage::Format_RGB888);
    for (int y = 0; y < image.height(); ++y) {
        uchar* line = image.scanLine(y);
        for (int x = 0; x < image.width(); ++x) {
            line[3 * x] = uchar(x + version * 80);
            line[3 * x + 1] = uchar(y * 3 + x / 7);
            line[3 * x + 2] = uchar((x ^ y) + version * 40);
        }
    }
    return image;
}

bool writeSettings(const QString& path, int version)
{
    const ErrorLog log(QFileInfo(path).dir().filePath(QStringLiteral("Error.log")));
    SettingsFile file(path, log);
    Settings s;
    if (!file.GetIniFileData(s))
        return false;
    s.JPEGQTY = version ? 55 : 90;
    s.SCALEX = version ? 250.5 : 100;
    s.CROSSLINECOLOR = version ? 255 : 65280;
    s.KEEPRESULT = qint16(version);
    file.writeExitSettings(s, qint16(version ? 3 : 0));
    return true;
}

bool writeCalibration(const QString& path, int version)
{
    ProofTable table;
    for (int i = 0; i < ProofTable::Size; ++i) {
        ProofEntry& entry = table.at(i);
        entry.Name = QStringLiteral("Objective %1 v%2").arg(i + 1).arg(version);
        entry.XFactor = entry.YFactor = 0.5 + i + version * 0.25;
        entry.Unit = QStringLiteral("µm");
        entry.XValue = entry.YValue = 100 + version;
    }
    return table.write(path);
}

bool writeResults(const QString& path, int version)
{
    ResultTable table;
    table.setHeaderCaptions(
        {QStringLiteral("No."), QStringLiteral("Kind"), QStringLiteral("Value"), QStringLiteral("Unit")});
    for (int i = 0; i < 500 && !table.isFull(); ++i)
        table.addResult(QStringLiteral("Distance"), i * 1.5 + version, QStringLiteral("µm"));
    return table.saveCsv(path);
}

bool writeComment(const QString& folder, int version)
{
    PictureFiles::SaveRequest request;
    request.fileName = QDir(folder).filePath(QStringLiteral("commented.bmp"));
    request.source = picture(version, QSize(64, 48));
    request.comments = {QStringLiteral("Sample %1, left edge").arg(version).repeated(200),
                        QStringLiteral("Lot 4711 v%1").arg(version)};
    request.tempBitmapPath = QDir(folder).filePath(QStringLiteral("TavixStill.bmp"));
    const PictureFiles::SaveResult result = PictureFiles::savePicture(request);
    return result.outcome == PictureFiles::SaveResult::Outcome::Written && result.commentWritten;
}

bool writeSeries(const QString& path, int version)
{
    const ErrorLog log(QFileInfo(path).dir().filePath(QStringLiteral("Error.log")));
    const MessageTable messages;
    test::ScriptedPrompter prompter;
    SystemClock clock;
    SimCamera camera(&clock);
    IntervalShot shot(camera, log, messages, prompter, clock);
    IntervalShot::Job job;
    job.finalFile = path;
    job.jpegQuality = 80;
    job.crosses.draw = true;
    job.crosses.points = {QPoint(300 + version * 100, 200), QPoint(0, 0)};
    job.crosses.color = Qt::red;
    // A series picture with crosses that cannot be written is logged, not reported.
    return shot.saveStill(picture(version), job) == IntervalShot::Outcome::Saved;
}

}  // namespace

const std::vector<Kind>& allKinds()
{
    static const std::vector<Kind> kinds = {Kind::Settings, Kind::Calibration, Kind::Results,
                                            Kind::Bitmap,   Kind::Jpeg,        Kind::Comment,
                                            Kind::Series,   Kind::Recording};
    return kinds;
}

QString nameOf(Kind kind)
{
    return QLatin1String(infoOf(kind).name);
}

std::optional<Kind> kindNamed(const QString& name)
{
    for (const KindInfo& info : kInfo)
        if (name == QLatin1String(info.name))
            return info.kind;
    return std::nullopt;
}

QString filePath(Kind kind, const QString& folder)
{
    return QDir(folder).filePath(QLatin1String(infoOf(kind).file));
}

void prepare(Kind kind, const QString& folder)
{
    if (kind != Kind::Settings)
        return;
    const QString path = filePath(kind, folder);
    QFile::remove(path);
    QFile::copy(QStringLiteral(TAVIX_SOURCE_DATA_DIR "/Tavix.Ini"), path);
    QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
}

bool writeVersion(Kind kind, const QString& folder, int version)
{
    const QString path = filePath(kind, folder);
    switch (kind) {
        case Kind::Settings:
            return writeSettings(path, version);
        case Kind::Calibration:
            return writeCalibration(path, version);
        case Kind::Results:
            return writeResults(path, version);
        case Kind::Bitmap:
            return BmpFile::write(path, picture(version)) == 0;
        case Kind::Jpeg: {
            const QImage image = picture(version);
            return SaveJpeg(&image, path, 85) == JpegWriter::kOk;
        }
        case Kind::Comment:
            return writeComment(folder, version);
        case Kind::Series:
            return writeSeries(path, version);
        case Kind::Recording:
            return record(folder, 0.5 + version * 0.5, false);
    }
    return false;
}

bool record(const QString& folder, double seconds, bool realTime)
{
    constexpr double kFps = 30;
    const QImage frame = picture(0, QSize(640, 480));
    AviRecorder recorder;
    AviRecorder::Format format;
    format.size = frame.size();
    format.fps = kFps;
    format.quality = 80;
    if (!recorder.start(filePath(Kind::Recording, folder), format, int(std::ceil(seconds)) + 1))
        return false;
    const int frames = int(seconds * kFps);
    const auto frameTime = std::chrono::nanoseconds(std::int64_t(1e9 / kFps));
    for (int i = 0; i < frames; ++i) {
        FrameView view{frame.constBits(), frame.width(),    frame.height(),       frame.bytesPerLine(),
                       frame.format(),    std::uint64_t(i), i * frameTime.count()};
        recorder.addFrame(view);
        // Not faster than the encoder, so that every frame is kept.
        std::this_thread::sleep_for(realTime ? frameTime : std::chrono::milliseconds(8));
    }
    recorder.stop();
    return recorder.waitFinished(20000) && recorder.stats().framesWritten > 0;
}

}  // namespace tavix::reliability
