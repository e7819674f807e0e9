#pragma once

#include "camera/CameraDriver.h"
#include "media/AviRecorder.h"

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <atomic>
#include <memory>
#include <mutex>

namespace tavix {

// The newest frame of a driver whose frames arrive on a stream thread, held
// until a newer one replaces it, and what the program does with it: show it,
// record it, write it to a file, copy it. The driver owns the frame's memory
// and keeps it alive while it is held; it replaces or drops the frame under
// lock(), so that a reader never sees memory that went back to the stream.
class HeldFrame {
public:
    static constexpr int kNoFrame = -7;
    static constexpr int kWriteFailed = -8;
    static constexpr int kCameraLost = -10;

    std::unique_lock<std::mutex> lock() const { return std::unique_lock(mutex_); }

    // Under lock(): `view` is the frame held now; it goes to the live view
    // and to a running recording.
    void hold(const FrameView& view);
    // Under lock(): `view` is the frame held now, made on demand from one the
    // camera sent compressed (for a freeze); it goes to no sink or recording.
    void place(const FrameView& view) { view_ = view; }
    // Under lock(): a JPEG frame as the camera sent it, for a running
    // recording of JPEG frames.
    void holdJpeg(const uchar* data, size_t bytes, std::int64_t captureNs);
    // Under lock(): nothing held.
    void clear() { view_ = FrameView{}; }
    // The camera stopped answering: the frame still held is an old one, so
    // save() and copy() refuse it, and a running recording ends with the
    // frames it has. Start() of a camera found again calls found().
    void lose();
    void found();
    // Under lock().
    const FrameView& view() const { return view_; }

    // These take the lock themselves.
    void setSink(FrameSink* sink);
    void setQuality(int quality) { quality_ = quality; }
    QSize size() const;
    // Format_Invalid while nothing is held.
    QImage::Format format() const;
    // A JPEG or bitmap of the held frame, as SaveToFile writes it: 0,
    // kNoFrame, kCameraLost or kWriteFailed.
    int save(const QString& path);
    // Copies the held frame into `frame`, reusing its buffer when it has the
    // size and format already: 0, kNoFrame or kCameraLost.
    int copy(QImage& frame) const;
    // Lets `read` see the held frame where it lies, under the lock: 0 (and
    // `read` was called), kNoFrame or kCameraLost.
    int read(const CameraDriver::FrameReader& read) const;
    // Records from the next frame on, at the held frame's size and pixels and
    // at `fps`: 0, kNoFrame (nothing held yet) or kWriteFailed.
    int record(const QString& path, double fps, int seconds);
    // Records the JPEG frames holdJpeg hands on, as they are, at `size` and
    // `fps`: 0, kCameraLost or kWriteFailed.
    int recordJpeg(const QString& path, QSize size, double fps, int seconds);
    // The file ends with what it holds (the stream stopped).
    void endRecording();
    // Parameter 24: a recording is being written.
    bool recording() const;
    bool recordingStats(RecordingStats& stats) const;

private:
    mutable std::mutex mutex_;
    FrameSink* sink_ = nullptr;
    FrameView view_;
    bool lost_ = false;
    QImage saving_;  // the frame being written by save(), reused
    QByteArray fileBuffer_;
    std::unique_ptr<AviRecorder> recorder_;  // made by the first recording
    std::atomic<int> quality_{90};
};

}  // namespace tavix
