#pragma once

#include "common/Prompter.h"

class QWidget;

namespace tavix {

// The real questions: Qt's message, input, file, colour and folder dialogs.
class QtPrompter : public Prompter {
public:
    explicit QtPrompter(QWidget* parent = nullptr) : parent_(parent) {}
    void setParent(QWidget* parent) { parent_ = parent; }

    Answer message(const Message& m) override;
    std::optional<QString> input(const QString& prompt, const QString& title,
                                 const QString& defaultText) override;
    QString fileName(const FileRequest& request) override;
    QColor color(const QColor& start) override;
    QString folder(const QString& title, const QString& start) override;

private:
    QWidget* parent_;
};

}  // namespace tavix
