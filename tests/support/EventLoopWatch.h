#pragma once

#include <QElapsedTimer>
#include <QTimer>

namespace tavix::test {

// Shows that the window stays responsive: a 10 ms timer counts the turns of
// the event loop and keeps the longest gap between two of them, from the
// watch's start to the last check.
class EventLoopWatch {
public:
    EventLoopWatch();

    // Handles events for `ms`, and on until the loop turned a few times, and
    // tells whether it turned all along: those turns, and no gap over
    // `longestGapMs` since the watch started (a hang, not a slow machine).
    bool keepsTurning(int ms = 300, qint64 longestGapMs = 3000);
    qint64 longestGapMs() const { return longestGap_; }
    int turns() const { return turns_; }

private:
    static constexpr int kTurns = 3;
    QTimer timer_;
    QElapsedTimer clock_;
    qint64 last_ = 0;
    qint64 longestGap_ = 0;
    int turns_ = 0;
};

}  // namespace tavix::test
