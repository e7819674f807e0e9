#include "common/SafeFile.h"

#include "common/RunError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <algorithm>

#ifdef __linux__
#include <fcntl.h>
#endif

namespace tavix::SafeFile {

namespace {

constexpr qsizetype kPiece = 1 << 20;

// Starts the disk's write-back of what was just written, so that the wait at
// the commit is for the last piece only, not for the whole file.
void startWriteBack(QFileDevice& file, qint64 offset, qint64 size)
{
#ifdef __linux__
    ::sync_file_range(file.handle(), offset, size, SYNC_FILE_RANGE_WRITE);
#else
    Q_UNUSED(file);
    Q_UNUSED(offset);
    Q_UNUSED(size);
#endif
}

int writePieces(const QString& path, const Filler& fill, qsizetype total, const PartWrittenHook& partWritten)
{
    QSaveFile file(path);
    // Unbuffered: Qt 6.4 loses an error of the final buffer flush and would
    // then commit a cut-off file over the old one.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return QFileInfo(path).absoluteDir().exists() ? err::PathFileAccess : err::PathNotFound;
    qint64 written = 0;
    bool hookCalled = !partWritten;
    for (;;) {
        const Piece piece = fill();
        if (piece.size <= 0)
            break;
        if (file.write(piece.data, piece.size) != piece.size) {
            file.cancelWriting();  // the temporary file goes, the old file stays
            return err::DiskFull;
        }
        startWriteBack(file, written, piece.size);
        written += piece.size;
        if (!hookCalled && written >= total / 2) {
            partWritten();
            hookCalled = true;
        }
    }
    return file.commit() ? 0 : err::DiskFull;
}

}  // namespace

int write(const QString& path, const QByteArray& content, const PartWrittenHook& partWritten)
{
    // The first piece is at most half the content, so that the hook sees part of it written.
    qsizetype offset = 0;
    const qsizetype total = content.size();
    auto next = [&]() -> Piece {
        const qsizetype wanted = offset == 0 ? std::min(kPiece, std::max<qsizetype>(total / 2, 1)) : kPiece;
        const qsizetype size = std::min(wanted, total - offset);
        const Piece piece{content.constData() + offset, size};
        offset += size;
        return piece;
    };
    return writePieces(path, next, total, partWritten);
}

int writeStreamed(const QString& path, const Filler& fill)
{
    return writePieces(path, fill, 0, {});
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
