#pragma once

#include "common/Prompter.h"

#include <QStringList>
#include <deque>
#include <vector>

namespace tavix::test {

// Answers questions from a script and records what was asked. Strict: a
// dialog the script has no answer for fails the running test (a confirmation
// nobody expected), and so do answers still scripted when the prompter goes
// (a question the program no longer asks). A test that expects a plain
// message box scripts its Ok; one that expects the user to cancel a file
// dialog scripts an empty name.
class ScriptedPrompter : public Prompter {
public:
    ScriptedPrompter() = default;
    ~ScriptedPrompter() override;
    ScriptedPrompter(const ScriptedPrompter&) = delete;
    ScriptedPrompter& operator=(const ScriptedPrompter&) = delete;

    std::vector<Message> messages;  // every message shown, in order
    std::deque<Answer> answers;     // one answer for each message box expected
    std::deque<std::optional<QString>> inputs;
    QStringList inputPrompts;
    QStringList inputTitles;
    std::deque<QString> fileNames;  // an empty name cancels the dialog
    std::vector<FileRequest> fileRequests;
    std::deque<QColor> colors;
    std::vector<QColor> colorStarts;  // the colour each colour dialog opened with
    std::deque<QString> folders;

    // Fails the running test on every scripted answer not used yet, then
    // forgets them; the destructor does the same.
    void expectScriptUsed();
    // True when nothing scripted is left.
    bool scriptUsed() const;

    Answer message(const Message& m) override;
    std::optional<QString> input(const QString& prompt, const QString& title,
                                 const QString& defaultText) override;
    QString fileName(const FileRequest& request) override;
    QColor color(const QColor& start) override;
    QString folder(const QString& title, const QString& start) override;
};

}  // namespace tavix::test
