#pragma once

#include <QDialog>
#include <functional>

namespace tavix {

class ErrorLog;

// A modal dialog whose handlers keep the program's guard: a failure is logged
// as "<dialog>:<handler> Error.(n)" and the dialog goes on.
class GuardedDialog : public QDialog {
    Q_OBJECT
protected:
    GuardedDialog(const char* name, const ErrorLog& log, QWidget* parent);

    void guarded(const char* handler, const std::function<void()>& body);

    const ErrorLog& log_;
};

}  // namespace tavix
