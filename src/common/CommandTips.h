#pragma once

#include <QKeySequence>
#include <QList>
#include <QString>

namespace tavix {

class MessageTable;

// Tool tips and keyboard shortcuts of the main window's command buttons.
namespace CommandTips {

struct Tip {
    const char* button;        // object name of the button or check box
    qint32 tipId;              // message id of its tool tip; 0: the button keeps its own
    QList<QKeySequence> keys;  // shortcuts that click it, the first shown in the tip
};

// The window's buttons with their tips and shortcuts.
const QList<Tip>& all();

// The tip's message text, followed by its first shortcut in brackets ("... (Ctrl+S)").
QString text(const Tip& tip, const MessageTable& messages);

// The same for a text the button sets itself (a tip that changes with its state);
// a text that shows the shortcut already is kept.
QString withShortcut(const QString& text, const Tip& tip);

// The entry of one button; nullptr when it has none.
const Tip* find(const QString& button);

}  // namespace CommandTips
}  // namespace tavix
