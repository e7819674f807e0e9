#pragma once

#include "calib/ProofResolutions.h"
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
    ProofResolutions proofSizes;  // the picture each entry was made at
    // The picture measured at now: the still's, or the camera mode's while live.
    PictureGeometry picture;
    QString valueFormat = QStringLiteral("0");  // of measured values, from NUMBEROFDECIMALS
    // Why the camera driver is another than asked for (auto found no camera), as logged; empty when as asked.
    QString cameraNote;

    QString iniPath() const;
    QString tempBitmapPath() const;
    QString graphPath() const;
    QString proofPath() const;

    // The selected entry with its factors for the picture; valid until the next call.
    const ProofEntry& measuringEntry() const;

private:
    mutable ProofEntry measuring_;
};

}  // namespace tavix
