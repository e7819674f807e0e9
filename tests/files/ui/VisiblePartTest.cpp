#include "camera/ui/StillViewWidget.h"
#include "files/PictureFiles.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QPainter>
#include <QRandomGenerator>
#include <QScrollArea>
#include <QScrollBar>
#include <memory>
#include <ostream>

using namespace tavix;

namespace {

QImage still(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB888);
    QRandomGenerator rng(21);
    for (int y = 0; y < height; ++y)
        for (qsizetype i = 0; i < image.bytesPerLine(); ++i)
            image.scanLine(y)[i] = static_cast<uchar>(rng.bounded(256));
    return image;
}

struct ViewCase {
    double magnification;
    QPoint scroll;  // scroll bar values
};

void PrintTo(const ViewCase& c, std::ostream* os)
{
    *os << "x " << c.magnification << " scrolled to " << c.scroll.x() << "," << c.scroll.y();
}

// The still view in a scroll area as the main window shows it.
class VisiblePartOnScreen : public ::testing::TestWithParam<ViewCase> {};

}  // namespace

TEST_P(VisiblePartOnScreen, VisiblePart_IsWhatTheScrolledStillViewShows)
{
    const QSize area(300, 220);
    auto scroll = std::make_unique<QScrollArea>();
    scroll->setAlignment(Qt::AlignCenter);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* view = new StillViewWidget;
    scroll->setWidget(view);
    scroll->resize(area);
    const QImage picture = still(240, 180);
    view->setPicture(picture);
    view->setMagnification(GetParam().magnification);
    scroll->show();
    QApplication::processEvents();
    scroll->horizontalScrollBar()->setValue(GetParam().scroll.x());
    scroll->verticalScrollBar()->setValue(GetParam().scroll.y());
    QApplication::processEvents();
    if (GetParam().scroll != QPoint()) {
        ASSERT_NE(view->pos(), QPoint(0, 0)) << "the view did not scroll";
    }
    const QColor background = scroll->viewport()->palette().color(scroll->viewport()->backgroundRole());

    const QImage screen = scroll->viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    PictureFiles::View v;
    v.magnification = GetParam().magnification;
    v.scrollOffset = -view->pos();  // the still view's position in the area
    v.areaSize = scroll->viewport()->size();
    v.background = background;
    const QImage saved = PictureFiles::visiblePart(picture, v);

    ASSERT_EQ(saved.size(), screen.size());
    int differing = 0;
    for (int y = 0; y < screen.height(); ++y)
        for (int x = 0; x < screen.width(); ++x)
            differing += (saved.pixel(x, y) & 0xffffff) != (screen.pixel(x, y) & 0xffffff);
    EXPECT_EQ(differing, 0) << "of " << screen.width() * screen.height() << " pixels";
}

INSTANTIATE_TEST_SUITE_P(Views, VisiblePartOnScreen,
                         ::testing::Values(ViewCase{1.0, {0, 0}}, ViewCase{2.0, {101, 57}},
                                           ViewCase{3.0, {400, 333}}, ViewCase{4.0, {999, 1}},
                                           ViewCase{0.5, {0, 0}}, ViewCase{1.5, {7, 5}}));
