#pragma once

#include "camera/CameraDriver.h"

#include <QString>
#include <functional>
#include <memory>

namespace tavix::CameraFactory {

struct Choice {
    std::unique_ptr<CameraDriver> driver;
    QString note;  // why the choice fell as it did, for the log; empty when as asked
};

// The driver named "sim", "icube", "genicam" or "auto" (any other name counts
// as auto): auto takes the vendor library when it loads and finds a camera,
// else a GenICam camera when there is one, else the simulated camera. `log`
// receives what a driver reports while it runs (a camera lost).
Choice create(const QString& name, const QString& programFolder,
              std::function<void(const QString&)> log = {});

}  // namespace tavix::CameraFactory
