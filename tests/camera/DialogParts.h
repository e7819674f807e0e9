#pragma once

#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"
#include "camera/FrameStatistics.h"
#include "common/Clock.h"
#include "common/ErrorLog.h"
#include "common/Settings.h"

#include <QDateTime>
#include <QStringList>

namespace tavix::test {

// What the settings dialog's logic is built with in tests beside the camera:
// an error log whose lines carry a fixed time (so that its messages read
// without their stamps), the settings, the shipped messages, a strict
// prompter, a clock that moves only when waited on, and frame statistics.
struct DialogParts {
    static QDateTime logTime() { return QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5)); }

    QString log() const { return QString::fromUtf8(dir.read(QStringLiteral("Error.Log"))); }
    // The log's messages, without their time stamps.
    QStringList logLines() const
    {
        QStringList lines;
        for (const QString& line : log().split(QStringLiteral("\r\n"), Qt::SkipEmptyParts))
            lines.append(line.mid(ErrorLog::timestamp(logTime()).size() + 1));
        return lines;
    }

    TempDir dir;
    ErrorLog errorLog{dir.file(QStringLiteral("Error.Log")), [] { return logTime(); }};
    Settings settings;
    MessageTable messages = shippedMessages();
    ScriptedPrompter prompter;
    ManualClock clock;
    FrameStatistics statistics;
};

}  // namespace tavix::test
