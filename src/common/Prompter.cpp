#include "common/Prompter.h"

#include <QStringList>

namespace tavix {

QString qtFileFilter(const QString& classicFilter)
{
    const QStringList parts = classicFilter.split(QLatin1Char('|'));
    QStringList out;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QString patterns = parts[i + 1];
        patterns.replace(QLatin1Char(';'), QLatin1Char(' '));
        QString text = parts[i];
        // Qt shows the patterns itself when they are not already in the text.
        if (!text.contains(QLatin1Char('(')))
            text += QStringLiteral(" (") + patterns + QLatin1Char(')');
        else
            text = text.left(text.indexOf(QLatin1Char('('))).trimmed() + QStringLiteral(" (") + patterns +
                   QLatin1Char(')');
        out << text;
    }
    return out.join(QStringLiteral(";;"));
}

}  // namespace tavix
