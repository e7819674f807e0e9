#include "calib/Magnification.h"

#include "common/NumberText.h"

namespace tavix::Magnification {

QStringList entries()
{
    return {
        QStringLiteral("x 1.0"), QStringLiteral("x 1.5"), QStringLiteral("x 2.0"), QStringLiteral("x 3.0"),
        QStringLiteral("x 4.0"), QStringLiteral("x 6.0"), QStringLiteral("x 8.0"), QStringLiteral("x 0.8"),
        QStringLiteral("x 0.7"), QStringLiteral("x 0.6"), QStringLiteral("x 0.5"), QStringLiteral("x 0.4"),
        QStringLiteral("x 0.3"), QStringLiteral("x 0.2"), QStringLiteral("x 0.1"), QStringLiteral("x 5.0")};
}

double valueOf(const QString& entry)
{
    return NumberText::val(entry.right(3));
}

QString label(double magnification)
{
    return QStringLiteral("x ") + QString::number(magnification, 'f', 1);
}

}  // namespace tavix::Magnification
