#pragma once

#include <QString>

namespace tavix::FaultPoint {

// Named places in the program's handlers where a test can raise a run-time
// error, to show that the handler's guard logs it and the program goes on.
// Nothing armed, a pass costs one atomic load.

// The next `times` passes through `place` raise RunError(number).
void arm(const QString& place, int number, int times = 1);
void disarmAll();

// Raises the error armed for this place, if any.
void pass(const char* place);

}  // namespace tavix::FaultPoint
