#pragma once

#include <QWidget>

namespace tavix {

class LiveView;

// picCameraView: the live picture, repainted whenever the live view holds a
// frame that was not shown yet.
class CameraViewWidget : public QWidget {
    Q_OBJECT
public:
    CameraViewWidget(LiveView& liveView, QWidget* parent = nullptr);

    // Safe to call from any thread: schedules one repaint.
    void frameArrived();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    LiveView& liveView_;
};

}  // namespace tavix
