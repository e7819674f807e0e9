#include "app/QtPrompter.h"

#include <QColorDialog>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>

namespace tavix {

namespace {

QMessageBox::Icon toQt(Prompter::Icon icon)
{
    switch (icon) {
        case Prompter::Icon::Critical:
            return QMessageBox::Critical;
        case Prompter::Icon::Question:
            return QMessageBox::Question;
        case Prompter::Icon::Exclamation:
            return QMessageBox::Warning;
        case Prompter::Icon::Information:
            return QMessageBox::Information;
        case Prompter::Icon::None:
            break;
    }
    return QMessageBox::NoIcon;
}

QMessageBox::StandardButton toQt(Prompter::Answer answer)
{
    switch (answer) {
        case Prompter::Answer::Yes:
            return QMessageBox::Yes;
        case Prompter::Answer::No:
            return QMessageBox::No;
        case Prompter::Answer::Cancel:
            return QMessageBox::Cancel;
        case Prompter::Answer::Ok:
            break;
    }
    return QMessageBox::Ok;
}

}  // namespace

Prompter::Answer QtPrompter::message(const Message& m)
{
    QMessageBox box(toQt(m.icon), m.title, m.text, QMessageBox::NoButton, parent_);
    switch (m.buttons) {
        case Buttons::Ok:
            box.setStandardButtons(QMessageBox::Ok);
            break;
        case Buttons::YesNo:
            box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
            break;
        case Buttons::OkCancel:
            box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
            break;
    }
    box.setDefaultButton(toQt(m.defaultAnswer));
    switch (box.exec()) {
        case QMessageBox::Yes:
            return Answer::Yes;
        case QMessageBox::No:
            return Answer::No;
        case QMessageBox::Cancel:
            return Answer::Cancel;
        default:
            break;
    }
    return m.buttons == Buttons::YesNo ? Answer::No
                                       : (m.buttons == Buttons::OkCancel ? Answer::Cancel : Answer::Ok);
}

std::optional<QString> QtPrompter::input(const QString& prompt, const QString& title,
                                         const QString& defaultText)
{
    bool ok = false;
    const QString text = QInputDialog::getText(parent_, title, prompt, QLineEdit::Normal, defaultText, &ok);
    if (!ok)
        return std::nullopt;
    return text;
}

QString QtPrompter::fileName(const FileRequest& request)
{
    const QString filter = qtFileFilter(request.filter);
    if (request.save)
        return QFileDialog::getSaveFileName(parent_, request.title, request.fileName, filter);
    return QFileDialog::getOpenFileName(parent_, request.title, request.fileName, filter);
}

QColor QtPrompter::color(const QColor& start)
{
    const QColor chosen = QColorDialog::getColor(start, parent_);
    return chosen.isValid() ? chosen : start;
}

QString QtPrompter::folder(const QString& title, const QString& start)
{
    const QString chosen = QFileDialog::getExistingDirectory(parent_, title, start);
    return chosen.isEmpty() ? start : chosen;
}

}  // namespace tavix
