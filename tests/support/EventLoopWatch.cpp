#include "EventLoopWatch.h"

#include <QCoreApplication>

namespace tavix::test {

EventLoopWatch::EventLoopWatch()
{
    clock_.start();
    timer_.setInterval(10);
    QObject::connect(&timer_, &QTimer::timeout, [this] {
        const qint64 now = clock_.elapsed();
        longestGap_ = std::max(longestGap_, now - last_);
        last_ = now;
        ++turns_;
    });
    timer_.start();
}

bool EventLoopWatch::keepsTurning(int ms, qint64 longestGapMs)
{
    // A few turns, waited for as long as a loaded machine needs (up to the
    // gap that counts as a hang), not a count within a fixed time.
    const int before = turns_;
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < ms || (turns_ - before < kTurns && waited.elapsed() < longestGapMs))
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    // The time since the last turn counts as a gap too.
    longestGap_ = std::max(longestGap_, clock_.elapsed() - last_);
    return turns_ - before >= kTurns && longestGap_ <= longestGapMs;
}

}  // namespace tavix::test
