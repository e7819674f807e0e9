#include "program/AppData.h"

#include "calib/ProofRescale.h"
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

QString AppData::proofPath() const
{
    return ProgramFolder::append(folder, settings.PROOFFILENAME);
}

const ProofEntry& AppData::measuringEntry() const
{
    const int index = settings.CURRENTPROOFNO;
    measuring_ = ProofRescale::toPicture(proofs.at(index), proofSizes.geometry(index), picture);
    return measuring_;
}

}  // namespace tavix
