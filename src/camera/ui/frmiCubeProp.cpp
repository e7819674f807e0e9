#include "camera/ui/frmiCubeProp.h"

#include "camera/CameraChooser.h"
#include "common/ui/WidgetNames.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QTabWidget>
#include <QToolTip>
#include <QVBoxLayout>

namespace tavix {

namespace {

QString n(const char* name)
{
    return QLatin1String(name);
}

// Where a slider's handle is, for the tip shown while dragging.
QPoint handleCentre(QSlider* slider)
{
    QStyleOptionSlider option;
    option.initFrom(slider);
    option.orientation = slider->orientation();
    option.minimum = slider->minimum();
    option.maximum = slider->maximum();
    option.sliderPosition = slider->sliderPosition();
    option.sliderValue = slider->value();
    const QRect handle =
        slider->style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, slider);
    return slider->mapToGlobal(handle.center());
}

// Shows a list's items (refilled only when they changed) and its choice, raising no change events.
void showItems(QComboBox* list, const QStringList& items, int index)
{
    const QSignalBlocker block(list);
    QStringList shown;
    for (int i = 0; i < list->count(); ++i)
        shown.append(list->itemText(i));
    if (shown != items) {
        list->clear();
        list->addItems(items);
    }
    list->setCurrentIndex(index);
}

}  // namespace

frmiCubeProp::frmiCubeProp(const CameraProperties::Parts& parts, CameraChooser* chooser, QWidget* parent)
    : QDialog(parent), logic_(parts), chooser_(chooser)
{
    setObjectName(QStringLiteral("frmiCubeProp"));
    setWindowTitle(QStringLiteral("Settings"));
    setModal(true);
    buildControls();
    logic_.Form_Load();
    showControls();
}

QLabel* frmiCubeProp::addLabel(const char* name)
{
    auto* label = named(new QLabel(this), n(name));
    label->setMinimumWidth(label->fontMetrics().horizontalAdvance(QStringLiteral("-00000")));
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    labels_[n(name)] = label;
    return label;
}

QCheckBox* frmiCubeProp::addCheck(const char* name, const char* caption)
{
    auto* box = named(new QCheckBox(QLatin1String(caption), this), n(name));
    const QString key = n(name);
    connect(box, &QCheckBox::clicked, this, [this, key](bool checked) {
        logic_.checkClicked(key, checked ? 1 : 0);
        showControls();
    });
    checks_[key] = box;
    return box;
}

QSlider* frmiCubeProp::addSlider(QGridLayout* grid, int row, const char* caption, const char* slider,
                                 const char* label)
{
    auto* s = named(new QSlider(Qt::Horizontal, this), n(slider));
    s->setMinimumWidth(200);
    connect(s, &QSlider::valueChanged, this, [this, s] { sliderValueChanged(s); });
    sliders_[n(slider)] = s;
    if (caption)
        grid->addWidget(new QLabel(QLatin1String(caption), this), row, 0);
    grid->addWidget(s, row, 1);
    if (label) {
        QLabel* value = addLabel(label);
        grid->addWidget(value, row, 2);
        valueLabels_[s] = value;
    }
    return s;
}

void frmiCubeProp::sliderValueChanged(QSlider* slider)
{
    logic_.sliderChanged(slider->objectName(), slider->value());
    showControls();
    if (!slider->isSliderDown())
        return;
    QString tip = slider->toolTip();
    if (tip.isEmpty() && valueLabels_.count(slider))
        tip = valueLabels_.at(slider)->text();
    QToolTip::showText(handleCentre(slider), tip, slider);
}

void frmiCubeProp::buildControls()
{
    auto* column = new QVBoxLayout(this);
    column->setSizeConstraint(QLayout::SetFixedSize);
    if (chooser_)
        column->addWidget(buildCameraRow());
    SSTab1_ = named(new QTabWidget(this), QStringLiteral("SSTab1"));
    SSTab1_->addTab(buildVideoTab(), QStringLiteral("Video"));
    SSTab1_->addTab(buildRgbTab(), QStringLiteral("Color"));
    SSTab1_->addTab(buildLightTab(), QStringLiteral("Light && focus"));
    column->addWidget(SSTab1_);

    auto* cmdDefault = named(new QPushButton(QStringLiteral("Default"), this), QStringLiteral("cmdDefault"));
    auto* cmdClose = named(new QPushButton(QStringLiteral("Close"), this), QStringLiteral("cmdClose"));
    cmdDefault->setAutoDefault(false);
    cmdClose->setDefault(true);
    connect(cmdDefault, &QPushButton::clicked, this, [this] {
        logic_.cmdDefault_Click();
        showControls();
    });
    connect(cmdClose, &QPushButton::clicked, this, &QDialog::accept);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(cmdDefault);
    buttons->addStretch(1);
    buttons->addWidget(cmdClose);
    column->addLayout(buttons);
}

