#pragma once

#include "camera/CameraDriver.h"

#include <QtGui/qrgb.h>
#include <QElapsedTimer>
#include <QMutex>
#include <QThread>

namespace tavix::test {

// Counts the frames a driver hands over and keeps what the newest one was
// like; it tells the driver the size it shows frames at (empty: full size).
class CountingSink : public FrameSink {
public:
    explicit CountingSink(QSize shown = {}) : shown_(shown) {}

    void frameReady(const FrameView& frame) override
    {
        QMutexLocker lock(&mutex_);
        ++count_;
        size_ = QSize(frame.width, frame.height);
        format_ = frame.format;
        topLeft_ =
            frame.format == QImage::Format_RGB888 ? qRgb(frame.bits[0], frame.bits[1], frame.bits[2]) : 0;
    }
    QSize shownSize() const override { return shown_; }

    int frames() const
    {
        QMutexLocker lock(&mutex_);
        return count_;
    }
    QSize lastSize() const
    {
        QMutexLocker lock(&mutex_);
        return size_;
    }
    QImage::Format lastFormat() const
    {
        QMutexLocker lock(&mutex_);
        return format_;
    }
    // The newest RGB frame's top left pixel.
    QRgb topLeft() const
    {
        QMutexLocker lock(&mutex_);
        return topLeft_;
    }
    // Waits until `frames` more frames arrived, at most 20 seconds; false when they did not.
    bool waitFrames(int frames) const
    {
        const int target = this->frames() + frames;
        QElapsedTimer t;
        t.start();
        while (this->frames() < target && t.elapsed() < 20000)
            QThread::msleep(5);
        return this->frames() >= target;
    }

private:
    QSize shown_;
    mutable QMutex mutex_;
    int count_ = 0;
    QSize size_;
    QImage::Format format_ = QImage::Format_Invalid;
    QRgb topLeft_ = 0;
};

}  // namespace tavix::test
