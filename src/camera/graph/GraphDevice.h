#pragma once

#include <QString>

namespace tavix::GraphDevice {

// The graph file's text with the device of its first v4l2src set to
// `device` (an existing device= changed, else one added), comments and
// everything else kept as they are. Null when no line has a v4l2src: that
// pipeline takes its pictures from something other than a video device.
QString withDevice(const QString& text, const QString& device);

// The device of the text's first v4l2src; empty when it names none.
QString deviceIn(const QString& text);

// Sets the graph file's camera device for good: the file is read, changed as
// above and written back whole through a temporary file. 0, or the run-time
// error number (53 file missing, 75 no access, 61 disk full, 5 no v4l2src).
int choose(const QString& graphPath, const QString& device);

}  // namespace tavix::GraphDevice
