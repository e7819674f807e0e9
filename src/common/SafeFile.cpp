#include "common/SafeFile.h"

#include "common/RunError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace tavix::SafeFile {

namespace {

// Writes the pieces `fill` gives until it gives none; the hook runs after the first.
int writePieces(const QString& path, const Filler& fill, const PartWrittenHook& partWritten)
{
    QSaveFile file(path);
    // Unbuffered: Qt 6.4 loses an error of the final buffer flush and would
    // then commit a cut-off file over the old one.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return QFileInfo(path).absoluteDir().exists() ? err::PathFileAccess : err::PathNotFound;
    bool first = true;
    for (Piece piece = fill(); piece.data; piece = fill()) {
        if (file.write(piece.data, piece.size) != piece.size) {
            file.cancelWriting();  // the temporary file goes, the old file stays
            return err::DiskFull;
        }
        if (first && partWritten)
            partWritten();
        first = false;
    }
    return file.commit() ? 0 : err::DiskFull;
}

}  // namespace

int write(const QString& path, const QByteArray& content, const PartWrittenHook& partWritten)
{
    // In two halves, so that the hook sees part of the content written.
    const qsizetype half = content.size() / 2;
    int piece = 0;
    auto next = [&]() -> Piece {
        switch (piece++) {
            case 0:
                return {content.constData(), half};
            case 1:
                return {content.constData() + half, content.size() - half};
            default:
                return {};
        }
    };
    return writePieces(path, next, partWritten);
}

int writeStreamed(const QString& path, const Filler& fill)
{
    return writePieces(path, fill, {});
}

int writeScratch(const QString& path, const QByteArray& content)
{
    // Written over the old content and cut to size afterwards, not truncated
    // first: ext4 flushes a file that was emptied and written again when it is
    // closed, which made a 15 MB bitmap take 17 ms instead of 2 ms.
    QFile file(path);
    // A file that may be written but not read is emptied the usual way.
    if (!file.open(QIODevice::ReadWrite | QIODevice::Unbuffered) &&
        !file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
        return QFileInfo(path).absoluteDir().exists() ? err::PathFileAccess : err::PathNotFound;
    if (file.write(content) != content.size())
        return err::DiskFull;
    return file.resize(content.size()) ? 0 : err::DiskFull;
}

}  // namespace tavix::SafeFile
