#include "measure/OneClickCircle.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tavix {

namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr int kFirstRays = 48;
constexpr int kMinRays = 48;
constexpr int kMaxRays = 360;
constexpr double kRayGap = 2.0;        // px of circumference between the second pass's rays
constexpr double kSearch = 6.0;        // px each side of the first circle on the second pass
constexpr double kMinRadius = 3.0;     // px: anything smaller is noise or a speck
constexpr double kOutlier = 3.0;       // robust standard deviations off the circle
constexpr double kOutlierFloor = 0.3;  // px: never drop points closer than this
constexpr double kFirstRayLength = 32.0;
constexpr double kMaxSpread = 0.5;  // px, root mean square of the kept edges about the circle

struct Vec {
    double x, y;
};

// A 3x3 linear system by Cramer's rule; false when it is singular.
bool solve3(const std::array<std::array<double, 3>, 3>& a, const std::array<double, 3>& b,
            std::array<double, 3>& x)
{
    const auto det = [](const std::array<std::array<double, 3>, 3>& m) {
        return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
               m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
               m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
    };
    const double d = det(a);
    if (!std::isfinite(d) || std::abs(d) < 1e-12)
        return false;
    for (int c = 0; c < 3; ++c) {
        auto m = a;
        for (int r = 0; r < 3; ++r)
            m[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)] = b[static_cast<std::size_t>(r)];
        x[static_cast<std::size_t>(c)] = det(m) / d;
    }
    return true;
}

// The algebraic circle x^2 + y^2 + D x + E y + F = 0 nearest the points: a
// start for the geometric fit. Taken around the points' mean for accuracy.
std::optional<OneClickCircle::Circle> algebraicFit(const std::vector<PointD>& points)
{
    double mx = 0, my = 0;
    for (const PointD& p : points) {
        mx += p.x;
        my += p.y;
    }
    mx /= static_cast<double>(points.size());
    my /= static_cast<double>(points.size());
    std::array<std::array<double, 3>, 3> a{};
    std::array<double, 3> b{};
    for (const PointD& p : points) {
        const double x = p.x - mx, y = p.y - my, z = x * x + y * y;
        const double row[3] = {x, y, 1};
        for (int r = 0; r < 3; ++r) {
            for (int c = 0; c < 3; ++c)
                a[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)] += row[r] * row[c];
            b[static_cast<std::size_t>(r)] -= row[r] * z;
        }
    }
    std::array<double, 3> def{};
    if (!solve3(a, b, def))
        return std::nullopt;
    const double cx = -def[0] / 2, cy = -def[1] / 2;
    const double r2 = cx * cx + cy * cy - def[2];
    if (!(r2 > 0))
        return std::nullopt;
    OneClickCircle::Circle c;
    c.centre = {cx + mx, cy + my};
    c.radius = std::sqrt(r2);
    return c;
}

// Gauss-Newton on the distances to the circle, from a start near it.
bool geometricFit(const std::vector<PointD>& points, OneClickCircle::Circle& c)
{
    for (int iteration = 0; iteration < 20; ++iteration) {
        std::array<std::array<double, 3>, 3> a{};
        std::array<double, 3> b{};
        for (const PointD& p : points) {
            const double dx = p.x - c.centre.x, dy = p.y - c.centre.y;
            const double d = std::hypot(dx, dy);
            if (d == 0)
                return false;
            // residual d - r; its derivatives by cx, cy and r
            const double row[3] = {-dx / d, -dy / d, -1};
            const double residual = d - c.radius;
            for (int r = 0; r < 3; ++r) {
                for (int k = 0; k < 3; ++k)
                    a[static_cast<std::size_t>(r)][static_cast<std::size_t>(k)] += row[r] * row[k];
                b[static_cast<std::size_t>(r)] -= row[r] * residual;
            }
        }
        std::array<double, 3> step{};
        if (!solve3(a, b, step))
            return false;
        c.centre.x += step[0];
        c.centre.y += step[1];
        c.radius += step[2];
        if (std::abs(step[0]) + std::abs(step[1]) + std::abs(step[2]) < 1e-9)
            break;
    }
    return std::isfinite(c.radius) && c.radius > 0;
}

double medianOf(std::vector<double> v)
{
    auto middle = v.begin() + static_cast<std::ptrdiff_t>(v.size() / 2);
    std::nth_element(v.begin(), middle, v.end());
    return *middle;
}

