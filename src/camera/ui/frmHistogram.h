#pragma once

#include "media/Histogram.h"

#include <QWidget>

class QLabel;

namespace tavix {

class HistogramView;
class MessageTable;

// The histogram window beside the main window: the picture's levels, and the
// shares of pixels clipped at 0 and at 255 in plain words, for setting the
// exposure. It only shows what it is given; closing it is the user's "off".
class frmHistogram : public QWidget {
    Q_OBJECT
public:
    // Message ids of its texts.
    static constexpr qint32 kTitle = 27000;
    static constexpr qint32 kClippedDark = 27002;    // "@" = the share in per cent
    static constexpr qint32 kClippedBright = 27003;  // "@" = the share in per cent
    static constexpr qint32 kLiveSource = 27004;
    static constexpr qint32 kStillSource = 27005;

    frmHistogram(const MessageTable& messages, QWidget* parent = nullptr);

    void showHistogram(const Histogram& histogram, bool live);
    const Histogram& histogram() const;

    // A share as the window writes it: per cent with two decimals, "< 0.01"
    // for a share that would round to none.
    static QString percent(double share);

signals:
    void closed();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    const MessageTable& messages_;
    HistogramView* view_ = nullptr;
    QLabel* lblHistogramSource_ = nullptr;
    QLabel* lblClippedDark_ = nullptr;
    QLabel* lblClippedBright_ = nullptr;
};

}  // namespace tavix
