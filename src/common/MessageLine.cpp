#include "common/MessageLine.h"

namespace tavix {

void MessageLine::show(const QString& text, CommentBox::Tint tint)
{
    // A box that is locked already shows guidance or an earlier progress text, not the user's comment.
    if (!showing_ && !box_.isLocked())
        saved_ = box_.text();
    box_.setText(text);
    box_.setLocked(true);
    box_.setTint(tint);
    showing_ = true;
}

void MessageLine::clear()
{
    if (!showing_)
        return;
    box_.setText(saved_);
    box_.setLocked(false);
    showing_ = false;
}

}  // namespace tavix