QWidget* frmiCubeProp::buildCameraRow()
{
    auto* row = named(new QWidget(this), QStringLiteral("fraCamera"));
    auto* line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);
    line->addWidget(new QLabel(QStringLiteral("Camera:"), row));
    auto* list = named(new QComboBox(row), QStringLiteral("cboCamera"));
    showItems(list, chooser_->items(), chooser_->currentIndex());
    connect(list, &QComboBox::activated, this, [this, list](int index) {
        // A new camera brings its own ranges, modes and values.
        if (chooser_->choose(index)) {
            logic_.Form_Load();
            showControls();
        }
        const QSignalBlocker block(list);
        list->setCurrentIndex(chooser_->currentIndex());
    });
    line->addWidget(list, 1);
    return row;
}

QWidget* frmiCubeProp::buildVideoTab()
{
    auto* page = new QWidget;
    auto* grid = new QGridLayout(page);

    auto* video = new QGroupBox(QStringLiteral("Video Control:"), page);
    video->setObjectName(QStringLiteral("fraVideoControl"));
    auto* v = new QGridLayout(video);
    auto* autoHead = new QLabel(QStringLiteral("Auto"), video);
    autoHead->setAlignment(Qt::AlignCenter);
    v->addWidget(autoHead, 0, 3);
    v->addWidget(new QLabel(QStringLiteral("Exposure Time [msec]:"), video), 1, 0, 1, 2);
    v->addWidget(addLabel("lblExposureTime"), 1, 2);
    v->addWidget(addCheck("chkExposureTime", ""), 1, 3, Qt::AlignCenter);
    addSlider(v, 2, "Rough:", "sldExposureTime(0)", nullptr);
    addSlider(v, 3, "Fine:", "sldExposureTime(1)", nullptr);
    addSlider(v, 4, "Exp. Target:", "sldExpTarget", "lblExpTarget");
    addSlider(v, 5, "Black Level:", "sldBlackLevel", "lblBlackLevel");
    v->addWidget(addCheck("chkBlackLevel", ""), 5, 3, Qt::AlignCenter);
    addSlider(v, 6, "Gain:", "sldGain", "lblGain");
    v->setRowStretch(7, 1);
    grid->addWidget(video, 0, 0, 3, 1);

    auto* other = new QGroupBox(QStringLiteral("Other:"), page);
    other->setObjectName(QStringLiteral("fraOther"));
    auto* o = new QVBoxLayout(other);
    o->addWidget(addCheck("chkColorEnable", "Color enable"));
    o->addWidget(addCheck("chkFlipH", "Flip horizontal"));
    o->addWidget(addCheck("chkFlipV", "Flip vertical"));
    grid->addWidget(other, 0, 1);

    Frame3_ = named(new QGroupBox(page), QStringLiteral("Frame3"));
    auto* f = new QGridLayout(Frame3_);
    addSlider(f, 0, nullptr, "sldClock", "lblClock");
    f->addWidget(addLabel("lblClockUnit"), 0, 3);
    labels_.at(n("lblClockUnit"))->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    auto* ends = new QHBoxLayout;
    ends->addWidget(addLabel("lblClockMin"));
    labels_.at(n("lblClockMin"))->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    ends->addStretch(1);
    ends->addWidget(addLabel("lblClockMax"));
    f->addLayout(ends, 1, 1);
    grid->addWidget(Frame3_, 1, 1);

    auto* resolution = new QGroupBox(QStringLiteral("Resolution:"), page);
    resolution->setObjectName(QStringLiteral("fraResolution"));
    auto* r = new QGridLayout(resolution);
    cboResolution_ = named(new QComboBox(resolution), QStringLiteral("cboResolution"));
    connect(cboResolution_, &QComboBox::activated, this, [this](int index) {
        logic_.resolutionClicked(index);
        showControls();
    });
    r->addWidget(cboResolution_, 0, 0, 1, 2);
    r->addWidget(new QLabel(QStringLiteral("Current resolution:"), resolution), 1, 0);
    QLabel* current = addLabel("lblCurrentResolution");
    current->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    r->addWidget(current, 1, 1);
    grid->addWidget(resolution, 2, 1);
    return page;
}