// The first edge going out from `from` along `u`, between `near` and `far`
// px, whose slope has the sign wanted (0: either); its distance from `from`.
std::optional<std::pair<double, double>> firstEdge(const EdgeSnap& snap, PointD from, Vec u, double near,
                                                   double far, double sign)
{
    const PointD a{from.x + near * u.x, from.y + near * u.y};
    const PointD b{from.x + far * u.x, from.y + far * u.y};
    for (const EdgeSnap::ProfileEdge& e : EdgeSnap::edgesOf(snap.profile(a, b, 1))) {
        // An edge cut by the profile's end is placed badly: the next, longer profile takes it.
        if (e.at > far - near - 2.0)
            break;
        if (sign == 0 || (e.slope > 0) == (sign > 0))
            return std::make_pair(near + e.at, e.slope);
    }
    return std::nullopt;
}

}  // namespace

std::optional<OneClickCircle::Circle> OneClickCircle::leastSquares(const std::vector<PointD>& points)
{
    if (points.size() < 3)
        return std::nullopt;
    std::optional<Circle> c = algebraicFit(points);
    if (!c || !geometricFit(points, *c))
        return std::nullopt;
    c->edges = points;
    return c;
}

std::optional<OneClickCircle::Circle> OneClickCircle::fit(std::vector<PointD> points, std::size_t minimum)
{
    minimum = std::max<std::size_t>(minimum, 3);
    int dropped = 0;
    while (points.size() >= minimum) {
        std::optional<Circle> c = leastSquares(points);
        if (!c)
            return std::nullopt;
        std::vector<double> residuals;
        for (const PointD& p : points)
            residuals.push_back(std::abs(std::hypot(p.x - c->centre.x, p.y - c->centre.y) - c->radius));
        const double limit = std::max(kOutlierFloor, kOutlier * 1.4826 * medianOf(residuals));
        // The worst point goes first: one far outlier pulls the circle and
        // makes good points look bad until it has gone.
        const auto worst = std::max_element(residuals.begin(), residuals.end());
        if (*worst <= limit) {
            c->dropped = dropped;
            return c;
        }
        points.erase(points.begin() + (worst - residuals.begin()));
        ++dropped;
    }
    return std::nullopt;
}

std::optional<OneClickCircle::Circle> OneClickCircle::find(const EdgeSnap& snap, PointD click)
{
    if (!std::isfinite(click.x) || !std::isfinite(click.y))
        return std::nullopt;
    // First pass: rays from the click, each as long as it takes to meet an
    // edge; the sign the most rays agree on is the disc's rim.
    std::vector<std::pair<PointD, double>> found;
    for (int i = 0; i < kFirstRays; ++i) {
        const double a = kTwoPi * i / kFirstRays;
        const Vec u{std::cos(a), std::sin(a)};
        for (double length = kFirstRayLength; length <= 4096; length *= 2) {
            const double back = length > kFirstRayLength ? length / 2 - 4 : 0;
            if (const auto e = firstEdge(snap, click, u, back, length, 0)) {
                found.push_back({{click.x + e->first * u.x, click.y + e->first * u.y}, e->second});
                break;
            }
        }
    }
    const auto rising = std::count_if(found.begin(), found.end(), [](const auto& f) { return f.second > 0; });
    const double sign = 2 * rising >= static_cast<std::ptrdiff_t>(found.size()) ? 1.0 : -1.0;
    std::vector<PointD> points;
    for (const auto& [p, slope] : found)
        if ((slope > 0) == (sign > 0))
            points.push_back(p);
    const std::optional<Circle> first = fit(points, kFirstRays / 2);
    if (!first || first->radius < kMinRadius)
        return std::nullopt;

    // Second pass: rays from that centre, searched only near that circle.
    const int rays = std::clamp(static_cast<int>(kTwoPi * first->radius / kRayGap), kMinRays, kMaxRays);
    const double near = std::max(0.0, first->radius - kSearch);
    points.clear();
    for (int i = 0; i < rays; ++i) {
        const double a = kTwoPi * i / rays;
        const Vec u{std::cos(a), std::sin(a)};
        if (const auto e = firstEdge(snap, first->centre, u, near, first->radius + kSearch, sign))
            points.push_back({first->centre.x + e->first * u.x, first->centre.y + e->first * u.y});
    }
    // A true rim is met by most rays and lies close to one circle.
    std::optional<Circle> circle = fit(points, static_cast<std::size_t>(3 * rays / 4));
    if (!circle || circle->radius < kMinRadius)
        return std::nullopt;
    double squares = 0;
    for (const PointD& p : circle->edges) {
        const double r = std::hypot(p.x - circle->centre.x, p.y - circle->centre.y) - circle->radius;
        squares += r * r;
    }
    if (std::sqrt(squares / static_cast<double>(circle->edges.size())) > kMaxSpread)
        return std::nullopt;
    circle->dropped += rays - static_cast<int>(points.size());
    return circle;
}

}  // namespace tavix
