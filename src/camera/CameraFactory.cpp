#include "camera/CameraFactory.h"

#include "camera/ICubeDriver.h"
#include "camera/SimCamera.h"

namespace tavix::CameraFactory {

Choice create(const QString& name, const QString& programFolder)
{
    const QString wanted = name.trimmed().toLower();
    if (wanted == QLatin1String("sim"))
        return {std::make_unique<SimCamera>(), {}};
    auto icube = std::make_unique<ICubeDriver>(programFolder);
    if (wanted == QLatin1String("icube")) {
        const QString note = icube->loaded() ? QString() : icube->errorText();
        return {std::move(icube), note};
    }
    if (!icube->loaded())
        return {std::make_unique<SimCamera>(),
                icube->errorText() + QStringLiteral("; using the simulated camera")};
    if (icube->Init() < 1)
        return {std::make_unique<SimCamera>(),
                QStringLiteral("No ICubeSDK camera found; using the simulated camera")};
    return {std::move(icube), {}};
}

}  // namespace tavix::CameraFactory
