#include "TempDir.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <stdexcept>

namespace tavix::test {

TempDir::TempDir()
{
    if (!dir_.isValid())
        throw std::runtime_error("cannot create a temporary folder");
}

QString TempDir::file(const QString& name) const
{
    return dir_.filePath(name);
}

QString TempDir::write(const QString& name, const QByteArray& content) const
{
    const QString path = file(name);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw std::runtime_error("cannot write " + path.toStdString());
    f.write(content);
    return path;
}

QByteArray TempDir::read(const QString& name) const
{
    QFile f(file(name));
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return f.readAll();
}

bool TempDir::exists(const QString& name) const
{
    return QFileInfo::exists(file(name));
}

QString copyShippedData(const TempDir& dir)
{
    const QDir source(QStringLiteral(TAVIX_SOURCE_DATA_DIR));
    for (const QString& name : source.entryList(QDir::Files)) {
        QFile::copy(source.filePath(name), dir.file(name));
        QFile::setPermissions(dir.file(name), QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    }
    return dir.path();
}

}  // namespace tavix::test
