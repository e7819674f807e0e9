#pragma once

#include <QColor>
#include <QString>
#include <optional>

namespace tavix {

// Every question the program asks the user goes through this interface, so
// that logic never opens a modal Qt dialog itself and tests can script answers.
class Prompter {
public:
    enum class Icon { None, Critical, Question, Exclamation, Information };
    enum class Buttons { Ok, YesNo, OkCancel };
    enum class Answer { Ok, Yes, No, Cancel };

    struct Message {
        QString text;
        QString title;
        Icon icon = Icon::None;
        Buttons buttons = Buttons::Ok;
        Answer defaultAnswer = Answer::Ok;
    };

    struct FileRequest {
        QString title;
        QString filter;  // classic "Text|*.ext|Text|*.ext" form
        QString fileName;
        bool save = false;
    };

    virtual ~Prompter() = default;

    virtual Answer message(const Message& m) = 0;
    // Returns nothing when the user cancels.
    virtual std::optional<QString> input(const QString& prompt, const QString& title,
                                         const QString& defaultText) = 0;
    // Returns an empty string when the user cancels.
    virtual QString fileName(const FileRequest& request) = 0;
    // Returns the start colour when the user cancels.
    virtual QColor color(const QColor& start) = 0;
    // Returns the start folder when the user cancels.
    virtual QString folder(const QString& title, const QString& start) = 0;

    // Convenience for the common question: Yes/No, question icon, No as default.
    bool askYesNo(const QString& text, const QString& title)
    {
        return message({text, title, Icon::Question, Buttons::YesNo, Answer::No}) == Answer::Yes;
    }
};

// Turns the classic "Text|*.ext|Text|*.ext" filter list into Qt's ";;" form.
QString qtFileFilter(const QString& classicFilter);

}  // namespace tavix
