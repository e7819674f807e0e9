#include "calib/ui/frmProofConfig.h"

#include "calib/CalibrationController.h"
#include "calib/ScalePeriod.h"
#include "calib/ui/ScaleLineView.h"
#include "common/HandlerGuard.h"
#include "common/MessageTable.h"
#include "common/NumberText.h"

#include "common/ui/WidgetNames.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <algorithm>

namespace tavix {

namespace {

// Message ids of the dialog's captions.
enum Caption : qint32 {
    kTitle = 14000,
    kName = 14001,
    kXAxis = 14002,
    kUnit = 14003,
    kYAxis = 14004,
    kMeasure = 14005,
    kMarkingMode = 14006,
    kTwoPoints = 14007,
    kLineAndPoint = 14008,
    kBothAxes = 14009,
    kSameFactor = 14010,
    kFromScale = 14020,
    kDivision = 14021,
    kDrawAlongScale = 14022,
    kDivisionsUsed = 24020,
    kSpread = 24021,
    kNoDivisions = 24022,
    kBadDivision = 24023,
};

// A length as the dialog shows it; none typed yet shows nothing.
QString valueText(double value)
{
    return value > 0 ? NumberText::general(value) : QString();
}

}  // namespace

frmProofConfig::frmProofConfig(CalibrationController& controller, const MessageTable& messages,
                               const ErrorLog& log, QWidget* parent)
    : GuardedDialog("frmProofConfig", log, parent), controller_(controller), messages_(messages)
{
    setModal(true);
    buildControls();
    guarded("Form_Load", [this] { Form_Load(); });
}

void frmProofConfig::buildControls()
{
    auto* grid = new QGridLayout(this);
    grid->setSizeConstraint(QLayout::SetFixedSize);  // shrinks when the y row hides

    Label1_[0] = named(new QLabel(this), indexedName("Label1", 0));
    txtName_ = named(new QLineEdit(this), QStringLiteral("txtName"));
    txtName_->setMinimumWidth(220);
    Label1_[0]->setBuddy(txtName_);
    grid->addWidget(Label1_[0], 0, 0);
    grid->addWidget(txtName_, 0, 1, 1, 2);

    Label1_[1] = named(new QLabel(this), indexedName("Label1", 1));
    cboUnit_ = named(new QComboBox(this), QStringLiteral("cboUnit"));
    // Any unit may be typed; a typed one is not added to the list.
    cboUnit_->setEditable(true);
    cboUnit_->setInsertPolicy(QComboBox::NoInsert);
    Label1_[1]->setBuddy(cboUnit_);
    grid->addWidget(Label1_[1], 1, 0);
    grid->addWidget(cboUnit_, 1, 1);

    Frame1_ = named(new QGroupBox(this), QStringLiteral("Frame1"));
    auto* modes = new QHBoxLayout(Frame1_);
    auto* modeGroup = new QButtonGroup(this);
    for (int i = 0; i < 2; ++i) {
        optPointMode_[i] = named(new QRadioButton(Frame1_), indexedName("optPointMode", i));
        modeGroup->addButton(optPointMode_[i], i);
        modes->addWidget(optPointMode_[i]);
    }
    grid->addWidget(Frame1_, 2, 0, 1, 3);

    chkAxisOption_ = named(new QCheckBox(this), QStringLiteral("chkAxisOption"));
    connect(chkAxisOption_, &QCheckBox::clicked, this,
            [this] { guarded("chkAxisOption_Click", [this] { chkAxisOption_Click(); }); });
    grid->addWidget(chkAxisOption_, 3, 0, 1, 3);

    lblXAxis_ = named(new QLabel(this), QStringLiteral("lblXAxis"));
    lblYAxis_ = named(new QLabel(this), QStringLiteral("lblYAxis"));
    for (int k = 0; k < 2; ++k) {
        lblValue_[k] = named(new QLabel(this), indexedName("lblValue", k));
        lblValue_[k]->setFrameStyle(QFrame::Panel | QFrame::Sunken);
        lblValue_[k]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        lblValue_[k]->setMinimumWidth(100);
        cmdValue_[k] = named(new QPushButton(this), indexedName("cmdValue", k));
        cmdValue_[k]->setAutoDefault(false);
        connect(cmdValue_[k], &QPushButton::clicked, this,
                [this, k] { guarded("cmdValue_Click", [this, k] { cmdValue_Click(k); }); });
        grid->addWidget(k == 0 ? lblXAxis_ : lblYAxis_, 4 + k, 0);
        grid->addWidget(lblValue_[k], 4 + k, 1);
        grid->addWidget(cmdValue_[k], 4 + k, 2);
    }

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
    // From scale: a line dragged along a micrometer's divisions on the still.
    lblDivision_ = named(new QLabel(this), QStringLiteral("lblDivision"));
    txtDivision_ = named(new QLineEdit(QStringLiteral("10"), this), QStringLiteral("txtDivision"));
    lblDivision_->setBuddy(txtDivision_);
    cmdFromScale_ = named(new QPushButton(this), QStringLiteral("cmdFromScale"));
    cmdFromScale_->setAutoDefault(false);
    cmdFromScale_->setEnabled(false);
    connect(cmdFromScale_, &QPushButton::clicked, this,
            [this] { guarded("cmdFromScale_Click", [this] { cmdFromScale_Click(); }); });
    grid->addWidget(lblDivision_, 6, 0);
    grid->addWidget(txtDivision_, 6, 1);
    grid->addWidget(cmdFromScale_, 6, 2);
    picFromScale_ = named(new ScaleLineView(this), QStringLiteral("picFromScale"));
    picFromScale_->hide();
    connect(picFromScale_, &ScaleLineView::lineDrawn, this, [this](PointD from, PointD to) {
        guarded("picFromScale_MouseUp", [&] { scaleLineDrawn(from, to); });
    });
    grid->addWidget(picFromScale_, 7, 0, 1, 3);
    lblFromScale_ = named(new QLabel(this), QStringLiteral("lblFromScale"));
    lblFromScale_->setWordWrap(true);
    grid->addWidget(lblFromScale_, 8, 0, 1, 3);
    lblResolution_ = named(new QLabel(this), QStringLiteral("lblResolution"));
    lblResolution_->setWordWrap(true);
    grid->addWidget(lblResolution_, 9, 0, 1, 3);
    grid->addLayout(buttons, 10, 0, 1, 3);
    grid->setColumnStretch(1, 1);
}

void frmProofConfig::Form_Load()
{
    const MessageTable& m = messages_;
    setWindowTitle(m(kTitle));
    Label1_[0]->setText(m(kName));
    lblXAxis_->setText(m(kXAxis));
    Label1_[1]->setText(m(kUnit));
    lblYAxis_->setText(m(kYAxis));
    for (QPushButton* button : cmdValue_)
        button->setText(m(kMeasure));
    Frame1_->setTitle(m(kMarkingMode));
    optPointMode_[0]->setText(m(kTwoPoints));
    optPointMode_[1]->setText(m(kLineAndPoint));
    chkAxisOption_->setText(m(kSameFactor));
    lblDivision_->setText(m(kDivision));
    cmdFromScale_->setText(m(kFromScale));
    // Room for either axis caption, so the dialog keeps its width when the option changes.
    const QFontMetrics metrics = lblXAxis_->fontMetrics();
    if (auto* grid = qobject_cast<QGridLayout*>(layout()))
        grid->setColumnMinimumWidth(
            0, std::max(metrics.horizontalAdvance(m(kXAxis)), metrics.horizontalAdvance(m(kBothAxes))));

    optPointMode_[static_cast<int>(controller_.dialogPointMode())]->setChecked(true);

    const ProofEntry& buffer = controller_.buffer();
    cboUnit_->clear();
    cboUnit_->addItems({QStringLiteral("MIC"), QStringLiteral("mm"), QStringLiteral("cm")});
    cboUnit_->setCurrentIndex(0);
    txtName_->setText(buffer.Name);

    lblValue_[0]->setText(valueText(buffer.XValue));
    lblValue_[1]->setText(valueText(buffer.YValue));

    // A unit typed by hand is not in the list: the list's first unit stays.
    const int unit = cboUnit_->findText(buffer.Unit, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (unit >= 0)
        cboUnit_->setCurrentIndex(unit);

    showResolution();

    controller_.dialogOpened();
    chkAxisOption_->setChecked(buffer.AxisOption != 0);
    chkAxisOption_Click();
}

void frmProofConfig::chkAxisOption_Click()
{
    const bool both = chkAxisOption_->isChecked();
    lblXAxis_->setText(messages_(both ? kBothAxes : kXAxis));
    lblYAxis_->setVisible(!both);
    lblValue_[1]->setVisible(!both);
    cmdValue_[1]->setVisible(!both);
}

void frmProofConfig::cmdValue_Click(int index)
{
    const CalibrationPointMode mode =
        optPointMode_[0]->isChecked() ? CalibrationPointMode::TwoPoint : CalibrationPointMode::LineAndPoint;
    controller_.requestMeasurement(index == 0 ? CalibrationAxis::X : CalibrationAxis::Y, mode,
                                   txtName_->text(), cboUnit_->currentText(), chkAxisOption_->isChecked());
    QDialog::accept();
}

void frmProofConfig::cmdOK_Click()
{
    switch (controller_.save(txtName_->text(), cboUnit_->currentText(), chkAxisOption_->isChecked())) {
        case CalibrationController::SaveResult::Saved:
            QDialog::accept();
            break;
        case CalibrationController::SaveResult::NameMissing:
            txtName_->setFocus();
            break;
        case CalibrationController::SaveResult::UnitMissing:
            cboUnit_->setFocus();
            break;
        case CalibrationController::SaveResult::WriteFailed:
            break;
    }
}

void frmProofConfig::cmdCancel_Click()
{
    controller_.cancel();
    QDialog::reject();
}

void frmProofConfig::showResolution()
{
    lblResolution_->setText(controller_.resolutionText());
    // Factors rescaled by a guess stand out until calibrated again.
    lblResolution_->setStyleSheet(controller_.resolutionGuessed() ? QStringLiteral("color: #b00000;")
                                                                  : QString());
}

void frmProofConfig::setStill(const QImage& still)
{
    still_ = still;
    cmdFromScale_->setEnabled(!still_.isNull());
}

void frmProofConfig::cmdFromScale_Click()
{
    picFromScale_->setPicture(still_);
    picFromScale_->show();
    lblFromScale_->setText(messages_(kDrawAlongScale));
}

void frmProofConfig::scaleLineDrawn(PointD from, PointD to)
{
    const double division = NumberText::val(txtDivision_->text());
    if (!(division > 0)) {
        lblFromScale_->setText(messages_(kBadDivision));
        txtDivision_->setFocus();
        return;
    }
    const auto found = ScalePeriod::measure(still_, from, to);
    if (!found) {
        lblFromScale_->setText(messages_(kNoDivisions));
        return;
    }
    // A line more across than down is the x axis; with one factor for both, always x.
    const bool x = chkAxisOption_->isChecked() || std::abs(to.x - from.x) >= std::abs(to.y - from.y);
    const CalibrationAxis axis = x ? CalibrationAxis::X : CalibrationAxis::Y;
    controller_.applyLength(axis, division * found->divisions, found->periodPixels * found->divisions, 1.0,
                            still_.size());
    showResolution();
    const ProofEntry& buffer = controller_.buffer();
    lblValue_[x ? 0 : 1]->setText(valueText(x ? buffer.XValue : buffer.YValue));
    const double factor = x ? buffer.XFactor : buffer.YFactor;
    lblFromScale_->setText(QStringLiteral("%1 %2: %3 / px, %4, %5")
                               .arg(messages_(x ? kXAxis : kYAxis), NumberText::general(factor),
                                    cboUnit_->currentText(), messages_(kDivisionsUsed, found->divisions),
                                    messages_(kSpread, QString::number(found->spreadPixels, 'f', 3))));
}

void frmProofConfig::reject()
{
    guarded("cmdCancel_Click", [this] { cmdCancel_Click(); });
}

}  // namespace tavix
