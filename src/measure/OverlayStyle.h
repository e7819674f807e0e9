#pragma once

#include <QColor>
#include <QtGlobal>
#include <array>

namespace tavix {

struct Settings;

// The colours and label size of the measurement drawing.
struct OverlayStyle {
    std::array<QColor, 4> lineColors{Qt::black, Qt::red, Qt::yellow, Qt::green};  // slots 1 to 3
    std::array<QColor, 3> valueColors{Qt::black, Qt::red, Qt::yellow};            // slots 1 and 2
    int fontPointSize = 8;

    // From MEASURELINECOLOR1..3, MEASUREVALUECOLOR1..2 and MEASUREFONTSIZE.
    static OverlayStyle fromSettings(const Settings& settings);

    // A colour number of the settings file: red + 256 green + 65536 blue.
    static QColor classicColor(qint32 value);

    // A slot clamped to what exists: line 1..3, value 1..2.
    const QColor& line(int slot) const;
    const QColor& value(int slot) const;
};

}  // namespace tavix
