#include "camera/graph/GraphFile.h"

#include "common/RunError.h"

#include <QFile>
#include <QStringList>
#include <algorithm>
#include <vector>

#undef signals
#include <gst/gst.h>

namespace tavix {

GraphFile::GraphFile(QString path, QString cameraFilterName, Log log)
    : path_(std::move(path)), filterName_(std::move(cameraFilterName)), log_(std::move(log))
{
}

GraphFile::~GraphFile()
{
    clear();
}

void GraphFile::clear()
{
    if (pin_)
        gst_object_unref(pin_);
    if (camera_)
        gst_object_unref(camera_);
    if (graph_) {
        gst_element_set_state(graph_, GST_STATE_NULL);
        gst_object_unref(graph_);
    }
    pin_ = nullptr;
    camera_ = nullptr;
    graph_ = nullptr;
}

bool GraphFile::fail(int number, const QString& why)
{
    clear();
    errorNumber_ = number;
    if (log_) {
        log_(QStringLiteral("LoadGrfFile Error.(%1)").arg(number));
        if (!why.isEmpty())
            log_(QStringLiteral("LoadGrfFile: ") + why);
    }
    return false;
}

bool GraphFile::notFound(const char* line)
{
    clear();
    errorNumber_ = err::InvalidCall;  // for the start-up's error line; the load's own line says what
    if (log_)
        log_(QLatin1String(line));
    return false;
}

GstElement* GraphFile::findFilter(GstElement* graph, const QString& name)
{
    if (!graph)
        return nullptr;
    const QByteArray wanted = name.toUtf8();
    gchar* own = gst_element_get_name(graph);
    const bool itself = qstrcmp(own, wanted.constData()) == 0;
    g_free(own);
    if (itself)
        return GST_ELEMENT(gst_object_ref(graph));
    return GST_IS_BIN(graph) ? gst_bin_get_by_name(GST_BIN(graph), wanted.constData()) : nullptr;
}

bool GraphFile::LoadGrfFile()
{
    clear();
    errorNumber_ = 0;
    GError* error = nullptr;
    if (!gst_is_initialized() && !gst_init_check(nullptr, nullptr, &error)) {
        const QString why = QString::fromUtf8(error ? error->message : "");
        g_clear_error(&error);
        return fail(err::InvalidCall, why);
    }
    QFile file(path_);
    if (!file.exists())
        return fail(err::FileNotFound, path_);
    if (!file.open(QIODevice::ReadOnly))
        return fail(err::PathFileAccess, file.errorString());
    QStringList lines;
    for (const QString& line : QString::fromUtf8(file.readAll()).split(QLatin1Char('\n')))
        if (!line.trimmed().startsWith(QLatin1Char('#')))
            lines.append(line.trimmed());
    const QByteArray description = lines.join(QLatin1Char(' ')).toUtf8();

    GstElement* parsed =
        gst_parse_launch_full(description.constData(), nullptr, GST_PARSE_FLAG_FATAL_ERRORS, &error);
    if (!parsed || error) {
        const QString why = QString::fromUtf8(error ? error->message : "");
        g_clear_error(&error);
        if (parsed)
            gst_object_unref(gst_object_ref_sink(parsed));
        return fail(err::InvalidCall, why);
    }
    // A single element comes back on its own; it runs inside a pipeline all the same.
    if (GST_IS_PIPELINE(parsed)) {
        graph_ = GST_ELEMENT(gst_object_ref_sink(parsed));
    } else {
        graph_ = gst_pipeline_new(nullptr);
        gst_object_ref_sink(graph_);
        gst_bin_add(GST_BIN(graph_), parsed);
    }

    camera_ = findFilter(graph_, filterName_);
    if (!camera_)
        return notFound("LoadGrfFile:Camera Filer Not Found.");
    GstIterator* pads = gst_element_iterate_src_pads(camera_);
    GValue item = G_VALUE_INIT;
    if (gst_iterator_next(pads, &item) == GST_ITERATOR_OK)
        pin_ = GST_PAD(g_value_dup_object(&item));
    g_value_unset(&item);
    gst_iterator_free(pads);
    if (!pin_)
        return notFound("LoadGrfFile:Camera OutputPIN Not Found.");
    return true;
}

namespace {

bool isV4l2Source(GstElement* element)
{
    GstElementFactory* factory = gst_element_get_factory(element);
    return factory && qstrcmp(gst_plugin_feature_get_name(GST_PLUGIN_FEATURE(factory)), "v4l2src") == 0;
}

}  // namespace

GstElement* GraphFile::deviceSource() const
{
    // Breadth first from the camera element up its inputs: the nearest source wins.
    std::vector<GstElement*> queue;
    if (camera_)
        queue.push_back(camera_);
    for (size_t i = 0; i < queue.size(); ++i) {
        GstElement* element = queue[i];
        if (isV4l2Source(element))
            return element;
        GstIterator* pads = gst_element_iterate_sink_pads(element);
        GValue item = G_VALUE_INIT;
        while (gst_iterator_next(pads, &item) == GST_ITERATOR_OK) {
            if (GstPad* peer = gst_pad_get_peer(GST_PAD(g_value_get_object(&item)))) {
                GstElement* upstream = gst_pad_get_parent_element(peer);
                gst_object_unref(peer);
                // The graph holds every element; the reference taken here is not needed.
                if (upstream) {
                    gst_object_unref(upstream);
                    if (std::find(queue.begin(), queue.end(), upstream) == queue.end())
                        queue.push_back(upstream);
                }
            }
            g_value_reset(&item);
        }
        g_value_unset(&item);
        gst_iterator_free(pads);
    }
    return nullptr;
}

QString GraphFile::devicePath() const
{
    GstElement* source = deviceSource();
    if (!source)
        return {};
    gchar* device = nullptr;
    g_object_get(source, "device", &device, nullptr);
    const QString path = QString::fromUtf8(device ? device : "");
    g_free(device);
    return path;
}

}  // namespace tavix
