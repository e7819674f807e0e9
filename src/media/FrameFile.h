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

// 0, or the error of the write. A file the user keeps replaces an older one
// only when complete; the program's scratch bitmaps are written in place,
// which is several times faster for a 15 MB still.
int store(const QString& path, const QByteArray& buffer);

// The scratch bitmaps are the temporary still bitmap and the files named
// after it (`tempBitmapPath` without its extension, then anything).
void setScratchBitmap(const QString& tempBitmapPath);
bool isScratch(const QString& path);

}  // namespace tavix::FrameFile
