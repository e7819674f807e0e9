#pragma once

#include "ScriptedPrompter.h"
#include "TempDir.h"
#include "app/frmMain.h"
#include "camera/sim/SimCamera.h"
#include "camera/ui/CameraPanel.h"
#include "camera/ui/StillViewWidget.h"
#include "common/Clock.h"
#include "measure/MeasureSession.h"
#include "measure/ResultTable.h"
#include "measure/ui/MeasurePanel.h"

#include <gtest/gtest.h>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QMouseEvent>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <QToolButton>
#include <functional>
#include <memory>

namespace tavix::test {

// The window on the simulated camera, frozen on a still, ready to measure.
class Measuring : public ::testing::Test {
protected:
    void SetUp() override { copyShippedData(dir); }

    void start(int mode = 5)
    {
        auto factory = [mode](AppData& data) {
            data.settings.DEFAULTRESOLUTION = static_cast<qint16>(mode);
            data.settings.CURRENTPROOFNO = 0;  // 0.5 MIC per pixel
            return std::unique_ptr<CameraDriver>(std::make_unique<SimCamera>());
        };
        w = std::make_unique<frmMain>(dir.path(), prompter, clock, factory);
        ASSERT_TRUE(w->Form_Load());
        w->resize(1200, 800);
        w->show();
        freeze();
    }

    void freeze()
    {
        QElapsedTimer timer;
        timer.start();
        while (w->camera().liveView().counters().received == 0 && timer.elapsed() < 20000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QTest::mouseClick(find<QPushButton>("cmdPlayStop"), Qt::LeftButton);
        ASSERT_TRUE(w->camera().stillShown());
        ASSERT_FALSE(w->camera().still().isNull());
    }

    template <typename T>
    T* find(const char* name)
    {
        T* widget = w->findChild<T*>(QLatin1String(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }

    StillViewWidget* still() { return find<StillViewWidget>("picStillView"); }

    void tool(int index)
    {
        QTest::mouseClick(find<QToolButton>(QStringLiteral("cmdMeasure(%1)").arg(index).toLatin1()),
                          Qt::LeftButton);
    }

    QPoint at(double x, double y) { return still()->toWidget({x, y}).toPoint(); }
    void click(double x, double y) { QTest::mouseClick(still(), Qt::LeftButton, {}, at(x, y)); }
    // A double click as the window system delivers it: press, release, double click, release.
    void doubleClick(double x, double y)
    {
        const QPoint p = at(x, y);
        QTest::mouseClick(still(), Qt::LeftButton, {}, p);
        QMouseEvent dbl(QEvent::MouseButtonDblClick, p, still()->mapToGlobal(p), Qt::LeftButton,
                        Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(still(), &dbl);
        QTest::mouseRelease(still(), Qt::LeftButton, {}, p);
    }

    // Drives the next dialogs of the measure area with `drive` instead of a modal loop.
    void onDialog(std::function<void(QDialog&)> drive)
    {
        w->measure().setDialogRunner([drive](QDialog& d) {
            d.show();
            drive(d);
            return d.result();
        });
    }

    // A two-point distance from (100, 100) straight down by `pixels`.
    void distance(double pixels)
    {
        click(100, 100);
        click(100, 100 + pixels);
    }

    // A click on a row of the result grid (1-based), with Shift or Ctrl held when given.
    void clickRow(int row, Qt::KeyboardModifiers modifiers = {})
    {
        auto* grid = find<QTableView>("grdResult");
        const QRect cell = grid->visualRect(grid->model()->index(row - 1, 1));
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, modifiers, cell.center());
    }

    ResultTable& results() { return w->measure().results(); }
    QString cell(int row, int column) { return results().text(row, column); }
    QString message(int id) { return w->data().messages.text(id); }
    QString log() const { return QString::fromUtf8(dir.read(QStringLiteral("Error.Log"))); }

    void zoom(const char* entry)
    {
        auto* scale = find<QComboBox>("cboScale");
        scale->setCurrentIndex(scale->findText(QLatin1String(entry)));
        emit scale->activated(scale->currentIndex());
    }

    TempDir dir;
    ScriptedPrompter prompter;
    SystemClock clock;
    std::unique_ptr<frmMain> w;
};

}  // namespace tavix::test
