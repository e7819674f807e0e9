#include "measure/OverlayStyle.h"

#include "common/Settings.h"

#include <algorithm>

namespace tavix {

OverlayStyle OverlayStyle::fromSettings(const Settings& settings)
{
    OverlayStyle style;
    for (std::size_t i = 1; i < style.lineColors.size(); ++i)
        style.lineColors[i] = classicColor(settings.MEASURELINECOLOR[i]);
    for (std::size_t i = 1; i < style.valueColors.size(); ++i)
        style.valueColors[i] = classicColor(settings.MEASUREVALUECOLOR[i]);
    style.fontPointSize = settings.MEASUREFONTSIZE;
    return style;
}

QColor OverlayStyle::classicColor(qint32 value)
{
    const auto v = static_cast<quint32>(value);
    return QColor(static_cast<int>(v & 0xFFu), static_cast<int>((v >> 8) & 0xFFu),
                  static_cast<int>((v >> 16) & 0xFFu));
}

const QColor& OverlayStyle::line(int slot) const
{
    return lineColors[static_cast<std::size_t>(std::clamp(slot, 1, 3))];
}

const QColor& OverlayStyle::value(int slot) const
{
    return valueColors[static_cast<std::size_t>(std::clamp(slot, 1, 2))];
}

}  // namespace tavix
