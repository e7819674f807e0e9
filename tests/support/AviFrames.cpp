#include "AviFrames.h"

#include <QFile>
#include <QtEndian>

namespace tavix::test {

namespace {

void walk(const QByteArray& file, qsizetype from, qsizetype to, QList<QByteArray>& frames)
{
    qsizetype at = from;
    while (at + 8 <= to) {
        const QByteArray id = file.mid(at, 4);
        const auto size = static_cast<qsizetype>(qFromLittleEndian<quint32>(file.constData() + at + 4));
        const qsizetype body = at + 8;
        if (body + size > to)
            return;
        if (id == "RIFF" || id == "LIST")
            walk(file, body + 4, body + size, frames);  // past the list's own type
        else if (id.at(2) == 'd' && (id.at(3) == 'c' || id.at(3) == 'b'))
            frames.append(file.mid(body, size));
        at = body + size + (size & 1);
    }
}

}  // namespace

QList<QByteArray> aviFrames(const QString& path)
{
    QFile f(path);
    QList<QByteArray> frames;
    if (!f.open(QIODevice::ReadOnly))
        return frames;
    const QByteArray file = f.readAll();
    walk(file, 0, file.size(), frames);
    return frames;
}

}  // namespace tavix::test
