#include "ScriptedPrompter.h"

namespace tavix::test {

Prompter::Answer ScriptedPrompter::message(const Message& m)
{
    messages.push_back(m);
    if (answers.empty())
        return m.defaultAnswer;
    const Answer a = answers.front();
    answers.pop_front();
    return a;
}

std::optional<QString> ScriptedPrompter::input(const QString& prompt, const QString& title, const QString&)
{
    inputPrompts << prompt;
    inputTitles << title;
    if (inputs.empty())
        return std::nullopt;
    auto a = inputs.front();
    inputs.pop_front();
    return a;
}

QString ScriptedPrompter::fileName(const FileRequest& request)
{
    fileRequests.push_back(request);
    if (fileNames.empty())
        return {};
    QString a = fileNames.front();
    fileNames.pop_front();
    return a;
}

QColor ScriptedPrompter::color(const QColor& start)
{
    colorStarts.push_back(start);
    if (colors.empty())
        return start;
    QColor c = colors.front();
    colors.pop_front();
    return c;
}

QString ScriptedPrompter::folder(const QString&, const QString& start)
{
    if (folders.empty())
        return start;
    QString f = folders.front();
    folders.pop_front();
    return f;
}

}  // namespace tavix::test
