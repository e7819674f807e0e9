#pragma once

#include "common/CommentBox.h"

#include <optional>

namespace tavix::test {

class FakeCommentBox : public CommentBox {
public:
    QString text() const override { return text_; }
    void setText(const QString& text) override { text_ = text; }
    bool isLocked() const override { return locked_; }
    void setLocked(bool locked) override
    {
        locked_ = locked;
        tint_.reset();
    }
    void setTint(Tint tint) override { tint_ = tint; }
    std::optional<Tint> tint() const { return tint_; }

private:
    QString text_;
    bool locked_ = false;
    std::optional<Tint> tint_;
};

}  // namespace tavix::test
