#pragma once

#include <QString>
#include <optional>
#include <vector>

namespace tavix::reliability {

// Every kind of file the program keeps for the user, each written through the
// program's own code path. A kind has two versions of its content, so that a
// file found after a crash can be told to be the old one, the new one, or
// neither.
enum class Kind { Settings, Calibration, Results, Bitmap, Jpeg, Comment, Series, Recording };

const std::vector<Kind>& allKinds();
QString nameOf(Kind kind);
std::optional<Kind> kindNamed(const QString& name);

// The file the kind writes in `folder`.
QString filePath(Kind kind, const QString& folder);

// What the folder must hold before the first write (the settings file the
// exit writes go into).
void prepare(Kind kind, const QString& folder);

// Writes version 0 or 1 of the kind's content through the program's writer.
// False when the writer reported a failure.
bool writeVersion(Kind kind, const QString& folder, int version);

// A recording of the given length under the kind's file name, frames handed
// over at the camera's pace; false when the recorder failed.
bool record(const QString& folder, double seconds, bool realTime);

}  // namespace tavix::reliability
