#pragma once

#include "files/IntervalSeries.h"
#include "files/IntervalShot.h"

#include <QObject>
#include <QPoint>
#include <QTimer>
#include <functional>
#include <memory>

class QDialog;
class QPushButton;
class QWidget;

namespace tavix {

struct AppData;
class CameraPanel;
class Clock;
class CrossLines;
class MessageLine;
class Prompter;
class ResultTable;

// cmdIS_Save and tmrIS: a timed series of camera pictures (IS_MODE 0) or one
// quick save into a folder under the next free number (IS_MODE 1), with the
// shown cross lines drawn into the pictures.
class IntervalSavePanel : public QObject {
    Q_OBJECT
public:
    using DialogRunner = std::function<int(QDialog&)>;

    struct Parts {
        QWidget* commandArea = nullptr;  // where cmdIS_Save goes
        QPushButton* playStop = nullptr;
        MessageLine* messageLine = nullptr;
        CrossLines* crosses = nullptr;
        // A point of the picture area as a pixel of the picture shown there.
        std::function<QPoint(QPoint)> toPicture;
        // Switches the window's command areas off for a series and on again after it.
        std::function<void(bool)> setCommandAreasEnabled;
    };

    static constexpr int kTimerPeriodMs = 200;

    IntervalSavePanel(AppData& data, Prompter& prompter, Clock& clock, CameraPanel& camera,
                      ResultTable& results, const Parts& parts, QObject* parent = nullptr);
    ~IntervalSavePanel() override;

    void setDialogRunner(DialogRunner runner) { runDialog_ = std::move(runner); }
    void applySettings();

    void cmdIS_Save_Click();
    // A tick of tmrIS, public so that tests can step it.
    void tmrIS_Timer();
    // cmdPlayStop while the series runs.
    void stopSeries();

    bool seriesRunning() const { return series_.running(); }
    QTimer& timer() { return tmrIS_; }

private:
    void startSeries();
    void quickSave();
    // The crosses shown on the picture area, in pixels of the picture under them.
    IntervalShot::Crosses shownCrosses() const;
    IntervalShot::Job baseJob() const;
    void endSeries(bool tellDone);
    void cameraFailed();

    AppData& data_;
    Prompter& prompter_;
    CameraPanel& camera_;
    ResultTable& results_;
    Parts parts_;
    DialogRunner runDialog_;
    IntervalShot shot_;
    IntervalSeries series_;
    QTimer tmrIS_;
    QPushButton* cmdIS_Save_ = nullptr;
};

}  // namespace tavix
