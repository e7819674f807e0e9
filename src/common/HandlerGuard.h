#pragma once

#include <QString>
#include <functional>

namespace tavix {

class ErrorLog;

// The guard of an event handler: runs the handler and, when it fails, logs
// "<where> Error.(<number>)" (for example "frmProofConfig:cmdOK_Click Error.(9)")
// and returns false, so that no exception leaves a Qt event handler. A failure
// that is not a RunError is logged as an invalid call (5).
bool runGuarded(const ErrorLog& log, const QString& where, const std::function<void()>& handler);

}  // namespace tavix
