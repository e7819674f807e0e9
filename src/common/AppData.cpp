#include "common/AppData.h"

#include "common/ProgramFolder.h"

#include <QDir>

namespace tavix {

AppData::AppData(const QString& programFolder)
    : folder(programFolder), log(QDir(programFolder).filePath(QStringLiteral("Error.Log")))
{
}

QString AppData::iniPath() const
{
    return ProgramFolder::join(folder, QLatin1String(ProgramFolder::kIniName));
}

QString AppData::tempBitmapPath() const
{
    return ProgramFolder::join(folder, settings.TEMPBITMAPFILE);
}

QString AppData::graphPath() const
{
    return ProgramFolder::join(folder, settings.GRPFILENAME);
}

}  // namespace tavix
