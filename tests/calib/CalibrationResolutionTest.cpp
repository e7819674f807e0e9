// The calibration procedure with entries bound to the resolution they were made at.
#include "calib/CalibrationController.h"
#include "calib/ProofResolutions.h"
#include "calib/ProofTable.h"
#include "common/ErrorLog.h"
#include "common/Settings.h"

#include "FakeResultTable.h"
#include "FakeScaleBar.h"
#include "PrintQt.h"
#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <QDir>

using namespace tavix;
using namespace tavix::test;

namespace {

const QSize k640(640, 480);
const QSize k1280(1280, 1024);
const QSize k2592(2592, 1944);

class CalibrationResolution : public ::testing::Test {
protected:
    CalibrationResolution()
    {
        settings.CURRENTPROOFNO = 3;
        table.at(3) = ProofEntry{QStringLiteral("x10"), 1.0125, 1.0125, QStringLiteral("MIC"), 1000, 1000, 0};
        sizes.set(3, k1280);
        controller.bindResolutions({&sizes, sidePath, [this] { return picture; }, &log});
    }

    // Marks `pixels` for the x axis and types `length`.
    void markX(double pixels, const char* length) { mark(CalibrationAxis::X, pixels, length); }
    void mark(CalibrationAxis axis, double pixels, const char* length)
    {
        controller.requestMeasurement(axis, CalibrationPointMode::TwoPoint, controller.buffer().Name,
                                      controller.buffer().Unit, false);
        controller.dialogClosed();
        prompter.inputs.push_back(QString::fromLatin1(length));
        controller.finishMarking(pixels, 1.0);
    }
    // The dialog opened on the entry made at `made`, at the picture `now`.
    void openAt(const PictureGeometry& made, const PictureGeometry& now)
    {
        sizes.set(3, made);
        picture = now;
        controller.startProcedure();
    }
    void save()
    {
        ASSERT_EQ(controller.save(QStringLiteral("x10"), QStringLiteral("MIC"), false), SaveResult::Saved);
    }
    ProofResolutions readSide()
    {
        ProofResolutions back;
        back.read(sidePath, log);
        return back;
    }

