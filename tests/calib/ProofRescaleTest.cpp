#include "calib/CalibrationController.h"
#include "calib/ProofRescale.h"
#include "program/AppData.h"

#include "ShippedMessages.h"
#include "TempDir.h"

#include <gtest/gtest.h>

using namespace tavix;

namespace {

const QSize k640(640, 480);
const QSize k1280(1280, 1024);
const QSize k2592(2592, 1944);

// Modes of one camera that sees the same field at every size (pixel size = 3840 / width).
PictureGeometry sameField(QSize size, const QString& camera = QStringLiteral("sim/SimCam 1296"))
{
    const double pixel = 3840.0 / size.width();
    return {size, ModeGeometry{pixel, QRectF(0, 0, 3840, size.height() * pixel)}, camera};
}

// Modes of a 2592x2048 sensor: a centred crop at `binning`.
PictureGeometry onSensor(QSize size, int binning, const QString& camera = QStringLiteral("genicam/Maker-M-1"))
{
    const QSizeF field = QSizeF(size) * binning;
    return {size,
            ModeGeometry{double(binning),
                         QRectF(QPointF((2592 - field.width()) / 2, (2048 - field.height()) / 2), field)},
            camera};
}

ProofEntry madeAt1280()
{
    return ProofEntry{QStringLiteral("x10"), 1.0125, 1.0125, QStringLiteral("MIC"), 1000, 500, 0};
}

TEST(ProofRescale, ToAWiderPicture_FactorsShrinkByTheWidths)
{
    const ProofEntry e = ProofRescale::toPicture(madeAt1280(), k1280, k2592);
    EXPECT_DOUBLE_EQ(e.XFactor, 0.5);
    EXPECT_DOUBLE_EQ(e.YFactor, 0.5);
}

TEST(ProofRescale, ToANarrowerPicture_FactorsGrowByTheWidths)
{
    const ProofEntry e = ProofRescale::toPicture(madeAt1280(), k1280, k640);
    EXPECT_DOUBLE_EQ(e.XFactor, 2.025);
    EXPECT_DOUBLE_EQ(e.YFactor, 2.025);
}

// The 5:4 mode is taller than the 4:3 ones, not narrower: the heights' ratio would be wrong.
TEST(ProofRescale, YFactor_FollowsTheWidths_NotTheHeights)
{
    ProofEntry made = madeAt1280();
    made.YFactor = 2.0;
    const ProofEntry e = ProofRescale::toPicture(made, k1280, k640);
    EXPECT_DOUBLE_EQ(e.YFactor, 4.0);
}

TEST(ProofRescale, UnknownResolution_LeavesTheFactors)
{
    EXPECT_EQ(ProofRescale::toPicture(madeAt1280(), QSize(), k2592), madeAt1280());
    EXPECT_FALSE(ProofRescale::applies(QSize(), k2592));
}

TEST(ProofRescale, NoPicture_LeavesTheFactors)
{
    EXPECT_EQ(ProofRescale::toPicture(madeAt1280(), k1280, QSize()), madeAt1280());
    EXPECT_EQ(ProofRescale::toPicture(madeAt1280(), k1280, QSize(0, 0)), madeAt1280());
}

TEST(ProofRescale, SameWidth_LeavesTheFactors)
{
    EXPECT_EQ(ProofRescale::toPicture(madeAt1280(), k1280, QSize(1280, 960)), madeAt1280());
    EXPECT_DOUBLE_EQ(ProofRescale::ratio(k1280, QSize(1280, 960)), 1.0);
}

TEST(ProofRescale, NameUnitAndLengths_AreKept)
{
    const ProofEntry e = ProofRescale::toPicture(madeAt1280(), k1280, k2592);
    EXPECT_EQ(e.Name, QStringLiteral("x10"));
    EXPECT_EQ(e.Unit, QStringLiteral("MIC"));
    EXPECT_EQ(e.XValue, 1000);
    EXPECT_EQ(e.YValue, 500);
}

TEST(ProofRescale, UncalibratedAxis_StaysUncalibrated)
{
    ProofEntry made = madeAt1280();
    made.YFactor = 0;
    const ProofEntry e = ProofRescale::toPicture(made, k1280, k640);
    EXPECT_EQ(e.YFactor, 0.0);
    EXPECT_FALSE(e.usable());
}

TEST(ProofRescale, SizeText)
{
    EXPECT_EQ(ProofRescale::sizeText(k2592), QStringLiteral("2592x1944"));
}

// The window's measuring entry: rescaled for the picture, and the stored
// factors again, exactly, back at the resolution it was made at.
TEST(ProofRescale, MeasuringEntry_SwitchingBack_GivesTheStoredFactorsExactly)
{
    test::TempDir dir;
    AppData data(dir.path());
    data.settings.CURRENTPROOFNO = 4;
    ProofEntry made = madeAt1280();
    made.XFactor = 1.0 / 3.0;  // not exact in binary: a chain of rescales would drift
    made.YFactor = 0.1;
    data.proofs.at(4) = made;
    data.proofSizes.set(4, k1280);
    for (const QSize picture : {k2592, k640, QSize(752, 480), QSize(3840, 2748)}) {
        data.picture = picture;
        EXPECT_NE(data.measuringEntry().XFactor, made.XFactor);
    }
    data.picture = k1280;
    EXPECT_EQ(data.measuringEntry(), made);
    EXPECT_EQ(data.proofs.at(4), made);  // the stored entry is never touched
}

TEST(ProofRescale, MeasuringEntry_OfAnEntryWithoutResolution_IsTheStoredOne)
{
    test::TempDir dir;
    AppData data(dir.path());
    data.proofs.at(0) = madeAt1280();
    data.picture = k2592;
    EXPECT_EQ(data.measuringEntry(), madeAt1280());
}

TEST(ProofRescale, Note_NamesTheEntryAndBothResolutions)
{
    const MessageTable messages = test::shippedMessages();
    EXPECT_EQ(CalibrationController::rescaleNote(messages, QStringLiteral("x10"), sameField(k1280),
                                                 sameField(k2592)),
              QStringLiteral("Calibration 'x10' rescaled from 1280x1024 to 2592x1944"));
}

TEST(ProofRescale, Note_IsEmpty_WhenTheFactorsAreUsedAsStored)
{
    const MessageTable messages = test::shippedMessages();
    EXPECT_TRUE(CalibrationController::rescaleNote(messages, QStringLiteral("x10"), k1280, k1280).isEmpty());
    EXPECT_TRUE(CalibrationController::rescaleNote(messages, QStringLiteral("x10"), sameField(k1280),
                                                   sameField(k1280))
                    .isEmpty());
    EXPECT_TRUE(CalibrationController::rescaleNote(messages, QStringLiteral("x10"), QSize(), k640).isEmpty());
}

// A name with a placeholder in it is shown as typed.
TEST(ProofRescale, Note_KeepsANameWithPercentSigns)
{
    const MessageTable messages = test::shippedMessages();
    EXPECT_EQ(CalibrationController::rescaleNote(messages, QStringLiteral("%2 lens"), sameField(k1280),
                                                 sameField(k640)),
              QStringLiteral("Calibration '%2 lens' rescaled from 1280x1024 to 640x480"));
}

// --- a camera whose modes are binnings and centred crops of one sensor ---

TEST(ProofRescale, KnownGeometry_ACropOfTheSameSensor_KeepsTheFactors)
{
    // 1280x1024 at binning 1 is a crop of the full-width 2592x1944: the widths' ratio would be wrong.
    const ProofRescale::Rescale r = ProofRescale::rescale(onSensor(k2592, 1), onSensor(k1280, 1));
    EXPECT_EQ(r.kind, ProofRescale::Kind::SamePixels);
    EXPECT_EQ(r.ratio, 1.0);
    EXPECT_TRUE(r.trusted());
    EXPECT_EQ(ProofRescale::toPicture(madeAt1280(), onSensor(k2592, 1), onSensor(k1280, 1)), madeAt1280());
}

TEST(ProofRescale, KnownGeometry_ABinning_ScalesByThePixelSizes)
{
    const ProofRescale::Rescale r = ProofRescale::rescale(onSensor(k2592, 1), onSensor(QSize(1024, 768), 2));
    EXPECT_EQ(r.kind, ProofRescale::Kind::BySensor);
    EXPECT_EQ(r.ratio, 2.0);
    const ProofEntry e =
        ProofRescale::toPicture(madeAt1280(), onSensor(QSize(1024, 768), 2), onSensor(k640, 3));
    EXPECT_DOUBLE_EQ(e.XFactor, 1.0125 * 1.5);
    EXPECT_DOUBLE_EQ(e.YFactor, 1.0125 * 1.5);
}

TEST(ProofRescale, KnownGeometry_NotesSayWhatHappened)
{
    const MessageTable messages = test::shippedMessages();
    EXPECT_EQ(CalibrationController::rescaleNote(messages, QStringLiteral("x10"), onSensor(k2592, 1),
                                                 onSensor(k1280, 1)),
              QStringLiteral("Calibration 'x10' made at 2592x1944 holds unchanged at 1280x1024: the camera "
                             "reports the same pixel size"));
    EXPECT_EQ(CalibrationController::rescaleNote(messages, QStringLiteral("x10"), onSensor(k2592, 1),
                                                 onSensor(QSize(1024, 768), 2)),
              QStringLiteral("Calibration 'x10' rescaled from 2592x1944 to 1024x768"));
}

// --- geometry not known on one side or the other: the widths, with a warning ---

TEST(ProofRescale, UnknownToKnown_RescalesByTheWidths_AsAGuess)
{
    const ProofRescale::Rescale r = ProofRescale::rescale(PictureGeometry(k2592), onSensor(k1280, 1));
    EXPECT_EQ(r.kind, ProofRescale::Kind::ByWidthOtherShape);
    EXPECT_DOUBLE_EQ(r.ratio, 2592.0 / 1280);
    EXPECT_FALSE(r.trusted());
}

TEST(ProofRescale, KnownToUnknown_RescalesByTheWidths_AsAGuess)
{
    const ProofRescale::Rescale r = ProofRescale::rescale(onSensor(k2592, 1), PictureGeometry(k640));
    EXPECT_EQ(r.kind, ProofRescale::Kind::ByWidth);
    EXPECT_DOUBLE_EQ(r.ratio, 2592.0 / 640);
    EXPECT_FALSE(r.trusted());
}

TEST(ProofRescale, AnotherCamera_ItsGeometryCountsForNothing)
{
    const PictureGeometry made = onSensor(k2592, 1, QStringLiteral("genicam/Maker-M-1"));
    const PictureGeometry other = onSensor(k1280, 1, QStringLiteral("genicam/Maker-M-2"));
    const ProofRescale::Rescale r = ProofRescale::rescale(made, other);
    EXPECT_EQ(r.kind, ProofRescale::Kind::ByWidthOtherShape);
    EXPECT_DOUBLE_EQ(r.ratio, 2592.0 / 1280);
    // Nor does a geometry without a camera.
    EXPECT_FALSE(ProofRescale::rescale(onSensor(k2592, 1, {}), onSensor(k1280, 1, {})).trusted());
}

TEST(ProofRescale, AnotherCameraAtTheSameSize_UsesTheStoredFactors)
{
    EXPECT_EQ(ProofRescale::rescale(onSensor(k1280, 1), onSensor(k1280, 2, QStringLiteral("graph/x"))).kind,
              ProofRescale::Kind::AsStored);
    EXPECT_EQ(ProofRescale::rescale(PictureGeometry(k1280), PictureGeometry(k1280)).kind,
              ProofRescale::Kind::AsStored);
}

TEST(ProofRescale, Guesses_AreNotedAsSuch_ByTheShapes)
{
    const MessageTable messages = test::shippedMessages();
    EXPECT_EQ(
        CalibrationController::rescaleNote(messages, QStringLiteral("x10"), k2592, k640),
        QStringLiteral("Calibration 'x10' made at 2592x1944: rescaled by width to 640x480; the field may "
                       "differ - calibrate again at this resolution"));
    EXPECT_EQ(CalibrationController::rescaleNote(messages, QStringLiteral("x10"), k1280, k640),
              QStringLiteral("Calibration 'x10' made at 1280x1024: rescaled by width to 640x480, unverified "
                             "(another aspect ratio) - calibrate again at this resolution"));
    // The same width and another height: nothing to rescale, but the field may still differ.
    EXPECT_EQ(ProofRescale::rescale(k1280, QSize(1280, 960)).kind, ProofRescale::Kind::ByWidthOtherShape);
}

// The simulated camera's geometry gives the widths' numbers.
TEST(ProofRescale, SameFieldAtEveryMode_KnownGeometry_GivesTheWidthsRatio)
{
    for (const QSize picture : {k2592, k640, QSize(752, 480), QSize(3840, 2748)}) {
        const ProofRescale::Rescale r = ProofRescale::rescale(sameField(k1280), sameField(picture));
        EXPECT_EQ(r.kind, ProofRescale::Kind::BySensor);
        EXPECT_NEAR(r.ratio, 1280.0 / picture.width(), 1e-15);
    }
}

}  // namespace
