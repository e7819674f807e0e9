#pragma once

#include "common/Prompter.h"

#include <QStringList>
#include <deque>
#include <vector>

namespace tavix::test {

// Answers questions from a script and records what was asked.
class ScriptedPrompter : public Prompter {
public:
    std::vector<Message> messages;  // every message shown, in order
    std::deque<Answer> answers;     // answers to give; default answer when empty
    std::deque<std::optional<QString>> inputs;
    QStringList inputPrompts;
    QStringList inputTitles;
    std::deque<QString> fileNames;
    std::vector<FileRequest> fileRequests;
    std::deque<QColor> colors;
    std::vector<QColor> colorStarts;  // the colour each colour dialog opened with
    std::deque<QString> folders;

    Answer message(const Message& m) override;
    std::optional<QString> input(const QString& prompt, const QString& title,
                                 const QString& defaultText) override;
    QString fileName(const FileRequest& request) override;
    QColor color(const QColor& start) override;
    QString folder(const QString& title, const QString& start) override;
};

}  // namespace tavix::test
