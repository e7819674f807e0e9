#include "camera/ui/frmHistogram.h"

#include "camera/ui/HistogramView.h"
#include "common/MessageTable.h"
#include "common/ui/WidgetNames.h"

#include <QCloseEvent>
#include <QLabel>
#include <QVBoxLayout>

namespace tavix {

frmHistogram::frmHistogram(const MessageTable& messages, QWidget* parent)
    : QWidget(parent, Qt::Tool), messages_(messages)
{
    setObjectName(QStringLiteral("frmHistogram"));
    setWindowTitle(messages_.text(kTitle));
    view_ = new HistogramView(this);
    lblHistogramSource_ = named(new QLabel(this), QStringLiteral("lblHistogramSource"));
    lblClippedDark_ = named(new QLabel(this), QStringLiteral("lblClippedDark"));
    lblClippedBright_ = named(new QLabel(this), QStringLiteral("lblClippedBright"));

    // One line each: a share never hides the other, whatever the language.
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(4);
    layout->addWidget(lblHistogramSource_);
    layout->addWidget(view_, 1);
    layout->addWidget(lblClippedDark_);
    layout->addWidget(lblClippedBright_);
    resize(340, 240);
    showHistogram(Histogram(), true);
}

const Histogram& frmHistogram::histogram() const
{
    return view_->histogram();
}

QString frmHistogram::percent(double share)
{
    // A few clipped pixels must not read as none.
    if (share > 0 && share < 0.00005)
        return QStringLiteral("< 0.01");
    return QString::number(share * 100.0, 'f', 2);
}

void frmHistogram::showHistogram(const Histogram& histogram, bool live)
{
    view_->setHistogram(histogram);
    lblHistogramSource_->setText(messages_.text(live ? kLiveSource : kStillSource));
    lblClippedDark_->setText(messages_.text(kClippedDark, percent(histogram.clippedDark())));
    lblClippedBright_->setText(messages_.text(kClippedBright, percent(histogram.clippedBright())));
    // Clipped pixels lose detail: say so in a colour that is seen.
    const auto tint = [](QLabel* label, double share) {
        label->setStyleSheet(share > 0 ? QStringLiteral("color: #c00000; font-weight: bold;") : QString());
    };
    tint(lblClippedDark_, histogram.clippedDark());
    tint(lblClippedBright_, histogram.clippedBright());
}

void frmHistogram::closeEvent(QCloseEvent* event)
{
    event->accept();
    emit closed();
}

}  // namespace tavix
