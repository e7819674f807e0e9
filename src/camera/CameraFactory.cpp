#include "camera/CameraFactory.h"

#include "camera/GenICamDriver.h"
#include "camera/ICubeDriver.h"
#include "camera/SimCamera.h"

namespace tavix::CameraFactory {

Choice create(const QString& name, const QString& programFolder, std::function<void(const QString&)> log)
{
    const QString wanted = name.trimmed().toLower();
    if (wanted == QLatin1String("sim"))
        return {std::make_unique<SimCamera>(), {}};
    if (wanted == QLatin1String("genicam"))
        return {std::make_unique<GenICamDriver>(std::move(log)), {}};
    auto icube = std::make_unique<ICubeDriver>(programFolder);
    if (wanted == QLatin1String("icube")) {
        const QString note = icube->loaded() ? QString() : icube->errorText();
        return {std::move(icube), note};
    }
    QString why;
    if (!icube->loaded())
        why = icube->errorText();
    else if (icube->Init() < 1)
        why = QStringLiteral("No ICubeSDK camera found");
    else
        return {std::move(icube), {}};
    auto genicam = std::make_unique<GenICamDriver>(std::move(log));
    if (genicam->Init() > 0)
        return {std::move(genicam), why + QStringLiteral("; using a GenICam camera")};
    return {std::make_unique<SimCamera>(),
            why + QStringLiteral("; no GenICam camera found; using the simulated camera")};
}

}  // namespace tavix::CameraFactory
