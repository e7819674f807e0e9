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
        raw_ = frame.raw;
        topLeft_ = topLeftOf(frame);
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
    RawLayout lastRaw() const
    {
        QMutexLocker lock(&mutex_);
        return raw_;
    }
    // The newest frame's top left pixel (of an RGB, BGR, grey, YUYV or Bayer frame; else 0).
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
    static int clamped(int v) { return v < 0 ? 0 : v > 255 ? 255 : v; }

    static QRgb topLeftOf(const FrameView& frame)
    {
        const uchar* p = frame.bits;
        const uchar* below = p + frame.bytesPerLine;
        switch (frame.raw) {
            case RawLayout::Yuyv: {
                // Limited-range BT.601.
                const int c = 298 * (p[0] - 16) + 128, d = p[1] - 128, e = p[3] - 128;
                return qRgb(clamped((c + 409 * e) >> 8), clamped((c - 100 * d - 208 * e) >> 8),
                            clamped((c + 516 * d) >> 8));
            }
            case RawLayout::BayerRggb:
                return qRgb(p[0], (p[1] + below[0]) / 2, below[1]);
            case RawLayout::BayerGrbg:
                return qRgb(p[1], (p[0] + below[1]) / 2, below[0]);
            case RawLayout::BayerGbrg:
                return qRgb(below[0], (p[0] + below[1]) / 2, p[1]);
            case RawLayout::BayerBggr:
                return qRgb(below[1], (p[1] + below[0]) / 2, p[0]);
            case RawLayout::None:
                break;
        }
        switch (frame.format) {
            case QImage::Format_RGB888:
                return qRgb(p[0], p[1], p[2]);
            case QImage::Format_BGR888:
                return qRgb(p[2], p[1], p[0]);
            case QImage::Format_Grayscale8:
                return qRgb(p[0], p[0], p[0]);
            default:
                return 0;
        }
    }

    QSize shown_;
    mutable QMutex mutex_;
    int count_ = 0;
    QSize size_;
    QImage::Format format_ = QImage::Format_Invalid;
    RawLayout raw_ = RawLayout::None;
    QRgb topLeft_ = 0;
};

}  // namespace tavix::test
