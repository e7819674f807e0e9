#pragma once

#include <QByteArray>
#include <QString>
#include <functional>

namespace tavix::SafeFile {

// Called after part of the content is on disk and before the new file replaces
// the old one; tests use it to die in the middle of a write.
using PartWrittenHook = std::function<void()>;

// Writes the whole content to a temporary file in the same folder and renames
// it over `path` only when every byte is written, so that a crash or a full
// disk never leaves a half-written file. Returns 0 on success, else a run-time
// error number (76 folder missing, 75 no access, 61 disk full).
int write(const QString& path, const QByteArray& content, const PartWrittenHook& partWritten = {});

// The same safe write for content made piece by piece (a large picture
// converted row by row, without a buffer for the whole file): `fill` returns
// the next piece, which stays valid until the next call, or one without data
// at the end.
struct Piece {
    const char* data = nullptr;
    qsizetype size = 0;
};
using Filler = std::function<Piece()>;
int writeStreamed(const QString& path, const Filler& fill);

// For scratch files that are read back at once and never kept (the camera's
// temporary still bitmap): written in place, over the old content and then
// cut to size, without waiting for the disk, which the safe write does and
// which costs more than the write itself. A failed write leaves a broken file.
int writeScratch(const QString& path, const QByteArray& content);

}  // namespace tavix::SafeFile
