#pragma once

#include <QColor>
#include <QIcon>
#include <QObject>
#include <array>

class QWidget;

namespace tavix {

class CrossLines;

// The cross lines' widgets over the picture area: picCrossLineV(0..1) and
// picCrossLineH(0..1), thin boxes in CROSSLINECOLOR that span the area's inner
// height and width. They follow the crosses of a CrossLines, whose positions
// are in the area's own coordinates (the pointer mapped to the area), and
// keep their span when the area is resized. The pointer passes through them
// to the picture below.
class CrossLineOverlay : public QObject {
    Q_OBJECT
public:
    CrossLineOverlay(QWidget* area, CrossLines& crosses, QObject* parent = nullptr);

    QWidget* picCrossLineV(int index) const { return vertical_.at(static_cast<size_t>(index)); }
    QWidget* picCrossLineH(int index) const { return horizontal_.at(static_cast<size_t>(index)); }

    // Places and shows or hides the four lines from the crosses.
    void relayout();
    // The background colour of all four lines.
    void setColor(const QColor& color);
    QColor color() const;

    // imgCrossIcon(0) one cross, imgCrossIcon(1) two crosses: chkCross's picture.
    static QIcon imgCrossIcon(int index);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* area_;
    CrossLines& crosses_;
    std::array<QWidget*, 2> vertical_{};
    std::array<QWidget*, 2> horizontal_{};
};

}  // namespace tavix
