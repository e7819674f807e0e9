// The rescale of a calibration checked against a sensor whose geometry is
// stated here, not taken from the simulated camera (which scales its field
// by the picture's width, as the rescale does, and so could not disagree).
#include "calib/ProofRescale.h"

#include <gtest/gtest.h>

using namespace tavix;

namespace {

// A 5-megapixel sensor of 2.2 um square pixels behind a 10x objective: one
// sensor pixel sees 0.22 um of the sample.
constexpr int kSensorWidth = 2592;
constexpr int kSensorHeight = 1944;
constexpr double kPixelPitchUm = 2.2;
constexpr double kMagnification = 10.0;

// A resolution as the camera makes it: pixels binned by `binning` in both
// directions, then a region of `size` binned pixels read out.
struct Mode {
    int binning;
    QSize size;
};

// Micrometres of the sample per picture pixel in a mode, from the optics alone.
double umPerPixel(const Mode& mode)
{
    return kPixelPitchUm * mode.binning / kMagnification;
}

ProofEntry calibratedAt(const Mode& mode)
{
    const double f = umPerPixel(mode);
    return ProofEntry{QStringLiteral("x10"), f, f, QStringLiteral("MIC"), 0, 0, 0};
}

const Mode kFull{1, QSize(kSensorWidth, kSensorHeight)};

// A mode as a camera that knows its geometry states it: the pixel's side on the
// sensor and the centred field it reads out.
PictureGeometry stated(const Mode& mode)
{
    const QSizeF onSensor = QSizeF(mode.size) * mode.binning;
    const QRectF field(
        QPointF((kSensorWidth - onSensor.width()) / 2, (kSensorHeight - onSensor.height()) / 2), onSensor);
    return PictureGeometry(mode.size, ModeGeometry{double(mode.binning), field},
                           QStringLiteral("genicam/stated"));
}

}  // namespace

TEST(RescaleGeometry, TheStatedSensor_HasTheMicrometresPerPixelOfItsOptics)
{
    EXPECT_DOUBLE_EQ(umPerPixel(kFull), 0.22);
    EXPECT_DOUBLE_EQ(umPerPixel({2, QSize(1296, 972)}), 0.44);
    EXPECT_DOUBLE_EQ(umPerPixel({4, QSize(648, 486)}), 0.88);
}

// Binning keeps the whole field: a calibration made on the full sensor is
// right on the binned picture once rescaled, and back again.
TEST(RescaleGeometry, BinnedModes_GetTheFactorTheirBinningGives)
{
    for (const Mode& binned : {Mode{2, QSize(1296, 972)}, Mode{4, QSize(648, 486)}}) {
        const ProofEntry used = ProofRescale::toPicture(calibratedAt(kFull), kFull.size, binned.size);
        EXPECT_NEAR(used.XFactor, umPerPixel(binned), 1e-12) << binned.size.width();
        EXPECT_NEAR(used.YFactor, umPerPixel(binned), 1e-12) << binned.size.width();
        const ProofEntry back = ProofRescale::toPicture(calibratedAt(binned), binned.size, kFull.size);
        EXPECT_NEAR(back.XFactor, umPerPixel(kFull), 1e-12) << binned.size.width();
    }
}

// A region cut from the middle of the sensor, unbinned: the pixels are the
// sensor's, so the factor stays what it was on the full sensor. By the widths
// alone it would be 0.22 x 2592 / 640 = 0.891 um; told the modes' geometry,
// the rescale keeps 0.22.
TEST(RescaleGeometry, ARegionCutFromTheSensor_KeepsTheSensorsFactor_WhenTheCameraTellsItsGeometry)
{
    const Mode cut{1, QSize(640, 480)};
    const ProofEntry used = ProofRescale::toPicture(calibratedAt(kFull), stated(kFull), stated(cut));
    EXPECT_NEAR(used.XFactor, umPerPixel(cut), 1e-12);
    EXPECT_NEAR(used.YFactor, umPerPixel(cut), 1e-12);
    EXPECT_TRUE(ProofRescale::rescale(stated(kFull), stated(cut)).trusted());
}

// Without the geometry the rescale cannot tell the cut region from a binned
// field: it guesses by the widths, and says it is a guess.
TEST(RescaleGeometry, ARegionCutFromTheSensor_WithoutItsGeometry_IsAnUntrustedGuess)
{
    const Mode cut{1, QSize(640, 480)};
    const ProofRescale::Rescale r = ProofRescale::rescale(kFull.size, cut.size);
    EXPECT_EQ(r.kind, ProofRescale::Kind::ByWidth);
    EXPECT_FALSE(r.trusted());
}

// Binned modes with their geometry told give the same factors as by the widths.
TEST(RescaleGeometry, BinnedModes_WithTheirGeometry_GetTheFactorTheirBinningGives)
{
    for (const Mode& binned : {Mode{2, QSize(1296, 972)}, Mode{4, QSize(648, 486)}}) {
        const ProofEntry used = ProofRescale::toPicture(calibratedAt(kFull), stated(kFull), stated(binned));
        EXPECT_NEAR(used.XFactor, umPerPixel(binned), 1e-12) << binned.size.width();
        EXPECT_NEAR(used.YFactor, umPerPixel(binned), 1e-12) << binned.size.width();
    }
}
