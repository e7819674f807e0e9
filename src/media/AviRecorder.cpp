#include "media/AviRecorder.h"

#include <gst/app/gstappsrc.h>
#include <gst/gst.h>
#include <pthread.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <chrono>
#include <cstring>
#include <vector>
#include "media/AviClosing.h"
#include "media/JpegWriter.h"

namespace tavix {

namespace {

// Frames waiting for the encoder: enough to ride out its thread being kept
// off the processor for a few frames on a busy machine (at 3 slots a loaded
// 2-core machine dropped 2 % of a minute at 5 megapixels and 30 fps, at 6
// slots 0.7 %); more would only hide an encoder that is too slow.
constexpr int kSlots = 6;
// Encoded frames the muxer and the disk may fall behind by before frames are dropped.
constexpr guint64 kMaxQueuedBytes = 64u * 1024 * 1024;

bool encodable(QImage::Format format)
{
    switch (format) {
        case QImage::Format_RGB888:
        case QImage::Format_BGR888:
        case QImage::Format_RGB32:
        case QImage::Format_ARGB32:
        case QImage::Format_RGBX8888:
        case QImage::Format_RGBA8888:
        case QImage::Format_Grayscale8:
            return true;
        default:
            return false;
    }
}

std::int64_t steadyNs()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

bool initGst(QString* error)
{
    static const bool ok = [] {
        GError* err = nullptr;
        const bool done = gst_init_check(nullptr, nullptr, &err);
        if (err)
            g_error_free(err);
        return done;
    }();
    if (!ok && error)
        *error = QStringLiteral("GStreamer could not be initialised");
    return ok;
}

}  // namespace

struct AviRecorder::Slot {
    std::vector<uchar> pixels;  // or a JPEG frame's bytes
    size_t bytes = 0;
    std::int64_t pts = 0;
};

struct AviRecorder::Pipeline {
    GstElement* pipeline = nullptr;
    GstElement* source = nullptr;
    GstElement* rate = nullptr;

    ~Pipeline()
    {
        if (source)
            gst_object_unref(source);
        if (rate)
            gst_object_unref(rate);
        if (pipeline) {
            gst_element_set_state(pipeline, GST_STATE_NULL);
            gst_object_unref(pipeline);
        }
    }

