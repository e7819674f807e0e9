#include "AviProbe.h"
#include "TempDir.h"
#include "WriteKinds.h"
#include "media/AviRecorder.h"

#include <gtest/gtest.h>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QThread>
#include <csignal>
#include <map>
#include <random>

using namespace tavix;
using namespace tavix::reliability;
using tavix::test::TempDir;

namespace {

// Kills over all kinds; the long campaign sets TAVIX_KILLS to 1000.
int killsPerKind()
{
    const int total = qEnvironmentVariableIntValue("TAVIX_KILLS");
    const int kinds = int(allKinds().size());
    return total > 0 ? (total + kinds - 1) / kinds : 4;
}

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The files a kind keeps: the picture of a commented save has its comment file beside it.
QStringList keptFiles(Kind kind, const QString& folder)
{
    const QString path = filePath(kind, folder);
    if (kind == Kind::Comment)
        return {path, QDir(folder).filePath(QStringLiteral("commented.bmp"))};
    return {path};
}

struct Versions {
    std::map<QString, QByteArray> old, young;  // by file name
};

Versions referenceContent(Kind kind)
{
    Versions versions;
    for (int version : {0, 1}) {
        TempDir dir;
        prepare(kind, dir.path());
        EXPECT_TRUE(writeVersion(kind, dir.path(), version));
        for (const QString& path : keptFiles(kind, dir.path()))
            (version ? versions.young : versions.old)[QFileInfo(path).fileName()] = readAll(path);
    }
    return versions;
}

// Starts the writer and waits until its first file is complete.
bool startWriter(QProcess& child, Kind kind, const QString& folder)
{
    child.start(QStringLiteral(TAVIX_WRITE_CHILD), {nameOf(kind), folder});
    if (!child.waitForStarted(10000))
        return false;
    while (!child.canReadLine())
        if (!child.waitForReadyRead(60000))
            return false;
    return child.readLine().trimmed() == "ready";
}

void killNow(QProcess& child)
{
    ::kill(pid_t(child.processId()), SIGKILL);
    child.waitForFinished(10000);
}

// Whether the writer was inside a write when it died: its last mark is "+".
bool killedInsideAWrite(QProcess& child)
{
    return child.readAllStandardOutput().endsWith('+');
}

class KillDuringWrite : public ::testing::TestWithParam<Kind> {};

}  // namespace

// Every kill leaves each kept file as its complete old or its complete new content.
TEST_P(KillDuringWrite, EveryFileIsWholeOldOrWholeNew)
{
    const Kind kind = GetParam();
    const Versions versions = referenceContent(kind);
    std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<int> delayMs(0, 40);
    int old = 0, young = 0, midWrite = 0;
    const int kills = killsPerKind();
    for (int i = 0; i < kills; ++i) {
        TempDir dir;
        QProcess child;
        ASSERT_TRUE(startWriter(child, kind, dir.path())) << child.readAllStandardError().toStdString();
        QThread::msleep(delayMs(random));
        killNow(child);
        const QStringList kept = keptFiles(kind, dir.path());
        for (const QString& path : kept) {
            const QString name = QFileInfo(path).fileName();
            const QByteArray content = readAll(path);
            const bool isOld = content == versions.old.at(name);
            const bool isYoung = content == versions.young.at(name);
            ASSERT_TRUE(isOld || isYoung)
                << name.toStdString() << " torn after kill " << i << ": " << content.size() << " bytes";
            old += isOld;
            young += isYoung;
        }
        midWrite += killedInsideAWrite(child);
    }
    EXPECT_GT(midWrite, 0) << "no kill landed inside a write";
    std::printf("[ figures  ] %s: %d kills, %d old, %d new, %d killed inside a write, 0 torn\n",
                qPrintable(nameOf(kind)), kills, old, young, midWrite);
}

INSTANTIATE_TEST_SUITE_P(KeptFiles, KillDuringWrite,
                         ::testing::Values(Kind::Settings, Kind::Calibration, Kind::Results, Kind::Bitmap,
                                           Kind::Jpeg, Kind::Comment, Kind::Series),
                         [](const auto& info) { return nameOf(info.param).toStdString(); });

// A recording killed at any moment leaves the clip saved before it whole, and
// what it had written plays up to its last complete frame.
TEST(KillDuringRecording, TheOldClipStaysAndThePartPlays)
{
    std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<int> delayMs(200, 2000);
    const int kills = killsPerKind();
    int partsPlayed = 0, framesPlayed = 0;
    for (int i = 0; i < kills; ++i) {
        TempDir dir;
        QProcess child;
        ASSERT_TRUE(startWriter(child, Kind::Recording, dir.path()))
            << child.readAllStandardError().toStdString();
        const QString clip = filePath(Kind::Recording, dir.path());
        const QByteArray oldClip = readAll(clip);
        ASSERT_GT(oldClip.size(), 0);
        QThread::msleep(delayMs(random));
        killNow(child);

        EXPECT_EQ(readAll(clip), oldClip);
        const QString part = AviRecorder::partName(clip);
        if (!QFile::exists(part))
            continue;
        const test::AviProbe probe = test::AviProbe::of(part);
        ASSERT_TRUE(probe.ok) << "kill " << i << ": " << probe.error.toStdString();
        EXPECT_EQ(probe.codec, QStringLiteral("mjpeg"));
        ++partsPlayed;
        framesPlayed += probe.frames;
    }
    EXPECT_GT(partsPlayed, 0);
    EXPECT_GT(framesPlayed, 0);
    std::printf("[ figures  ] recording: %d kills, %d cut recordings played, %d frames in them\n", kills,
                partsPlayed, framesPlayed);
}
