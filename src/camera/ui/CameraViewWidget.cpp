#include "camera/ui/CameraViewWidget.h"

#include "camera/LiveView.h"

#include <QMetaObject>
#include <QPainter>

namespace tavix {

CameraViewWidget::CameraViewWidget(LiveView& liveView, QWidget* parent) : QWidget(parent), liveView_(liveView)
{
    setObjectName(QStringLiteral("picCameraView"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    liveView_.setNotifier([this] { frameArrived(); });
}

void CameraViewWidget::frameArrived()
{
    QMetaObject::invokeMethod(
        this, [this] { update(); }, Qt::QueuedConnection);
}

void CameraViewWidget::resizeEvent(QResizeEvent*)
{
    liveView_.setDisplaySize(size());
}

void CameraViewWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QImage* fresh = liveView_.takeFrame();
    const QImage& image = fresh ? *fresh : liveView_.current();
    if (image.isNull()) {
        painter.fillRect(rect(), Qt::black);
        return;
    }
    if (image.size() == size())
        painter.drawImage(0, 0, image);  // the usual case: a plain copy
    else
        painter.drawImage(rect(), image);  // only right after a resize
}

}  // namespace tavix
