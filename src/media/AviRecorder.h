#pragma once

#include "media/FrameView.h"

#include <QSize>
#include <QString>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace tavix {

// Records the frames a driver hands over to a Motion-JPEG AVI file, for every
// driver that does not record inside the camera. Frames are copied into a
// few reused buffers and encoded (libjpeg-turbo, through JpegWriter) on the
// recorder's own thread, so the camera thread never waits for the encoder; a
// frame that finds no free buffer is counted as dropped instead of queued.
// GStreamer stamps the frames with their capture times and writes them at a
// constant rate (a late frame repeats the one before), so the file plays at
// real speed even when the camera's rate varies; files over 1 GB are written
// as OpenDML AVI.
//
// The file is written under a temporary name next to the chosen one and
// renamed when it is closed, also after a failure: what was written up to
// then stays a playable file.
class AviRecorder {
public:
    struct Format {
        QSize size;
        QImage::Format pixels = QImage::Format_RGB888;
        double fps = 30;   // the camera's frame rate, the file's rate
        int quality = 85;  // JPEG quality 1..100
        // The camera sends JPEG frames (addJpeg): they go into the file as
        // they are, neither decoded nor encoded again.
        bool jpegFrames = false;
    };

    AviRecorder();
    // Completes a recording still running.
    ~AviRecorder();
    AviRecorder(const AviRecorder&) = delete;
    AviRecorder& operator=(const AviRecorder&) = delete;

    // Begins a recording of `seconds` of frames. False when the pipeline
    // cannot be built or started; `error` then says why. One recording at a
    // time: a recorder that is busy refuses.
    bool start(const QString& path, const Format& format, int seconds, QString* error = nullptr);

    // From the camera's thread: takes a copy of the frame or counts it as
    // dropped. Frames before start(), after the length or of another size or
    // format are ignored.
    void addFrame(const FrameView& frame);
    // The same for a recording of jpegFrames: a copy of the camera's JPEG frame.
    void addJpeg(const uchar* data, size_t bytes, std::int64_t captureNs);

    // Ends the recording now with what it holds (the camera stops).
    void stop();
    // Waits until the file is closed, at most `timeoutMs`; true when it is.
    bool waitFinished(int timeoutMs);

    // True from start() until the file is complete, closed and renamed.
    bool busy() const;
    RecordingStats stats() const;

    // The name written to until the recording is closed.
    static QString partName(const QString& path);

private:
    struct Pipeline;
    struct Slot;

    int takeSlot(std::int64_t captureNs);
    void queue(int slot);
    void encode();
    void watchBus();
    void finish(const QString& failure);
    double secondsOf(std::int64_t frames) const;

    mutable std::mutex mutex_;
    std::condition_variable finished_;
    std::unique_ptr<Pipeline> pipeline_;
    std::thread watcher_;
    std::thread encoder_;
    std::condition_variable work_;
    Format format_;
    qsizetype stride_ = 0;
    std::vector<Slot> slots_;
    std::deque<int> free_;    // slots the camera may fill
    std::deque<int> filled_;  // slots waiting for the encoder, oldest first
    RecordingStats stats_;
    bool busy_ = false;
    bool accepting_ = false;
    bool closing_ = false;   // no more frames: the encoder ends the file when it has drained
    bool cutShort_ = false;  // stopped before the length
    std::int64_t firstNs_ = -1;
    std::int64_t lengthNs_ = 0;
    std::int64_t frameNs_ = 0;
};

}  // namespace tavix
