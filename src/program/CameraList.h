#pragma once

#include "camera/CameraChoice.h"

#include <QString>
#include <functional>
#include <vector>

namespace tavix {

class VideoDeviceSystem;

// Every camera the program can open, in the order a user picks from: USB
// video cameras, then GenICam cameras, then the simulated camera, which is
// always there.
namespace CameraList {

using GenICamLister = std::function<std::vector<CameraChoice>()>;

std::vector<CameraChoice> all(const VideoDeviceSystem& devices, const GenICamLister& genicam);

// What --list-cameras prints: one line a camera, its fields apart by tabs
// (driver, id, name, place), so that scripts can cut them.
QString text(const std::vector<CameraChoice>& cameras);

// The simulated camera as the list shows it.
CameraChoice simulated();

}  // namespace CameraList
}  // namespace tavix
