#pragma once

#include "common/ui/GuardedDialog.h"

class QLineEdit;
class QPushButton;

namespace tavix {

class MessageTable;
class Prompter;

// The recording length dialog: a whole number of seconds up to the longest
// length the free disk space allows. OK with anything else shows message
// 26004 (title 26003) and stays open; Cancel sets the length to 0.
//
// Created for each opening. Modal in the program (exec()); tests open it
// with show(). Esc and the close box cancel.
class frmiCubeSaveAvi : public GuardedDialog {
    Q_OBJECT
public:
    // `length` holds the longest length on entry and the chosen one (or 0) after.
    frmiCubeSaveAvi(qint16& length, const MessageTable& messages, Prompter& prompter, const ErrorLog& log,
                    QWidget* parent = nullptr);

public slots:
    void reject() override;

private:
    void cmdOK_Click();

    qint16& length_;
    const qint16 longest_;
    const MessageTable& messages_;
    Prompter& prompter_;
    QLineEdit* txtRecTime_ = nullptr;
};

}  // namespace tavix
