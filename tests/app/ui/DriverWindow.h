#pragma once

#include "ScriptedPrompter.h"
#include "TempDir.h"
#include "app/frmMain.h"
#include "camera/ui/CameraPanel.h"
#include "common/Clock.h"
#include "program/AppData.h"

#include <gtest/gtest.h>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <functional>
#include <memory>

namespace tavix::test {

// The main window in a fresh program folder, started on a camera driver the
// test builds, with what window tests of a driver read and do.
template <typename Driver>
class DriverWindow : public ::testing::Test {
protected:
    using MakeDriver = std::function<std::unique_ptr<Driver>(AppData&)>;

    void SetUp() override { copyShippedData(dir); }

    // Starts the window on the driver `make` builds, its time from `clock`
    // (the system's when null); false when the start-up failed.
    bool startWindow(const MakeDriver& make, Clock* clock = nullptr)
    {
        auto factory = [this, make](AppData& data) {
            std::unique_ptr<Driver> made = make(data);
            driver = made.get();
            return std::unique_ptr<CameraDriver>(std::move(made));
        };
        w = std::make_unique<frmMain>(dir.path(), prompter, clock ? *clock : systemClock, factory);
        w->setVideoDevices(videoDevices);
        if (!w->Form_Load())
            return false;
        w->resize(1200, 800);
        w->show();
        return true;
    }

    // Handles events until the live view has shown `frames` more frames.
    bool waitForLiveFrames(int frames)
    {
        const auto target = w->camera().liveView().counters().shown + static_cast<std::uint64_t>(frames);
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < 10000) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
            if (w->camera().liveView().counters().shown >= target)
                return true;
        }
        return false;
    }

    QString status(int panel) const
    {
        return w->findChild<QLabel*>(QStringLiteral("sbriCubePanel(%1)").arg(panel))->text();
    }
    QString log() const { return QString::fromUtf8(dir.read(QStringLiteral("Error.Log"))); }
    void freeze()
    {
        QTest::mouseClick(w->findChild<QPushButton*>(QStringLiteral("cmdPlayStop")), Qt::LeftButton);
    }

    TempDir dir;
    ScriptedPrompter prompter;
    SystemClock systemClock;
    Driver* driver = nullptr;
    const VideoDeviceSystem* videoDevices = nullptr;  // the camera list's; this machine's when null
    std::unique_ptr<frmMain> w;
};

}  // namespace tavix::test
