#pragma once

#include "calib/CalibrationMath.h"
#include "calib/ProofEntry.h"
#include "calib/ProofRescale.h"

#include <QSize>
#include <QString>
#include <QVariant>
#include <QtGlobal>
#include <functional>

namespace tavix {

class ErrorLog;
class MessageTable;
class Prompter;
class ProofResolutions;
class ProofTable;
class ResultTableState;
class ScaleBarSwitch;
struct Settings;

// The calibration selection and the calibration procedure without their
// widgets: choosing the entry of the selection list, the edit buffer that the
// calibration dialog works on, the picture measurement that the dialog asks
// for, and storing the result in the table and its file.
//
// A procedure runs: startProcedure(); show the dialog; dialogClosed(). When
// that names a calibration tool, the window lets the user mark the length and
// then calls finishMarking() (or abandonMarking()), shows the dialog again
// and calls dialogClosed() again, until the dialog is closed with OK or Cancel.
class CalibrationController {
public:
    // Message ids of the questions and captions used here.
    static constexpr int ChangeSelectionQuestion = 20000;
    static constexpr int ChangeSelectionTitle = 11000;
    static constexpr int CalibrateQuestion = 20060;
    static constexpr int CalibrateTitle = 11060;
    static constexpr int WriteFailedMessage = 24010;  // "@" = run-time error number
    // "Calibration '%1' rescaled from %2 to %3": the entry's name and both resolutions.
    static constexpr int RescaledNote = 24030;
    static constexpr int MadeAtNote = 24031;        // "@" = the resolution
    static constexpr int MadeAtUnknown = 24032;     // made before resolutions were kept
    static constexpr int OkStoresRescaled = 24033;  // "@" = the picture's resolution
    // As RescaledNote, for the other ways of carrying an entry to a picture
    // (ProofRescale::Kind): the same pixel size, and the two guesses by width.
    static constexpr int SamePixelsNote = 24034;
    static constexpr int ByWidthNote = 24035;
    static constexpr int ByWidthOtherShapeNote = 24036;

    // The result table's clear mode for results that no longer fit the calibration:
    // the current picture's rows go, results kept from earlier pictures stay.
    static constexpr int ClearCurrentResults = 1;

    CalibrationController(ProofTable& table, Settings& settings, const MessageTable& messages,
                          Prompter& prompter, ResultTableState& results, ScaleBarSwitch& scaleBar,
                          QString proofFilePath);

    // Binds the entries to the pictures they were made at. The dialog then
    // works on the selected entry's factors for the picture measured at now; a
    // factor measured takes that picture's resolution and geometry; OK keeps
    // them in the file beside the calibration file (the geometry only when
    // no factor in the buffer was carried there by a guess). Unbound, factors
    // are used and stored as they are.
    struct Resolutions {
        ProofResolutions* sizes = nullptr;
        QString path;                              // the file beside the calibration file
        std::function<PictureGeometry()> picture;  // the picture measured at now
        const ErrorLog* log = nullptr;             // for a failed write of that file
    };
    void bindResolutions(Resolutions resolutions);

    // The status bar's note while an entry made at `madeAt` is used on
    // another picture; empty when its factors are used as stored. A note on a
    // guess (not ProofRescale::Rescale::trusted) asks to calibrate again.
    static QString rescaleNote(const MessageTable& messages, const QString& name,
                               const PictureGeometry& madeAt, const PictureGeometry& picture);

    // --- the selection list ---

    enum class Selection {
        Changed,   // the index is the selected entry now
        Declined,  // the user kept the unsaved results: show currentIndex() again
        Ignored,   // called again while busy, or an index outside the table
    };

    // The user picked entry `index` in the selection list. Unsaved results are
    // only dropped after asking; saved ones are dropped without asking.
    Selection selectEntry(int index);

    // CURRENTPROOFNO, the selected entry.
    int currentIndex() const;
    const ProofEntry& currentEntry() const;

    // Keeps the scale bar in step with the selected entry: redrawn while on
    // when the entry has both factors, switched off when it lacks one.
    void refreshScaleBar();

    // --- the procedure ---

    // The calibrate button. False when the user keeps unsaved results; else the
    // selected entry is copied into the edit buffer and the dialog may open.
    bool startProcedure();

    struct AfterDialog {
        // A picture measurement is pending: the window drops any measurement in
        // progress, selects toolNumber (21..24) and shows guidanceNumber
        // (70..73). Else the procedure is over: the window fills the selection
        // list again with the table's names and selects currentIndex().
        bool measure = false;
        qint16 toolNumber = 0;
        qint16 guidanceNumber = 0;
    };

