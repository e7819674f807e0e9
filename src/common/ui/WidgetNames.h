#pragma once

#include <QString>

namespace tavix {

// A control array element's object name: the array's name and the index in
// parentheses, "cmdMeasure(6)".
inline QString indexedName(const char* name, int index)
{
    return QStringLiteral("%1(%2)").arg(QLatin1String(name)).arg(index);
}

// Gives a new widget its object name on the way.
template <typename W>
W* named(W* widget, const QString& name)
{
    widget->setObjectName(name);
    return widget;
}

}  // namespace tavix
