#include "measure/CaliperTool.h"

#include "measure/ToolGeometry.h"

#include <cmath>

namespace tavix {

namespace {

// Half the length of the ticks drawn across the line at each edge, px.
constexpr double kTick = 5.0;
constexpr double kMeasuredTick = 9.0;

Segment tickAt(PointD p, PointD from, PointD to, double half)
{
    const double length = CalcModule::CalcDistance(from, to);
    const PointD across{-(to.y - from.y) / length * half, (to.x - from.x) / length * half};
    return {{p.x - across.x, p.y - across.y}, {p.x + across.x, p.y + across.y}};
}

}  // namespace

PointD CaliperTool::Profile::pointAt(double at) const
{
    const double length = CalcModule::CalcDistance(from, to);
    return {from.x + (to.x - from.x) / length * at, from.y + (to.y - from.y) / length * at};
}

CaliperTool::Profile CaliperTool::profileAlong(const QImage& picture, PointD from, PointD to)
{
    Profile p{from, to, EdgeSnap(picture).profile(from, to, kBand), {}};
    p.edges = EdgeSnap::edgesOf(p.samples);
    return p;
}

std::optional<Measurement> CaliperTool::measurePair(const Profile& profile, int first, int last,
                                                    const MeasureContext& context)
{
    const int count = static_cast<int>(profile.edges.size());
    if (first == last || first < 0 || last < 0 || first >= count || last >= count)
        return std::nullopt;
    if (first > last)
        std::swap(first, last);
    const PointD a = profile.pointAt(profile.edges[static_cast<std::size_t>(first)].at);
    const PointD b = profile.pointAt(profile.edges[static_cast<std::size_t>(last)].at);
    const UnitSpace space(profile.from, context.units);
    const double width = CalcModule::CalcDistance(space.toUnits(a), space.toUnits(b));
    CalcModule::CheckFinite(width);

    Shape shape;
    shape.guides.push_back({profile.from, profile.to});
    for (int i = 0; i < count; ++i)
        if (i != first && i != last)
            shape.guides.push_back(tickAt(profile.pointAt(profile.edges[static_cast<std::size_t>(i)].at),
                                          profile.from, profile.to, kTick));
    shape.lines = {{a, b},
                   tickAt(a, profile.from, profile.to, kMeasuredTick),
                   tickAt(b, profile.from, profile.to, kMeasuredTick)};
    shape.marks = {profile.from, profile.to};
    shape.labels.push_back({CalcModule::CalcMidPoint(a, b), QString(), 0});
    std::vector<PointD> points = {profile.from, profile.to};
    if (first != 0 || last != count - 1)
        points.insert(points.end(), {a, b});
    return ToolGeometry::single(Number, points, {width, Caption::CaliperWidth, UnitKind::Length},
                                std::move(shape), context.decimals);
}

std::pair<int, int> CaliperTool::pairOf(const std::vector<PointD>& points, const Profile& profile)
{
    const int count = static_cast<int>(profile.edges.size());
    if (points.size() < 4 || count < 2)
        return {0, count - 1};
    const auto nearest = [&](PointD p) {
        int best = 0;
        for (int i = 1; i < count; ++i)
            if (CalcModule::CalcDistance(profile.pointAt(profile.edges[static_cast<std::size_t>(i)].at), p) <
                CalcModule::CalcDistance(profile.pointAt(profile.edges[static_cast<std::size_t>(best)].at),
                                         p))
                best = i;
        return best;
    };
    return {nearest(points[2]), nearest(points[3])};
}

int CaliperTool::guidance() const
{
    if (!points_.empty())
        return 81;
    return missed_ ? 83 : 80;
}

void CaliperTool::press(PointD p)
{
    if (!points_.empty())
        return;
    points_.push_back(p);
    pressed_ = true;
}

void CaliperTool::addPoint(PointD p)
{
    if (pressed_) {
        pressed_ = false;
        // Released where it went down: a click, which sets the line's start.
        if (points_.size() == 1 && CalcModule::CalcDistance(points_[0], p) < kClickSlop)
            return;
    }
    missed_ = false;
    ClickTool::addPoint(p);
}

void CaliperTool::startNext()
{
    ClickTool::startNext();
    pressed_ = false;
}

void CaliperTool::reset()
{
    ClickTool::reset();
    pressed_ = false;
    missed_ = false;
}

std::optional<Measurement> CaliperTool::measure(const std::vector<PointD>& points,
                                                const MeasureContext& context) const
{
    if (points.size() < 2 || CalcModule::CalcDistance(points[0], points[1]) < 1.0)
        return std::nullopt;
    const Profile profile = profileAlong(context.picture, points[0], points[1]);
    const auto [first, last] = pairOf(points, profile);
    return measurePair(profile, first, last, context);
}

std::optional<Measurement> CaliperTool::result(const MeasureContext& context) const
{
    std::optional<Measurement> m = ClickTool::result(context);
    missed_ = complete() && !m;
    return m;
}

}  // namespace tavix
