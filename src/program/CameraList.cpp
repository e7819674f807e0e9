#include "program/CameraList.h"

#include "camera/graph/VideoDevices.h"

namespace tavix::CameraList {

std::vector<CameraChoice> all(const VideoDeviceSystem& devices, const GenICamLister& genicam)
{
    std::vector<CameraChoice> cameras;
    for (const VideoDevices::Device& d : VideoDevices(devices).cameras())
        cameras.push_back(VideoDevices::choiceOf(d));
    if (genicam) {
        const std::vector<CameraChoice> more = genicam();
        cameras.insert(cameras.end(), more.begin(), more.end());
    }
    cameras.push_back(simulated());
    return cameras;
}

QString text(const std::vector<CameraChoice>& cameras)
{
    QString out;
    for (const CameraChoice& c : cameras)
        out += QStringList{c.driver, c.id, c.name, c.place}.join(QLatin1Char('\t')) + QLatin1Char('\n');
    return out;
}

CameraChoice simulated()
{
    return {QStringLiteral("sim"), QString(), QStringLiteral("Simulated camera"), QStringLiteral("built in")};
}

}  // namespace tavix::CameraList
