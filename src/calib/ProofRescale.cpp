#include "calib/ProofRescale.h"

namespace tavix::ProofRescale {

namespace {

bool known(QSize size)
{
    return size.isValid() && !size.isEmpty();
}

}  // namespace

bool applies(QSize madeAt, QSize picture)
{
    return known(madeAt) && known(picture) && madeAt.width() != picture.width();
}

double ratio(QSize madeAt, QSize picture)
{
    return applies(madeAt, picture) ? static_cast<double>(madeAt.width()) / picture.width() : 1.0;
}

ProofEntry toPicture(ProofEntry entry, QSize madeAt, QSize picture)
{
    if (!applies(madeAt, picture))
        return entry;
    const double r = ratio(madeAt, picture);
    entry.XFactor *= r;
    entry.YFactor *= r;
    return entry;
}

QString sizeText(QSize size)
{
    return QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
}

}  // namespace tavix::ProofRescale
