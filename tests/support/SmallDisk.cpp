#include "SmallDisk.h"

#include <sys/mount.h>
#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QStorageInfo>

namespace tavix::test {

namespace {
const char* kFiller = ".filler";
}

SmallDisk::SmallDisk(qint64 bytes)
{
    const QByteArray options = "size=" + QByteArray::number(bytes);
    mounted_ = dir_.isValid() && ::mount("tavix-test", QFile::encodeName(dir_.path()).constData(), "tmpfs", 0,
                                         options.constData()) == 0;
}

SmallDisk::~SmallDisk()
{
    if (mounted_)
        ::umount2(QFile::encodeName(dir_.path()).constData(), MNT_DETACH);
}

QString SmallDisk::file(const QString& name) const
{
    return QDir(dir_.path()).filePath(name);
}

void SmallDisk::fill()
{
    QFile filler(file(QLatin1String(kFiller)));
    if (!filler.open(QIODevice::Append | QIODevice::Unbuffered))
        return;
    const QByteArray block(4096, 'f');
    while (filler.write(block) == block.size()) {
    }
    // The last partial block: byte by byte up to the end.
    while (filler.write("f", 1) == 1) {
    }
}

void SmallDisk::makeRoom()
{
    QFile::remove(file(QLatin1String(kFiller)));
}

QByteArray SmallDisk::read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

qint64 SmallDisk::freeBytes() const
{
    return QStorageInfo(dir_.path()).bytesAvailable();
}

}  // namespace tavix::test
