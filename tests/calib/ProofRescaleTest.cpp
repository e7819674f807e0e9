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
        data.pictureSize = picture;
        EXPECT_NE(data.measuringEntry().XFactor, made.XFactor);
    }
    data.pictureSize = k1280;
    EXPECT_EQ(data.measuringEntry(), made);
    EXPECT_EQ(data.proofs.at(4), made);  // the stored entry is never touched
}

TEST(ProofRescale, MeasuringEntry_OfAnEntryWithoutResolution_IsTheStoredOne)
{
    test::TempDir dir;
    AppData data(dir.path());
    data.proofs.at(0) = madeAt1280();
    data.pictureSize = k2592;
    EXPECT_EQ(data.measuringEntry(), madeAt1280());
}

TEST(ProofRescale, Note_NamesTheEntryAndBothResolutions)
{
    const MessageTable messages = test::shippedMessages();
    EXPECT_EQ(CalibrationController::rescaleNote(messages, QStringLiteral("x10"), k1280, k2592),
              QStringLiteral("Calibration 'x10' rescaled from 1280x1024 to 2592x1944"));
}

TEST(ProofRescale, Note_IsEmpty_WhenTheFactorsAreUsedAsStored)
{
    const MessageTable messages = test::shippedMessages();
    EXPECT_TRUE(CalibrationController::rescaleNote(messages, QStringLiteral("x10"), k1280, k1280).isEmpty());
    EXPECT_TRUE(CalibrationController::rescaleNote(messages, QStringLiteral("x10"), QSize(), k640).isEmpty());
}

// A name with a placeholder in it is shown as typed.
TEST(ProofRescale, Note_KeepsANameWithPercentSigns)
{
    const MessageTable messages = test::shippedMessages();
    EXPECT_EQ(CalibrationController::rescaleNote(messages, QStringLiteral("%2 lens"), k1280, k640),
              QStringLiteral("Calibration '%2 lens' rescaled from 1280x1024 to 640x480"));
}

}  // namespace
