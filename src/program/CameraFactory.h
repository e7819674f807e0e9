#pragma once

#include "camera/CameraDriver.h"
#include "camera/graph/VideoDeviceSystem.h"

#include <QString>
#include <functional>
#include <memory>

namespace tavix::CameraFactory {

struct Choice {
    std::unique_ptr<CameraDriver> driver;
    QString note;  // why the choice fell as it did, for the log; empty when as asked
};

// Where the graph camera finds its pipeline: the graph file and the name of
// the camera element in it.
struct GraphSource {
    QString path;
    QString cameraFilter;
    // The system's video devices; null: this machine's.
    const VideoDeviceSystem* devices = nullptr;
};

// The driver named "sim", "icube", "genicam", "graph" or "auto" (any other
// name counts as auto): auto takes the vendor library when it loads and finds
// a camera, else a GenICam camera when there is one, else the graph camera
// when the graph file's camera opens a device that answers as a video capture
// device (a USB camera plugged in; its metadata node, any other file and a
// test source are never taken by themselves), else the simulated camera. `log` receives what a driver reports
// while it runs (a camera lost).
Choice create(const QString& name, const QString& programFolder, std::function<void(const QString&)> log = {},
              const GraphSource& graph = {}, const QString& genicamSerial = {});

}  // namespace tavix::CameraFactory
