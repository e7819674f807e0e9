#include "camera/HeldFrame.h"

#include "common/PictureMemory.h"
#include "media/FrameFile.h"

#include <cstring>

namespace tavix {

void HeldFrame::hold(const FrameView& view)
{
    view_ = view;
    if (sink_)
        sink_->frameReady(view);
    if (recorder_)
        recorder_->addFrame(view);
}

void HeldFrame::holdJpeg(const uchar* data, size_t bytes, std::int64_t captureNs)
{
    if (recorder_)
        recorder_->addJpeg(data, bytes, captureNs);
}

void HeldFrame::lose()
{
    std::lock_guard guard(mutex_);
    lost_ = true;
    if (recorder_)
        recorder_->stop();
}

void HeldFrame::found()
{
    std::lock_guard guard(mutex_);
    lost_ = false;
}

void HeldFrame::setSink(FrameSink* sink)
{
    std::lock_guard guard(mutex_);
    sink_ = sink;
}

QSize HeldFrame::size() const
{
    std::lock_guard guard(mutex_);
    return {view_.width, view_.height};
}

QImage::Format HeldFrame::format() const
{
    std::lock_guard guard(mutex_);
    return view_.bits ? view_.format : QImage::Format_Invalid;
}

int HeldFrame::save(const QString& path)
{
    // Copied under the lock and encoded after it: the stream never waits for the encoder or the disk.
    const int copied = copy(saving_);
    if (copied != 0)
        return copied;
    if (!FrameFile::encode(saving_, path, quality_, fileBuffer_))
        return kNoFrame;
    return FrameFile::store(path, fileBuffer_) == 0 ? 0 : kWriteFailed;
}

int HeldFrame::copy(QImage& frame) const
{
    std::lock_guard guard(mutex_);
    if (lost_)
        return kCameraLost;
    if (!view_.bits)
        return kNoFrame;
    if (frame.size() != QSize(view_.width, view_.height) || frame.format() != view_.format)
        frame = PictureMemory::image(QSize(view_.width, view_.height), view_.format);
    if (frame.isNull())
        return kNoFrame;  // no memory for the copy
    const auto row = static_cast<size_t>(view_.width) * static_cast<size_t>(frame.depth() / 8);
    for (int y = 0; y < view_.height; ++y)
        std::memcpy(frame.scanLine(y), view_.bits + y * view_.bytesPerLine, row);
    return 0;
}

int HeldFrame::read(const CameraDriver::FrameReader& read) const
{
    std::lock_guard guard(mutex_);
    if (lost_)
        return kCameraLost;
    if (!view_.bits)
        return kNoFrame;
    read(view_);
    return 0;
}

int HeldFrame::record(const QString& path, double fps, int seconds)
{
    std::lock_guard guard(mutex_);
    if (lost_)
        return kCameraLost;
    if (!view_.bits)
        return kNoFrame;
    if (!recorder_)
        recorder_ = std::make_unique<AviRecorder>();
    AviRecorder::Format format;
    format.size = QSize(view_.width, view_.height);
    format.pixels = view_.format;
    format.fps = fps;
    return recorder_->start(path, format, seconds) ? 0 : kWriteFailed;
}

int HeldFrame::recordJpeg(const QString& path, QSize size, double fps, int seconds)
{
    std::lock_guard guard(mutex_);
    if (lost_)
        return kCameraLost;
    if (!recorder_)
        recorder_ = std::make_unique<AviRecorder>();
    AviRecorder::Format format;
    format.size = size;
    format.fps = fps;
    format.jpegFrames = true;
    return recorder_->start(path, format, seconds) ? 0 : kWriteFailed;
}

void HeldFrame::endRecording()
{
    std::lock_guard guard(mutex_);
    if (recorder_)
        recorder_->stop();
}

bool HeldFrame::recording() const
{
    std::lock_guard guard(mutex_);
    return recorder_ && recorder_->busy();
}

bool HeldFrame::recordingStats(RecordingStats& stats) const
{
    std::lock_guard guard(mutex_);
    if (!recorder_)
        return false;
    stats = recorder_->stats();
    return true;
}

}  // namespace tavix
