#include "measure/Measurement.h"

#include "common/MessageTable.h"
#include "measure/ValueFormat.h"

namespace tavix {

void Measurement::relabel(int decimals)
{
    for (Label& label : shape.labels) {
        if (label.value >= 0 && label.value < static_cast<int>(values.size()))
            label.text = valueLabel(values[static_cast<std::size_t>(label.value)], decimals);
    }
}

QString valueLabel(const ResultValue& value, int decimals)
{
    QString text = ValueFormat::format(value.value, decimals);
    if (value.unit == UnitKind::Angle)
        text += QChar(0x00B0);
    return text;
}

QString unitText(const ResultValue& value, const QString& calibrationUnit, const MessageTable& messages)
{
    switch (value.unit) {
        case UnitKind::Length:
            return calibrationUnit;
        case UnitKind::Area:
            // Not caption 11134: that is the angle's kind, and an area is in the calibration unit squared.
            return calibrationUnit + QChar(0x00B2);
        case UnitKind::Angle:
            return messages.text(Caption::Degrees);
        case UnitKind::Count:
            return messages.text(Caption::Points);
        case UnitKind::Pixels:
            return QStringLiteral("px");
    }
    return {};
}

}  // namespace tavix
