#pragma once

#include "common/CommentBox.h"

#include <QString>

namespace tavix {

// The main window's message line: the progress texts of a picture series or a
// recording, shown locked in the first comment box in the tint of their kind.
// The user's own comment is kept and comes back when the line is cleared.
class MessageLine {
public:
    explicit MessageLine(CommentBox& box) : box_(box) {}

    void show(const QString& text, CommentBox::Tint tint);
    // Gives the user's comment back; nothing happens when no text is shown.
    void clear();
    bool showing() const { return showing_; }

private:
    CommentBox& box_;
    QString saved_;
    bool showing_ = false;
};

}  // namespace tavix
