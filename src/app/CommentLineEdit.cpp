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

}  // namespace tavix
