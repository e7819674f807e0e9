#include "files/AviRecorder.h"

#include <gst/app/gstappsrc.h>
#include <gst/gst.h>
#include <gst/video/video.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <chrono>
#include <cstring>

namespace tavix {

namespace {

// Enough for the encoder to work on one frame while the next ones arrive;
// more would only hide an encoder that is too slow.
constexpr guint kPoolFrames = 4;

const char* gstFormat(QImage::Format format)
{
    switch (format) {
        case QImage::Format_RGB888:
            return "RGB";
        case QImage::Format_BGR888:
            return "BGR";
        case QImage::Format_RGB32:
        case QImage::Format_ARGB32:
            return Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? "BGRx" : "xRGB";
        case QImage::Format_RGBX8888:
        case QImage::Format_RGBA8888:
            return "RGBx";
        case QImage::Format_Grayscale8:
            return "GRAY8";
        default:
            return nullptr;
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

struct AviRecorder::Pipeline {
    GstElement* pipeline = nullptr;
    GstElement* source = nullptr;
    GstElement* rate = nullptr;
    GstBufferPool* pool = nullptr;
    GstVideoInfo info{};
    bool segmentSent = false;

    ~Pipeline()
    {
        if (pool) {
            gst_buffer_pool_set_active(pool, FALSE);
            gst_object_unref(pool);
        }
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
    const char* pixels = gstFormat(format.pixels);
    if (!pixels || format.size.isEmpty() || format.fps <= 0 || seconds <= 0)
        return fail(QStringLiteral("unsupported frame format"));

    std::lock_guard lock(mutex_);
    if (busy_)
        return fail(QStringLiteral("a recording is running"));
    if (watcher_.joinable())
        watcher_.join();  // the previous recording's watcher has ended

    auto p = std::make_unique<Pipeline>();
    GError* err = nullptr;
    // videorate after the encoder: a repeated frame costs no second encoding.
    p->pipeline = gst_parse_launch(
        "appsrc name=src format=time is-live=true ! jpegenc name=enc ! videorate "
        "name=rate ! avimux bigfile=true ! filesink name=sink",
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
    GstCaps* caps = gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, pixels, "width", G_TYPE_INT,
                                        format.size.width(), "height", G_TYPE_INT, format.size.height(),
                                        "framerate", GST_TYPE_FRACTION, num, den, nullptr);
    gst_video_info_from_caps(&p->info, caps);
    p->source = gst_bin_get_by_name(GST_BIN(p->pipeline), "src");
    p->rate = gst_bin_get_by_name(GST_BIN(p->pipeline), "rate");
    g_object_set(p->source, "caps", caps, "handle-segment-change", TRUE, nullptr);
    // Up to a whole recording of repeats closes the file at its length.
    g_object_set(p->rate, "max-closing-segment-duplication-duration",
                 static_cast<guint64>(seconds) * GST_SECOND, nullptr);
    GstElement* enc = gst_bin_get_by_name(GST_BIN(p->pipeline), "enc");
    g_object_set(enc, "quality", std::clamp(format.quality, 1, 100), nullptr);
    gst_object_unref(enc);
    GstElement* sink = gst_bin_get_by_name(GST_BIN(p->pipeline), "sink");
    g_object_set(sink, "location", QFile::encodeName(partName(path)).constData(), nullptr);
    gst_object_unref(sink);

    p->pool = gst_buffer_pool_new();
    GstStructure* config = gst_buffer_pool_get_config(p->pool);
    gst_buffer_pool_config_set_params(config, caps, static_cast<guint>(p->info.size), kPoolFrames,
                                      kPoolFrames);
    gst_buffer_pool_set_config(p->pool, config);
    gst_caps_unref(caps);
    if (!gst_buffer_pool_set_active(p->pool, TRUE))
        return fail(QStringLiteral("no memory for the frame buffers"));

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
    stats_ = RecordingStats{};
    stats_.path = path;
    busy_ = true;
    accepting_ = true;
    firstNs_ = -1;
    lengthNs_ = static_cast<std::int64_t>(seconds) * GST_SECOND;
    frameNs_ = static_cast<std::int64_t>(
        gst_util_uint64_scale(GST_SECOND, static_cast<guint64>(den), static_cast<guint64>(num)));
    watcher_ = std::thread([this] { watchBus(); });
    return true;
}

void AviRecorder::addFrame(const FrameView& frame)
{
    GstElement* source = nullptr;
    GstBufferPool* pool = nullptr;
    qsizetype stride = 0;
    std::int64_t pts = 0;
    bool first = false;
    std::int64_t lengthNs = 0;
    {
        std::lock_guard lock(mutex_);
        if (!accepting_)
            return;
        const GstVideoInfo* info = &pipeline_->info;
        if (frame.width != GST_VIDEO_INFO_WIDTH(info) || frame.height != GST_VIDEO_INFO_HEIGHT(info) ||
            gstFormat(frame.format) == nullptr ||
            std::strcmp(gstFormat(frame.format), GST_VIDEO_INFO_NAME(info)) != 0)
            return;
        const std::int64_t at = frame.captureNs >= 0 ? frame.captureNs : steadyNs();
        if (firstNs_ < 0)
            firstNs_ = at;
        pts = std::max<std::int64_t>(at - firstNs_, 0);
        if (pts >= lengthNs_) {
            // The length is reached: the last frame is repeated up to it (the
            // segment's end), then the file gets its end and is closed.
            accepting_ = false;
            gst_app_src_end_of_stream(GST_APP_SRC(pipeline_->source));
            return;
        }
        first = !pipeline_->segmentSent;
        pipeline_->segmentSent = true;
        stride = GST_VIDEO_INFO_PLANE_STRIDE(info, 0);
        lengthNs = lengthNs_;
        source = GST_ELEMENT(gst_object_ref(pipeline_->source));
        pool = GST_BUFFER_POOL(gst_object_ref(pipeline_->pool));
    }

    GstBuffer* buffer = nullptr;
    GstBufferPoolAcquireParams params{};
    params.flags = GST_BUFFER_POOL_ACQUIRE_FLAG_DONTWAIT;
    const GstFlowReturn got = gst_buffer_pool_acquire_buffer(pool, &buffer, &params);
    gst_object_unref(pool);
    if (got != GST_FLOW_OK) {
        gst_object_unref(source);
        // EOS: every buffer is still with the encoder, so this frame cannot be
        // kept. Anything else: the recording has just been closed.
        if (got == GST_FLOW_EOS) {
            std::lock_guard lock(mutex_);
            ++stats_.framesDropped;
        }
        return;
    }
    GstMapInfo map;
    if (gst_buffer_map(buffer, &map, GST_MAP_WRITE)) {
        const qsizetype row = std::min<qsizetype>(stride, frame.bytesPerLine);
        for (int y = 0; y < frame.height; ++y)
            std::memcpy(map.data + y * stride, frame.bits + y * frame.bytesPerLine, static_cast<size_t>(row));
        gst_buffer_unmap(buffer, &map);
    }
    GST_BUFFER_PTS(buffer) = static_cast<GstClockTime>(pts);
    GST_BUFFER_DURATION(buffer) = static_cast<GstClockTime>(frameNs_);
    // The source takes the buffer; a stream that failed refuses it and the watcher ends the recording.
    if (first) {
        // The segment ends at the length, so the file is filled up to it even
        // when the camera's last frame came early.
        GstSegment segment;
        gst_segment_init(&segment, GST_FORMAT_TIME);
        segment.stop = static_cast<guint64>(lengthNs);
        GstSample* sample = gst_sample_new(buffer, nullptr, &segment, nullptr);
        gst_app_src_push_sample(GST_APP_SRC(source), sample);
        gst_sample_unref(sample);
        gst_buffer_unref(buffer);
    } else {
        gst_app_src_push_buffer(GST_APP_SRC(source), buffer);
    }
    gst_object_unref(source);
}

void AviRecorder::stop()
{
    std::lock_guard lock(mutex_);
    if (!accepting_)
        return;
    accepting_ = false;
    // Stopped early, the file ends with its last frame, not filled to the length.
    g_object_set(pipeline_->rate, "max-closing-segment-duplication-duration", guint64(0), nullptr);
    gst_app_src_end_of_stream(GST_APP_SRC(pipeline_->source));
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
    std::unique_ptr<Pipeline> done;
    QString path;
    {
        std::lock_guard lock(mutex_);
        accepting_ = false;
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
