#pragma once

#include "common/CommentBox.h"

#include <QLineEdit>

namespace tavix {

// A comment box of the main window: the user's text, or guidance while locked.
class CommentLineEdit : public QLineEdit, public CommentBox {
public:
    explicit CommentLineEdit(QWidget* parent = nullptr);

    QString text() const override { return QLineEdit::text(); }
    void setText(const QString& text) override { QLineEdit::setText(text); }
    bool isLocked() const override { return isReadOnly(); }
    void setLocked(bool locked) override;
    void setTint(Tint tint) override;
};

}  // namespace tavix
