#pragma once

#include "calib/ProofEntry.h"

#include <QString>
#include <QtGlobal>
#include <optional>

namespace tavix {

class Prompter;

enum class CalibrationAxis : qint16 { X = 0, Y = 1 };
enum class CalibrationPointMode : qint16 { TwoPoint = 0, LineAndPoint = 1 };

// The calibration tool that a pending picture measurement uses.
struct CalibrationTool {
    CalibrationPointMode mode = CalibrationPointMode::TwoPoint;
    CalibrationAxis axis = CalibrationAxis::X;
    friend bool operator==(const CalibrationTool&, const CalibrationTool&) = default;
};

// The texts of the true-length question, already looked up.
struct TrueLengthTexts {
    QString title;
    QString prompt;
    QString errorText;  // shown when the answer is not above 0
    QString errorTitle;
};

// The pure steps of taking a calibration factor from the picture and of
// storing the dialog's result.
namespace CalibrationMath {

// Message ids of the calibration questions.
constexpr int TitleMessage = 14000;
constexpr int ErrorTitleMessage = 14100;
constexpr int NameMissingMessage = 24000;
constexpr int NotPositiveMessage = 24002;
constexpr int UnitMissingMessage = 24003;
constexpr int PromptXMessage = 24005;
constexpr int PromptYMessage = 24006;
constexpr int PromptBothAxesMessage = 24007;

// The pending-measurement number: 1 (two points) or 2 (line and point) plus
// 10 times the axis; -1 when nothing is pending.
constexpr qint16 NoRequest = -1;
qint16 encodeRequest(CalibrationTool tool);
bool isPending(qint16 request);
// Nothing for values other than 1, 2, 11 and 12.
std::optional<CalibrationTool> decodeRequest(qint16 request);

// The point mode the dialog selects: the remembered one when it is 0 or 1,
// else the configured default.
CalibrationPointMode effectivePointMode(qint16 pointMode, qint16 defaultMode);

// The prompt of the true-length question for the axis being measured.
int trueLengthPromptId(CalibrationAxis axis, bool axisOption);

// Leading-number parse of a typed length: "12abc" gives 12, "abc" gives 0.
double parseTrueLength(const QString& answer);

// Asks for the true length until the answer is above 0, showing the error
// text (exclamation icon) after each answer that is not. Nothing when the user
// leaves the answer empty or cancels: the measurement is abandoned. An answer
// of blanks is not empty; it reads as 0 and is asked again.
std::optional<double> askTrueLength(Prompter& prompter, const TrueLengthTexts& texts);

// Units per picture pixel from a true length and the distance measured on the
// view at a magnification. Nothing when the distance on the view is 0. The
// magnification enters twice and cancels, so the factor is per picture pixel.
// Throws RunError(Overflow) when the result is not a finite number.
std::optional<double> computeFactor(double value, double pixelDistance, double magnification);

// Stores a typed true length into the edit buffer and, when the measured
// distance is not 0, the factor of that axis. The length is stored even when
// computing the factor fails (RunError(Overflow)).
void applyTrueLength(ProofEntry& buffer, CalibrationAxis axis, double value, double pixelDistance,
                     double magnification);

// The message id that refuses OK (a name of blanks only, an empty unit), or
// nothing when OK may store.
std::optional<int> okRefusal(const QString& name, const QString& unit);

// What OK stores into the selected entry: the name as typed (untrimmed), the
// unit, the buffer's factors and lengths, y following x when the axis option
// is checked. The entry's AxisOption is not part of what OK stores.
void applyOk(ProofEntry& entry, const ProofEntry& buffer, const QString& name, const QString& unit,
             bool axisOption);

}  // namespace CalibrationMath
}  // namespace tavix
