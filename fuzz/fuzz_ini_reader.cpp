// Any settings file must be read without a crash; a value written into it must
// be read back; the settings loader must get through it.
#include "common/ErrorLog.h"
#include "common/IniFile.h"
#include "common/Settings.h"
#include "common/SettingsFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace tavix;

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));

    IniFile ini = IniFile::fromText(bytes);
    for (const char* key : {"SCALEX", "MEASURELINECOLOR1", "PROOFFILENAME "})
        require(ini.value(QStringLiteral("MEASURE"), QLatin1String(key)).size() <= IniFile::MaxValueLength);
    ini.value(QStringLiteral(" camera "), QStringLiteral("driver"));

    // Writing out and reading in again changes nothing more.
    const QByteArray text = ini.toText();
    require(IniFile::fromText(text).toText() == text);

    // A written value is what the next read finds.
    if (ini.setValue(QStringLiteral("ICUBE"), QStringLiteral("STILLWAITTIME "), QStringLiteral("750")))
        require(
            IniFile::fromText(ini.toText()).value(QStringLiteral("icube"), QStringLiteral("StillWaitTime")) ==
            QStringLiteral("750"));

    // The whole loader, on the bytes as a file in the program folder.
    // In memory where the machine has it: a disk file flushed on every run is slow.
    static QTemporaryDir folder(
        QDir(QStringLiteral("/dev/shm")).exists() ? QStringLiteral("/dev/shm/tavix-fuzz-XXXXXX") : QString());
    // The log is a file of its own, emptied each run (the loader seeks in it).
    static const ErrorLog log(folder.filePath(QStringLiteral("Error.log")));
    QFile::remove(log.path());
    const QString path = folder.filePath(QStringLiteral("Tavix.Ini"));
    QFile file(path);
    require(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
    file.close();
    Settings settings;
    SettingsFile(path, log).GetIniFileData(settings);
    return 0;
}
