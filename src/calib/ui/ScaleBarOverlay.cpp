#include "calib/ui/ScaleBarOverlay.h"

#include "calib/ProofEntry.h"
#include "common/ClassicColor.h"
#include "common/HandlerGuard.h"
#include "common/Settings.h"
#include "common/Twips.h"

#include "common/ui/WidgetNames.h"

#include <QFontMetrics>
#include <QLabel>
#include <QWidget>
#include <algorithm>

namespace tavix {

namespace {

QRectF toTwips(const QRect& pixels)
{
    return QRectF(pixelsToTwips(pixels.x()), pixelsToTwips(pixels.y()), pixelsToTwips(pixels.width()),
                  pixelsToTwips(pixels.height()));
}

// An overlay box: it shows, but the pointer acts on the picture under it.
void makeOverlay(QWidget* widget)
{
    widget->setAttribute(Qt::WA_TransparentForMouseEvents);
    widget->setFocusPolicy(Qt::NoFocus);
    widget->hide();
}

}  // namespace

ScaleBarOverlay::ScaleBarOverlay(QWidget* area, const Settings& settings, Sources sources,
                                 const ErrorLog& log, QObject* parent)
    : QObject(parent), area_(area), settings_(settings), sources_(std::move(sources)), log_(log)
{
    for (int i = 0; i < ScaleBar::kLineCount; ++i) {
        auto* line = new QWidget(area);
        line->setObjectName(indexedName("picScaleLine", i));
        line->setAutoFillBackground(true);
        makeOverlay(line);
        picScaleLine_[static_cast<size_t>(i)] = line;
    }
    picScaleSize_ = new QLabel(area);
    picScaleSize_->setObjectName(QStringLiteral("picScaleSize"));
    // The text stands on the picture itself; a unit is never markup.
    picScaleSize_->setTextFormat(Qt::PlainText);
    picScaleSize_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    picScaleSize_->setContentsMargins(0, 0, 0, 0);
    picScaleSize_->setMargin(0);
    picScaleSize_->setIndent(0);
    // A dark box, as behind the measurement labels, keeps the text readable on a light picture.
    picScaleSize_->setAutoFillBackground(true);
    makeOverlay(picScaleSize_);
}

QFont ScaleBarOverlay::labelFont(int pointSize)
{
    // Points at the program's 96 logical dots per inch, like the measurement labels.
    QFont font;
    font.setPixelSize(std::max(1, qRound(pointSize * 96.0 / 72.0)));
    return font;
}

bool ScaleBarOverlay::DrawScaleBar()
{
    return runGuarded(log_, QStringLiteral("frmMain:DrawScaleBar"), [this] { draw(); });
}

void ScaleBarOverlay::draw()
{
    const QRect inner = area_->contentsRect();
    ScaleBar::Input in = ScaleBar::inputFrom(settings_, sources_.entry());
    in.magnification = sources_.magnification ? sources_.magnification() : 1.0;
    QRect box = sources_.pictureBox ? sources_.pictureBox() : QRect();
    if (box.isEmpty())
        box = inner;
    in.areaInner = QSizeF(pixelsToTwips(inner.width()), pixelsToTwips(inner.height()));
    in.pictureBox = toTwips(box.translated(-inner.topLeft()));

    const QFont font = labelFont(settings_.MEASUREFONTSIZE);
    const QString text = ScaleBar::labelText(in.scaleX, in.unit);
    const QFontMetrics metrics(font);
    in.labelSize = QSizeF(pixelsToTwips(metrics.horizontalAdvance(text)), pixelsToTwips(metrics.height()));
    in.previousAnchor = geometry_.anchor;

    const ScaleBar::Geometry g = ScaleBar::compute(in);  // throws before any widget changes

    applyStyle();
    picScaleSize_->setFont(font);
    for (size_t i = 0; i < picScaleLine_.size(); ++i) {
        QWidget* line = picScaleLine_[i];
        line->setGeometry(g.lines[i].pixels.translated(inner.topLeft()));
        line->setVisible(g.lines[i].visible);
        line->raise();
    }
    picScaleSize_->setText(g.text);
    picScaleSize_->setGeometry(g.label.pixels.translated(inner.topLeft()));
    picScaleSize_->show();
    picScaleSize_->raise();
    geometry_ = g;
    shown_ = true;
}

void ScaleBarOverlay::applyStyle()
{
    const QColor lineColor = ClassicColor::toQColor(settings_.SCALECOLOR);
    for (QWidget* line : picScaleLine_) {
        QPalette palette = line->palette();
        palette.setColor(QPalette::Window, lineColor);
        line->setPalette(palette);
    }
    QPalette palette = picScaleSize_->palette();
    palette.setColor(QPalette::WindowText, ClassicColor::toQColor(settings_.MEASUREVALUECOLOR[1]));
    palette.setColor(QPalette::Window, QColor(0, 0, 0, 150));
    picScaleSize_->setPalette(palette);
}

void ScaleBarOverlay::hide()
{
    for (QWidget* line : picScaleLine_)
        line->hide();
    picScaleSize_->hide();
    shown_ = false;
}

}  // namespace tavix
