#include "measure/ui/frmMeasureConfig.h"

#include "common/ClassicColor.h"
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
#include <QMouseEvent>
#include <QPushButton>
#include <QRadioButton>

namespace tavix {

namespace {

// Message ids of the captions.
constexpr qint32 kTitle = 13000;
constexpr std::array<qint32, 3> kFrameCaptions = {13001, 13010, 13020};
// Label1(0..4) name the measurement swatches, (5, 6) the cross-line number and
// colour, (7..12) the scale-bar colour, decimals, font size and the three tools.
constexpr std::array<qint32, frmMeasureConfig::kLabelCount> kLabelCaptions = {
    13002, 13003, 13004, 13005, 13006, 13011, 13012, 13021, 13022, 13023, 13024, 13027, 13030};

const QStringList& fontSizes()
{
    static const QStringList sizes = {QStringLiteral("8"),  QStringLiteral("9"),  QStringLiteral("10"),
                                      QStringLiteral("11"), QStringLiteral("12"), QStringLiteral("14"),
                                      QStringLiteral("16"), QStringLiteral("18"), QStringLiteral("20")};
    return sizes;
}

// The setting that swatch `index` shows. Slot 0 of the two colour lists is
// never edited, and there is no third value colour.
qint32& colorSetting(Settings& s, int index)
{
    switch (index) {
        case 0:
            return s.MEASURELINECOLOR[1];
        case 1:
            return s.MEASUREVALUECOLOR[1];
        case 2:
            return s.MEASURELINECOLOR[2];
        case 3:
            return s.MEASUREVALUECOLOR[2];
        case 4:
            return s.MEASURELINECOLOR[3];
        case 5:
            return s.CROSSLINECOLOR;
        default:
            return s.SCALECOLOR;
    }
}

void select(const std::array<QRadioButton*, 2>& pair, bool second)
{
    pair[second ? 1 : 0]->setChecked(true);
}

qint16 selected(const std::array<QRadioButton*, 2>& pair)
{
    return pair[0]->isChecked() ? 0 : 1;
}

qint16 numberOf(const QComboBox* combo)
{
    return static_cast<qint16>(qRound(NumberText::val(combo->currentText())));
}

}  // namespace

frmMeasureConfig::frmMeasureConfig(Settings& settings, const MessageTable& messages, Prompter& prompter,
                                   const ErrorLog& log, QWidget* parent)
    : GuardedDialog("frmMeasureConfig", log, parent),
      settings_(settings),
      messages_(messages),
      prompter_(prompter)
{
    setModal(true);
    buildControls();
    guarded("Form_Load", [this] { Form_Load(); });
}

void frmMeasureConfig::buildControls()
{
    auto* grid = new QGridLayout(this);
    grid->setSizeConstraint(QLayout::SetFixedSize);
    grid->addWidget(buildColourFrame(), 0, 0);
    grid->addWidget(buildCrossLineFrame(), 1, 0);
    grid->addWidget(buildDisplayFrame(), 0, 1, 2, 1);

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
}

QGroupBox* frmMeasureConfig::buildColourFrame()
{
    Frame_[0] = named(new QGroupBox(this), QStringLiteral("Frame1"));
    auto* grid = new QGridLayout(Frame_[0]);
    // Line and value colour of a drawing side by side; the third line colour
    // has no value colour of its own.
    for (int i = 0; i < 5; ++i) {
        const int row = i / 2;
        const int column = (i % 2) * 2;
        grid->addWidget(makeLabel(i), row, column);
        grid->addWidget(makeSwatch(i), row, column + 1);
    }
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);
    return Frame_[0];
}

QGroupBox* frmMeasureConfig::buildCrossLineFrame()
{
    Frame_[1] = named(new QGroupBox(this), QStringLiteral("Frame2"));
    auto* grid = new QGridLayout(Frame_[1]);
    grid->addWidget(makeLabel(5), 0, 0);
    optCrossLineNum_ = makeOptions("optCrossLineNum", Frame_[1]);
    // The numbers of lines read the same in every language.
    optCrossLineNum_[0]->setText(QStringLiteral("1"));
    optCrossLineNum_[1]->setText(QStringLiteral("2"));
    auto* count = new QHBoxLayout;
    count->addWidget(optCrossLineNum_[0]);
    count->addWidget(optCrossLineNum_[1]);
    count->addStretch(1);
    grid->addLayout(count, 0, 1);
    grid->addWidget(makeLabel(6), 1, 0);
    grid->addWidget(makeSwatch(5), 1, 1, Qt::AlignLeft);
    grid->setColumnStretch(1, 1);
    return Frame_[1];
}

QGroupBox* frmMeasureConfig::buildDisplayFrame()
{
    Frame_[2] = named(new QGroupBox(this), QStringLiteral("Frame3"));
    auto* grid = new QGridLayout(Frame_[2]);
    grid->addWidget(makeLabel(7), 0, 0);
    grid->addWidget(makeSwatch(6), 0, 1, Qt::AlignLeft);

    cboDec_ = named(new QComboBox(Frame_[2]), QStringLiteral("cboDec"));
    grid->addWidget(makeLabel(8), 1, 0);
    grid->addWidget(cboDec_, 1, 1, Qt::AlignLeft);
    cboFontSize_ = named(new QComboBox(Frame_[2]), QStringLiteral("cboFontSize"));
    grid->addWidget(makeLabel(9), 2, 0);
    grid->addWidget(cboFontSize_, 2, 1, Qt::AlignLeft);
    Label1_[8]->setBuddy(cboDec_);
    Label1_[9]->setBuddy(cboFontSize_);

    optAngleCommand_ = makeOptions("optAngleCommand", Frame_[2]);
    opt2PointCommand_ = makeOptions("opt2PointCommand", Frame_[2]);
    optCircleArcSelect_ = makeOptions("optCircleArcSelect", Frame_[2]);
    const std::array<OptionPair*, 3> tools = {&optAngleCommand_, &opt2PointCommand_, &optCircleArcSelect_};
    for (int i = 0; i < 3; ++i) {
        const int row = 3 + 2 * i;
        grid->addWidget(makeLabel(10 + i), row, 0, 2, 1, Qt::AlignTop);
        grid->addWidget((*tools[i])[0], row, 1);
        grid->addWidget((*tools[i])[1], row + 1, 1);
    }
    grid->setColumnStretch(1, 1);
    return Frame_[2];
}

