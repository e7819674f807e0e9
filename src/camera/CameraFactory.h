#pragma once

#include "camera/CameraDriver.h"

#include <QString>
#include <memory>

namespace tavix::CameraFactory {

struct Choice {
    std::unique_ptr<CameraDriver> driver;
    QString note;  // why the choice fell as it did, for the log; empty when as asked
};

// The driver named "sim", "icube" or "auto" (any other name counts as auto):
// auto takes the vendor library when it loads and finds a camera, else the
// simulated camera.
Choice create(const QString& name, const QString& programFolder);

}  // namespace tavix::CameraFactory
