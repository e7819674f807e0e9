#include "files/ui/frmIS_Config.h"

#include "common/MessageTable.h"
#include "common/Prompter.h"
#include "common/Settings.h"
#include "common/ui/WidgetNames.h"
#include "files/IntervalSave.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace tavix {

frmIS_Config::frmIS_Config(Settings& settings, Prompter& prompter, const MessageTable& messages,
                           const ErrorLog& log, QWidget* parent)
    : GuardedDialog("frmIS_Config", log, parent),
      settings_(settings),
      prompter_(prompter),
      messages_(messages)
{
    setModal(true);
    buildControls();
    guarded("Form_Load", [this] { Form_Load(); });
}

void frmIS_Config::buildControls()
{
    auto* column = new QVBoxLayout(this);
    column->setSizeConstraint(QLayout::SetFixedSize);
    auto* grid = new QGridLayout;
    for (int i = 0; i < kLabelCount; ++i)
        Label1_[i] = named(new QLabel(this), indexedName("Label1", i));
    for (int i = 0; i < 2; ++i) {
        txtIntervalTime_[i] = named(new QLineEdit(this), indexedName("txtIntervalTime", i));
        txtIntervalTime_[i]->setMaxLength(2);
        txtIntervalTime_[i]->setFixedWidth(48);
        txtIntervalTime_[i]->setAlignment(Qt::AlignRight);
    }
    txtNumberOfImages_ = named(new QLineEdit(this), QStringLiteral("txtNumberOfImages"));
    txtNumberOfImages_->setMaxLength(3);
    txtNumberOfImages_->setFixedWidth(48);
    txtNumberOfImages_->setAlignment(Qt::AlignRight);
    lblTime_ = named(new QLabel(this), QStringLiteral("lblTime"));
    lblNoi_ = named(new QLabel(this), QStringLiteral("lblNoi"));
    Label1_[0]->setBuddy(txtIntervalTime_[0]);
    Label1_[3]->setBuddy(txtNumberOfImages_);

    // Interval: [mm] min [ss] sec (3sec~99min00sec)
    // Number of pictures: [nnn] pictures (2~999)
    grid->addWidget(Label1_[0], 0, 0);
    grid->addWidget(txtIntervalTime_[0], 0, 1);
    grid->addWidget(Label1_[1], 0, 2);
    grid->addWidget(txtIntervalTime_[1], 0, 3);
    grid->addWidget(Label1_[2], 0, 4);
    grid->addWidget(lblTime_, 0, 5);
    grid->addWidget(Label1_[3], 1, 0);
    grid->addWidget(txtNumberOfImages_, 1, 1);
    grid->addWidget(Label1_[4], 1, 2, 1, 3);
    grid->addWidget(lblNoi_, 1, 5);
    column->addLayout(grid);

    cmdOK_ = named(new QPushButton(QStringLiteral("&OK"), this), QStringLiteral("cmdOK"));
    cmdOK_->setDefault(true);
    cmdCancel_ = named(new QPushButton(QStringLiteral("&Cancel"), this), QStringLiteral("cmdCancel"));
    cmdCancel_->setAutoDefault(false);
    connect(cmdOK_, &QPushButton::clicked, this,
            [this] { guarded("cmdOK_Click", [this] { cmdOK_Click(); }); });
    connect(cmdCancel_, &QPushButton::clicked, this, &frmIS_Config::reject);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdOK_);
    buttons->addWidget(cmdCancel_);
    column->addLayout(buttons);
}

void frmIS_Config::Form_Load()
{
    setWindowTitle(messages_(kMsgCaption));
    for (int i = 0; i < kLabelCount; ++i)
        Label1_[i]->setText(messages_(kMsgFirstLabel + i));
    lblTime_->setText(QStringLiteral("(3sec~99min00sec)"));
    lblNoi_->setText(QStringLiteral("(2~999)"));
    IntervalSave::forceRanges(settings_);
    txtIntervalTime_[0]->setText(QString::number(settings_.INTERVALTIME / 60));
    txtIntervalTime_[1]->setText(QString::number(settings_.INTERVALTIME % 60));
    txtNumberOfImages_->setText(QString::number(settings_.NUMBEROFIMAGES));
}

void frmIS_Config::cmdOK_Click()
{
    using Box = IntervalSave::ConfigCheck::Box;
    const auto check = IntervalSave::checkConfig(txtIntervalTime_[0]->text(), txtIntervalTime_[1]->text(),
                                                 txtNumberOfImages_->text());
    if (check.failed != Box::None) {
        prompter_.message({messages_(check.text), messages_(check.title), Prompter::Icon::Exclamation});
        QLineEdit* box = check.failed == Box::Count     ? txtNumberOfImages_
                         : check.failed == Box::Seconds ? txtIntervalTime_[1]
                                                        : txtIntervalTime_[0];
        box->setFocus();
        box->selectAll();
        return;
    }
    settings_.INTERVALTIME = check.interval;
    settings_.NUMBEROFIMAGES = check.count;
    QDialog::accept();
}

void frmIS_Config::reject()
{
    guarded("cmdCancel_Click", [this] { QDialog::reject(); });
}

}  // namespace tavix
