#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

namespace tavix::FrameFile {

// A camera frame written by a driver's SaveToFile: a JPEG at `jpegQuality`
// when the name ends in ".jpg" (any case), a bitmap otherwise. Encoding and
// writing are two steps so that a driver can encode under its frame lock
// and write after letting the frame go.

// False when the frame cannot be encoded.
bool encode(const QImage& frame, const QString& path, int jpegQuality, QByteArray& buffer);

// 0, or the error of the write. A JPEG is a picture the user keeps: it
// replaces an older file only when complete. A bitmap is most often the
// still's scratch file, written in place.
int store(const QString& path, const QByteArray& buffer);

}  // namespace tavix::FrameFile
