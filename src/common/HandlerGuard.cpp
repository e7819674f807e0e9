#include "common/HandlerGuard.h"

#include "common/ErrorLog.h"
#include "common/RunError.h"

#include <exception>

namespace tavix {

bool runGuarded(const ErrorLog& log, const QString& where, const std::function<void()>& handler)
{
    int number = 0;
    try {
        handler();
        return true;
    } catch (const RunError& error) {
        number = error.number();
    } catch (const std::exception&) {
        number = err::InvalidCall;
    }
    log.write(QStringLiteral("%1 Error.(%2)").arg(where).arg(number));
    return false;
}

}  // namespace tavix
