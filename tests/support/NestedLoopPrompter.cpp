#include "NestedLoopPrompter.h"

#include <gtest/gtest.h>
#include <QEventLoop>
#include <QTimer>

namespace tavix::test {

NestedLoopPrompter::NestedLoopPrompter(Clock& clock, qint64 openMs, qint64 stepMs)
    : clock_(clock), manual_(dynamic_cast<ManualClock*>(&clock)), openMs_(openMs), stepMs_(stepMs)
{
}

NestedLoopPrompter::~NestedLoopPrompter()
{
    EXPECT_TRUE(answers.empty()) << answers.size() << " scripted answers were not used";
    EXPECT_TRUE(fileNames.empty()) << fileNames.size() << " scripted file names were not used";
}

Prompter::Answer NestedLoopPrompter::message(const Message& m)
{
    messages.push_back(m);
    Answer answer = m.defaultAnswer;
    if (answers.empty())
        ADD_FAILURE() << "unexpected box: " << m.text.toStdString();
    else {
        answer = answers.front();
        answers.pop_front();
    }
    ++open_;
    deepest = std::max(deepest, open_);
    const qint64 closeAt = clock_.tickMs() + openMs_;
    QEventLoop loop;
    QTimer turn;
    turn.setInterval(10);
    QObject::connect(&turn, &QTimer::timeout, &loop, [&] {
        if (manual_)
            manual_->advance(stepMs_);
        if (clock_.tickMs() >= closeAt)
            loop.quit();
    });
    turn.start();
    loop.exec();
    --open_;
    return answer;
}

std::optional<QString> NestedLoopPrompter::input(const QString& prompt, const QString&, const QString&)
{
    ADD_FAILURE() << "unexpected input box: " << prompt.toStdString();
    return std::nullopt;
}

QString NestedLoopPrompter::fileName(const FileRequest& request)
{
    if (fileNames.empty()) {
        ADD_FAILURE() << "unexpected file dialog: " << request.title.toStdString();
        return {};
    }
    QString name = fileNames.front();
    fileNames.pop_front();
    return name;
}

QColor NestedLoopPrompter::color(const QColor& start)
{
    ADD_FAILURE() << "unexpected colour dialog";
    return start;
}

QString NestedLoopPrompter::folder(const QString& title, const QString& start)
{
    ADD_FAILURE() << "unexpected folder dialog: " << title.toStdString();
    return start;
}

}  // namespace tavix::test
