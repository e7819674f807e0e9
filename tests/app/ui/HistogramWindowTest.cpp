#include "MeasuringFixture.h"

#include "camera/ui/frmHistogram.h"
#include "files/ui/PicturePanel.h"

#include <gtest/gtest.h>
#include <QLabel>
#include <QToolButton>

using namespace tavix;

namespace {

// The histogram window opened from the status bar, on the live picture and on stills.
class HistogramWindow : public test::Measuring {
protected:
    void SetUp() override
    {
        Measuring::SetUp();
        start();
        QTest::mouseClick(find<QPushButton>("cmdPlayStop"), Qt::LeftButton);  // back to live
        ASSERT_FALSE(w->camera().stillShown());
    }

    using Measuring::message;
    QString message(int id, const QString& value) { return w->data().messages.text(id, value); }
    QToolButton* button() { return find<QToolButton>("cmdHistogram"); }
    frmHistogram* window() { return w->camera().histogramWindow(); }
    QString label(const char* name) { return window()->findChild<QLabel*>(QLatin1String(name))->text(); }

    // Waits for a live count to reach the window.
    bool liveCountShown()
    {
        const int before = w->camera().liveHistogram().passes();
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < 20000) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
            if (w->camera().liveHistogram().passes() > before && window()->histogram().pixels() > 0)
                return true;
        }
        return false;
    }
};

}  // namespace

TEST_F(HistogramWindow, TheButton_OpensItOnTheLivePicture_CountedOnASample)
{
    EXPECT_EQ(window(), nullptr) << "nothing is made or counted before it is asked for";
    EXPECT_FALSE(w->camera().liveHistogram().enabled());
    QTest::mouseClick(button(), Qt::LeftButton);
    ASSERT_NE(window(), nullptr);
    EXPECT_TRUE(window()->isVisible());
    EXPECT_TRUE(button()->isChecked());
    EXPECT_TRUE(w->camera().liveHistogram().enabled());

    ASSERT_TRUE(liveCountShown());
    const QSize mode = w->camera().modeSize();
    const int step = Histogram::stepFor(mode, LiveHistogram::kSampleBudget);
    EXPECT_EQ(window()->histogram().pixels(),
              qint64((mode.width() + step - 1) / step) * ((mode.height() + step - 1) / step));
    EXPECT_EQ(label("lblHistogramSource"), message(frmHistogram::kLiveSource));
    // With TAVIX_SCREENSHOT=name the window is saved as name-histogram-live.png.
    if (const QString file = qEnvironmentVariable("TAVIX_SCREENSHOT"); !file.isEmpty())
        window()->grab().save(file + QStringLiteral("-histogram-live.png"));
    EXPECT_EQ(
        label("lblClippedBright"),
        message(frmHistogram::kClippedBright, frmHistogram::percent(window()->histogram().clippedBright())));
}

TEST_F(HistogramWindow, OnAStill_ItShowsEveryPixelOfTheStill_AndLiveCountingStops)
{
    QTest::mouseClick(button(), Qt::LeftButton);
    freeze();
    const Histogram expected = Histogram::of(w->camera().still());
    EXPECT_EQ(window()->histogram().pixels(),
              qint64(w->camera().still().width()) * w->camera().still().height());
    EXPECT_EQ(window()->histogram().counts(Histogram::Grey), expected.counts(Histogram::Grey));
    EXPECT_EQ(label("lblHistogramSource"), message(frmHistogram::kStillSource));
    EXPECT_FALSE(w->camera().liveHistogram().enabled());
    if (const QString file = qEnvironmentVariable("TAVIX_SCREENSHOT"); !file.isEmpty())
        window()->grab().save(file + QStringLiteral("-histogram-still.png"));

    QTest::mouseClick(find<QPushButton>("cmdPlayStop"), Qt::LeftButton);  // live again
    EXPECT_TRUE(w->camera().liveHistogram().enabled());
    EXPECT_TRUE(liveCountShown());
    EXPECT_EQ(label("lblHistogramSource"), message(frmHistogram::kLiveSource));
}

TEST_F(HistogramWindow, ALoadedPicture_ShowsItsClippedSharesInPlainWords)
{
    // A quarter black, half mid grey, a quarter white.
    QImage picture(40, 20, QImage::Format_RGB32);
    picture.fill(qRgb(128, 128, 128));
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 10; ++x) {
            picture.setPixel(x, y, qRgb(0, 0, 0));
            picture.setPixel(30 + x, y, qRgb(255, 255, 255));
        }
    const QString path = dir.file(QStringLiteral("quarters.bmp"));
    ASSERT_TRUE(picture.save(path, "BMP"));
    QTest::mouseClick(button(), Qt::LeftButton);

    w->pictures().loadPictureFile(path);

    ASSERT_EQ(window()->histogram().pixels(), 800);
    if (const QString file = qEnvironmentVariable("TAVIX_SCREENSHOT"); !file.isEmpty())
        window()->grab().save(file + QStringLiteral("-histogram-quarters.png"));
    EXPECT_EQ(window()->histogram().counts(Histogram::Grey)[128], 400u);
    EXPECT_EQ(label("lblClippedDark"), message(frmHistogram::kClippedDark, QStringLiteral("25.00")));
    EXPECT_EQ(label("lblClippedBright"), message(frmHistogram::kClippedBright, QStringLiteral("25.00")));
}

TEST_F(HistogramWindow, ItsCloseBox_AndTheButton_CloseIt_AndCountingStops)
{
    QTest::mouseClick(button(), Qt::LeftButton);
    ASSERT_TRUE(window()->isVisible());
    window()->close();
    EXPECT_FALSE(window()->isVisible());
    EXPECT_FALSE(button()->isChecked());
    EXPECT_FALSE(w->camera().liveHistogram().enabled());

    QTest::mouseClick(button(), Qt::LeftButton);
    EXPECT_TRUE(window()->isVisible());
    QTest::mouseClick(button(), Qt::LeftButton);
    EXPECT_FALSE(window()->isVisible());
    EXPECT_FALSE(w->camera().liveHistogram().enabled());
}

TEST_F(HistogramWindow, CtrlH_OpensAndClosesIt_AndTheTipSaysSo)
{
    w->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(w.get()));
    QTest::keyClick(w.get(), Qt::Key_H, Qt::ControlModifier);
    ASSERT_NE(window(), nullptr);
    EXPECT_TRUE(window()->isVisible());
    EXPECT_EQ(window()->windowTitle(), message(frmHistogram::kTitle));
    w->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(w.get()));
    QTest::keyClick(w.get(), Qt::Key_H, Qt::ControlModifier);
    EXPECT_FALSE(window()->isVisible());
    EXPECT_EQ(button()->toolTip(), message(27001) + QStringLiteral(" (Ctrl+H)"));
    EXPECT_EQ(button()->text(), message(frmHistogram::kTitle));
}

TEST(HistogramShare, IsWrittenInPerCentWithTwoDecimals_AndAFewPixelsAreNotNone)
{
    EXPECT_EQ(frmHistogram::percent(0.0), QStringLiteral("0.00"));
    EXPECT_EQ(frmHistogram::percent(0.25), QStringLiteral("25.00"));
    EXPECT_EQ(frmHistogram::percent(1.0), QStringLiteral("100.00"));
    EXPECT_EQ(frmHistogram::percent(0.00005), QStringLiteral("0.01"));
    EXPECT_EQ(frmHistogram::percent(1.0 / 103138), QStringLiteral("< 0.01"));
}
