#include "app/CommentLineEdit.h"

namespace tavix {

CommentLineEdit::CommentLineEdit(QWidget* parent) : QLineEdit(parent)
{
    setLocked(false);
}

void CommentLineEdit::setLocked(bool locked)
{
    setReadOnly(locked);
    // Guidance sits on the button-face colour so that it does not look editable.
    QPalette p = palette();
    p.setColor(QPalette::Base, locked ? p.color(QPalette::Button) : QPalette().color(QPalette::Base));
    setPalette(p);
    setEnabled(true);
}

void CommentLineEdit::setTint(Tint tint)
{
    // Light colours that keep black text readable: amber while a series runs, rose while recording.
    QPalette p = palette();
    p.setColor(QPalette::Base, tint == Tint::Series ? QColor(255, 236, 179) : QColor(255, 205, 210));
    setPalette(p);
}

}  // namespace tavix
