#pragma once

#include "common/ErrorLog.h"
#include "common/Settings.h"

#include <QString>
#include <vector>

namespace tavix {

// Loads the settings from "Tavix.Ini" and writes them back one key at a time.
// Failures are logged with the program's exact lines; the loader's false ends
// the start-up, a failed write is logged and the caller goes on.
class SettingsFile {
public:
    SettingsFile(QString iniPath, const ErrorLog& log);

    // Reads every key in a fixed order; the first failure (missing mandatory
    // key, failed check, bad number) ends the load, later keys keep their values.
    bool GetIniFileData(Settings& s);

    bool WriteIniFileData(const QString& section, const QString& key, const QString& value);

    // The writes of the main window's unload, before the camera is closed.
    // DEFAULTSCALE is the magnification selected on screen, not s.DEFAULTSCALE.
    void writeExitSettings(const Settings& s, qint16 selectedScaleIndex);

    // The interval-save writes, after the camera is closed.
    void writeIntervalSaveSettings(const Settings& s);

private:
    struct Write {
        QString section, key, value;
    };
    // The keys go into the file in one replacement of it, so that a crash
    // leaves the old settings or the new ones, never a mix; each key that
    // could not be written is logged as its own write would have been.
    void writeAll(const std::vector<Write>& writes);
    void logWriteError(const Write& write) const;

    QString iniPath_;
    const ErrorLog& log_;
};

}  // namespace tavix
