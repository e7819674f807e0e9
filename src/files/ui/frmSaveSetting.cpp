#include "files/ui/frmSaveSetting.h"

#include "common/HandlerGuard.h"
#include "common/MessageTable.h"
#include "common/Prompter.h"
#include "common/Settings.h"

#include <QButtonGroup>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace tavix {

namespace {

template <typename W>
W* named(W* widget, const QString& name)
{
    widget->setObjectName(name);
    return widget;
}

}  // namespace

frmSaveSetting::frmSaveSetting(Settings& settings, Prompter& prompter, const MessageTable& messages,
                               const ErrorLog& log, QWidget* parent)
    : GuardedDialog("frmSaveSetting", log, parent),
      settings_(settings),
      prompter_(prompter),
      messages_(messages)
{
    setModal(true);
    buildControls();
    guarded("Form_Load", [this] { Form_Load(); });
}

void frmSaveSetting::buildControls()
{
    auto* column = new QVBoxLayout(this);
    column->setSizeConstraint(QLayout::SetFixedSize);

    Frame1_ = named(new QGroupBox(this), QStringLiteral("Frame1"));
    auto* frame = new QGridLayout(Frame1_);
    auto* modes = new QButtonGroup(this);
    for (int i = 0; i < 2; ++i) {
        optIS_Mode_[i] = named(new QRadioButton(Frame1_), QStringLiteral("optIS_Mode(%1)").arg(i));
        modes->addButton(optIS_Mode_[i], i);
        frame->addWidget(optIS_Mode_[i], i, 0, 1, 3);
        connect(optIS_Mode_[i], &QRadioButton::clicked, this,
                [this] { guarded("optIS_Mode_Click", [this] { optIS_Mode_Click(); }); });
    }
    Label1_ = named(new QLabel(Frame1_), QStringLiteral("Label1"));
    txtSavePath_ = named(new QLineEdit(Frame1_), QStringLiteral("txtSavePath"));
    txtSavePath_->setMinimumWidth(320);
    Label1_->setBuddy(txtSavePath_);
    cmdSavePath_ = named(new QPushButton(Frame1_), QStringLiteral("cmdSavePath"));
    cmdSavePath_->setAutoDefault(false);
    connect(cmdSavePath_, &QPushButton::clicked, this,
            [this] { guarded("cmdSavePath_Click", [this] { cmdSavePath_Click(); }); });
    frame->addWidget(Label1_, 2, 0);
    frame->addWidget(txtSavePath_, 2, 1);
    frame->addWidget(cmdSavePath_, 2, 2);
    frame->setColumnStretch(1, 1);
    column->addWidget(Frame1_);

    cmdOK_ = named(new QPushButton(QStringLiteral("&OK"), this), QStringLiteral("cmdOK"));
    cmdOK_->setDefault(true);
    cmdCancel_ = named(new QPushButton(QStringLiteral("&Cancel"), this), QStringLiteral("cmdCancel"));
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

void frmSaveSetting::Form_Load()
{
    const MessageTable& m = messages_;
    setWindowTitle(m(kMsgCaption));
    Frame1_->setTitle(m(kMsgFrame));
    optIS_Mode_[0]->setText(m(kMsgSeries));
    optIS_Mode_[1]->setText(m(kMsgQuickSave));
    Label1_->setText(m(kMsgFolder));
    cmdSavePath_->setText(m(kMsgBrowse));

    // A mode other than the two the file may hold opens as the series.
    optIS_Mode_[settings_.IS_MODE == 1 ? 1 : 0]->setChecked(true);
    txtSavePath_->setText(settings_.IS_SAVEPATH);
    optIS_Mode_Click();
}

void frmSaveSetting::optIS_Mode_Click()
{
    const bool folderMode = optIS_Mode_[1]->isChecked();
    txtSavePath_->setEnabled(folderMode);
    cmdSavePath_->setEnabled(folderMode);
}

void frmSaveSetting::cmdSavePath_Click()
{
    // The browser opens at the current folder and gives it back on Cancel.
    txtSavePath_->setText(prompter_.folder(messages_(kMsgBrowserTitle), txtSavePath_->text()));
}

void frmSaveSetting::cmdOK_Click()
{
    if (optIS_Mode_[1]->isChecked()) {
        const QString folder = txtSavePath_->text().trimmed();
        if (folder.isEmpty() || !QFileInfo(folder).isDir()) {
            prompter_.message({messages_(kMsgNoFolder), messages_(kMsgCaption), Prompter::Icon::Exclamation,
                               Prompter::Buttons::Ok, Prompter::Answer::Ok});
            txtSavePath_->setFocus();
            return;
        }
    }
    settings_.IS_MODE = optIS_Mode_[0]->isChecked() ? 0 : 1;
    settings_.IS_SAVEPATH = txtSavePath_->text();
    QDialog::accept();
}

void frmSaveSetting::cmdCancel_Click()
{
    QDialog::reject();
}

void frmSaveSetting::reject()
{
    guarded("cmdCancel_Click", [this] { cmdCancel_Click(); });
}

}  // namespace tavix
