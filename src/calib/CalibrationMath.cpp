#include "calib/CalibrationMath.h"

#include "common/NumberText.h"
#include "common/Prompter.h"
#include "common/RunError.h"

#include <cmath>

namespace tavix::CalibrationMath {

qint16 encodeRequest(CalibrationTool tool)
{
    const qint16 mode = tool.mode == CalibrationPointMode::TwoPoint ? 1 : 2;
    return static_cast<qint16>(mode + 10 * static_cast<qint16>(tool.axis));
}

bool isPending(qint16 request)
{
    return request >= 1;
}

std::optional<CalibrationTool> decodeRequest(qint16 request)
{
    switch (request) {
        case 1:
            return CalibrationTool{CalibrationPointMode::TwoPoint, CalibrationAxis::X};
        case 2:
            return CalibrationTool{CalibrationPointMode::LineAndPoint, CalibrationAxis::X};
        case 11:
            return CalibrationTool{CalibrationPointMode::TwoPoint, CalibrationAxis::Y};
        case 12:
            return CalibrationTool{CalibrationPointMode::LineAndPoint, CalibrationAxis::Y};
        default:
            return std::nullopt;
    }
}

CalibrationPointMode effectivePointMode(qint16 pointMode, qint16 defaultMode)
{
    const qint16 mode = (pointMode == 0 || pointMode == 1) ? pointMode : defaultMode;
    return mode == 1 ? CalibrationPointMode::LineAndPoint : CalibrationPointMode::TwoPoint;
}

int trueLengthPromptId(CalibrationAxis axis, bool axisOption)
{
    if (axis == CalibrationAxis::Y)
        return PromptYMessage;
    return axisOption ? PromptBothAxesMessage : PromptXMessage;
}

double parseTrueLength(const QString& answer)
{
    return NumberText::val(answer);
}

std::optional<double> askTrueLength(Prompter& prompter, const TrueLengthTexts& texts)
{
    for (;;) {
        const std::optional<QString> answer = prompter.input(texts.prompt, texts.title, QString());
        if (!answer || answer->isEmpty())
            return std::nullopt;
        const double value = parseTrueLength(*answer);
        if (value > 0)
            return value;
        prompter.message({texts.errorText, texts.errorTitle, Prompter::Icon::Exclamation,
                          Prompter::Buttons::Ok, Prompter::Answer::Ok});
    }
}

std::optional<double> computeFactor(double value, double pixelDistance, double magnification)
{
    const double d = pixelDistance * magnification;
    if (d == 0)
        return std::nullopt;
    const double factor = (value / d) * magnification;
    if (!std::isfinite(factor))
        throw RunError(err::Overflow);
    return factor;
}

void applyTrueLength(ProofEntry& buffer, CalibrationAxis axis, double value, double pixelDistance,
                     double magnification)
{
    const bool x = axis == CalibrationAxis::X;
    (x ? buffer.XValue : buffer.YValue) = value;
    if (const std::optional<double> factor = computeFactor(value, pixelDistance, magnification))
        (x ? buffer.XFactor : buffer.YFactor) = *factor;
}

std::optional<int> okRefusal(const QString& name, const QString& unit)
{
    if (name.trimmed().isEmpty())
        return NameMissingMessage;
    if (unit.isEmpty())
        return UnitMissingMessage;
    return std::nullopt;
}

void applyOk(ProofEntry& entry, const ProofEntry& buffer, const QString& name, const QString& unit,
             bool axisOption)
{
    entry.Name = name;
    entry.XFactor = buffer.XFactor;
    entry.YFactor = axisOption ? buffer.XFactor : buffer.YFactor;
    entry.Unit = unit;
    entry.XValue = buffer.XValue;
    entry.YValue = axisOption ? buffer.XValue : buffer.YValue;
}

}  // namespace tavix::CalibrationMath
