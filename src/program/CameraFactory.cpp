#include "program/CameraFactory.h"

#include "camera/genicam/GenICamDriver.h"
#include "camera/graph/GraphDriver.h"
#include "camera/graph/LinuxVideoDevices.h"
#include "camera/graph/VideoDevices.h"
#include "camera/icube/ICubeDriver.h"
#include "camera/sim/SimCamera.h"

#include <QFileInfo>

namespace tavix::CameraFactory {

Choice create(const QString& name, const QString& programFolder, std::function<void(const QString&)> log,
              const GraphSource& graph, const QString& genicamSerial)
{
    const QString wanted = name.trimmed().toLower();
    if (wanted == QLatin1String("sim"))
        return {std::make_unique<SimCamera>(), {}};
    if (wanted == QLatin1String("genicam")) {
        // Asked for by name: worth the wait for a camera on the network.
        auto genicam = std::make_unique<GenICamDriver>(log, genicamSerial);
        genicam->setGigEWait(GenICamDriver::kGigEDiscovery);
        return {std::move(genicam), {}};
    }
    if (wanted == QLatin1String("graph"))
        return {std::make_unique<GraphDriver>(graph.path, graph.cameraFilter, std::move(log)), {}};
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
    auto genicam = std::make_unique<GenICamDriver>(log, genicamSerial);
    if (genicam->Init() > 0)
        return {std::move(genicam), why + QStringLiteral("; using a GenICam camera")};
    why += QStringLiteral("; no GenICam camera found");
    // Only a graph file that exists is read here: without one there is nothing to report.
    if (QFileInfo::exists(graph.path)) {
        auto graphDriver = std::make_unique<GraphDriver>(graph.path, graph.cameraFilter, std::move(log));
        const QString device = graphDriver->LoadGrfFile() ? graphDriver->graphFile().devicePath() : QString();
        const LinuxVideoDevices thisMachine;
        const VideoDevices devices(graph.devices ? *graph.devices : thisMachine);
        if (!device.isEmpty() && devices.find(device))
            return {std::move(graphDriver), why + QStringLiteral("; using the graph camera on ") + device};
        why += QStringLiteral("; the graph file opens no camera device");
        if (!device.isEmpty()) {
            QStringList others;
            for (const VideoDevices::Device& d : devices.cameras())
                others << QStringLiteral("%1 (%2)").arg(d.card, d.stablePath());
            if (!others.isEmpty())
                why += QStringLiteral(" (%1 is none; cameras: %2)")
                           .arg(device, others.join(QStringLiteral(", ")));
        }
    }
    return {std::make_unique<SimCamera>(), why + QStringLiteral("; using the simulated camera")};
}

}  // namespace tavix::CameraFactory
