#pragma once

#include "common/CommentBox.h"

namespace tavix::test {

class FakeCommentBox : public CommentBox {
public:
    QString text() const override { return text_; }
    void setText(const QString& text) override { text_ = text; }
    bool isLocked() const override { return locked_; }
    void setLocked(bool locked) override { locked_ = locked; }

private:
    QString text_;
    bool locked_ = false;
};

}  // namespace tavix::test
