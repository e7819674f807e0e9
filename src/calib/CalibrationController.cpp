#include "calib/CalibrationController.h"

#include "calib/ProofRescale.h"
#include "calib/ProofResolutions.h"
#include "calib/ProofTable.h"
#include "calib/ScaleBarSwitch.h"
#include "common/ErrorLog.h"
#include "common/MessageTable.h"
#include "common/Prompter.h"
#include "common/RunError.h"
#include "common/Settings.h"
#include "measure/ResultTableState.h"

#include <utility>

namespace tavix {

namespace {

// Clears a flag when the handler leaves, however it leaves.
class Busy {
public:
    explicit Busy(bool& flag) : flag_(flag) { flag_ = true; }
    ~Busy() { flag_ = false; }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

private:
    bool& flag_;
};

}  // namespace

using namespace CalibrationMath;

CalibrationController::CalibrationController(ProofTable& table, Settings& settings,
                                             const MessageTable& messages, Prompter& prompter,
                                             ResultTableState& results, ScaleBarSwitch& scaleBar,
                                             QString proofFilePath)
    : table_(table),
      settings_(settings),
      messages_(messages),
      prompter_(prompter),
      results_(results),
      scaleBar_(scaleBar),
      proofFilePath_(std::move(proofFilePath))
{
}

void CalibrationController::bindResolutions(Resolutions resolutions)
{
    resolutions_ = std::move(resolutions);
}

QString CalibrationController::rescaleNote(const MessageTable& messages, const QString& name,
                                           const PictureGeometry& madeAt, const PictureGeometry& picture)
{
    int id = RescaledNote;
    switch (ProofRescale::rescale(madeAt, picture).kind) {
        case ProofRescale::Kind::AsStored:
            return {};
        case ProofRescale::Kind::BySensor:
            break;
        case ProofRescale::Kind::SamePixels:
            id = SamePixelsNote;
            break;
        case ProofRescale::Kind::ByWidth:
            id = ByWidthNote;
            break;
        case ProofRescale::Kind::ByWidthOtherShape:
            id = ByWidthOtherShapeNote;
            break;
    }
    // Three values: numbered, so that a translation may put them in its own order.
    return messages.text(id).arg(name, ProofRescale::sizeText(madeAt.size),
                                 ProofRescale::sizeText(picture.size));
}

QString CalibrationController::resolutionText() const
{
    if (!resolutions_.sizes)
        return {};
    if (rescaledFrom_)
        return rescaleNote(messages_, buffer_.Name, *rescaledFrom_, rescaledTo_) + QLatin1Char('\n') +
               messages_.text(OkStoresRescaled, ProofRescale::sizeText(bufferMade_.size));
    if (bufferMade_.size.isValid())
        return messages_.text(MadeAtNote, ProofRescale::sizeText(bufferMade_.size));
    return messages_.text(MadeAtUnknown);
}

bool CalibrationController::resolutionGuessed() const
{
    return resolutions_.sizes && rescaledFrom_ &&
           !ProofRescale::rescale(*rescaledFrom_, rescaledTo_).trusted();
}

PictureGeometry CalibrationController::bufferGeometry(bool yFollowsX) const
{
    const bool x = xTrusted_ || buffer_.XFactor == 0;
    const bool y = yFollowsX ? x : yTrusted_ || buffer_.YFactor == 0;
    return x && y ? bufferMade_ : PictureGeometry(bufferMade_.size);
}

PictureGeometry CalibrationController::currentPicture() const
{
    return resolutions_.picture ? resolutions_.picture() : PictureGeometry();
}

CalibrationController::Selection CalibrationController::selectEntry(int index)
{
    // The question's event loop, or putting the list back, can call again.
    if (selecting_ || index < 0 || index >= ProofTable::Size)
        return Selection::Ignored;
    const Busy busy(selecting_);

    if (results_.hasResults()) {
        if (results_.unsaved() && !prompter_.askYesNo(messages_.text(ChangeSelectionQuestion),
                                                      messages_.text(ChangeSelectionTitle)))
            return Selection::Declined;
        results_.clearResults(ClearCurrentResults);
    }
    settings_.CURRENTPROOFNO = static_cast<qint16>(index);
    refreshScaleBar();
    return Selection::Changed;
}

int CalibrationController::currentIndex() const
{
    return settings_.CURRENTPROOFNO;
}

const ProofEntry& CalibrationController::currentEntry() const
{
    return table_.at(settings_.CURRENTPROOFNO);
}

void CalibrationController::refreshScaleBar()
{
    if (currentEntry().usable()) {
        if (scaleBar_.isOn())
            scaleBar_.redraw();
    } else {
        scaleBar_.switchOff();
    }
}

bool CalibrationController::startProcedure()
{
    if (results_.hasResults() && results_.unsaved() &&
        !prompter_.askYesNo(messages_.text(CalibrateQuestion), messages_.text(CalibrateTitle)))
        return false;
    buffer_ = currentEntry();
    bufferMade_ = PictureGeometry();
    rescaledFrom_.reset();
    xTrusted_ = yTrusted_ = false;
    if (resolutions_.sizes) {
        // The dialog shows the factors in use; OK keeps them for this picture's resolution.
        bufferMade_ = resolutions_.sizes->geometry(settings_.CURRENTPROOFNO);
        const PictureGeometry picture = currentPicture();
        const ProofRescale::Rescale carry = ProofRescale::rescale(bufferMade_, picture);
        xTrusted_ = yTrusted_ = bufferMade_.mode && carry.trusted();
        if (carry.kind != ProofRescale::Kind::AsStored) {
            buffer_ = ProofRescale::toPicture(buffer_, bufferMade_, picture);
            rescaledFrom_ = bufferMade_;
            rescaledTo_ = picture;
            bufferMade_ = picture;
        }
    }
    pointMode_ = -1;
    request_ = NoRequest;
    accepted_ = false;
    return true;
}

CalibrationController::AfterDialog CalibrationController::dialogClosed()
{
    if (const std::optional<CalibrationTool> tool = decodeRequest(request_))
        return {true, toolNumber(*tool), guidanceNumber(*tool)};

    if (results_.hasResults()) {
        // A new calibration makes the current picture's values stale.
        if (accepted_)
            results_.clearResults(ClearCurrentResults);
        else
            results_.refresh();
    }
    refreshScaleBar();
    return {};
}

CalibrationController::MarkingResult CalibrationController::finishMarking(double pixelDistance,
                                                                          double magnification)
{
    const std::optional<CalibrationTool> tool = decodeRequest(request_);
    // The marking is over: lengths are converted again from here on.
    request_ = NoRequest;
    if (!tool)
        return {};

    const TrueLengthTexts texts{messages_.text(TitleMessage),
                                messages_.text(trueLengthPromptId(tool->axis, buffer_.AxisOption != 0)),
                                messages_.text(NotPositiveMessage), messages_.text(ErrorTitleMessage)};
    const std::optional<double> value = askTrueLength(prompter_, texts);
    if (!value)
        return {};
    try {
        applyLength(tool->axis, *value, pixelDistance, magnification, currentPicture().size);
    } catch (const RunError& error) {
        return {Marking::Stored, error.number()};
    }
    return {Marking::Stored, 0};
}

void CalibrationController::abandonMarking()
{
    request_ = NoRequest;
}

void CalibrationController::applyLength(CalibrationAxis axis, double value, double pixelDistance,
                                        double magnification, QSize picture)
{
    if (resolutions_.sizes && !picture.isEmpty()) {
        PictureGeometry at = currentPicture();
        if (at.size != picture)
            at = PictureGeometry(picture);  // not the picture measured at now: its geometry is not known
        if (!ProofRescale::rescale(bufferMade_, at).trusted())
            xTrusted_ = yTrusted_ = false;
        buffer_ = ProofRescale::toPicture(buffer_, bufferMade_, at);
        bufferMade_ = at;
        rescaledFrom_.reset();
    }
    applyTrueLength(buffer_, axis, value, pixelDistance, magnification);
    (axis == CalibrationAxis::X ? xTrusted_ : yTrusted_) = true;
}

CalibrationPointMode CalibrationController::dialogPointMode() const
{
    return effectivePointMode(pointMode_, settings_._2POINTCOMMANDMODE);
}

void CalibrationController::dialogOpened()
{
    request_ = NoRequest;
}

void CalibrationController::requestMeasurement(CalibrationAxis axis, CalibrationPointMode mode,
                                               const QString& name, const QString& unit, bool axisOption)
{
    request_ = encodeRequest({mode, axis});
    pointMode_ = static_cast<qint16>(mode);
    buffer_.Name = name;
    buffer_.Unit = unit;
    buffer_.AxisOption = axisOption ? 1 : 0;
    accepted_ = true;
}

CalibrationController::SaveResult CalibrationController::save(const QString& name, const QString& unit,
                                                              bool axisOption)
{
    if (const std::optional<int> refusal = okRefusal(name, unit)) {
        showError(*refusal, ErrorTitleMessage);
        return *refusal == NameMissingMessage ? SaveResult::NameMissing : SaveResult::UnitMissing;
    }
    ProofEntry& entry = table_.at(settings_.CURRENTPROOFNO);
    const ProofEntry before = entry;
    applyOk(entry, buffer_, name, unit, axisOption);
    if (!table_.write(proofFilePath_)) {
        // Table and file must agree: the entry waits for a write that works.
        entry = before;
        showError(WriteFailedMessage, TitleMessage, table_.lastError());
        return SaveResult::WriteFailed;
    }
    if (resolutions_.sizes) {
        resolutions_.sizes->set(settings_.CURRENTPROOFNO, bufferGeometry(axisOption));
        // The calibration itself is saved; without this file it is used as stored.
        if (const int error = resolutions_.sizes->write(resolutions_.path); error != 0 && resolutions_.log)
            resolutions_.log->write(QStringLiteral("Proof Resolution File Write Error.(%1)").arg(error));
    }
    accepted_ = true;
    return SaveResult::Saved;
}

void CalibrationController::cancel()
{
    accepted_ = false;
}

qint16 CalibrationController::toolNumber(CalibrationTool tool)
{
    return static_cast<qint16>(21 + static_cast<int>(tool.mode) + 2 * static_cast<int>(tool.axis));
}

qint16 CalibrationController::guidanceNumber(CalibrationTool tool)
{
    return static_cast<qint16>(70 + static_cast<int>(tool.mode) + 2 * static_cast<int>(tool.axis));
}

void CalibrationController::showError(int messageId, int titleId, const QVariant& value) const
{
    prompter_.message({messages_.text(messageId, value), messages_.text(titleId), Prompter::Icon::Exclamation,
                       Prompter::Buttons::Ok, Prompter::Answer::Ok});
}

}  // namespace tavix
