#include "calib/ui/frmCamViewConfig.h"

#include "common/ClassicColor.h"
#include "common/HandlerGuard.h"
#include "common/MessageTable.h"
#include "common/Prompter.h"
#include "common/Settings.h"

#include "common/ui/WidgetNames.h"

#include <QButtonGroup>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>

namespace tavix {

namespace {

// Message ids of the captions.
enum Caption : qint32 {
    kTitle = 10109,
    kCrossLines = 10108,   // Frame2
    kJpegQuality = 12000,  // Frame1
    kNumber = 13011,       // Label1(0)
    kColour = 13012,       // Label1(1)
    kSaveSetting = 30000,
};

}  // namespace

frmCamViewConfig::frmCamViewConfig(Settings& settings, const MessageTable& messages, Prompter& prompter,
                                   const ErrorLog& log, SaveSettingOpener openSaveSetting, QWidget* parent)
    : GuardedDialog("frmCamViewConfig", log, parent),
      settings_(settings),
      messages_(messages),
      prompter_(prompter),
      openSaveSetting_(std::move(openSaveSetting))
{
    setModal(true);
    buildControls();
    guarded("Form_Load", [this] { Form_Load(); });
}

void frmCamViewConfig::buildControls()
{
    auto* grid = new QGridLayout(this);
    grid->setSizeConstraint(QLayout::SetFixedSize);

    Frame2_ = named(new QGroupBox(this), QStringLiteral("Frame2"));
    auto* crossGrid = new QGridLayout(Frame2_);
    Label1_[0] = named(new QLabel(Frame2_), indexedName("Label1", 0));
    auto* count = new QHBoxLayout;
    auto* countGroup = new QButtonGroup(this);
    for (int i = 0; i < 2; ++i) {
        // The numbers of crosses read the same in every language.
        optCrossLineNum_[i] =
            named(new QRadioButton(QString::number(i + 1), Frame2_), indexedName("optCrossLineNum", i));
        countGroup->addButton(optCrossLineNum_[i], i);
        count->addWidget(optCrossLineNum_[i]);
    }
    count->addStretch(1);
    crossGrid->addWidget(Label1_[0], 0, 0);
    crossGrid->addLayout(count, 0, 1);

    Label1_[1] = named(new QLabel(Frame2_), indexedName("Label1", 1));
    lblColor_ = named(new QLabel(Frame2_), QStringLiteral("lblColor"));
    lblColor_->setFrameStyle(QFrame::Box | QFrame::Plain);
    lblColor_->setAutoFillBackground(true);
    lblColor_->setFixedSize(48, 20);
    lblColor_->setCursor(Qt::PointingHandCursor);
    lblColor_->installEventFilter(this);
    crossGrid->addWidget(Label1_[1], 1, 0);
    crossGrid->addWidget(lblColor_, 1, 1, Qt::AlignLeft);
    crossGrid->setColumnStretch(1, 1);
    grid->addWidget(Frame2_, 0, 0, 1, 2);

    Frame1_ = named(new QGroupBox(this), QStringLiteral("Frame1"));
    auto* qualityLayout = new QHBoxLayout(Frame1_);
    sldJpegQty_ = named(new QSlider(Qt::Horizontal, Frame1_), QStringLiteral("sldJpegQty"));
    sldJpegQty_->setRange(kMinJpegQuality, kMaxJpegQuality);
    sldJpegQty_->setSingleStep(1);
    sldJpegQty_->setPageStep(10);
    sldJpegQty_->setTickInterval(10);
    sldJpegQty_->setTickPosition(QSlider::TicksBelow);
    sldJpegQty_->setMinimumWidth(220);
    // The slider shows its number as its tool tip.
    connect(sldJpegQty_, &QSlider::valueChanged, this,
            [this](int value) { sldJpegQty_->setToolTip(QString::number(value)); });
    qualityLayout->addWidget(sldJpegQty_);
    grid->addWidget(Frame1_, 1, 0, 1, 2);

    cmdSaveSetting_ = named(new QPushButton(this), QStringLiteral("cmdSaveSetting"));
    cmdSaveSetting_->setAutoDefault(false);
    connect(cmdSaveSetting_, &QPushButton::clicked, this,
            [this] { guarded("cmdSaveSetting_Click", [this] { cmdSaveSetting_Click(); }); });
    grid->addWidget(cmdSaveSetting_, 2, 0, Qt::AlignLeft);

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
    grid->addLayout(buttons, 3, 0, 1, 2);
}

bool frmCamViewConfig::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == lblColor_ && event->type() == QEvent::MouseButtonRelease) {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() == Qt::LeftButton && lblColor_->rect().contains(mouse->position().toPoint())) {
            guarded("lblColor_Click", [this] { lblColor_Click(); });
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void frmCamViewConfig::Form_Load()
{
    const MessageTable& m = messages_;
    setWindowTitle(m(kTitle));
    Frame2_->setTitle(m(kCrossLines));
    Frame1_->setTitle(m(kJpegQuality));
    Label1_[0]->setText(m(kNumber));
    Label1_[1]->setText(m(kColour));
    cmdSaveSetting_->setText(m(kSaveSetting));

    optCrossLineNum_[settings_.CROSSLINENUM == 2 ? 1 : 0]->setChecked(true);
    setSwatchColor(ClassicColor::toQColor(settings_.CROSSLINECOLOR));
    // A quality outside the slider's range shows at its nearest end.
    sldJpegQty_->setValue(settings_.JPEGQTY);
    sldJpegQty_->setToolTip(QString::number(sldJpegQty_->value()));
}

void frmCamViewConfig::lblColor_Click()
{
    // The colour dialog gives its start colour back on cancel, so the swatch keeps it.
    const QColor chosen = prompter_.color(swatchColor());
    if (chosen.isValid())
        setSwatchColor(chosen);
}

void frmCamViewConfig::cmdSaveSetting_Click()
{
    if (openSaveSetting_)
        openSaveSetting_();
}

void frmCamViewConfig::cmdOK_Click()
{
    settings_.CROSSLINECOLOR = ClassicColor::fromQColor(swatchColor());
    settings_.CROSSLINENUM = optCrossLineNum_[0]->isChecked() ? 1 : 2;
    settings_.JPEGQTY = static_cast<quint8>(sldJpegQty_->value());
    accept();
}

QColor frmCamViewConfig::swatchColor() const
{
    return lblColor_->palette().color(QPalette::Window);
}

void frmCamViewConfig::setSwatchColor(const QColor& color)
{
    QPalette palette = lblColor_->palette();
    palette.setColor(QPalette::Window, color);
    lblColor_->setPalette(palette);
}

}  // namespace tavix
