#include "measure/MeasurementPainter.h"

#include "common/Settings.h"
#include "measure/MeasurementStore.h"
#include "measure/ToolFactory.h"

#include "ToolTestSupport.h"

#include <QImage>
#include <QPainter>
#include <cstdlib>

using namespace tavix;
using namespace tavix::test;

namespace {

OverlayStyle testStyle()
{
    OverlayStyle style;
    style.lineColors = {Qt::black, QColor(255, 0, 0), QColor(0, 0, 255), QColor(0, 255, 0)};
    style.valueColors = {Qt::black, QColor(255, 255, 0), QColor(0, 255, 255)};
    style.fontPointSize = 10;
    return style;
}

QImage blankLayer(int w = 100, int h = 100)
{
    QImage image(w, h, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

void paintShape(QImage& image, const Shape& shape, const QTransform& t = {}, bool highlight = false)
{
    QPainter painter(&image);
    MeasurementPainter(testStyle()).paint(painter, shape, t, highlight);
}

bool colourNear(const QImage& image, int x, int y, const QColor& colour, int reach = 1)
{
    for (int dy = -reach; dy <= reach; ++dy)
        for (int dx = -reach; dx <= reach; ++dx) {
            const int px = x + dx, py = y + dy;
            if (image.rect().contains(px, py) && image.pixelColor(px, py) == colour)
                return true;
        }
    return false;
}

// Every drawn pixel lies inside the rectangle.
bool drawnOnlyWithin(const QImage& image, const QRect& allowed)
{
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qAlpha(image.pixel(x, y)) != 0 && !allowed.contains(x, y))
                return false;
    return true;
}

Shape horizontalLine(PointD a, PointD b)
{
    Shape shape;
    shape.lines = {{a, b}};
    return shape;
}

TEST(MeasurementPainter, Line_IsDrawnInItsColourAlongThePictureLine_AndNowhereElse)
{
    QImage image = blankLayer();
    paintShape(image, horizontalLine({10, 50}, {90, 50}));
    for (int x = 10; x <= 90; ++x)
        EXPECT_TRUE(colourNear(image, x, 50, QColor(255, 0, 0))) << "x " << x;
    EXPECT_TRUE(drawnOnlyWithin(image, QRect(QPoint(9, 49), QPoint(91, 51))));
}

TEST(MeasurementPainter, Transform_ScalesByTheMagnificationAndShiftsByTheOffset)
{
    QImage image = blankLayer();
    paintShape(image, horizontalLine({10, 25}, {40, 25}), MeasurementPainter::viewTransform(2, {20, 0}));
    EXPECT_TRUE(colourNear(image, 1, 50, QColor(255, 0, 0)));
    EXPECT_TRUE(colourNear(image, 59, 50, QColor(255, 0, 0)));
    EXPECT_TRUE(drawnOnlyWithin(image, QRect(QPoint(0, 49), QPoint(61, 51))));
}

TEST(MeasurementPainter, ViewTransform_MapsAPicturePixelToTheView)
{
    const QTransform t = MeasurementPainter::viewTransform(0.5, {10, 20});
    EXPECT_EQ(t.map(QPointF(100, 200)), QPointF(40, 80));
}

TEST(MeasurementPainter, Highlight_DrawsInLineColourTwo)
{
    QImage image = blankLayer();
    paintShape(image, horizontalLine({10, 50}, {90, 50}), {}, true);
    EXPECT_TRUE(colourNear(image, 50, 50, QColor(0, 0, 255)));
    EXPECT_FALSE(colourNear(image, 50, 50, QColor(255, 0, 0)));
}

TEST(MeasurementPainter, Guides_TakeLineColourThree)
{
    Shape shape;
    shape.guides = {{{10, 30}, {90, 30}}};
    QImage image = blankLayer();
    paintShape(image, shape);
    int found = 0;
    for (int x = 10; x <= 90; ++x)
        found += colourNear(image, x, 30, QColor(0, 255, 0), 1) ? 1 : 0;
    EXPECT_GT(found, 20);
    EXPECT_TRUE(drawnOnlyWithin(image, QRect(QPoint(9, 29), QPoint(91, 31))));
}

TEST(MeasurementPainter, Mark_IsASmallCrossOnThePoint)
{
    Shape shape;
    shape.marks = {{50, 50}};
    QImage image = blankLayer();
    paintShape(image, shape);
    EXPECT_TRUE(colourNear(image, 47, 50, QColor(255, 0, 0)));
    EXPECT_TRUE(colourNear(image, 50, 53, QColor(255, 0, 0)));
    EXPECT_TRUE(drawnOnlyWithin(image, QRect(QPoint(46, 46), QPoint(54, 54))));
}

TEST(MeasurementPainter, Polyline_FollowsTheCircle)
{
    const std::optional<Measurement> circle =
        ToolFactory::measure(102, {{80, 50}, {50, 80}, {20, 50}}, contextWith(1, 1));
    ASSERT_TRUE(circle);
    Shape shape;
    shape.polylines = circle->shape.polylines;
    QImage image = blankLayer();
    paintShape(image, shape);
    EXPECT_TRUE(colourNear(image, 50, 20, QColor(255, 0, 0)));
    EXPECT_TRUE(colourNear(image, 80, 50, QColor(255, 0, 0)));
    EXPECT_FALSE(colourNear(image, 50, 50, QColor(255, 0, 0), 10)) << "inside stays empty";
}

TEST(MeasurementPainter, Label_SitsOnADarkBoxAboveTheAnchor_InTheValueColour)
{
    Shape shape;
    shape.labels = {{{50, 60}, "12.5", 0}};
    const MeasurementPainter painter(testStyle());
    const QRect box = painter.labelRect(shape.labels[0], {}).toAlignedRect();
    EXPECT_LE(box.bottom(), 60 - 2);
    EXPECT_NEAR(box.center().x(), 50, 1);

    QImage image = blankLayer();
    paintShape(image, shape);
    EXPECT_TRUE(drawnOnlyWithin(image, box));
    const QColor corner = image.pixelColor(box.left() + 1, box.top() + 1);
    EXPECT_GT(corner.alpha(), 100);
    EXPECT_LT(corner.red() + corner.green() + corner.blue(), 60);
    bool textFound = false;
    for (int y = box.top(); y <= box.bottom(); ++y)
        for (int x = box.left(); x <= box.right(); ++x) {
            const QColor c = image.pixelColor(x, y);
            textFound = textFound || (c.red() > 200 && c.green() > 200 && c.blue() < 80);
        }
    EXPECT_TRUE(textFound);
}

TEST(MeasurementPainter, LabelBelow_HangsUnderTheAnchor)
{
    const MeasurementPainter painter(testStyle());
    const QRectF box = painter.labelRect({{50, 60}, "8.0", 1, true}, {});
    EXPECT_GE(box.top(), 60);
}

TEST(MeasurementPainter, LabelRectOnPicture_IsTheBoxBackInPicturePixels)
{
    const MeasurementPainter painter(testStyle());
    const Label label{{50, 60}, "8.0", 0};
    const QTransform t = MeasurementPainter::viewTransform(2, {10, 10});
    const QRectF onTarget = painter.labelRect(label, t);
    const QRectF onPicture = painter.labelRectOnPicture(label, t);
    EXPECT_DOUBLE_EQ(onPicture.width(), onTarget.width() / 2);
    EXPECT_DOUBLE_EQ(onPicture.left(), (onTarget.left() + 10) / 2);
}

TEST(MeasurementPainter, PaintLayer_ClearsTheLayerAndDrawsEveryStoredMeasurement)
{
    MeasurementStore store;
    store.add(*ToolFactory::measure(101, {{10, 80}, {90, 80}}, contextWith(1, 1)), 1);
    store.add(*ToolFactory::measure(101, {{10, 90}, {90, 90}}, contextWith(1, 1)), 2);
    QImage layer = blankLayer();
    layer.fill(Qt::white);
    MeasurementPainter(testStyle()).paintLayer(layer, store, {});
    EXPECT_EQ(qAlpha(layer.pixel(5, 5)), 0);
    EXPECT_TRUE(colourNear(layer, 12, 80, QColor(255, 0, 0)));
    EXPECT_TRUE(colourNear(layer, 12, 90, QColor(255, 0, 0)));
}

TEST(OverlayStyle, ClassicColour_HasRedInTheLowByte)
{
    EXPECT_EQ(OverlayStyle::classicColor(255), QColor(255, 0, 0));
    EXPECT_EQ(OverlayStyle::classicColor(255 * 256), QColor(0, 255, 0));
    EXPECT_EQ(OverlayStyle::classicColor(255 * 65536), QColor(0, 0, 255));
    EXPECT_EQ(OverlayStyle::classicColor(0x123456), QColor(0x56, 0x34, 0x12));
}

TEST(OverlayStyle, FromSettings_TakesTheColourSlotsAndFontSize)
{
    Settings settings;
    settings.MEASURELINECOLOR = {0, 255, 255 * 256, 255 * 65536};
    settings.MEASUREVALUECOLOR = {0, 0xFFFF, 0xFFFF00};
    settings.MEASUREFONTSIZE = 14;
    const OverlayStyle style = OverlayStyle::fromSettings(settings);
    EXPECT_EQ(style.line(1), QColor(255, 0, 0));
    EXPECT_EQ(style.line(3), QColor(0, 0, 255));
    EXPECT_EQ(style.value(2), QColor(0, 255, 255));
    EXPECT_EQ(style.line(9), QColor(0, 0, 255)) << "slots beyond the last take the last";
    EXPECT_EQ(style.fontPointSize, 14);
}

}  // namespace
