#include "camera/graph/GraphMode.h"

#include "camera/Resolution.h"

#include <algorithm>

#undef signals
#include <gst/gst.h>
#include <gst/video/video.h>

namespace tavix {

namespace {

constexpr int kClassicSizes = 11;

struct Rate {
    int n = 0;
    int d = 1;
};

bool faster(Rate a, Rate b)
{
    return gst_util_fraction_compare(a.n, a.d, b.n, b.d) > 0;
}

// The highest rate a framerate field allows: a fraction, a list or a range.
Rate highest(const GValue* value)
{
    Rate best;
    if (!value)
        return best;
    if (GST_VALUE_HOLDS_FRACTION(value))
        return {gst_value_get_fraction_numerator(value), gst_value_get_fraction_denominator(value)};
    if (GST_VALUE_HOLDS_FRACTION_RANGE(value))
        return highest(gst_value_get_fraction_range_max(value));
    if (GST_VALUE_HOLDS_LIST(value))
        for (guint i = 0; i < gst_value_list_get_size(value); ++i)
            if (const Rate r = highest(gst_value_list_get_value(value, i)); faster(r, best))
                best = r;
    return best;
}

// Every rate a framerate field allows, slowest first; a range as its two ends.
void collectRates(const GValue* value, std::vector<std::pair<int, int>>& rates, bool& range)
{
    if (!value)
        return;
    if (GST_VALUE_HOLDS_FRACTION(value)) {
        const std::pair<int, int> r{gst_value_get_fraction_numerator(value),
                                    gst_value_get_fraction_denominator(value)};
        if (r.first > 0 && r.second > 0 && std::find(rates.begin(), rates.end(), r) == rates.end())
            rates.push_back(r);
    } else if (GST_VALUE_HOLDS_FRACTION_RANGE(value)) {
        range = true;
        collectRates(gst_value_get_fraction_range_min(value), rates, range);
        collectRates(gst_value_get_fraction_range_max(value), rates, range);
    } else if (GST_VALUE_HOLDS_LIST(value)) {
        for (guint i = 0; i < gst_value_list_get_size(value); ++i)
            collectRates(gst_value_list_get_value(value, i), rates, range);
    }
    std::sort(rates.begin(), rates.end(), [](const auto& a, const auto& b) {
        return gst_util_fraction_compare(a.first, a.second, b.first, b.second) < 0;
    });
}

int kindOrder(GraphMode::Kind kind)
{
    return static_cast<int>(kind);
}

// The format this structure would be asked for, or empty when the program cannot use it.
QByteArray formatOf(const GstStructure* s, GraphMode::Kind kind)
{
    if (kind == GraphMode::Kind::Jpeg)
        return QByteArrayLiteral("");
    const GValue* value = gst_structure_get_value(s, "format");
    std::vector<QByteArray> names;
    if (value && G_VALUE_HOLDS_STRING(value)) {
        names.emplace_back(g_value_get_string(value));
    } else if (value && GST_VALUE_HOLDS_LIST(value)) {
        for (guint i = 0; i < gst_value_list_get_size(value); ++i) {
            const GValue* item = gst_value_list_get_value(value, i);
            if (G_VALUE_HOLDS_STRING(item))
                names.emplace_back(g_value_get_string(item));
        }
    }
    auto usable = [kind](const QByteArray& name) {
        if (kind == GraphMode::Kind::Bayer)
            return name == "rggb" || name == "grbg" || name == "gbrg" || name == "bggr";
        const GstVideoFormat f = gst_video_format_from_string(name.constData());
        return f != GST_VIDEO_FORMAT_UNKNOWN && f != GST_VIDEO_FORMAT_ENCODED;
    };
    // A source that offers many (a test source) is asked for RGB, which needs no conversion.
    if (kind == GraphMode::Kind::Raw && std::find(names.begin(), names.end(), "RGB") != names.end())
        return QByteArrayLiteral("RGB");
    for (const QByteArray& name : names)
        if (usable(name))
            return name;
    return {};
}

bool kindOf(const GstStructure* s, GraphMode::Kind& kind)
{
    if (gst_structure_has_name(s, "video/x-raw"))
        kind = GraphMode::Kind::Raw;
    else if (gst_structure_has_name(s, "image/jpeg"))
        kind = GraphMode::Kind::Jpeg;
    else if (gst_structure_has_name(s, "video/x-bayer"))
        kind = GraphMode::Kind::Bayer;
    else
        return false;
    return true;
}

// The sizes of one structure: its own when fixed, else the classic sizes it allows.
std::vector<QSize> sizesOf(const GstStructure* s)
{
    int w = 0;
    int h = 0;
    if (gst_structure_get_int(s, "width", &w) && gst_structure_get_int(s, "height", &h))
        return {QSize(w, h)};
    std::vector<QSize> sizes;
    for (int m = 0; m < kClassicSizes; ++m) {
        const QSize size = Resolution::size(m);
        GstStructure* fixed = gst_structure_copy(s);
        gst_structure_set(fixed, "width", G_TYPE_INT, size.width(), "height", G_TYPE_INT, size.height(),
                          nullptr);
        if (gst_structure_can_intersect(s, fixed))
            sizes.push_back(size);
        gst_structure_free(fixed);
    }
    return sizes;
}

}  // namespace

std::vector<GraphMode> GraphMode::offered(const GstCaps* caps)
{
    std::vector<GraphMode> modes;
    if (!caps)
        return modes;
    for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
        const GstStructure* s = gst_caps_get_structure(caps, i);
        const GstCapsFeatures* features = gst_caps_get_features(caps, i);
        Kind kind = Kind::Raw;
        // Memory other than the system's (a GPU's) cannot be mapped here.
        if (!kindOf(s, kind) ||
            (features && !gst_caps_features_is_any(features) &&
             !gst_caps_features_contains(features, GST_CAPS_FEATURE_MEMORY_SYSTEM_MEMORY)))
            continue;
        const QByteArray format = formatOf(s, kind);
        if (kind != Kind::Jpeg && format.isEmpty())
            continue;
        for (const QSize& size : sizesOf(s)) {
            if (size.isEmpty())
                continue;
            // The rate at this very size: a structure may allow several sizes at one rate field.
            GstStructure* at = gst_structure_copy(s);
            gst_structure_set(at, "width", G_TYPE_INT, size.width(), "height", G_TYPE_INT, size.height(),
                              nullptr);
            const Rate rate = highest(gst_structure_get_value(at, "framerate"));
            std::vector<std::pair<int, int>> rates;
            bool anyRateBetween = false;
            collectRates(gst_structure_get_value(at, "framerate"), rates, anyRateBetween);
            gst_structure_free(at);
            auto same =
                std::find_if(modes.begin(), modes.end(), [&](const GraphMode& m) { return m.size == size; });
            GraphMode mode;
            mode.index = Resolution::indexOf(size);
            mode.size = size;
            mode.kind = kind;
            mode.format = format;
            mode.fpsN = rate.n;
            mode.fpsD = rate.d;
            mode.rates = rates;
            mode.anyRateBetween = anyRateBetween && rates.size() == 2;
            if (same == modes.end()) {
                modes.push_back(mode);
            } else if (faster(rate, {same->fpsN, same->fpsD}) ||
                       (gst_util_fraction_compare(rate.n, rate.d, same->fpsN, same->fpsD) == 0 &&
                        kindOrder(kind) < kindOrder(same->kind))) {
                *same = mode;
            }
        }
    }
    std::sort(modes.begin(), modes.end(), [](const GraphMode& a, const GraphMode& b) {
        const qint64 areaA = qint64(a.size.width()) * a.size.height();
        const qint64 areaB = qint64(b.size.width()) * b.size.height();
        return areaA != areaB ? areaA < areaB : a.size.width() < b.size.width();
    });
    return modes;
}

