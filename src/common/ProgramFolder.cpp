#include "common/ProgramFolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#ifndef TAVIX_INSTALLED_DATA_DIR
#define TAVIX_INSTALLED_DATA_DIR "/usr/local/share/tavix"
#endif

namespace tavix {

namespace {

bool holdsIni(const QString& folder)
{
    return !folder.isEmpty() &&
           QFileInfo(QDir(folder).filePath(QLatin1String(ProgramFolder::kIniName))).isFile();
}

// Separators from the settings file are backslashes; on Linux they are slashes.
QString normalise(QString path)
{
    path.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return QDir::cleanPath(path);
}

}  // namespace

QString ProgramFolder::resolve(const Sources& s)
{
    if (!s.homeOption.isEmpty())
        return normalise(s.homeOption);
    if (!s.homeEnvironment.isEmpty())
        return normalise(s.homeEnvironment);
    if (holdsIni(s.executableFolder))
        return normalise(s.executableFolder);

    const QString dataHome =
        s.xdgDataHome.isEmpty() ? s.userHome + QStringLiteral("/.local/share") : s.xdgDataHome;
    const QString folder = normalise(dataHome + QStringLiteral("/tavix"));
    if (!holdsIni(folder)) {
        QDir().mkpath(folder);
        const QDir defaults(s.installedDefaults);
        for (const QString& name : defaults.entryList(QDir::Files)) {
            const QString target = QDir(folder).filePath(name);
            if (!QFileInfo::exists(target) && QFile::copy(defaults.filePath(name), target))
                QFile::setPermissions(target, QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                                  QFileDevice::ReadGroup | QFileDevice::ReadOther);
        }
    }
    return folder;
}

ProgramFolder::Sources ProgramFolder::fromEnvironment(const QString& homeOption)
{
    Sources s;
    s.homeOption = homeOption;
    s.homeEnvironment = qEnvironmentVariable("TAVIX_HOME");
    s.executableFolder = QCoreApplication::applicationDirPath();
    s.xdgDataHome = qEnvironmentVariable("XDG_DATA_HOME");
    s.userHome = QDir::homePath();
    s.installedDefaults = installedDefaults(s.executableFolder, QStringLiteral(TAVIX_INSTALLED_DATA_DIR));
    return s;
}

QString ProgramFolder::installedDefaults(const QString& executableFolder, const QString& configured)
{
    const QString beside = normalise(executableFolder + QStringLiteral("/../share/tavix"));
    return holdsIni(beside) ? beside : configured;
}

QString ProgramFolder::append(const QString& folder, const QString& value)
{
    return normalise(folder + value);
}

QString ProgramFolder::join(const QString& folder, const QString& value)
{
    return normalise(folder + QLatin1Char('\\') + value);
}

}  // namespace tavix
