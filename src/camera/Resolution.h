#pragma once

#include <QSize>
#include <QString>

namespace tavix::Resolution {

// The camera's resolution indices and their names as the user sees them;
// any other index is "not supported", 0 by 0.
QString name(int index);
QSize size(int index);

}  // namespace tavix::Resolution
