#pragma once

#include "calib/ProofTable.h"
#include "common/ErrorLog.h"
#include "common/GuidanceTable.h"
#include "common/MessageTable.h"
#include "common/Settings.h"

#include <QString>

namespace tavix {

// What the main window owns for the whole run and hands to the rest of the
// program: the program folder, its log, the settings and the data files' tables.
struct AppData {
    explicit AppData(const QString& programFolder);

    QString folder;
    ErrorLog log;
    Settings settings;
    MessageTable messages;
    GuidanceTable guidance;
    ProofTable proofs;
    QString valueFormat = QStringLiteral("0");  // of measured values, from NUMBEROFDECIMALS

    QString iniPath() const;
    QString tempBitmapPath() const;
    QString graphPath() const;
};

}  // namespace tavix
