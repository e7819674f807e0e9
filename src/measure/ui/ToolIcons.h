#pragma once

#include <QIcon>

namespace tavix::ToolIcons {

// The pictures of the tool buttons whose tool follows a command mode, by the
// mode's value (0 or 1). Drawn in code so that they scale with the screen.
QIcon img2PointIcon(int index);       // two points; a line and a point
QIcon imgCircleArcSelect(int index);  // a circle; an arc
QIcon imgAngleIcon(int index);        // two crossing lines; the same with the picked side
QIcon imgCaliper();                   // a line across a bar, its edges ticked
QIcon imgOneClickCircle();            // a disc with a click inside

}  // namespace tavix::ToolIcons
