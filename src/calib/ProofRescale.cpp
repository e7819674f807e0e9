#include "calib/ProofRescale.h"

namespace tavix::ProofRescale {

namespace {

bool known(QSize size)
{
    return size.isValid() && !size.isEmpty();
}

bool knownPixels(const PictureGeometry& g)
{
    return g.mode && g.mode->pixelSize > 0;
}

}  // namespace

Rescale rescale(const PictureGeometry& madeAt, const PictureGeometry& picture)
{
    if (!known(madeAt.size) || !known(picture.size))
        return {};
    // Another camera's pixels say nothing about this one's.
    const bool sameCamera = !madeAt.camera.isEmpty() && madeAt.camera == picture.camera;
    if (sameCamera && knownPixels(madeAt) && knownPixels(picture)) {
        const double r = picture.mode->pixelSize / madeAt.mode->pixelSize;
        if (r != 1.0)
            return {Kind::BySensor, r};
        return {madeAt.size == picture.size ? Kind::AsStored : Kind::SamePixels, 1.0};
    }
    if (madeAt.size == picture.size)
        return {};
    const double r = static_cast<double>(madeAt.size.width()) / picture.size.width();
    const bool sameShape = static_cast<qint64>(madeAt.size.width()) * picture.size.height() ==
                           static_cast<qint64>(picture.size.width()) * madeAt.size.height();
    return {sameShape ? Kind::ByWidth : Kind::ByWidthOtherShape, r};
}

double ratio(const PictureGeometry& madeAt, const PictureGeometry& picture)
{
    return rescale(madeAt, picture).ratio;
}

bool applies(const PictureGeometry& madeAt, const PictureGeometry& picture)
{
    return rescale(madeAt, picture).kind != Kind::AsStored;
}

ProofEntry toPicture(ProofEntry entry, const PictureGeometry& madeAt, const PictureGeometry& picture)
{
    const double r = ratio(madeAt, picture);
    if (r != 1.0) {
        entry.XFactor *= r;
        entry.YFactor *= r;
    }
    return entry;
}

QString sizeText(QSize size)
{
    return QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
}

}  // namespace tavix::ProofRescale
