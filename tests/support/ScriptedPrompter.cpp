#include "ScriptedPrompter.h"

#include <gtest/gtest.h>

namespace tavix::test {

namespace {
const char* answerName(Prompter::Answer a)
{
    switch (a) {
        case Prompter::Answer::Ok:
            return "Ok";
        case Prompter::Answer::Yes:
            return "Yes";
        case Prompter::Answer::No:
            return "No";
        case Prompter::Answer::Cancel:
            return "Cancel";
    }
    return "?";
}
}  // namespace

ScriptedPrompter::~ScriptedPrompter()
{
    expectScriptUsed();
}

bool ScriptedPrompter::scriptUsed() const
{
    return answers.empty() && inputs.empty() && fileNames.empty() && colors.empty() && folders.empty();
}

void ScriptedPrompter::expectScriptUsed()
{
    if (!answers.empty())
        ADD_FAILURE() << answers.size() << " scripted message answer(s) never asked for";
    if (!inputs.empty())
        ADD_FAILURE() << inputs.size() << " scripted input(s) never asked for";
    for (const QString& name : fileNames)
        ADD_FAILURE() << "scripted file name never asked for: \"" << name.toStdString() << '"';
    if (!colors.empty())
        ADD_FAILURE() << colors.size() << " scripted colour(s) never asked for";
    for (const QString& folder : folders)
        ADD_FAILURE() << "scripted folder never asked for: \"" << folder.toStdString() << '"';
    answers.clear();
    inputs.clear();
    fileNames.clear();
    colors.clear();
    folders.clear();
}

Prompter::Answer ScriptedPrompter::message(const Message& m)
{
    messages.push_back(m);
    if (answers.empty()) {
        ADD_FAILURE() << "unexpected message box: \"" << m.text.toStdString() << "\" ("
                      << m.title.toStdString() << "), default answer " << answerName(m.defaultAnswer);
        return m.defaultAnswer;
    }
    const Answer a = answers.front();
    answers.pop_front();
    return a;
}

std::optional<QString> ScriptedPrompter::input(const QString& prompt, const QString& title, const QString&)
{
    inputPrompts << prompt;
    inputTitles << title;
    if (inputs.empty()) {
        ADD_FAILURE() << "unexpected input box: \"" << prompt.toStdString() << "\" (" << title.toStdString()
                      << ")";
        return std::nullopt;
    }
    auto a = inputs.front();
    inputs.pop_front();
    return a;
}

QString ScriptedPrompter::fileName(const FileRequest& request)
{
    fileRequests.push_back(request);
    if (fileNames.empty()) {
        ADD_FAILURE() << "unexpected file dialog: \"" << request.title.toStdString() << '"';
        return {};
    }
    QString a = fileNames.front();
    fileNames.pop_front();
    return a;
}

QColor ScriptedPrompter::color(const QColor& start)
{
    colorStarts.push_back(start);
    if (colors.empty()) {
        ADD_FAILURE() << "unexpected colour dialog, opened on " << start.name().toStdString();
        return start;
    }
    QColor c = colors.front();
    colors.pop_front();
    return c;
}

QString ScriptedPrompter::folder(const QString& title, const QString& start)
{
    if (folders.empty()) {
        ADD_FAILURE() << "unexpected folder dialog: \"" << title.toStdString() << '"';
        return start;
    }
    QString f = folders.front();
    folders.pop_front();
    return f;
}

}  // namespace tavix::test
