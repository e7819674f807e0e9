#pragma once

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace tavix::bench {

// A program folder with the shipped data files, made once per process.
inline QString programFolder()
{
    static QTemporaryDir dir;
    const QDir source(QStringLiteral(TAVIX_SOURCE_DATA_DIR));
    for (const QString& name : source.entryList(QDir::Files))
        QFile::copy(source.filePath(name), dir.filePath(name));
    return dir.path();
}

}  // namespace tavix::bench
