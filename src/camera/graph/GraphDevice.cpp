#include "camera/graph/GraphDevice.h"

#include "common/SafeFile.h"

#include <QFile>
#include <QRegularExpression>
#include <QStringList>

namespace tavix::GraphDevice {

namespace {
// A path with a blank in it is quoted, as gst-launch reads it.
QString quoted(const QString& device)
{
    return device.contains(QLatin1Char(' ')) ? QLatin1Char('"') + device + QLatin1Char('"') : device;
}
}  // namespace

QString withDevice(const QString& text, const QString& device)
{
    static const QRegularExpression source(QStringLiteral("(^|[\\s!])v4l2src(?=\\s|!|$)"));
    static const QRegularExpression property(QStringLiteral("\\s+device\\s*=\\s*(\"[^\"]*\"|[^\\s!]+)"));
    QStringList lines = text.split(QLatin1Char('\n'));
    for (QString& line : lines) {
        if (line.trimmed().startsWith(QLatin1Char('#')))
            continue;
        const QRegularExpressionMatch found = source.match(line);
        if (!found.hasMatch())
            continue;
        const qsizetype end = found.capturedEnd();
        // The element's properties run up to the next link.
        qsizetype link = line.indexOf(QLatin1Char('!'), end);
        if (link < 0)
            link = line.size();
        const QString setting = QStringLiteral(" device=") + quoted(device);
        const QRegularExpressionMatch old = property.match(line.mid(end, link - end));
        if (old.hasMatch())
            line.replace(end + old.capturedStart(), old.capturedLength(), setting);
        else
            line.insert(end, setting);
        return lines.join(QLatin1Char('\n'));
    }
    return {};
}

int choose(const QString& graphPath, const QString& device)
{
    QFile file(graphPath);
    if (!file.exists())
        return 53;
    if (!file.open(QIODevice::ReadOnly))
        return 75;
    const QString changed = withDevice(QString::fromUtf8(file.readAll()), device);
    file.close();
    if (changed.isNull())
        return 5;
    return SafeFile::write(graphPath, changed.toUtf8());
}

}  // namespace tavix::GraphDevice
