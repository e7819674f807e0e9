#pragma once

#include <QElapsedTimer>
#include <QThread>
#include <QTime>

namespace tavix {

// Time as the program's timed logic sees it. Tests pass a manual clock so that
// frame rates, polling and countdowns run without real waiting.
class Clock {
public:
    virtual ~Clock() = default;
    // Milliseconds from an arbitrary fixed start, never going back.
    virtual qint64 tickMs() const = 0;
    // Seconds since local midnight.
    virtual double secondsSinceMidnight() const = 0;
    virtual void sleepMs(int ms) = 0;
};

class SystemClock : public Clock {
public:
    SystemClock() { timer_.start(); }
    qint64 tickMs() const override { return timer_.elapsed(); }
    double secondsSinceMidnight() const override
    {
        return QTime::currentTime().msecsSinceStartOfDay() / 1000.0;
    }
    void sleepMs(int ms) override
    {
        if (ms > 0)
            QThread::msleep(static_cast<unsigned long>(ms));
    }

private:
    QElapsedTimer timer_;
};

// Advances only when told to; sleeping advances it by the time slept.
class ManualClock : public Clock {
public:
    qint64 tickMs() const override { return now_; }
    double secondsSinceMidnight() const override { return midnightBase_ + now_ / 1000.0; }
    void sleepMs(int ms) override { now_ += ms > 0 ? ms : 0; }
    void advance(qint64 ms) { now_ += ms; }
    void setSecondsSinceMidnightBase(double s) { midnightBase_ = s; }

private:
    qint64 now_ = 0;
    double midnightBase_ = 36000.0;
};

}  // namespace tavix
