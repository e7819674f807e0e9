#include "FakeWebcamSource.h"

#include "media/JpegWriter.h"

#include <QPainter>
#include <cstring>

#undef signals
#include <gst/base/gstpushsrc.h>
#include <gst/gst.h>
#include <gst/video/video.h>

namespace {

struct TavixWebcamSrc {
    GstPushSrc parent;
    GstCaps* offers;
    GstBuffer* frame;  // what every buffer carries, made when the caps are set
    GstClockTime duration;
    guint64 count;
};

struct TavixWebcamSrcClass {
    GstPushSrcClass parent;
};

G_DEFINE_TYPE(TavixWebcamSrc, tavix_webcam_src, GST_TYPE_PUSH_SRC)

enum { kPropOffers = 1 };

GstBuffer* bytesOf(const QByteArray& bytes)
{
    return gst_buffer_new_memdup(bytes.constData(), static_cast<gsize>(bytes.size()));
}

GstBuffer* bayerOf(const QImage& rgb, const char* pattern)
{
    const int width = rgb.width();
    const qsizetype stride = (width + 3) & ~3;
    QByteArray cells(stride * rgb.height(), '\0');
    // Where red sits in the 2x2 cell, as row * 2 + column; blue opposite.
    const QByteArray p(pattern);
    const int red = p == "rggb" ? 0 : p == "grbg" ? 1 : p == "gbrg" ? 2 : 3;
    for (int y = 0; y < rgb.height(); ++y) {
        const uchar* in = rgb.constScanLine(y);
        for (int x = 0; x < width; ++x) {
            const int k = (y & 1) * 2 + (x & 1);
            const int channel = k == red ? 0 : k == 3 - red ? 2 : 1;
            cells[y * stride + x] = static_cast<char>(in[x * 3 + channel]);
        }
    }
    return bytesOf(cells);
}

GstBuffer* rawOf(const QImage& rgb, GstCaps* caps)
{
    GstVideoInfo out;
    if (!gst_video_info_from_caps(&out, caps))
        return nullptr;
    GstVideoInfo in;
    gst_video_info_set_format(&in, GST_VIDEO_FORMAT_RGB, rgb.width(), rgb.height());
    GST_VIDEO_INFO_FPS_N(&in) = GST_VIDEO_INFO_FPS_N(&out);
    GST_VIDEO_INFO_FPS_D(&in) = GST_VIDEO_INFO_FPS_D(&out);
    GstBuffer* from = gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&in), nullptr);
    GstBuffer* to = gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&out), nullptr);
    GstVideoFrame f;
    GstVideoFrame t;
    gst_video_frame_map(&f, &in, from, GST_MAP_WRITE);
    for (int y = 0; y < rgb.height(); ++y)
        std::memcpy(
            static_cast<uchar*>(GST_VIDEO_FRAME_PLANE_DATA(&f, 0)) + y * GST_VIDEO_FRAME_PLANE_STRIDE(&f, 0),
            rgb.constScanLine(y), static_cast<size_t>(rgb.width()) * 3);
    gst_video_frame_map(&t, &out, to, GST_MAP_WRITE);
    GstVideoConverter* converter = gst_video_converter_new(&in, &out, nullptr);
    gst_video_converter_frame(converter, &f, &t);
    gst_video_converter_free(converter);
    gst_video_frame_unmap(&t);
    gst_video_frame_unmap(&f);
    gst_buffer_unref(from);
    return to;
}

GstCaps* getCaps(GstBaseSrc* base, GstCaps* filter)
{
    auto* self = reinterpret_cast<TavixWebcamSrc*>(base);
    GstCaps* offers = self->offers ? gst_caps_ref(self->offers) : gst_caps_new_empty();
    if (!filter)
        return offers;
    GstCaps* both = gst_caps_intersect_full(filter, offers, GST_CAPS_INTERSECT_FIRST);
    gst_caps_unref(offers);
    return both;
}

gboolean setCaps(GstBaseSrc* base, GstCaps* caps)
{
    auto* self = reinterpret_cast<TavixWebcamSrc*>(base);
    const GstStructure* s = gst_caps_get_structure(caps, 0);
    QSize size;
    gint n = 30;
    gint d = 1;
    if (!gst_structure_get_int(s, "width", &size.rwidth()) ||
        !gst_structure_get_int(s, "height", &size.rheight()))
        return FALSE;
    if (!gst_structure_get_fraction(s, "framerate", &n, &d) || n <= 0) {
        n = 30;
        d = 1;
    }
    if (self->frame)
        gst_buffer_unref(self->frame);
    const QImage scene = tavix::test::FakeWebcamSource::picture(size);
    if (gst_structure_has_name(s, "image/jpeg"))
        self->frame = bytesOf(tavix::test::FakeWebcamSource::jpegFrame(size));
    else if (gst_structure_has_name(s, "video/x-bayer"))
        self->frame = bayerOf(scene, gst_structure_get_string(s, "format"));
    else
        self->frame = rawOf(scene, caps);
    self->duration = gst_util_uint64_scale_int(GST_SECOND, d, n);
    self->count = 0;
    return self->frame != nullptr;
}

