#include "ScriptedPrompter.h"
#include "ShippedMessages.h"
#include "TempDir.h"
#include "camera/sim/SimCamera.h"
#include "common/Clock.h"
#include "common/ErrorLog.h"
#include "files/IntervalSeries.h"

#include <gtest/gtest.h>
#include <random>

using namespace tavix;
using tavix::test::ScriptedPrompter;
using tavix::test::TempDir;

namespace {

// Remembers when each picture was asked for and what it was called, writes nothing.
class TimingCamera : public SimCamera {
public:
    explicit TimingCamera(const Clock& clock) : clock_(clock) {}
    int SaveToFile(int, const QString& path) override
    {
        times.push_back(clock_.tickMs());
        files << path;
        return status;
    }
    std::vector<qint64> times;
    QStringList files;
    int status = 0;

private:
    const Clock& clock_;
};

class IntervalSeriesTest : public ::testing::Test {
protected:
    IntervalSeries::Plan plan(qint32 interval, qint32 count) const
    {
        IntervalSeries::Plan p;
        p.base = dir.file(QStringLiteral("cell"));
        p.extension = QStringLiteral(".bmp");
        p.temporaryBase = dir.file(QStringLiteral("TavixStill"));
        p.interval = interval;
        p.count = count;
        return p;
    }
    QString log() const { return QString::fromUtf8(dir.read(QStringLiteral("Error.Log"))); }

    TempDir dir;
    ManualClock clock;
    TimingCamera cam{clock};
    ErrorLog errorLog{dir.file(QStringLiteral("Error.Log"))};
    MessageTable messages = test::shippedMessages();
    ScriptedPrompter prompter;
    IntervalShot shot{cam, errorLog, messages, prompter, clock};
    IntervalSeries series{shot, clock};
};

}  // namespace

TEST_F(IntervalSeriesTest, ThreeSecondsTwoPictures_FirstAtTheClick_SecondAtTheFirstTickThreeSecondsOn)
{
    clock.advance(50'000);  // the clock does not start at the click
    EXPECT_EQ(series.start(plan(3, 2)), IntervalSeries::Step::Saved);
    EXPECT_EQ(cam.files, QStringList{dir.file(QStringLiteral("cell_001.bmp"))});
    EXPECT_EQ(series.statusText(), QStringLiteral("001/002 saved. The next picture is saved in 0min03sec."));

    clock.advance(2999);
    EXPECT_EQ(series.tick(), IntervalSeries::Step::Waiting);
    EXPECT_EQ(series.statusText(), QStringLiteral("001/002 saved. The next picture is saved in 0min01sec."));
    EXPECT_EQ(cam.files.size(), 1);

    clock.advance(1);
    EXPECT_EQ(series.tick(), IntervalSeries::Step::Finished);
    EXPECT_EQ(cam.files.last(), dir.file(QStringLiteral("cell_002.bmp")));
    EXPECT_FALSE(series.running());
    EXPECT_EQ(series.savedCount(), 2);
    // A tick after the end saves nothing.
    clock.advance(10'000);
    EXPECT_EQ(series.tick(), IntervalSeries::Step::Waiting);
    EXPECT_EQ(cam.files.size(), 2);
}

TEST_F(IntervalSeriesTest, LateTicks_DoNotDelayLaterPictures)
{
    // 999 pictures every 5 s; ticks come every 200 ms but now and then up to 4 s late.
    std::mt19937 random(20261123);
    std::uniform_int_distribution<int> lateness(0, 4000);
    std::bernoulli_distribution late(0.2);
    const qint32 interval = 5;
    ASSERT_EQ(series.start(plan(interval, 999)), IntervalSeries::Step::Saved);
    qint64 previousTick = 0;
    std::vector<qint64> previousTicks{0};  // the tick before each save
    int guard = 0;
    while (series.running() && ++guard < 1'000'000) {
        previousTick = clock.tickMs();
        clock.advance(200 + (late(random) ? lateness(random) : 0));
        const size_t before = cam.times.size();
        series.tick();
        if (cam.times.size() > before)
            previousTicks.push_back(previousTick);
    }
    ASSERT_EQ(cam.times.size(), 999u);
    EXPECT_EQ(cam.files.last(), dir.file(QStringLiteral("cell_999.bmp")));
    for (size_t i = 0; i < cam.times.size(); ++i) {
        const qint64 due = qint64(i) * interval * 1000;  // picture k = i + 1 is due at (k - 1) x interval
        EXPECT_GE(cam.times[i], due) << "picture " << i + 1;
        // Saved by the first tick at or after its second: the tick before it came too early.
        if (i > 0) {
            EXPECT_LT(previousTicks[i], due) << "picture " << i + 1;
        }
    }
}

TEST_F(IntervalSeriesTest, StatusText_CountsDownToTheNextPicture)
{
    ASSERT_EQ(series.start(plan(70, 10)), IntervalSeries::Step::Saved);
    clock.advance(5'400);
    series.tick();
    EXPECT_EQ(series.statusText(), QStringLiteral("001/010 saved. The next picture is saved in 1min05sec."));
    clock.advance(60'000);
    series.tick();
    EXPECT_EQ(series.statusText(), QStringLiteral("001/010 saved. The next picture is saved in 0min05sec."));
}

TEST_F(IntervalSeriesTest, CameraFailure_EndsTheSeries)
{
    prompter.answers = {Prompter::Answer::Ok};
    ASSERT_EQ(series.start(plan(3, 5)), IntervalSeries::Step::Saved);
    cam.status = -14;
    clock.advance(3000);
    EXPECT_EQ(series.tick(), IntervalSeries::Step::Failed);
    EXPECT_FALSE(series.running());
    EXPECT_TRUE(log().endsWith(QStringLiteral(" Error: ICubeSDK_SaveToFile(-14)\r\n")));
    ASSERT_EQ(prompter.messages.size(), 1u);
    EXPECT_EQ(prompter.messages[0].text, messages.text(30011));
    EXPECT_EQ(prompter.messages[0].title, messages.text(30012));
    clock.advance(3000);
    EXPECT_EQ(series.tick(), IntervalSeries::Step::Waiting);
    EXPECT_EQ(cam.files.size(), 2);
}

TEST_F(IntervalSeriesTest, Stop_EndsTheSeriesBeforeItsLastPicture)
{
    ASSERT_EQ(series.start(plan(3, 5)), IntervalSeries::Step::Saved);
    series.stop();
    clock.advance(3000);
    EXPECT_EQ(series.tick(), IntervalSeries::Step::Waiting);
    EXPECT_EQ(cam.files.size(), 1);
}