    using SaveResult = CalibrationController::SaveResult;
    TempDir dir;
    QString proofPath = dir.file(QStringLiteral("Proof.dat"));
    QString sidePath = ProofResolutions::pathBeside(proofPath);
    ErrorLog log{dir.file(QStringLiteral("Error.Log"))};
    PictureGeometry picture = k1280;
    ProofTable table;
    ProofResolutions sizes;
    Settings settings;
    MessageTable messages = shippedMessages();
    ScriptedPrompter prompter;
    FakeResultTable results;
    FakeScaleBar scaleBar;
    CalibrationController controller{table, settings, messages, prompter, results, scaleBar, proofPath};
};

TEST_F(CalibrationResolution, AtTheResolutionMadeAt_TheDialogWorksOnTheStoredFactors)
{
    controller.startProcedure();
    EXPECT_EQ(controller.buffer(), table.at(3));
    EXPECT_EQ(controller.bufferResolution(), k1280);
    EXPECT_EQ(controller.resolutionText(), messages.text(24031, QStringLiteral("1280x1024")));
}

TEST_F(CalibrationResolution, AtAnotherResolution_TheDialogShowsTheRescaledFactors_AndSaysSo)
{
    picture = k2592;
    controller.startProcedure();
    EXPECT_DOUBLE_EQ(controller.buffer().XFactor, 0.5);
    EXPECT_DOUBLE_EQ(controller.buffer().YFactor, 0.5);
    EXPECT_EQ(controller.bufferResolution(), k2592);
    // Made at 1280x1024 without a word on the sensor: rescaled by the widths, and said to be a guess.
    EXPECT_TRUE(controller.resolutionText().startsWith(QStringLiteral(
        "Calibration 'x10' made at 1280x1024: rescaled by width to 2592x1944, unverified (another "
        "aspect ratio) - calibrate again at this resolution\n")))
        << controller.resolutionText().toStdString();
    EXPECT_TRUE(controller.resolutionGuessed());
    EXPECT_DOUBLE_EQ(table.at(3).XFactor, 1.0125);  // nothing stored yet
}

TEST_F(CalibrationResolution, OkOnRescaledFactors_StoresThemWithTheNewResolution)
{
    picture = k2592;
    controller.startProcedure();
    save();
    EXPECT_DOUBLE_EQ(table.at(3).XFactor, 0.5);
    EXPECT_EQ(sizes.at(3), k2592);
    EXPECT_EQ(readSide().at(3), k2592);
    ProofTable back;
    ASSERT_TRUE(back.ReadProofData(proofPath));
    EXPECT_NEAR(back.at(3).XFactor, 0.5, 1e-12);  // 15 digits in the file
}

TEST_F(CalibrationResolution, Cancel_StoresNeitherFactorsNorResolution)
{
    picture = k2592;
    controller.startProcedure();
    controller.cancel();
    controller.dialogClosed();
    EXPECT_DOUBLE_EQ(table.at(3).XFactor, 1.0125);
    EXPECT_EQ(sizes.at(3), k1280);
    EXPECT_FALSE(QFileInfo::exists(sidePath));
}

TEST_F(CalibrationResolution, MarkedLength_TakesThePicturesResolution)
{
    sizes.set(3, QSize());
    table.at(3).XFactor = table.at(3).YFactor = 0;
    picture = k640;
    controller.startProcedure();
    EXPECT_EQ(controller.resolutionText(), messages.text(24032));
    markX(400, "1000");
    EXPECT_DOUBLE_EQ(controller.buffer().XFactor, 2.5);
    EXPECT_EQ(controller.bufferResolution(), k640);
    save();
    EXPECT_EQ(readSide().at(3), k640);
}

// Both factors of an entry belong to one resolution: a y factor measured on a
// picture of another size brings the x factor to that size first.
TEST_F(CalibrationResolution, LengthMarkedAtAnotherResolution_BringsTheOtherFactorAlong)
{
    controller.startProcedure();
    picture = k2592;  // e.g. a picture loaded from a file between two markings
    controller.requestMeasurement(CalibrationAxis::Y, CalibrationPointMode::TwoPoint, QStringLiteral("x10"),
                                  QStringLiteral("MIC"), false);
    controller.dialogClosed();
    prompter.inputs.push_back(QStringLiteral("500"));
    controller.finishMarking(1000, 1.0);
    EXPECT_DOUBLE_EQ(controller.buffer().XFactor, 0.5);
    EXPECT_DOUBLE_EQ(controller.buffer().YFactor, 0.5);
    EXPECT_EQ(controller.bufferResolution(), k2592);
    EXPECT_EQ(controller.resolutionText(), messages.text(24031, QStringLiteral("2592x1944")));
}

TEST_F(CalibrationResolution, AbandonedMarking_KeepsTheBuffersResolution)
{
    controller.startProcedure();
    picture = k640;
    controller.requestMeasurement(CalibrationAxis::X, CalibrationPointMode::TwoPoint, QStringLiteral("x10"),
                                  QStringLiteral("MIC"), false);
    controller.dialogClosed();
    prompter.inputs.push_back(std::nullopt);
    controller.finishMarking(100, 1.0);
    EXPECT_EQ(controller.bufferResolution(), k1280);
    EXPECT_DOUBLE_EQ(controller.buffer().XFactor, 1.0125);
}

TEST_F(CalibrationResolution, OtherEntriesResolutions_AreWrittenAsTheyWere)
{
    sizes.set(0, k640);
    controller.startProcedure();
    save();
    const ProofResolutions back = readSide();
    EXPECT_EQ(back.at(0), k640);
    EXPECT_EQ(back.at(3), k1280);
    EXPECT_FALSE(back.at(1).isValid());
}

TEST_F(CalibrationResolution, CalibrationFile_KeepsItsSixFields)
{
    picture = k2592;
    controller.startProcedure();
    save();
    const QByteArray text = dir.read(QStringLiteral("Proof.dat"));
    EXPECT_EQ(text, table.toFileText());
    EXPECT_FALSE(text.contains("2592"));
}

TEST_F(CalibrationResolution, SideFileNotWritable_IsLogged_TheCalibrationIsSavedAllTheSame)
{
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("Proof.dat.res")));
    picture = k2592;
    controller.startProcedure();
    save();
    EXPECT_DOUBLE_EQ(table.at(3).XFactor, 0.5);
    EXPECT_TRUE(QString::fromUtf8(dir.read(QStringLiteral("Error.Log")))
                    .contains(QStringLiteral("Proof Resolution File Write Error.(")));
    EXPECT_TRUE(prompter.messages.empty());
}

TEST_F(CalibrationResolution, Unbound_FactorsAreStoredAsTheyAre_AndNoSideFileIsWritten)
{
    CalibrationController plain{table, settings, messages, prompter, results, scaleBar, proofPath};
    picture = k2592;
    plain.startProcedure();
    EXPECT_DOUBLE_EQ(plain.buffer().XFactor, 1.0125);
    EXPECT_TRUE(plain.resolutionText().isEmpty());
    ASSERT_EQ(plain.save(QStringLiteral("x10"), QStringLiteral("MIC"), false), SaveResult::Saved);
    EXPECT_FALSE(QFileInfo::exists(sidePath));
}

