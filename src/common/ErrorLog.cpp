#include "common/ErrorLog.h"

#include <QFile>
#include <QLocale>

namespace tavix {

ErrorLog::ErrorLog(QString path, Clock clock) : path_(std::move(path)), clock_(std::move(clock))
{
}

QString ErrorLog::timestamp(const QDateTime& when)
{
    const QLocale locale = QLocale::system();
    return locale.toString(when.date(), QLocale::ShortFormat) + QLatin1Char(' ') +
           when.time().toString(QStringLiteral("HH:mm:ss"));
}

void ErrorLog::write(const QString& message) const
{
    QFile file(path_);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
        return;
    const QString line = timestamp(clock_()) + QLatin1Char(' ') + message + QStringLiteral("\r\n");
    file.write(line.toUtf8());
}

}  // namespace tavix