    std::int64_t framesOut() const
    {
        guint64 out = 0;
        g_object_get(rate, "out", &out, nullptr);
        return static_cast<std::int64_t>(out);
    }
};

AviRecorder::AviRecorder() = default;

AviRecorder::~AviRecorder()
{
    stop();
    if (watcher_.joinable())
        watcher_.join();
}

QString AviRecorder::partName(const QString& path)
{
    return path + QStringLiteral(".part");
}

bool AviRecorder::start(const QString& path, const Format& format, int seconds, QString* error)
{
    auto fail = [error](const QString& why) {
        if (error)
            *error = why;
        return false;
    };
    if (!initGst(error))
        return false;
    if ((!format.jpegFrames && !encodable(format.pixels)) || format.size.isEmpty() || format.fps <= 0 ||
        seconds <= 0)
        return fail(QStringLiteral("unsupported frame format"));

    std::lock_guard lock(mutex_);
    if (busy_)
        return fail(QStringLiteral("a recording is running"));
    // The previous recording's threads have ended.
    if (watcher_.joinable())
        watcher_.join();
    if (encoder_.joinable())
        encoder_.join();

    auto p = std::make_unique<Pipeline>();
    GError* err = nullptr;
    // Frames come encoded (libjpeg-turbo on our own thread); videorate repeats
    // one where the camera left a gap, which costs no second encoding.
    p->pipeline = gst_parse_launch(
        "appsrc name=src format=time is-live=true ! videorate name=rate ! avimux bigfile=true ! "
        "filesink name=sink",
        &err);
    if (!p->pipeline) {
        const QString why = err ? QString::fromUtf8(err->message) : QStringLiteral("no pipeline");
        if (err)
            g_error_free(err);
        return fail(why);
    }
    if (err)
        g_error_free(err);

    gint num = 0;
    gint den = 1;
    gst_util_double_to_fraction(format.fps, &num, &den);
    GstCaps* caps =
        gst_caps_new_simple("image/jpeg", "width", G_TYPE_INT, format.size.width(), "height", G_TYPE_INT,
                            format.size.height(), "framerate", GST_TYPE_FRACTION, num, den, nullptr);
    p->source = gst_bin_get_by_name(GST_BIN(p->pipeline), "src");
    p->rate = gst_bin_get_by_name(GST_BIN(p->pipeline), "rate");
    g_object_set(p->source, "caps", caps, "handle-segment-change", TRUE, "max-bytes", kMaxQueuedBytes,
                 nullptr);
    gst_caps_unref(caps);
    // Up to a whole recording of repeats closes the file at its length.
    g_object_set(p->rate, "max-closing-segment-duplication-duration",
                 static_cast<guint64>(seconds) * GST_SECOND, nullptr);
    GstElement* sink = gst_bin_get_by_name(GST_BIN(p->pipeline), "sink");
    g_object_set(sink, "location", QFile::encodeName(partName(path)).constData(), nullptr);
    gst_object_unref(sink);

    QFile::remove(partName(path));
    if (gst_element_set_state(p->pipeline, GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE) {
        GstBus* bus = gst_element_get_bus(p->pipeline);
        QString why = QStringLiteral("the recording could not be started");
        if (GstMessage* m = gst_bus_pop_filtered(bus, GST_MESSAGE_ERROR)) {
            GError* e = nullptr;
            gst_message_parse_error(m, &e, nullptr);
            if (e) {
                why = QString::fromUtf8(e->message);
                g_error_free(e);
            }
            gst_message_unref(m);
        }
        gst_object_unref(bus);
        p.reset();
        QFile::remove(partName(path));
        return fail(why);
    }

    pipeline_ = std::move(p);
    format_ = format;
    format_.quality = std::clamp(format.quality, 1, 100);
    stride_ = (static_cast<qsizetype>(format.size.width()) *
                   (QImage::toPixelFormat(format.pixels).bitsPerPixel() / 8) +
               3) &
              ~qsizetype(3);
    const size_t bytes = static_cast<size_t>(stride_) * static_cast<size_t>(format.size.height());
    slots_.resize(kSlots);
    free_.clear();
    filled_.clear();
    for (int i = 0; i < kSlots; ++i) {
        if (!format.jpegFrames)
            slots_[static_cast<size_t>(i)].pixels.resize(bytes);  // kept between recordings of one size
        free_.push_back(i);
    }
    stats_ = RecordingStats{};
    stats_.path = path;
    busy_ = true;
    accepting_ = true;
    closing_ = false;
    cutShort_ = false;
    firstNs_ = -1;
    lengthNs_ = static_cast<std::int64_t>(seconds) * GST_SECOND;
    frameNs_ = static_cast<std::int64_t>(
        gst_util_uint64_scale(GST_SECOND, static_cast<guint64>(den), static_cast<guint64>(num)));
    watcher_ = std::thread([this] { watchBus(); });
    encoder_ = std::thread([this] { encode(); });
    return true;
}

int AviRecorder::takeSlot(std::int64_t captureNs)
{
    std::lock_guard lock(mutex_);
    const std::int64_t at = captureNs >= 0 ? captureNs : steadyNs();
    if (firstNs_ < 0)
        firstNs_ = at;
    const std::int64_t pts = std::max<std::int64_t>(at - firstNs_, 0);
    if (pts >= lengthNs_) {
        // The length is reached: the encoder finishes what it holds and
        // the last frame is repeated up to the length.
        accepting_ = false;
        closing_ = true;
        work_.notify_all();
        return -1;
    }
    if (free_.empty()) {
        // The encoder is still busy with the frames before: this one cannot be kept.
        ++stats_.framesDropped;
        return -1;
    }
    const int slot = free_.front();
    free_.pop_front();
    slots_[static_cast<size_t>(slot)].pts = pts;
    return slot;
}

void AviRecorder::queue(int slot)
{
    std::lock_guard lock(mutex_);
    filled_.push_back(slot);
    work_.notify_all();
}

void AviRecorder::addFrame(const FrameView& frame)
{
    {
        std::lock_guard lock(mutex_);
        if (!accepting_ || format_.jpegFrames || frame.width != format_.size.width() ||
            frame.height != format_.size.height() || frame.format != format_.pixels)
            return;
    }
    const int slot = takeSlot(frame.captureNs);
    if (slot < 0)
        return;
    // The slot is this thread's until it is queued.
    uchar* to = slots_[static_cast<size_t>(slot)].pixels.data();
    const qsizetype row = std::min(stride_, frame.bytesPerLine);
    for (int y = 0; y < frame.height; ++y)
        std::memcpy(to + y * stride_, frame.bits + y * frame.bytesPerLine, static_cast<size_t>(row));
    queue(slot);
}

void AviRecorder::addJpeg(const uchar* data, size_t bytes, std::int64_t captureNs)
{
    {
        std::lock_guard lock(mutex_);
        if (!accepting_ || !format_.jpegFrames || bytes == 0)
            return;
    }
    const int slot = takeSlot(captureNs);
    if (slot < 0)
        return;
    Slot& s = slots_[static_cast<size_t>(slot)];
    if (s.pixels.size() < bytes)
        s.pixels.resize(bytes);  // grows to the largest frame, then stays
    std::memcpy(s.pixels.data(), data, bytes);
    s.bytes = bytes;
    queue(slot);
}

void AviRecorder::encode()
{
    pthread_setname_np(pthread_self(), "avi-encoder");  // for profilers and the benchmark
    QByteArray jpeg;
    bool first = true;
    for (;;) {
        int slot = -1;
        GstElement* source = nullptr;
        {
            std::unique_lock lock(mutex_);
            work_.wait(lock, [this] { return !filled_.empty() || closing_; });
            if (filled_.empty()) {
                // Everything taken is encoded: the file gets its end.
                if (cutShort_)
                    g_object_set(pipeline_->rate, "max-closing-segment-duplication-duration", guint64(0),
                                 nullptr);
                gst_app_src_end_of_stream(GST_APP_SRC(pipeline_->source));
                return;
            }
            slot = filled_.front();
            filled_.pop_front();
            source = pipeline_->source;
        }
        Slot& s = slots_[static_cast<size_t>(slot)];
        GstBuffer* buffer = nullptr;
        if (format_.jpegFrames) {
            buffer = gst_buffer_new_memdup(s.pixels.data(), s.bytes);
        } else {
            const QImage picture(s.pixels.data(), format_.size.width(), format_.size.height(), stride_,
                                 format_.pixels);
            if (JpegWriter::encode(picture, format_.quality, jpeg) == JpegWriter::kOk)
                buffer = gst_buffer_new_memdup(jpeg.constData(), static_cast<gsize>(jpeg.size()));
        }
        const std::int64_t pts = s.pts;
        {
            std::lock_guard lock(mutex_);
            free_.push_back(slot);
        }
        if (!buffer || gst_app_src_get_current_level_bytes(GST_APP_SRC(source)) > kMaxQueuedBytes) {
            // The file cannot take it (a slow disk) or the encoder failed: the frame is lost.
            if (buffer)
                gst_buffer_unref(buffer);
            std::lock_guard lock(mutex_);
            ++stats_.framesDropped;
            continue;
        }
        GST_BUFFER_PTS(buffer) = static_cast<GstClockTime>(pts);
        GST_BUFFER_DURATION(buffer) = static_cast<GstClockTime>(frameNs_);
        // A stream that failed refuses the buffer; the watcher then ends the recording.
        if (first) {
            // The segment ends at the length, so the file is filled up to it
            // even when the camera's last frame came early.
            GstSegment segment;
            gst_segment_init(&segment, GST_FORMAT_TIME);
            segment.stop = static_cast<guint64>(lengthNs_);
            GstSample* sample = gst_sample_new(buffer, nullptr, &segment, nullptr);
            gst_app_src_push_sample(GST_APP_SRC(source), sample);
            gst_sample_unref(sample);
            gst_buffer_unref(buffer);
            first = false;
        } else {
            gst_app_src_push_buffer(GST_APP_SRC(source), buffer);
        }
    }
}

void AviRecorder::stop()
{
    std::lock_guard lock(mutex_);
    if (!accepting_)
        return;
    accepting_ = false;
    closing_ = true;
    // Stopped early, the file ends with its last frame, not filled to the length.
    cutShort_ = true;
    work_.notify_all();
}

void AviRecorder::watchBus()
{
    GstBus* bus = nullptr;
    {
        std::lock_guard lock(mutex_);
        bus = gst_element_get_bus(pipeline_->pipeline);
    }
    QString failure;
    GstMessage* m = gst_bus_timed_pop_filtered(
        bus, GST_CLOCK_TIME_NONE, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
    if (m && GST_MESSAGE_TYPE(m) == GST_MESSAGE_ERROR) {
        GError* e = nullptr;
        gst_message_parse_error(m, &e, nullptr);
        failure = e ? QString::fromUtf8(e->message) : QStringLiteral("the encoder failed");
        if (e)
            g_error_free(e);
    }
    if (m)
        gst_message_unref(m);
    gst_object_unref(bus);
    finish(failure);
}

void AviRecorder::finish(const QString& failure)
{
    {
        // After a failure the encoder may still hold frames: it lets them go.
        std::lock_guard lock(mutex_);
        accepting_ = false;
        closing_ = true;
        filled_.clear();
        work_.notify_all();
    }
    if (encoder_.joinable())
        encoder_.join();
    std::unique_ptr<Pipeline> done;
    QString path;
    {
        std::lock_guard lock(mutex_);
        stats_.framesWritten = pipeline_->framesOut();
        stats_.seconds = secondsOf(stats_.framesWritten);
        done = std::move(pipeline_);
        path = stats_.path;
    }
    done.reset();  // to NULL: the file is closed

    QString why = failure;
    const QString part = partName(path);
    if (!QFileInfo::exists(part)) {
        if (why.isEmpty())
            why = QStringLiteral("the file was removed while it was written");
    } else {
        if (!failure.isEmpty()) {
            // The pipeline died before the end of its stream, which writes the
            // index: the frames on disk get theirs here.
            const AviClosing::Result closed = AviClosing::close(part);
            std::lock_guard lock(mutex_);
            if (closed.ok) {
                stats_.framesWritten = closed.frames;
                stats_.seconds = secondsOf(closed.frames);
            } else {
                why += QStringLiteral(" (") + closed.error + QLatin1Char(')');
            }
        }
        QFile::remove(path);
        if (!QFile::rename(part, path) && why.isEmpty())
            why = QStringLiteral("the file could not be renamed from ") + QDir::toNativeSeparators(part);
    }
    std::lock_guard lock(mutex_);
    stats_.failure = why;
    stats_.finished = true;
    busy_ = false;
    finished_.notify_all();
}

bool AviRecorder::waitFinished(int timeoutMs)
{
    std::unique_lock lock(mutex_);
    return finished_.wait_for(lock, std::chrono::milliseconds(timeoutMs), [this] { return !busy_; });
}

double AviRecorder::secondsOf(std::int64_t frames) const
{
    return static_cast<double>(frames) * static_cast<double>(frameNs_) / GST_SECOND;
}

bool AviRecorder::busy() const
{
    std::lock_guard lock(mutex_);
    return busy_;
}

RecordingStats AviRecorder::stats() const
{
    std::lock_guard lock(mutex_);
    RecordingStats s = stats_;
    if (pipeline_) {
        s.framesWritten = pipeline_->framesOut();
        s.seconds = secondsOf(s.framesWritten);
    }
    return s;
}

}  // namespace tavix
