#include "calib/ui/frmScale.h"

#include "common/HandlerGuard.h"
#include "common/MessageTable.h"
#include "common/NumberText.h"
#include "common/Prompter.h"
#include "common/Settings.h"

#include "common/ui/WidgetNames.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

namespace tavix {

namespace {

// Message ids of the captions.
enum Caption : qint32 {
    kTitle = 15000,
    kBars = 15001,
    kHorizontalOnly = 15002,
    kHorizontalAndVertical = 15003,
    kPosition = 15004,
    kFirstPosition = 15005,  // 15005 to 15009: bottom right, bottom left, top right, top left, centre
};
constexpr int kPositionCount = 5;

// The axis names beside the lengths are the dialog's own; the length message
// quotes them.
const std::array<const char*, 2> kAxisCaptions = {"X axis", "Y axis"};

}  // namespace

frmScale::frmScale(Settings& settings, const QString& unit, const MessageTable& messages, Prompter& prompter,
                   const ErrorLog& log, QWidget* parent)
    : GuardedDialog("frmScale", log, parent),
      settings_(settings),
      unit_(unit),
      messages_(messages),
      prompter_(prompter)
{
    setModal(true);
    buildControls();
    guarded("Form_Load", [this] { Form_Load(); });
}

void frmScale::buildControls()
{
    auto* grid = new QGridLayout(this);
    grid->setSizeConstraint(QLayout::SetFixedSize);

    Frame1_ = named(new QGroupBox(this), QStringLiteral("Frame1"));
    auto* frame = new QGridLayout(Frame1_);
    auto* axes = new QButtonGroup(this);
    for (int i = 0; i < 2; ++i) {
        optAxis_[i] = named(new QRadioButton(Frame1_), indexedName("optAxis", i));
        axes->addButton(optAxis_[i], i);
        frame->addWidget(optAxis_[i], i, 0, 1, 3);
        connect(optAxis_[i], &QRadioButton::clicked, this,
                [this] { guarded("optAxis_Click", [this] { optAxis_Click(); }); });
    }
    for (int i = 0; i < 2; ++i) {
        Label1_[i] = named(new QLabel(QLatin1String(kAxisCaptions[static_cast<size_t>(i)]), Frame1_),
                           indexedName("Label1", i));
        txtScaleLen_[i] = named(new QLineEdit(Frame1_), indexedName("txtScaleLen", i));
        txtScaleLen_[i]->setMinimumWidth(90);
        Label1_[i]->setBuddy(txtScaleLen_[i]);
        lblUnit_[i] = named(new QLabel(Frame1_), indexedName("lblUnit", i));
        frame->addWidget(Label1_[i], 2 + i, 0);
        frame->addWidget(txtScaleLen_[i], 2 + i, 1);
        frame->addWidget(lblUnit_[i], 2 + i, 2);
    }
    frame->setColumnStretch(1, 1);
    grid->addWidget(Frame1_, 0, 0, 1, 2);

    Label2_ = named(new QLabel(this), QStringLiteral("Label2"));
    cboPosition_ = named(new QComboBox(this), QStringLiteral("cboPosition"));
    Label2_->setBuddy(cboPosition_);
    grid->addWidget(Label2_, 1, 0);
    grid->addWidget(cboPosition_, 1, 1);

    cmdOK_ = named(new QPushButton(QStringLiteral("&OK"), this), QStringLiteral("cmdOK"));
    cmdOK_->setDefault(true);
    cmdCancel_ = named(new QPushButton(QStringLiteral("&Cancel"), this), QStringLiteral("cmdCancel"));
    cmdCancel_->setAutoDefault(false);
    connect(cmdOK_, &QPushButton::clicked, this,
            [this] { guarded("cmdOK_Click", [this] { cmdOK_Click(); }); });
    connect(cmdCancel_, &QPushButton::clicked, this, &QDialog::reject);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdOK_);
    buttons->addWidget(cmdCancel_);
    grid->addLayout(buttons, 2, 0, 1, 2);
    grid->setColumnStretch(1, 1);
}

void frmScale::Form_Load()
{
    const MessageTable& m = messages_;
    setWindowTitle(m(kTitle));
    Frame1_->setTitle(m(kBars));
    optAxis_[0]->setText(m(kHorizontalOnly));
    optAxis_[1]->setText(m(kHorizontalAndVertical));
    Label2_->setText(m(kPosition));

    txtScaleLen_[0]->setText(NumberText::general(settings_.SCALEX));
    txtScaleLen_[1]->setText(NumberText::general(settings_.SCALEY));
    lblUnit_[0]->setText(unit_);
    lblUnit_[1]->setText(unit_);

    optAxis_[settings_.SCALETYPE == 1 ? 1 : 0]->setChecked(true);
    optAxis_Click();

    cboPosition_->clear();
    for (int i = 0; i < kPositionCount; ++i)
        cboPosition_->addItem(m(kFirstPosition + i));
    // A position the list does not have shows the first one.
    const int position = settings_.SCALEPOSITION;
    cboPosition_->setCurrentIndex(position >= 0 && position < kPositionCount ? position : 0);
}

void frmScale::optAxis_Click()
{
    const bool vertical = optAxis_[1]->isChecked();
    Label1_[1]->setEnabled(vertical);
    txtScaleLen_[1]->setEnabled(vertical);
    lblUnit_[1]->setEnabled(vertical);
}

void frmScale::cmdOK_Click()
{
    // Both lengths are checked, the vertical one also while only the
    // horizontal bar is chosen: it is kept for when the type changes.
    for (int i = 0; i < 2; ++i) {
        if (!(NumberText::val(txtScaleLen_[i]->text()) > 0)) {
            prompter_.message({messages_(kLengthMessage, Label1_[i]->text()), messages_(kLengthTitle),
                               Prompter::Icon::Exclamation});
            if (txtScaleLen_[i]->isEnabled()) {
                txtScaleLen_[i]->setFocus();
                txtScaleLen_[i]->selectAll();
            }
            return;
        }
    }
    settings_.SCALEX = NumberText::val(txtScaleLen_[0]->text());
    settings_.SCALEY = NumberText::val(txtScaleLen_[1]->text());
    settings_.SCALETYPE = optAxis_[0]->isChecked() ? 0 : 1;
    settings_.SCALEPOSITION = static_cast<qint16>(cboPosition_->currentIndex());
    accept();
}

}  // namespace tavix
