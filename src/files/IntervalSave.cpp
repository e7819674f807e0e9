#include "files/IntervalSave.h"

#include "common/Settings.h"

#include <QFileInfo>
#include <algorithm>

namespace tavix {

void IntervalSave::forceRanges(Settings& settings)
{
    settings.INTERVALTIME = std::clamp(settings.INTERVALTIME, kMinInterval, kMaxInterval);
    settings.NUMBEROFIMAGES = std::clamp(settings.NUMBEROFIMAGES, kMinImages, kMaxImages);
}

namespace {

// A box's whole number: digits only, blanks around allowed; -1 otherwise
// (empty, a sign, a point, letters, or too long to be in any range).
int boxNumber(const QString& text)
{
    const QString t = text.trimmed();
    if (t.isEmpty() || t.size() > 6)
        return -1;
    for (const QChar c : t)
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return -1;
    return t.toInt();
}

}  // namespace

IntervalSave::ConfigCheck IntervalSave::checkConfig(const QString& minutes, const QString& seconds,
                                                    const QString& count)
{
    ConfigCheck c;
    const int m = boxNumber(minutes);
    const int s = boxNumber(seconds);
    const int n = boxNumber(count);
    auto fail = [&c](ConfigCheck::Box box, qint32 text, qint32 title) {
        c.failed = box;
        c.text = text;
        c.title = title;
        return c;
    };
    if (m < 0 || m > kMaxMinutes)
        return fail(ConfigCheck::Box::Minutes, kMsgIntervalText, kMsgIntervalTitle);
    if (s < 0 || s > kMaxSeconds)
        return fail(ConfigCheck::Box::Seconds, kMsgIntervalText, kMsgIntervalTitle);
    const int interval = m * 60 + s;
    // 99 min 59 s fits the boxes but not the series; the minutes carry the blame.
    if (interval < kMinInterval || interval > kMaxInterval)
        return fail(ConfigCheck::Box::Minutes, kMsgIntervalText, kMsgIntervalTitle);
    if (n < kMinImages || n > kMaxImages)
        return fail(ConfigCheck::Box::Count, kMsgCountText, kMsgCountTitle);
    c.interval = interval;
    c.count = static_cast<qint16>(n);
    return c;
}

QString IntervalSave::statusText(qint32 saved, qint32 total, qint32 remainingSeconds)
{
    return QStringLiteral("%1/%2 saved. The next picture is saved in %3min%4sec.")
        .arg(saved, 3, 10, QLatin1Char('0'))
        .arg(total, 3, 10, QLatin1Char('0'))
        .arg(remainingSeconds / 60)
        .arg(remainingSeconds % 60, 2, 10, QLatin1Char('0'));
}

IntervalSave::SeriesName IntervalSave::splitSeriesName(const QString& fileName)
{
    const qsizetype cut = std::max<qsizetype>(0, fileName.size() - 4);
    return {fileName.left(cut), fileName.mid(cut)};
}

QString IntervalSave::seriesFile(const QString& base, qint32 count, const QString& extension)
{
    return base + QStringLiteral("_%1").arg(count, 3, 10, QLatin1Char('0')) + extension;
}

QString IntervalSave::quickFolder(const QString& path)
{
    QString folder = path.trimmed();
    folder.replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (!folder.endsWith(QLatin1Char('/')))
        folder += QLatin1Char('/');
    return folder;
}

QString IntervalSave::quickNumberText(int number)
{
    return QStringLiteral("%1").arg(number, 4, 10, QLatin1Char('0'));
}

int IntervalSave::nextQuickNumber(const QString& folder)
{
    // Gaps below the highest number stay gaps: numbers only ever grow.
    for (int n = kMaxQuickNumber; n >= 1; --n)
        if (QFileInfo::exists(folder + quickNumberText(n) + QStringLiteral(".jpg")))
            return n + 1;
    return 1;
}

}  // namespace tavix