GstFlowReturn create(GstPushSrc* src, GstBuffer** out)
{
    auto* self = reinterpret_cast<TavixWebcamSrc*>(src);
    if (!self->frame)
        return GST_FLOW_NOT_NEGOTIATED;
    GstBuffer* buffer = gst_buffer_copy(self->frame);  // shares the memory
    GST_BUFFER_PTS(buffer) = self->count * self->duration;
    GST_BUFFER_DURATION(buffer) = self->duration;
    GST_BUFFER_OFFSET(buffer) = self->count;
    GST_BUFFER_OFFSET_END(buffer) = self->count + 1;
    ++self->count;
    *out = buffer;
    return GST_FLOW_OK;
}

// Live: each frame waits for its time on the pipeline's clock, as a camera delivers at its rate.
void getTimes(GstBaseSrc*, GstBuffer* buffer, GstClockTime* start, GstClockTime* end)
{
    *start = GST_BUFFER_PTS(buffer);
    *end = GST_BUFFER_PTS(buffer) + GST_BUFFER_DURATION(buffer);
}

void setProperty(GObject* object, guint id, const GValue* value, GParamSpec* spec)
{
    auto* self = reinterpret_cast<TavixWebcamSrc*>(object);
    if (id != kPropOffers) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
        return;
    }
    if (self->offers)
        gst_caps_unref(self->offers);
    const gchar* text = g_value_get_string(value);
    self->offers = text ? gst_caps_from_string(text) : nullptr;
}

void getProperty(GObject* object, guint id, GValue* value, GParamSpec* spec)
{
    auto* self = reinterpret_cast<TavixWebcamSrc*>(object);
    if (id != kPropOffers) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
        return;
    }
    gchar* text = self->offers ? gst_caps_to_string(self->offers) : nullptr;
    g_value_take_string(value, text);
}

void finalize(GObject* object)
{
    auto* self = reinterpret_cast<TavixWebcamSrc*>(object);
    if (self->offers)
        gst_caps_unref(self->offers);
    if (self->frame)
        gst_buffer_unref(self->frame);
    G_OBJECT_CLASS(tavix_webcam_src_parent_class)->finalize(object);
}

void tavix_webcam_src_class_init(TavixWebcamSrcClass* klass)
{
    auto* object = G_OBJECT_CLASS(klass);
    object->set_property = setProperty;
    object->get_property = getProperty;
    object->finalize = finalize;
    g_object_class_install_property(
        object, kPropOffers,
        g_param_spec_string("offers", "Offers", "The caps the camera offers", nullptr,
                            static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS)));
    auto* element = GST_ELEMENT_CLASS(klass);
    gst_element_class_set_static_metadata(element, "Test webcam", "Source/Video", "A USB camera's formats",
                                          "Tavix");
    static GstStaticPadTemplate src =
        GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS_ANY);
    gst_element_class_add_static_pad_template(element, &src);
    auto* base = GST_BASE_SRC_CLASS(klass);
    base->get_caps = getCaps;
    base->set_caps = setCaps;
    base->get_times = getTimes;
    GST_PUSH_SRC_CLASS(klass)->create = create;
}

void tavix_webcam_src_init(TavixWebcamSrc* self)
{
    gst_base_src_set_live(GST_BASE_SRC(self), TRUE);
    gst_base_src_set_format(GST_BASE_SRC(self), GST_FORMAT_TIME);
}

}  // namespace

namespace tavix::test {

void FakeWebcamSource::registerElement()
{
    static const bool registered = [] {
        gst_init(nullptr, nullptr);
        return gst_element_register(nullptr, "tavixwebcamsrc", GST_RANK_NONE, tavix_webcam_src_get_type());
    }();
    (void)registered;
}

QImage FakeWebcamSource::picture(QSize size)
{
    QImage scene(size, QImage::Format_RGB888);
    QPainter painter(&scene);
    painter.fillRect(0, 0, size.width(), size.height() / 2, QColor(200, 40, 30));
    painter.fillRect(0, size.height() / 2, size.width(), size.height() - size.height() / 2,
                     QColor(30, 60, 200));
    const int side = std::min(size.width(), size.height()) / 4;
    painter.fillRect((size.width() - side) / 2, (size.height() - side) / 2, side, side, Qt::white);
    return scene;
}

QByteArray FakeWebcamSource::jpegFrame(QSize size)
{
    QByteArray jpeg;
    tavix::JpegWriter::encode(picture(size), 85, jpeg);
    return jpeg;
}

}  // namespace tavix::test
