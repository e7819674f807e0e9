#pragma once

#include <QSize>
#include <QString>

namespace tavix::Resolution {

// The camera's resolution indices and their names as the user sees them;
// any other index is "not supported", 0 by 0.
QString name(int index);
QSize size(int index);

// The index of a size a camera offers. The 11 sizes of the classic table keep
// their indices 0..10 and index 11 stays unused; common camera sizes beyond it
// have fixed indices from 12 up, and any other size gets one from its width and
// height (1000..31999, the next free one should two sizes meet). Either way the
// same camera's size comes back under the same index at the next start, so a
// saved DEFAULTRESOLUTION keeps choosing it. Once given, an index names its
// size for the rest of the run. Empty or negative sizes give -1.
int indexOf(QSize size);

}  // namespace tavix::Resolution
