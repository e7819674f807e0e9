#pragma once

#include <QColor>
#include <QtGlobal>

namespace tavix::ClassicColor {

// Colours in the settings file are RGB longs: red + 256 * green + 65536 * blue,
// red in the low byte. The high byte (system-colour marks of files written
// elsewhere) carries no colour of its own and is ignored; the colour is opaque.
inline QColor toQColor(qint32 value)
{
    const auto v = static_cast<quint32>(value);
    return QColor(static_cast<int>(v & 0xFFu), static_cast<int>((v >> 8) & 0xFFu),
                  static_cast<int>((v >> 16) & 0xFFu));
}

// The RGB long of a colour; its alpha is not part of the number.
inline qint32 fromQColor(const QColor& color)
{
    const QColor rgb = color.toRgb();
    return static_cast<qint32>(rgb.red() + 256 * rgb.green() + 65536 * rgb.blue());
}

}  // namespace tavix::ClassicColor
