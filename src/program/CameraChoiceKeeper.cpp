#include "program/CameraChoiceKeeper.h"

#include "camera/graph/GraphDevice.h"
#include "camera/graph/VideoDevices.h"
#include "common/SafeFile.h"
#include "common/SettingsFile.h"
#include "program/AppData.h"

#include <QFile>

namespace tavix {

CameraChoice CameraChoiceKeeper::current(const QString& driverName, const AppData& data,
                                         const VideoDeviceSystem& devices)
{
    CameraChoice choice{driverName, {}, {}, {}};
    if (driverName == QLatin1String("genicam")) {
        choice.id = data.settings.CAMERAID;
    } else if (driverName == QLatin1String("graph")) {
        QFile file(data.graphPath());
        const QString device = file.open(QIODevice::ReadOnly)
                                   ? GraphDevice::deviceIn(QString::fromUtf8(file.readAll()))
                                   : QString();
        const auto found = VideoDevices(devices).find(device);
        choice.id = found ? found->stablePath() : device;
    }
    return choice;
}

bool CameraChoiceKeeper::prepare(const CameraChoice& choice)
{
    graphChanged_ = false;
    driverBefore_ = data_.settings.DRIVER;
    idBefore_ = data_.settings.CAMERAID;
    if (choice.driver != QLatin1String("graph")) {
        take(choice);
        return true;
    }
    QFile file(data_.graphPath());
    graphBefore_ = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    file.close();
    if (const int r = GraphDevice::choose(data_.graphPath(), choice.id); r != 0) {
        data_.log.write(QStringLiteral("Camera switch: the graph file %1 cannot take the device %2 (%3)")
                            .arg(data_.graphPath(), choice.id)
                            .arg(r));
        return false;
    }
    graphChanged_ = true;
    take(choice);
    return true;
}

void CameraChoiceKeeper::take(const CameraChoice& choice)
{
    data_.settings.DRIVER = choice.driver;
    data_.settings.CAMERAID = choice.driver == QLatin1String("genicam") ? choice.id : QString();
}

void CameraChoiceKeeper::done(const CameraChoice& choice, bool opened)
{
    if (!opened) {
        data_.settings.DRIVER = driverBefore_;
        data_.settings.CAMERAID = idBefore_;
        if (graphChanged_)
            SafeFile::write(data_.graphPath(), graphBefore_);
        graphChanged_ = false;
        return;
    }
    graphChanged_ = false;
    SettingsFile file(data_.iniPath(), data_.log);
    file.WriteIniFileData(QStringLiteral("CAMERA"), QStringLiteral("DRIVER"), data_.settings.DRIVER);
    file.WriteIniFileData(QStringLiteral("CAMERA"), QStringLiteral("CAMERAID"), data_.settings.CAMERAID);
}

}  // namespace tavix