// --- pictures whose geometry on the sensor is known ---

// A mode of the GenICam fake's 2048x2048 sensor: a centred crop at `binning`.
PictureGeometry fake(QSize size, int binning, const char* camera = "genicam/Aravis-Fake-GV01")
{
    const QSizeF field = QSizeF(size) * binning;
    return {size,
            ModeGeometry{double(binning),
                         QRectF(QPointF((2048 - field.width()) / 2, (2048 - field.height()) / 2), field)},
            QString::fromLatin1(camera)};
}

const QSize k1024(1024, 768);
const QSize k2048(2048, 1536);

TEST_F(CalibrationResolution, MarkedAtAKnownGeometry_OkStoresIt)
{
    openAt(QSize(), fake(k1024, 2));
    markX(400, "1000");
    EXPECT_EQ(controller.bufferGeometry(false), PictureGeometry(k1024));  // y still from before
    mark(CalibrationAxis::Y, 400, "1000");
    EXPECT_EQ(controller.bufferGeometry(false), picture);
    save();
    EXPECT_EQ(sizes.geometry(3), picture);
    EXPECT_EQ(readSide().geometry(3), picture);
}

TEST_F(CalibrationResolution, OneFactorForBothAxes_MarkedAtAKnownGeometry_IsWhole)
{
    openAt(QSize(), fake(k1024, 2));
    markX(400, "1000");
    ASSERT_EQ(controller.save(QStringLiteral("x10"), QStringLiteral("MIC"), true), SaveResult::Saved);
    EXPECT_EQ(readSide().geometry(3), picture);
}

TEST_F(CalibrationResolution, KnownGeometry_RescaledByTheSensor_OkStoresThePicturesGeometry)
{
    openAt(fake(k2048, 1), fake(k1024, 2));
    EXPECT_DOUBLE_EQ(controller.buffer().XFactor, 2.025);
    EXPECT_FALSE(controller.resolutionGuessed());
    EXPECT_TRUE(controller.resolutionText().startsWith(
        QStringLiteral("Calibration 'x10' rescaled from 2048x1536 to 1024x768\n")));
    save();
    EXPECT_EQ(readSide().geometry(3), picture);
}

TEST_F(CalibrationResolution, KnownGeometry_ACrop_KeepsTheFactors_AndSaysWhy)
{
    openAt(fake(k2048, 1), fake(k1280, 1));
    EXPECT_DOUBLE_EQ(controller.buffer().XFactor, 1.0125);
    EXPECT_TRUE(controller.resolutionText().startsWith(messages.text(24034).arg(
        QStringLiteral("x10"), QStringLiteral("2048x1536"), QStringLiteral("1280x1024"))));
}

// An entry from before the geometry was kept, used on a camera that knows it.
TEST_F(CalibrationResolution, Guess_TheDialogWarns_AndOkKeepsTheGuessAGuess)
{
    picture = fake(k1024, 2);  // made at 1280x1024 on some camera
    controller.startProcedure();
    EXPECT_DOUBLE_EQ(controller.buffer().XFactor, 1.0125 * 1280 / 1024);
    EXPECT_TRUE(controller.resolutionGuessed());
    EXPECT_TRUE(controller.resolutionText().startsWith(messages.text(24036).arg(
        QStringLiteral("x10"), QStringLiteral("1280x1024"), QStringLiteral("1024x768"))))
        << controller.resolutionText().toStdString();
    save();
    EXPECT_EQ(readSide().geometry(3), PictureGeometry(k1024));  // the size, no geometry
}

// A factor measured again at the picture is the picture's; one carried there by a guess is not.
TEST_F(CalibrationResolution, Guess_MarkedAgain_OneAxisLeavesAGuess_BothMakeACalibrationOfThePicture)
{
    picture = fake(k1024, 2);
    controller.startProcedure();
    markX(400, "1000");
    EXPECT_FALSE(controller.resolutionGuessed());  // the dialog now tells of the marking
    EXPECT_EQ(controller.bufferGeometry(false), PictureGeometry(k1024));
    mark(CalibrationAxis::Y, 400, "1000");
    save();
    EXPECT_EQ(readSide().geometry(3), picture);
}

// A camera other than the one the entry was made with: its geometry does not count.
TEST_F(CalibrationResolution, AnotherCamera_IsAGuess)
{
    openAt(fake(k2048, 1, "genicam/Other-Camera-7"), fake(k1280, 1));
    EXPECT_DOUBLE_EQ(controller.buffer().XFactor, 1.0125 * 2048 / 1280);
    EXPECT_TRUE(controller.resolutionGuessed());
}

}  // namespace
