#pragma once

#include <QIcon>

namespace tavix::Icons {

// The window's pictures, drawn in code so that they scale with the screen.
QIcon camera(bool lit);  // imgCameraIcon: live, with the live light on or off
QIcon still();           // imgCameraIcon: the frozen picture
QIcon record();          // imgRecIcon

}  // namespace tavix::Icons
