#pragma once

#include <QString>
#include <QStringList>

namespace tavix::DataFile {

// The whole text of a data file (UTF-8), without a leading byte-order mark.
// Throws RunError(FileNotFound) when it is missing and RunError(PathFileAccess)
// when it cannot be read.
QString readText(const QString& path);

// Lines split at CR LF, LF or CR; a final line end adds no empty line.
QStringList splitLines(const QString& text);

}  // namespace tavix::DataFile
