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

const QRegularExpression& sourcePattern()
{
    static const QRegularExpression source(QStringLiteral("(^|[\\s!])v4l2src(?=\\s|!|$)"));
    return source;
}
const QRegularExpression& devicePattern()
{
    static const QRegularExpression property(QStringLiteral("\\s+device\\s*=\\s*(\"[^\"]*\"|[^\\s!]+)"));
    return property;
}

// Where the first v4l2src's properties are: its line, and the span from the
// end of its name to the next link.
struct Source {
    qsizetype line = -1;
    qsizetype from = 0;
    qsizetype to = 0;
};

Source findSource(const QStringList& lines)
{
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QString& line = lines[i];
        if (line.trimmed().startsWith(QLatin1Char('#')))
            continue;
        const QRegularExpressionMatch found = sourcePattern().match(line);
        if (!found.hasMatch())
            continue;
        const qsizetype end = found.capturedEnd();
        const qsizetype link = line.indexOf(QLatin1Char('!'), end);
        return {i, end, link < 0 ? line.size() : link};
    }
    return {};
}
}  // namespace

QString withDevice(const QString& text, const QString& device)
{
    QStringList lines = text.split(QLatin1Char('\n'));
    const Source at = findSource(lines);
    if (at.line < 0)
        return {};
    QString& line = lines[at.line];
    const QString setting = QStringLiteral(" device=") + quoted(device);
    const QRegularExpressionMatch old = devicePattern().match(line.mid(at.from, at.to - at.from));
    if (old.hasMatch())
        line.replace(at.from + old.capturedStart(), old.capturedLength(), setting);
    else
        line.insert(at.from, setting);
    return lines.join(QLatin1Char('\n'));
}

QString deviceIn(const QString& text)
{
    const QStringList lines = text.split(QLatin1Char('\n'));
    const Source at = findSource(lines);
    if (at.line < 0)
        return {};
    const QRegularExpressionMatch old = devicePattern().match(lines[at.line].mid(at.from, at.to - at.from));
    QString device = old.captured(1);
    if (device.startsWith(QLatin1Char('"')))
        device = device.mid(1, device.size() - 2);
    return device;
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
