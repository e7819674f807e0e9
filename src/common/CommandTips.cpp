#include "common/CommandTips.h"

#include "common/MessageTable.h"

namespace tavix::CommandTips {

const QList<Tip>& all()
{
    // cmdPlayStop's tip tells what the next click does (freeze or live); the button sets it.
    static const QList<Tip> tips = {
        {"cmdPlayStop", 0, {QKeySequence(Qt::Key_Space), QKeySequence(Qt::Key_F5)}},
        {"cmdPicLoad", 40100, {QKeySequence(Qt::CTRL | Qt::Key_O)}},
        {"cmdPicSave", 40101, {QKeySequence(Qt::CTRL | Qt::Key_S)}},
        {"cmdIS_Save", 40102, {}},
        {"cmdCamViewConfig", 40103, {}},
        {"cmdPinProp", 40104, {}},
        {"cmdExit", 40105, {QKeySequence(Qt::CTRL | Qt::Key_Q)}},
        {"chkMeasureSave", 40106, {}},
        {"chkScale", 40107, {}},
        {"chkCross", 40108, {}},
        {"cmdProofConfig", 40109, {}},
        {"cmdMeasureConfig", 40110, {}},
        {"cmdResultClear", 40111, {}},
        {"cmdResultRemove", 40112, {}},
        {"cmdResultSave", 40113, {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S)}},
        {"chkKeepResult", 40114, {}},
        {"chkEdgeSnap", 40115, {}},
        {"cmdMeasure(7)", 27110, {QKeySequence(Qt::CTRL | Qt::Key_L)}},
        {"cmdMeasure(8)", 27111, {QKeySequence(Qt::CTRL | Qt::Key_D)}},
        {"cmdUndo", 27010, {QKeySequence(Qt::CTRL | Qt::Key_Z)}},
        {"cmdRedo",
         27011,
         {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), QKeySequence(Qt::CTRL | Qt::Key_Y)}},
        {"cmdHistogram", 27001, {QKeySequence(Qt::CTRL | Qt::Key_H)}},
    };
    return tips;
}

QString withShortcut(const QString& text, const Tip& tip)
{
    if (tip.keys.isEmpty())
        return text;
    const QString suffix = QStringLiteral(" (%1)").arg(tip.keys.front().toString(QKeySequence::NativeText));
    return text.endsWith(suffix) ? text : text + suffix;
}

QString text(const Tip& tip, const MessageTable& messages)
{
    return withShortcut(messages.text(tip.tipId), tip);
}

const Tip* find(const QString& button)
{
    for (const Tip& tip : all())
        if (button == QLatin1String(tip.button))
            return &tip;
    return nullptr;
}

}  // namespace tavix::CommandTips