QLabel* frmMeasureConfig::makeLabel(int index)
{
    Label1_[index] = named(new QLabel(this), indexedName("Label1", index));
    return Label1_[index];
}

QLabel* frmMeasureConfig::makeSwatch(int index)
{
    auto* swatch = named(new QLabel(this), indexedName("lblColor", index));
    swatch->setFrameStyle(QFrame::Box | QFrame::Plain);
    swatch->setAutoFillBackground(true);
    swatch->setFixedSize(48, 20);
    swatch->setCursor(Qt::PointingHandCursor);
    swatch->installEventFilter(this);
    lblColor_[index] = swatch;
    return swatch;
}

frmMeasureConfig::OptionPair frmMeasureConfig::makeOptions(const char* name, QWidget* parent)
{
    // Each pair is its own group, though several share a frame.
    auto* group = new QButtonGroup(this);
    OptionPair pair{};
    for (int i = 0; i < 2; ++i) {
        pair[i] = named(new QRadioButton(parent), indexedName(name, i));
        group->addButton(pair[i], i);
    }
    return pair;
}

bool frmMeasureConfig::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::MouseButtonRelease) {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        for (int i = 0; i < kColorCount; ++i) {
            if (watched == lblColor_[i] && mouse->button() == Qt::LeftButton &&
                lblColor_[i]->rect().contains(mouse->position().toPoint())) {
                guarded("lblColor_Click", [this, i] { lblColor_Click(i); });
                return true;
            }
        }
    }
    return QDialog::eventFilter(watched, event);
}

void frmMeasureConfig::Form_Load()
{
    const MessageTable& m = messages_;
    setWindowTitle(m(kTitle));
    for (size_t i = 0; i < Frame_.size(); ++i)
        Frame_[i]->setTitle(m(kFrameCaptions[i]));
    for (size_t i = 0; i < Label1_.size(); ++i)
        Label1_[i]->setText(m(kLabelCaptions[i]));
    optAngleCommand_[0]->setText(m(13025));
    optAngleCommand_[1]->setText(m(13026));
    opt2PointCommand_[0]->setText(m(13028));
    opt2PointCommand_[1]->setText(m(13029));
    optCircleArcSelect_[0]->setText(m(13031));
    optCircleArcSelect_[1]->setText(m(13032));

    for (int i = 0; i < kColorCount; ++i)
        setSwatchColor(i, ClassicColor::toQColor(colorSetting(settings_, i)));

    select(optCrossLineNum_, settings_.CROSSLINENUM == 2);

    cboDec_->clear();
    for (int i = 0; i <= 8; ++i)
        cboDec_->addItem(QString::number(i));
    cboDec_->setCurrentIndex(qBound(0, static_cast<int>(settings_.NUMBEROFDECIMALS), 8));

    select(optAngleCommand_, settings_.ANGLECOMMANDMODE == 1);
    select(opt2PointCommand_, settings_._2POINTCOMMANDMODE == 1);
    select(optCircleArcSelect_, settings_.CIRCLEARCSELECT == 1);

    cboFontSize_->clear();
    cboFontSize_->addItems(fontSizes());
    cboFontSize_->setCurrentIndex(0);
    const QString size = QString::number(settings_.MEASUREFONTSIZE);
    for (int i = 0; i < cboFontSize_->count(); ++i) {
        if (cboFontSize_->itemText(i) == size)
            cboFontSize_->setCurrentIndex(i);
    }
}

void frmMeasureConfig::lblColor_Click(int index)
{
    // The colour dialog gives its start colour back on cancel, so the swatch keeps it.
    const QColor chosen = prompter_.color(swatchColor(index));
    if (chosen.isValid())
        setSwatchColor(index, chosen);
}

void frmMeasureConfig::cmdOK_Click()
{
    for (int i = 0; i < kColorCount; ++i)
        colorSetting(settings_, i) = ClassicColor::fromQColor(swatchColor(i));
    settings_.MEASUREFONTSIZE = numberOf(cboFontSize_);
    settings_.CROSSLINENUM = optCrossLineNum_[0]->isChecked() ? 1 : 2;
    settings_.NUMBEROFDECIMALS = numberOf(cboDec_);
    settings_.ANGLECOMMANDMODE = selected(optAngleCommand_);
    settings_._2POINTCOMMANDMODE = selected(opt2PointCommand_);
    settings_.CIRCLEARCSELECT = selected(optCircleArcSelect_);
    accept();
}

QColor frmMeasureConfig::swatchColor(int index) const
{
    return lblColor_[index]->palette().color(QPalette::Window);
}

void frmMeasureConfig::setSwatchColor(int index, const QColor& color)
{
    QPalette palette = lblColor_[index]->palette();
    palette.setColor(QPalette::Window, color);
    lblColor_[index]->setPalette(palette);
}

}  // namespace tavix
