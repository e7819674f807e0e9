#include "program/Lifecycle.h"

#include "common/ProgramFolder.h"
#include "common/SettingsFile.h"
#include "media/FrameFile.h"
#include "program/AppData.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace tavix::Lifecycle {

std::optional<StartupFailure> readDataFiles(AppData& data)
{
    data.log.write(data.settings.APPNAME + QStringLiteral(" Start."));

    SettingsFile ini(data.iniPath(), data.log);
    if (!ini.GetIniFileData(data.settings)) {
        data.log.write(QStringLiteral("Ini File Read Error."));
        return StartupFailure{};
    }
    const Settings& s = data.settings;
    FrameFile::setScratchBitmap(data.tempBitmapPath());
    if (!data.messages.ReadStringTableData(ProgramFolder::append(data.folder, s.STRINGTABLEFILE), data.log)) {
        data.log.write(QStringLiteral("StringTable File Read Error."));
        return StartupFailure{};
    }
    if (!data.proofs.ReadProofData(data.proofPath())) {
        data.log.write(QStringLiteral("Proof File Read Error."));
        return StartupFailure{data.messages.text(11100)};
    }
    // Never fatal: without it the calibrations are used as they are stored.
    data.proofSizes.read(ProofResolutions::pathBeside(data.proofPath()), data.log);
    if (!data.guidance.ReadGuidanceData(ProgramFolder::append(data.folder, s.GUIDANCEFILE), data.log)) {
        data.log.write(QStringLiteral("Guidance File Read Error."));
        return StartupFailure{data.messages.text(11100)};
    }
    return std::nullopt;
}

void deleteTemporaryBitmaps(const QString& tempBitmapPath)
{
    const QFileInfo info(tempBitmapPath);
    const QString name = info.fileName();
    if (name.size() < 4)
        return;
    QDir dir = info.dir();
    const QString pattern = name.left(name.size() - 4) + QStringLiteral("*.bmp");
    for (const QString& file : dir.entryList({pattern}, QDir::Files))
        dir.remove(file);  // errors ignored
}

void unload(AppData& data, qint16 selectedScaleIndex, const std::function<void()>& stopAndCloseCamera)
{
    const QString tempBitmap = data.tempBitmapPath();
    if (QFileInfo::exists(tempBitmap))
        QFile::remove(tempBitmap);
    SettingsFile ini(data.iniPath(), data.log);
    ini.writeExitSettings(data.settings, selectedScaleIndex);
    if (stopAndCloseCamera)
        stopAndCloseCamera();
    ini.writeIntervalSaveSettings(data.settings);
    deleteTemporaryBitmaps(tempBitmap);
    data.log.write(data.settings.APPNAME + QStringLiteral(" End"));
}

}  // namespace tavix::Lifecycle
