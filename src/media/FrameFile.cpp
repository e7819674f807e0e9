#include "media/FrameFile.h"

#include "common/SafeFile.h"
#include "media/BmpFile.h"
#include "media/JpegWriter.h"

#include <QDir>
#include <QFileInfo>
#include <mutex>

namespace tavix::FrameFile {

namespace {
std::mutex scratchMutex;
QString scratchBase;  // the camera threads read it

// The same rule as the picture files': ".jpg" in any case.
bool isJpeg(const QString& path)
{
    return path.endsWith(QLatin1String(".jpg"), Qt::CaseInsensitive);
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
