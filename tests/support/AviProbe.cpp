#include "AviProbe.h"

#include <QProcess>
#include <QStringList>

namespace tavix::test {

AviProbe AviProbe::of(const QString& path)
{
    AviProbe probe;
    QProcess ffprobe;
    ffprobe.start(
        QStringLiteral("ffprobe"),
        {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-count_frames"),
         QStringLiteral("-select_streams"), QStringLiteral("v:0"), QStringLiteral("-show_entries"),
         QStringLiteral("stream=codec_name,width,height,r_frame_rate,nb_read_frames:format=format_name"),
         QStringLiteral("-of"), QStringLiteral("default=noprint_wrappers=1"), path});
    if (!ffprobe.waitForFinished(120000)) {
        probe.error = QStringLiteral("ffprobe did not run (install it with scripts/deps.sh)");
        return probe;
    }
    probe.error = QString::fromUtf8(ffprobe.readAllStandardError()).trimmed();
    const QStringList lines = QString::fromUtf8(ffprobe.readAllStandardOutput()).split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        const QString key = line.section(QLatin1Char('='), 0, 0);
        const QString value = line.section(QLatin1Char('='), 1).trimmed();
        if (key == QLatin1String("codec_name"))
            probe.codec = value;
        else if (key == QLatin1String("format_name"))
            probe.format = value;
        else if (key == QLatin1String("width"))
            probe.width = value.toInt();
        else if (key == QLatin1String("height"))
            probe.height = value.toInt();
        else if (key == QLatin1String("nb_read_frames"))
            probe.frames = value.toInt();
        else if (key == QLatin1String("r_frame_rate")) {
            const double den = value.section(QLatin1Char('/'), 1).toDouble();
            probe.fps = den > 0 ? value.section(QLatin1Char('/'), 0, 0).toDouble() / den : 0;
        }
    }
    probe.ok = ffprobe.exitCode() == 0 && !probe.codec.isEmpty();
    return probe;
}

}  // namespace tavix::test