QSize GraphMode::ownSize(const GstCaps* caps)
{
    if (!caps || gst_caps_is_empty(caps) || gst_caps_is_any(caps))
        return {};
    GstCaps* own = gst_caps_fixate(gst_caps_copy(caps));
    int w = 0;
    int h = 0;
    const GstStructure* s = gst_caps_get_structure(own, 0);
    const bool sized = gst_structure_get_int(s, "width", &w) && gst_structure_get_int(s, "height", &h);
    gst_caps_unref(own);
    return sized ? QSize(w, h) : QSize();
}

GraphMode GraphMode::atRate(int fps) const
{
    GraphMode m = *this;
    if (fps <= 0 || rates.empty())
        return m;
    std::pair<int, int> chosen = rates.front();
    if (anyRateBetween) {
        const auto& [lowN, lowD] = rates.front();
        const auto& [highN, highD] = rates.back();
        if (gst_util_fraction_compare(fps, 1, highN, highD) > 0)
            chosen = rates.back();
        else if (gst_util_fraction_compare(fps, 1, lowN, lowD) >= 0)
            chosen = {fps, 1};
    } else {
        for (const auto& r : rates)
            if (gst_util_fraction_compare(r.first, r.second, fps, 1) <= 0)
                chosen = r;
    }
    m.fpsN = chosen.first;
    m.fpsD = chosen.second;
    return m;
}

GstCaps* GraphMode::caps() const
{
    const char* name = kind == Kind::Jpeg    ? "image/jpeg"
                       : kind == Kind::Bayer ? "video/x-bayer"
                                             : "video/x-raw";
    GstCaps* c = gst_caps_new_simple(name, "width", G_TYPE_INT, size.width(), "height", G_TYPE_INT,
                                     size.height(), nullptr);
    if (!format.isEmpty())
        gst_caps_set_simple(c, "format", G_TYPE_STRING, format.constData(), nullptr);
    if (fpsN > 0)
        gst_caps_set_simple(c, "framerate", GST_TYPE_FRACTION, fpsN, fpsD, nullptr);
    return c;
}

}  // namespace tavix
