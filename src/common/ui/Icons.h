#pragma once

#include <QIcon>
#include <QPixmap>

namespace tavix::Icons {

using Drawing = QPixmap (*)(int index);

// The icon `draw` makes for `index`, drawn the first time it is asked for and
// handed out again after: a new icon on every call would leave new scaled
// copies in Qt's pixmap cache each time a button shows it (every blink of the
// live light, every click on a tool). For the GUI thread.
QIcon drawnOnce(Drawing draw, int index = 0);

// The window's pictures, drawn in code so that they scale with the screen.
QIcon camera(bool lit);  // imgCameraIcon: live, with the live light on or off
QIcon still();           // imgCameraIcon: the frozen picture
QIcon record();          // imgRecIcon
QIcon undo();            // a turn back to the left
QIcon redo();            // a turn forward to the right
QIcon histogram();       // columns of a histogram

}  // namespace tavix::Icons
