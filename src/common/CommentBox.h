#pragma once

#include <QString>

namespace tavix {

// One of the main window's two comment boxes as the guidance sees it. A locked
// box shows guidance (read-only, button-face background); an unlocked box holds
// the user's own text (editable, window background).
class CommentBox {
public:
    // The background of a locked box that shows the message line's progress
    // text, one per kind of progress.
    enum class Tint { Series, Recording };

    virtual ~CommentBox() = default;
    virtual QString text() const = 0;
    virtual void setText(const QString& text) = 0;
    virtual bool isLocked() const = 0;
    // Locks with the guidance background, or unlocks with the window's.
    virtual void setLocked(bool locked) = 0;
    // Colours a locked box for a progress text.
    virtual void setTint(Tint tint) = 0;
};

}  // namespace tavix
