#include "measure/ValueFormat.h"

namespace tavix::ValueFormat {

QString pattern(int decimals)
{
    if (decimals <= 0)
        return QStringLiteral("0");
    return QStringLiteral("0.") + QString(decimals, QLatin1Char('0'));
}

QString format(double value, int decimals)
{
    return QString::number(value, 'f', decimals < 0 ? 0 : decimals);
}

}  // namespace tavix::ValueFormat
