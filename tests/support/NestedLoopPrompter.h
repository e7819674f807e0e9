#pragma once

#include "common/Clock.h"
#include "common/Prompter.h"

#include <QStringList>
#include <deque>
#include <vector>

namespace tavix::test {

// A prompter whose message boxes stay open as real ones do: each runs a
// nested event loop, so that timers fire and the program's code is entered
// again while the box is up, until `openMs` have passed on the clock. With a
// manual clock the prompter moves it on by `stepMs` on each 10 ms turn of its
// loop, so that hours on the clock take moments. Every box must be expected:
// the scripted answers are given in order, and answers or file names left
// unused when the prompter goes fail the test.
class NestedLoopPrompter : public Prompter {
public:
    explicit NestedLoopPrompter(Clock& clock, qint64 openMs = 15000, qint64 stepMs = 100);
    ~NestedLoopPrompter() override;

    std::vector<Message> messages;  // every box shown, in order
    std::deque<Answer> answers;     // to give, in order; a box without one fails the test
    std::deque<QString> fileNames;
    int deepest = 0;  // most boxes open at one time

    Answer message(const Message& m) override;
    std::optional<QString> input(const QString& prompt, const QString& title,
                                 const QString& defaultText) override;
    QString fileName(const FileRequest& request) override;
    QColor color(const QColor& start) override;
    QString folder(const QString& title, const QString& start) override;

private:
    Clock& clock_;
    ManualClock* manual_;
    qint64 openMs_;
    qint64 stepMs_;
    int open_ = 0;
};

}  // namespace tavix::test
