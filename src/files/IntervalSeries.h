#pragma once

#include "files/IntervalShot.h"

#include <QString>

namespace tavix {

class Clock;

// A running interval series on the program's clock: picture k is due
// (k - 1) x interval seconds after the start, so a late tick never delays the
// pictures after it.
class IntervalSeries {
public:
    struct Plan {
        QString base;           // the chosen name less its last four characters
        QString extension;      // its last four characters
        QString temporaryBase;  // the temporary bitmap's path less its last four characters
        qint32 interval = 3;    // seconds
        qint32 count = 2;       // pictures
        IntervalShot::Job job;  // camera, crosses, quality and wait; the names are set per picture
    };

    enum class Step {
        Waiting,   // nothing was due
        Saved,     // a picture was saved; more follow
        Finished,  // the last picture was saved
        Failed,    // the camera failed; the series is over
    };

    IntervalSeries(IntervalShot& shot, Clock& clock);

    // Takes the start time and saves the first picture at once.
    Step start(const Plan& plan);
    // A timer tick: saves the picture that is due, if any.
    Step tick();
    void stop() { running_ = false; }

    bool running() const { return running_; }
    qint32 savedCount() const { return saved_; }
    // The progress text of the message line.
    QString statusText() const;
    // The file of picture `count` (1 = the first).
    QString finalFile(qint32 count) const;

private:
    Step saveNext();

    IntervalShot& shot_;
    Clock& clock_;
    Plan plan_;
    bool running_ = false;
    qint32 saved_ = 0;
    qint32 sinceLast_ = 0;
    qint64 startTick_ = 0;
};

}  // namespace tavix
