#pragma once

#include "calib/ProofEntry.h"
#include "media/ModeGeometry.h"

#include <QSize>
#include <QString>
#include <optional>

namespace tavix {

// What a factor in units per pixel belongs to: a picture's size and, when the
// camera told, how its pixels lay on that camera's sensor.
struct PictureGeometry {
    PictureGeometry(QSize pictureSize = QSize(), std::optional<ModeGeometry> sensorMode = std::nullopt,
                    QString cameraName = QString())
        : size(pictureSize), mode(sensorMode), camera(std::move(cameraName))
    {
    }

    QSize size;                        // invalid when not known
    std::optional<ModeGeometry> mode;  // none when not known
    QString camera;                    // "driver/camera id" of the sensor; empty when not known

    friend bool operator==(const PictureGeometry&, const PictureGeometry&) = default;
};

}  // namespace tavix

namespace tavix::ProofRescale {

// A calibration made on one picture, used on a picture of another size.
//
// When both pictures come from modes of one camera whose geometry is known,
// a factor follows the size of a picture pixel on the sensor: factor x
// (pixel size now / pixel size made at). A crop keeps the factor; 2x2
// binning doubles it.
//
// Otherwise the program cannot tell a crop from a scaled field (a USB camera
// may do either), and it falls back on the widths: factor x (width made at /
// picture width), on both axes, which holds when every mode sees the same
// field width. That is a guess, and says so (Kind::ByWidth, ByWidthOtherShape).

enum class Kind {
    AsStored,           // the stored factors: the same picture, or a resolution not known
    BySensor,           // rescaled by the known pixel sizes
    SamePixels,         // another crop of the sensor with the same pixel size: the factors hold
    ByWidth,            // geometry not known, the same shape: rescaled by the widths, unverified
    ByWidthOtherShape,  // geometry not known, another aspect ratio: rescaled by the widths, unverified
};

struct Rescale {
    Kind kind = Kind::AsStored;
    double ratio = 1.0;  // the factors are multiplied by it

    // The factors for this picture rest on the camera's word, not on a guess.
    bool trusted() const
    {
        return kind == Kind::AsStored || kind == Kind::BySensor || kind == Kind::SamePixels;
    }
};

Rescale rescale(const PictureGeometry& madeAt, const PictureGeometry& picture);

// The ratio; 1 when the factors are used as stored.
double ratio(const PictureGeometry& madeAt, const PictureGeometry& picture);

// True when the picture is not the one the entry was made at (a note is due).
bool applies(const PictureGeometry& madeAt, const PictureGeometry& picture);

// The entry with its factors for the picture. Always worked out from the
// stored factors, so going back to the resolution made at gives them exactly.
ProofEntry toPicture(ProofEntry entry, const PictureGeometry& madeAt, const PictureGeometry& picture);

// "1280x1024".
QString sizeText(QSize size);

}  // namespace tavix::ProofRescale
