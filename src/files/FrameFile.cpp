#include "files/FrameFile.h"

#include "common/SafeFile.h"
#include "files/BmpFile.h"
#include "files/JpegWriter.h"
#include "files/PictureFiles.h"

#include <QDir>
#include <QFileInfo>
#include <mutex>

namespace tavix::FrameFile {

namespace {
std::mutex scratchMutex;
QString scratchBase;  // the camera threads read it

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
    return isScratch(path) ? SafeFile::writeScratch(path, buffer) : SafeFile::write(path, buffer);
}

void setScratchBitmap(const QString& tempBitmapPath)
{
    const QFileInfo info(tempBitmapPath);
    const std::lock_guard lock(scratchMutex);
    scratchBase = tempBitmapPath.isEmpty() ? QString() : info.absoluteDir().filePath(info.completeBaseName());
}

bool isScratch(const QString& path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    const std::lock_guard lock(scratchMutex);
    return !scratchBase.isEmpty() && !isJpeg(path) && absolute.startsWith(scratchBase);
}

}  // namespace tavix::FrameFile
