#include "files/IntervalSeries.h"

#include "common/Clock.h"
#include "files/IntervalSave.h"

namespace tavix {

IntervalSeries::IntervalSeries(IntervalShot& shot, Clock& clock) : shot_(shot), clock_(clock)
{
}

IntervalSeries::Step IntervalSeries::start(const Plan& plan)
{
    plan_ = plan;
    running_ = true;
    saved_ = 0;
    sinceLast_ = 0;
    startTick_ = clock_.tickMs();
    return saveNext();
}

IntervalSeries::Step IntervalSeries::tick()
{
    if (!running_)
        return Step::Waiting;
    const qint64 elapsed = (clock_.tickMs() - startTick_) / 1000;
    sinceLast_ = static_cast<qint32>(elapsed - qint64(saved_ - 1) * plan_.interval);
    if (sinceLast_ < plan_.interval)
        return Step::Waiting;
    return saveNext();
}

IntervalSeries::Step IntervalSeries::saveNext()
{
    ++saved_;
    IntervalShot::Job job = plan_.job;
    job.finalFile = finalFile(saved_);
    job.temporaryFile = IntervalSave::seriesFile(plan_.temporaryBase, saved_, QStringLiteral(".bmp"));
    // A picture that could not be written is lost, not the series; a failing camera ends it.
    if (shot_.save(job) == IntervalShot::Outcome::CameraFailed) {
        running_ = false;
        return Step::Failed;
    }
    // The picture just saved is the last one's reference: a full interval to go.
    sinceLast_ =
        static_cast<qint32>((clock_.tickMs() - startTick_) / 1000 - qint64(saved_ - 1) * plan_.interval);
    if (saved_ >= plan_.count) {
        running_ = false;
        return Step::Finished;
    }
    return Step::Saved;
}

QString IntervalSeries::statusText() const
{
    return IntervalSave::statusText(saved_, plan_.count, plan_.interval - sinceLast_);
}

QString IntervalSeries::finalFile(qint32 count) const
{
    return IntervalSave::seriesFile(plan_.base, count, plan_.extension);
}

}  // namespace tavix
