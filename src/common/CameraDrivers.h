#pragma once

#include <QStringList>

namespace tavix {

// The camera drivers the program has, as [CAMERA] DRIVER and --camera name
// them; "auto" takes the first that finds a camera. A driver that lands adds
// its name here, and the settings loader accepts it from then on.
inline const QStringList kCameraDrivers = {QStringLiteral("auto"), QStringLiteral("sim"),
                                           QStringLiteral("icube"), QStringLiteral("genicam"),
                                           QStringLiteral("graph")};

}  // namespace tavix
