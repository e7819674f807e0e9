#include "files/ui/frmJpegQty.h"

#include "common/HandlerGuard.h"
#include "common/MessageTable.h"
#include "common/Settings.h"
#include "common/SettingsFile.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>

namespace tavix {

frmJpegQty::frmJpegQty(Settings& settings, SettingsFile& settingsFile, const MessageTable& messages,
                       const ErrorLog& log, QWidget* parent)
    : GuardedDialog("frmJpegQty", log, parent),
      settings_(settings),
      settingsFile_(settingsFile),
      messages_(messages)
{
    setModal(true);
    buildControls();
    guarded("Form_Load", [this] { Form_Load(); });
}

void frmJpegQty::buildControls()
{
    auto* column = new QVBoxLayout(this);
    column->setSizeConstraint(QLayout::SetFixedSize);

    auto* row = new QHBoxLayout;
    sldJpegQty_ = new QSlider(Qt::Horizontal, this);
    sldJpegQty_->setObjectName(QStringLiteral("sldJpegQty"));
    sldJpegQty_->setRange(kMinimum, kMaximum);
    sldJpegQty_->setSingleStep(1);
    sldJpegQty_->setPageStep(10);
    sldJpegQty_->setTickPosition(QSlider::TicksBelow);
    sldJpegQty_->setTickInterval(10);
    sldJpegQty_->setMinimumWidth(240);
    connect(sldJpegQty_, &QSlider::valueChanged, this,
            [this] { guarded("sldJpegQty_Change", [this] { sldJpegQty_Change(); }); });
    row->addWidget(sldJpegQty_, 1);

    lblValue_ = new QLabel(this);
    lblValue_->setObjectName(QStringLiteral("lblValue"));
    lblValue_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    lblValue_->setMinimumWidth(lblValue_->fontMetrics().horizontalAdvance(QStringLiteral("1000")));
    row->addWidget(lblValue_);
    column->addLayout(row);

    cmdOK_ = new QPushButton(QStringLiteral("&OK"), this);
    cmdOK_->setObjectName(QStringLiteral("cmdOK"));
    cmdOK_->setDefault(true);
    cmdCancel_ = new QPushButton(QStringLiteral("&Cancel"), this);
    cmdCancel_->setObjectName(QStringLiteral("cmdCancel"));
    cmdCancel_->setAutoDefault(false);
    connect(cmdOK_, &QPushButton::clicked, this,
            [this] { guarded("cmdOK_Click", [this] { cmdOK_Click(); }); });
    connect(cmdCancel_, &QPushButton::clicked, this,
            [this] { guarded("cmdCancel_Click", [this] { cmdCancel_Click(); }); });
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdOK_);
    buttons->addWidget(cmdCancel_);
    column->addLayout(buttons);
}

void frmJpegQty::Form_Load()
{
    setWindowTitle(messages_(kMsgCaption));
    sldJpegQty_->setValue(settings_.JPEGQTY);
    sldJpegQty_Change();  // the label, also when the value was the slider's own already
}

void frmJpegQty::sldJpegQty_Change()
{
    const QString text = QString::number(sldJpegQty_->value());
    lblValue_->setText(text);
    sldJpegQty_->setToolTip(text);
}

void frmJpegQty::cmdOK_Click()
{
    settings_.JPEGQTY = static_cast<quint8>(sldJpegQty_->value());
    // The quality is kept at once, not only with the other settings at exit.
    settingsFile_.WriteIniFileData(QStringLiteral("FILE"), QStringLiteral("JPEGQTY"),
                                   QString::number(settings_.JPEGQTY));
    QDialog::accept();
}

void frmJpegQty::cmdCancel_Click()
{
    QDialog::reject();
}

void frmJpegQty::reject()
{
    guarded("cmdCancel_Click", [this] { cmdCancel_Click(); });
}

}  // namespace tavix
