#include "calib/ui/OverlayPanel.h"

#include "calib/ui/CrossLineOverlay.h"
#include "calib/ui/ScaleBarOverlay.h"
#include "calib/ui/frmCamViewConfig.h"
#include "calib/ui/frmScale.h"
#include "common/Guidance.h"
#include "common/ui/WidgetNames.h"
#include "program/AppData.h"

#include <QCheckBox>
#include <QMouseEvent>
#include <QPushButton>

namespace tavix {

namespace {
enum Caption : qint32 { kScaleBar = 40009, kCrossLines = 40010, kViewSettings = 40014 };
}  // namespace

OverlayPanel::OverlayPanel(AppData& data, Prompter& prompter, QWidget* viewArea, QWidget* commandArea,
                           Sources sources, QObject* parent)
    : QObject(parent),
      data_(data),
      prompter_(prompter),
      viewArea_(viewArea),
      sources_(std::move(sources)),
      runDialog_([](QDialog& d) { return d.exec(); }),
      crossLines_(data.settings)
{
    // The factors for the picture shown, which may be rescaled from those stored.
    auto entry = [this]() -> const ProofEntry& { return data_.measuringEntry(); };
    scaleOverlay_ = std::make_unique<ScaleBarOverlay>(
        viewArea, data_.settings,
        ScaleBarOverlay::Sources{entry, sources_.magnification, sources_.pictureBox}, data_.log);
    crossOverlay_ = std::make_unique<CrossLineOverlay>(viewArea, crossLines_);

    // The window places them with the other controls of the strip.
    chkScale_ = named(new QCheckBox(commandArea), QStringLiteral("chkScale"));
    chkCross_ = named(new QCheckBox(commandArea), QStringLiteral("chkCross"));
    cmdCamViewConfig_ = named(new QPushButton(commandArea), QStringLiteral("cmdCamViewConfig"));

    ScaleBarToggle::Hooks hooks;
    hooks.runDialog = [this] {
        frmScale dialog(data_.settings, data_.proofs.at(data_.settings.CURRENTPROOFNO).Unit, data_.messages,
                        prompter_, data_.log, chkScale_->window());
        return runDialog_(dialog) == QDialog::Accepted;
    };
    hooks.draw = [this] { scaleOverlay_->DrawScaleBar(); };
    hooks.hide = [this] { scaleOverlay_->hide(); };
    hooks.setChecked = [this](bool on) { chkScale_->setChecked(on); };
    toggle_ = std::make_unique<ScaleBarToggle>(data_.messages, prompter_, entry, hooks);
    connect(chkScale_, &QCheckBox::clicked, this, [this](bool checked) { toggle_->chkScale_Click(checked); });

    connect(chkCross_, &QCheckBox::clicked, &crossLines_, &CrossLines::chkCross_Click);
    connect(&crossLines_, &CrossLines::stateChanged, chkCross_, &QCheckBox::setChecked);
    connect(&crossLines_, &CrossLines::iconChanged, this,
            [this](int index) { chkCross_->setIcon(CrossLineOverlay::imgCrossIcon(index)); });
    connect(&crossLines_, &CrossLines::toolChanged, this, &OverlayPanel::crossToolChanged);
    connect(cmdCamViewConfig_, &QPushButton::clicked, this, [this] {
        crossLines_.cmdCamViewConfig_Click([this] {
            frmCamViewConfig dialog(data_.settings, data_.messages, prompter_, data_.log,
                                    sources_.openSaveSetting, cmdCamViewConfig_->window());
            runDialog_(dialog);
        });
        emit jpegQualityChanged();
    });
}

OverlayPanel::~OverlayPanel() = default;

void OverlayPanel::applySettings()
{
    chkScale_->setText(data_.messages.text(kScaleBar));
    chkCross_->setText(data_.messages.text(kCrossLines));
    cmdCamViewConfig_->setText(data_.messages.text(kViewSettings));
    crossLines_.applySettings();
    chkCross_->setIcon(CrossLineOverlay::imgCrossIcon(CrossLines::iconIndex(data_.settings.CROSSLINENUM)));
    layoutChanged();
}

void OverlayPanel::layoutChanged()
{
    toggle_->layoutChanged();
    crossOverlay_->relayout();
}

void OverlayPanel::pointerMoved(QPoint areaPoint)
{
    if (crossLines_.tool() != CrossLines::kNoTool)
        crossLines_.move(areaPoint);
}

bool OverlayPanel::pointerReleased(QPoint areaPoint)
{
    if (crossLines_.tool() == CrossLines::kNoTool)
        return false;
    crossLines_.release(areaPoint);
    return true;
}

void OverlayPanel::followPointerOver(std::initializer_list<QWidget*> pictures)
{
    for (QWidget* picture : pictures) {
        picture->setMouseTracking(true);
        picture->installEventFilter(this);
    }
}

bool OverlayPanel::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::MouseMove || event->type() == QEvent::MouseButtonRelease) {
        auto* picture = static_cast<QWidget*>(watched);
        const QPoint areaPoint =
            picture->mapTo(viewArea_, static_cast<QMouseEvent*>(event)->position().toPoint());
        if (event->type() == QEvent::MouseMove)
            pointerMoved(areaPoint);
        else if (pointerReleased(areaPoint))
            return true;
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace tavix
