#include "common/DataFile.h"

#include "common/RunError.h"

#include <QFile>
#include <QFileInfo>

namespace tavix::DataFile {

QString readText(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists() || info.isDir())
        throw RunError(err::FileNotFound);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw RunError(err::PathFileAccess);
    QString text = QString::fromUtf8(file.readAll());
    // Editors on other systems may put a byte-order mark in front of the first line.
    if (text.startsWith(QChar(0xFEFF)))
        text.remove(0, 1);
    return text;
}

QStringList splitLines(const QString& text)
{
    QStringList lines;
    qsizetype start = 0;
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n; ++i) {
        const QChar c = text[i];
        if (c != QLatin1Char('\r') && c != QLatin1Char('\n'))
            continue;
        lines << text.mid(start, i - start);
        if (c == QLatin1Char('\r') && i + 1 < n && text[i + 1] == QLatin1Char('\n'))
            ++i;
        start = i + 1;
    }
    if (start < n)
        lines << text.mid(start);
    return lines;
}

}  // namespace tavix::DataFile
