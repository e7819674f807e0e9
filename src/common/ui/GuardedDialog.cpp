#include "common/ui/GuardedDialog.h"

#include "common/HandlerGuard.h"

namespace tavix {

GuardedDialog::GuardedDialog(const char* name, const ErrorLog& log, QWidget* parent)
    : QDialog(parent), log_(log)
{
    setObjectName(QLatin1String(name));
}

void GuardedDialog::guarded(const char* handler, const std::function<void()>& body)
{
    runGuarded(log_, objectName() + QLatin1Char(':') + QLatin1String(handler), body);
}

}  // namespace tavix