QWidget* frmiCubeProp::buildRgbTab()
{
    auto* page = new QWidget;
    auto* outer = new QVBoxLayout(page);
    auto* rgb = new QGroupBox(QStringLiteral("RGB Control:"), page);
    rgb->setObjectName(QStringLiteral("fraRGBControl"));
    outer->addWidget(rgb);
    auto* columns = new QHBoxLayout(rgb);

    auto* left = new QGridLayout;
    addSlider(left, 0, "Brightness:", "sldBrightness", "lblBrightness");
    addSlider(left, 1, "Contrast:", "sldContrast", "lblContrast");
    addSlider(left, 2, "Saturation:", "sldSaturation", "lblSaturation");
    addSlider(left, 3, "Hue:", "sldHue", "lblHue");
    addSlider(left, 4, "Gamma:", "sldGamma", "lblGamma");
    left->addWidget(addCheck("chkTNR", "TNR(temporal noise reduction)"), 5, 0, 1, 3);
    left->addWidget(addCheck("chkEnableColorCorrection", "Enable color correction"), 6, 0, 1, 3);
    left->addWidget(addCheck("chkEnableGamma", "Enable gamma"), 7, 0, 1, 3);
    left->addWidget(addCheck("chkEnableColorProcessing", "Enable color processing"), 8, 0, 1, 3);
    left->setRowStretch(9, 1);
    columns->addLayout(left);

    auto* right = new QGridLayout;
    right->addWidget(new QLabel(QStringLiteral("RGB Gain:"), rgb), 0, 0, 1, 3);
    addSlider(right, 1, "Red:", "sldGainRed", "lblGainRed");
    addSlider(right, 2, "Green:", "sldGainGreen", "lblGainGreen");
    addSlider(right, 3, "Blue:", "sldGainBlue", "lblGainBlue");
    auto* cmdAWB = named(new QPushButton(QStringLiteral("White balance"), rgb), QStringLiteral("cmdAWB"));
    cmdAWB->setAutoDefault(false);
    connect(cmdAWB, &QPushButton::clicked, this, [this] {
        logic_.cmdAWB_Click();
        showControls();
    });
    right->addWidget(cmdAWB, 4, 1, 1, 2, Qt::AlignRight);
    right->addWidget(new QLabel(QStringLiteral("RGB Offset:"), rgb), 5, 0, 1, 3);
    addSlider(right, 6, "Red:", "sldOffsetRed", "lblOffsetRed");
    addSlider(right, 7, "Green:", "sldOffsetGreen", "lblOffsetGreen");
    addSlider(right, 8, "Blue:", "sldOffsetBlue", "lblOffsetBlue");
    right->setRowStretch(9, 1);
    columns->addSpacing(16);
    columns->addLayout(right);
    return page;
}

QWidget* frmiCubeProp::buildLightTab()
{
    auto* page = new QWidget;
    auto* outer = new QVBoxLayout(page);

    auto* light = new QGroupBox(QStringLiteral("Light:"), page);
    light->setObjectName(QStringLiteral("fraLight"));
    auto* l = new QGridLayout(light);
    auto* autoHead = new QLabel(QStringLiteral("Auto"), light);
    autoHead->setAlignment(Qt::AlignCenter);
    l->addWidget(autoHead, 0, 3);
    addSlider(l, 1, "White balance [K]:", "sldWhiteBalanceTemperature", "lblWhiteBalanceTemperature");
    l->addWidget(addCheck("chkWhiteBalanceTemperature", ""), 1, 3, Qt::AlignCenter);
    l->addWidget(new QLabel(QStringLiteral("Power line:"), light), 2, 0);
    auto* powerLine = named(new QComboBox(light), QStringLiteral("cboPowerLineFrequency"));
    connect(powerLine, &QComboBox::activated, this, [this](int index) {
        logic_.choiceClicked(QStringLiteral("cboPowerLineFrequency"), index);
        showControls();
    });
    choices_[QStringLiteral("cboPowerLineFrequency")] = powerLine;
    l->addWidget(powerLine, 2, 1, Qt::AlignLeft);
    l->addWidget(addCheck("chkDynamicFrameRate", "Dynamic frame rate (longer exposures in dim light)"), 3, 0,
                 1, 4);
    outer->addWidget(light);

    auto* focus = new QGroupBox(QStringLiteral("Focus:"), page);
    focus->setObjectName(QStringLiteral("fraFocus"));
    auto* f = new QGridLayout(focus);
    auto* focusAuto = new QLabel(QStringLiteral("Auto"), focus);
    focusAuto->setAlignment(Qt::AlignCenter);
    f->addWidget(focusAuto, 0, 3);
    addSlider(f, 1, "Position:", "sldFocus", "lblFocus");
    f->addWidget(addCheck("chkFocus", ""), 1, 3, Qt::AlignCenter);
    outer->addWidget(focus);
    outer->addStretch(1);
    return page;
}

void frmiCubeProp::showControls()
{
    const CameraProperties::Controls& c = logic_.controls();
    for (const auto& [name, s] : c.sliders) {
        QSlider* slider = sliders_.at(name);
        const QSignalBlocker block(slider);
        slider->setRange(s.min, s.max);
        slider->setValue(s.value);
        slider->setEnabled(s.enabled);
        slider->setToolTip(s.text);
    }
    for (const auto& [name, s] : c.checks) {
        QCheckBox* box = checks_.at(name);
        const QSignalBlocker block(box);
        box->setChecked(s.value != 0);
        box->setEnabled(s.enabled);
    }
    for (const auto& [name, choice] : c.choices) {
        QComboBox* list = choices_.at(name);
        showItems(list, choice.items, choice.index);
        list->setEnabled(choice.enabled);
    }
    for (const auto& [name, caption] : c.captions) {
        if (name == QLatin1String("Frame3"))
            Frame3_->setTitle(caption);
        else
            labels_.at(name)->setText(caption);
    }
    showItems(cboResolution_, c.resolutions, c.resolutionIndex);
}

}  // namespace tavix
