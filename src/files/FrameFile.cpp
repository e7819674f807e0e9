#include "files/FrameFile.h"

#include "common/SafeFile.h"
#include "files/BmpFile.h"
#include "files/JpegWriter.h"
#include "files/PictureFiles.h"

namespace tavix::FrameFile {

namespace {
bool isJpeg(const QString& path)
{
    return PictureFiles::kindOf(path) == PictureFiles::Kind::Jpeg;
}
}  // namespace

bool encode(const QImage& frame, const QString& path, int jpegQuality, QByteArray& buffer)
{
    if (isJpeg(path))
        return JpegWriter::encode(frame, jpegQuality, buffer) == JpegWriter::kOk;
    return BmpFile::encode(frame, buffer);
}

int store(const QString& path, const QByteArray& buffer)
{
    return isJpeg(path) ? SafeFile::write(path, buffer) : SafeFile::writeScratch(path, buffer);
}

}  // namespace tavix::FrameFile
