#pragma once

#include "measure/CaliperTool.h"

#include <QDialog>
#include <QWidget>
#include <utility>

class QLabel;

namespace tavix {

class MessageTable;

// picCaliperProfile: the grey profile along a caliper line with its edges
// marked and numbered, the measured pair in red. Clicking one edge and then
// another asks for the width between them.
class CaliperPlot : public QWidget {
    Q_OBJECT
public:
    explicit CaliperPlot(QWidget* parent = nullptr);

    void setProfile(const CaliperTool::Profile& profile, std::pair<int, int> pair);
    const CaliperTool::Profile& profile() const { return profile_; }
    std::pair<int, int> pair() const { return pair_; }
    // Where edge `index` is drawn, in this widget.
    QPointF edgePoint(int index) const;

    QSize sizeHint() const override { return {420, 160}; }

signals:
    void pairPicked(int first, int last);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    QRectF plotArea() const;
    double xOf(double at) const;

    CaliperTool::Profile profile_;
    std::pair<int, int> pair_{-1, -1};
    int picked_ = -1;  // the first edge of a pair being picked
};

// The small window that shows the last caliper line's profile.
class frmCaliperProfile : public QDialog {
    Q_OBJECT
public:
    frmCaliperProfile(const MessageTable& messages, QWidget* parent);
    CaliperPlot* plot() const { return plot_; }

private:
    CaliperPlot* plot_ = nullptr;
    QLabel* hint_ = nullptr;
};

}  // namespace tavix