    // The dialog has closed (its OK, Cancel or one of its measure buttons).
    AfterDialog dialogClosed();

    enum class Marking {
        Stored,     // the typed length (and, for a distance above 0, the factor) is in the buffer
        Abandoned,  // no length was typed: the buffer is unchanged
    };
    struct MarkingResult {
        Marking marking = Marking::Abandoned;
        // A run-time error number when the factor could not be computed (the
        // length is stored all the same), else 0; the window logs it.
        int runError = 0;
    };

    // The marking on the picture is complete: asks for the true length of the
    // marked distance (re-asking while it is not above 0) and stores it with
    // its factor in the buffer. The window shows the dialog again afterwards,
    // whatever the outcome, so the user can measure again, save or cancel.
    MarkingResult finishMarking(double pixelDistance, double magnification);

    // The user gave up marking on the picture; the window shows the dialog again.
    void abandonMarking();

    // A true length over a distance measured on a picture of `picture` size
    // (a marking, or "From scale"): the buffer's other factor is first brought
    // to that picture, so both factors belong to one resolution. The picture
    // is the one measured at now when it has that size.
    void applyLength(CalibrationAxis axis, double value, double pixelDistance, double magnification,
                     QSize picture);

    // --- what the dialog works on ---

    ProofEntry& buffer() { return buffer_; }
    const ProofEntry& buffer() const { return buffer_; }
    // 0 two points, 1 line and point, -1 the configured default.
    qint16 pointMode() const { return pointMode_; }
    // The pending picture measurement (CalibrationMath::encodeRequest), -1 for none.
    qint16 calibrationRequest() const { return request_; }
    // While true, measured lengths stay in pixels.
    bool takingValue() const { return CalibrationMath::isPending(request_); }
    bool dialogAccepted() const { return accepted_; }
    // The resolution the buffer's factors belong to; invalid when not known.
    QSize bufferResolution() const { return bufferMade_.size; }
    // What OK stores for the buffer: its resolution, with the geometry when
    // no factor of it was carried there by a guess (with `yFollowsX`, the y
    // factor is the x factor).
    PictureGeometry bufferGeometry(bool yFollowsX) const;
    // What the dialog says about it: made at, not known, or rescaled for this picture.
    QString resolutionText() const;
    // True while that text tells of factors rescaled by a guess.
    bool resolutionGuessed() const;

    // The point mode the dialog selects when it opens.
    CalibrationPointMode dialogPointMode() const;

    // The dialog has opened: no measurement is pending while it shows.
    void dialogOpened();

    // A measure button: remembers what the dialog shows and which measurement
    // to take; the dialog then closes.
    void requestMeasurement(CalibrationAxis axis, CalibrationPointMode mode, const QString& name,
                            const QString& unit, bool axisOption);

    enum class SaveResult {
        Saved,        // the entry and the whole file are written; the dialog closes
        NameMissing,  // refused with a message; the dialog stays open
        UnitMissing,  // refused with a message; the dialog stays open
        WriteFailed,  // the file could not be written: the table is as before,
                      // the dialog stays open with everything typed
    };

    // OK: stores the dialog's values and the buffer into the selected entry and
    // rewrites the calibration file.
    SaveResult save(const QString& name, const QString& unit, bool axisOption);

    // Cancel: nothing is stored; the buffer keeps its content.
    void cancel();

    static qint16 toolNumber(CalibrationTool tool);
    static qint16 guidanceNumber(CalibrationTool tool);

private:
    void showError(int messageId, int titleId, const QVariant& value = QVariant()) const;
    PictureGeometry currentPicture() const;

    ProofTable& table_;
    Settings& settings_;
    const MessageTable& messages_;
    Prompter& prompter_;
    ResultTableState& results_;
    ScaleBarSwitch& scaleBar_;
    QString proofFilePath_;

    Resolutions resolutions_;
    ProofEntry buffer_;
    PictureGeometry bufferMade_;
    // Per axis: the factor rests on the camera's geometry, not on a guess by width.
    bool xTrusted_ = false;
    bool yTrusted_ = false;
    // While the buffer holds a stored entry's rescaled factors: made at, and rescaled to.
    std::optional<PictureGeometry> rescaledFrom_;
    PictureGeometry rescaledTo_;
    qint16 pointMode_ = -1;
    qint16 request_ = CalibrationMath::NoRequest;
    bool accepted_ = false;
    bool selecting_ = false;
};

}  // namespace tavix
