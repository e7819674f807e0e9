#include "common/SafeFile.h"

#include "common/RunError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace tavix::SafeFile {

int write(const QString& path, const QByteArray& content, const PartWrittenHook& partWritten)
{
    QSaveFile file(path);
    // Unbuffered: Qt 6.4 loses an error of the final buffer flush and would
    // then commit a cut-off file over the old one.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return QFileInfo(path).absoluteDir().exists() ? err::PathFileAccess : err::PathNotFound;
    const qsizetype half = content.size() / 2;
    bool ok = file.write(content.constData(), half) == half;
    if (ok && partWritten)
        partWritten();
    ok = ok && file.write(content.constData() + half, content.size() - half) == content.size() - half;
    if (!ok) {
        file.cancelWriting();  // the temporary file goes, the old file stays
        return err::DiskFull;
    }
    return file.commit() ? 0 : err::DiskFull;
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
