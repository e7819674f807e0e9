#include "measure/EdgeSnap.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace tavix {

namespace {

// The patch read around a click: the reach, the profile's half length, the
// averaging along the edge and the smoothing all have to fit in it.
constexpr int kHalf = 16;
constexpr int kSide = 2 * kHalf;
constexpr double kProfileHalf = 6.0;  // px each side of the edge
constexpr double kStep = 0.25;        // px between profile samples
constexpr int kSamples = static_cast<int>(2 * kProfileHalf / kStep) + 1;
// A gradient counts as an edge only this many times above the patch's
// typical gradient (noise and texture), and never below a few grey levels.
constexpr double kAboveTypical = 5.0;
constexpr double kMinGradient = 3.0;  // grey levels per pixel
// Where the derivative falls below this share of its peak, the peak ends.
constexpr double kPeakFloor = 0.1;
// A second, opposite peak at least this strong and this close makes a line.
constexpr double kLineShare = 0.5;
constexpr double kLineReach = 5.0;
// Half the window in which a slope's centroid is taken: a sharp edge's slope
// spans a little over two pixels.
constexpr double kEdgeWindow = 1.5;
// Profiles are taken this far along the edge each side (px), one a pixel.
constexpr int kAlong = 4;

struct Vec {
    double x = 0, y = 0;
};

float luminance(const QImage& picture, const uchar* line, int x)
{
    switch (picture.format()) {
        case QImage::Format_Grayscale8:
            return line[x];
        case QImage::Format_RGB888:
            return 0.299f * line[3 * x] + 0.587f * line[3 * x + 1] + 0.114f * line[3 * x + 2];
        default: {  // 32 bits a pixel (see readable())
            const QRgb c = reinterpret_cast<const QRgb*>(line)[x];
            return 0.299f * qRed(c) + 0.587f * qGreen(c) + 0.114f * qBlue(c);
        }
    }
}

// The grey levels of a patch of the picture, with its smoothed gradient.
class Patch {
public:
    Patch(const QImage& picture, PointD centre)
        : ox_(static_cast<int>(std::floor(centre.x)) - kHalf),
          oy_(static_cast<int>(std::floor(centre.y)) - kHalf)
    {
        grey_.resize(kSide * kSide);
        const int w = picture.width();
        const int h = picture.height();
        for (int j = 0; j < kSide; ++j) {
            const int y = std::clamp(oy_ + j, 0, h - 1);
            const uchar* line = picture.constScanLine(y);
            for (int i = 0; i < kSide; ++i) {
                const int x = std::clamp(ox_ + i, 0, w - 1);
                grey_[j * kSide + i] = luminance(picture, line, x);
            }
        }
        smoothGradient();
    }

    // Bilinear grey level at a picture point (pixel centres at +0.5).
    double grey(double x, double y) const { return bilinear(grey_, x, y); }
    Vec gradient(double x, double y) const { return {bilinear(gx_, x, y), bilinear(gy_, x, y)}; }

    // Gradient magnitude of patch pixel (i, j); 0 near the patch's border.
    double magnitude(int i, int j) const { return std::hypot(gx_[j * kSide + i], gy_[j * kSide + i]); }
    int originX() const { return ox_; }
    int originY() const { return oy_; }

private:
    // Gaussian smoothing (sigma 1 px) and a Sobel gradient in grey levels per pixel.
    void smoothGradient()
    {
        static constexpr std::array<float, 7> kernel = {0.00443f, 0.05400f, 0.24203f, 0.39905f,
                                                        0.24203f, 0.05400f, 0.00443f};
        std::vector<float> across(grey_.size()), smooth(grey_.size());
        const auto at = [](int v) { return std::clamp(v, 0, kSide - 1); };
        for (int j = 0; j < kSide; ++j)
            for (int i = 0; i < kSide; ++i) {
                float sum = 0;
                for (int k = -3; k <= 3; ++k)
                    sum += kernel[static_cast<size_t>(k + 3)] * grey_[j * kSide + at(i + k)];
                across[j * kSide + i] = sum;
            }
        for (int j = 0; j < kSide; ++j)
            for (int i = 0; i < kSide; ++i) {
                float sum = 0;
                for (int k = -3; k <= 3; ++k)
                    sum += kernel[static_cast<size_t>(k + 3)] * across[at(j + k) * kSide + i];
                smooth[j * kSide + i] = sum;
            }
        gx_.assign(grey_.size(), 0.0f);
        gy_.assign(grey_.size(), 0.0f);
        const auto s = [&](int i, int j) { return smooth[j * kSide + i]; };
        for (int j = 4; j < kSide - 4; ++j)
            for (int i = 4; i < kSide - 4; ++i) {
                gx_[j * kSide + i] = (s(i + 1, j - 1) + 2 * s(i + 1, j) + s(i + 1, j + 1) - s(i - 1, j - 1) -
                                      2 * s(i - 1, j) - s(i - 1, j + 1)) /
                                     8;
                gy_[j * kSide + i] = (s(i - 1, j + 1) + 2 * s(i, j + 1) + s(i + 1, j + 1) - s(i - 1, j - 1) -
                                      2 * s(i, j - 1) - s(i + 1, j - 1)) /
                                     8;
            }
    }

    double bilinear(const std::vector<float>& v, double x, double y) const
    {
        const double fx = std::clamp(x - 0.5 - ox_, 0.0, kSide - 1.001);
        const double fy = std::clamp(y - 0.5 - oy_, 0.0, kSide - 1.001);
        const int i = static_cast<int>(fx);
        const int j = static_cast<int>(fy);
        const double ax = fx - i;
        const double ay = fy - j;
        const auto p = [&](int di, int dj) { return static_cast<double>(v[(j + dj) * kSide + i + di]); };
        return (1 - ay) * ((1 - ax) * p(0, 0) + ax * p(1, 0)) + ay * ((1 - ax) * p(0, 1) + ax * p(1, 1));
    }

    int ox_, oy_;
    std::vector<float> grey_, gx_, gy_;
};

double position(int k)
{
    return -kProfileHalf + k * kStep;
}

// Centroid of weight(k) over a window of fixed half width around `centre`,
// taken again around each new centroid. A fixed, symmetric window keeps the
// whole peak and lets the noise average out instead of clipping one side.
template <typename Weight>
double windowCentroid(double centre, double halfWidth, Weight weight)
{
    for (int pass = 0; pass < 3; ++pass) {
        double sum = 0, moment = 0;
        for (int k = 1; k + 1 < kSamples; ++k) {
            if (std::abs(position(k) - centre) > halfWidth)
                continue;
            const double w = weight(k, centre);
            sum += w;
            moment += w * position(k);
        }
        if (sum <= 0)
            break;
        centre = std::clamp(moment / sum, -kProfileHalf + halfWidth, kProfileHalf - halfWidth);
    }
    return centre;
}

// Where the derivative of sign `sign` around sample k stays above a share of
// its height: the peak's extent, to tell a thin line from a single edge.
std::pair<int, int> peakExtent(const std::array<double, kSamples>& d, int k, double sign)
{
    const double floor = kPeakFloor * sign * d[static_cast<size_t>(k)];
    int first = k, last = k;
    while (first > 1 && sign * d[static_cast<size_t>(first - 1)] > floor)
        --first;
    while (last < kSamples - 2 && sign * d[static_cast<size_t>(last + 1)] > floor)
        ++last;
    return {first, last};
}

// The edge (or line middle) on the normal through `q`: its offset along the
// normal, or nothing when the profile has no clear peak near q.
std::optional<double> edgeAlong(const Patch& patch, PointD q, Vec n)
{
    std::array<double, kSamples> profile{};
    for (int k = 0; k < kSamples; ++k)
        profile[static_cast<size_t>(k)] = patch.grey(q.x + position(k) * n.x, q.y + position(k) * n.y);
    std::array<double, kSamples> d{};
    for (int k = 1; k + 1 < kSamples; ++k)
        d[static_cast<size_t>(k)] =
            (profile[static_cast<size_t>(k + 1)] - profile[static_cast<size_t>(k - 1)]) / (2 * kStep);

    // The strongest slope within two pixels of q.
    int best = -1;
    for (int k = 1; k + 1 < kSamples; ++k) {
        if (std::abs(position(k)) <= 2.0 &&
            (best < 0 || std::abs(d[static_cast<size_t>(k)]) > std::abs(d[static_cast<size_t>(best)])))
            best = k;
    }
    if (best < 0 || d[static_cast<size_t>(best)] == 0)
        return std::nullopt;
    const double sign = d[static_cast<size_t>(best)] > 0 ? 1.0 : -1.0;
    const double height = sign * d[static_cast<size_t>(best)];
    const auto [first, last] = peakExtent(d, best, sign);

    // A close opposite peak of similar height: a thin line, whose middle counts.
    int opposite = -1;
    for (int k = 1; k + 1 < kSamples; ++k) {
        const double gap =
            k < first ? position(first) - position(k) : (k > last ? position(k) - position(last) : -1);
        if (gap < 0 || gap > kLineReach)
            continue;
        if (opposite < 0 || -sign * d[static_cast<size_t>(k)] > -sign * d[static_cast<size_t>(opposite)])
            opposite = k;
    }
    if (opposite >= 0 && -sign * d[static_cast<size_t>(opposite)] >= kLineShare * height) {
        // The line's middle: the centroid of its contrast against the level
        // at the window's ends, over the line and two pixels each side.
        const double middle = (position(best) + position(opposite)) / 2;
        const double half = std::abs(position(best) - position(opposite)) / 2 + kEdgeWindow;
        // Falling then rising is a dark line; rising then falling a bright one.
        const double dark = (position(best) < position(opposite)) == (sign < 0) ? 1.0 : -1.0;
        const auto level = [&](double t) {
            const int k = static_cast<int>(std::lround((t + kProfileHalf) / kStep));
            return profile[static_cast<size_t>(std::clamp(k, 0, kSamples - 1))];
        };
        return windowCentroid(middle, half, [&](int k, double centre) {
            const double left = level(centre - half), right = level(centre + half);
            const double base = left + (right - left) * (position(k) - (centre - half)) / (2 * half);
            return dark * (base - profile[static_cast<size_t>(k)]);
        });
    }
    return windowCentroid(position(best), kEdgeWindow,
                          [&](int k, double) { return sign * d[static_cast<size_t>(k)]; });
}

// The edge where the normal through q meets it: the edge found on profiles
// one pixel apart along it, fitted with a parabola (which follows a tilted or
// curved edge) and read at q. Against noise, the fit uses the whole stretch.
std::optional<double> edgeAt(const Patch& patch, PointD q, Vec n)
{
    std::vector<std::pair<double, double>> found;  // (along, across)
    for (int u = -kAlong; u <= kAlong; ++u) {
        const PointD at{q.x - u * n.y, q.y + u * n.x};
        if (const auto t = edgeAlong(patch, at, n))
            found.emplace_back(u, *t);
    }
    if (found.size() < static_cast<size_t>(kAlong + 1))
        return std::nullopt;
    // Profiles that met something else (a corner, a neighbour) are left out.
    std::vector<double> across;
    for (const auto& f : found)
        across.push_back(f.second);
    std::nth_element(across.begin(), across.begin() + static_cast<std::ptrdiff_t>(across.size() / 2),
                     across.end());
    const double median = across[across.size() / 2];
    std::erase_if(found, [median](const auto& f) { return std::abs(f.second - median) > 1.0; });
    if (found.size() < static_cast<size_t>(kAlong + 1))
        return std::nullopt;
    // Least squares t = a + b u + c u^2 through the normal equations.
    double s[5] = {}, r[3] = {};
    for (const auto& [u, t] : found) {
        double p = 1;
        for (int i = 0; i < 5; ++i, p *= u)
            s[i] += p;
        r[0] += t;
        r[1] += t * u;
        r[2] += t * u * u;
    }
    const auto det3 = [](double a, double b, double c, double d, double e, double f, double g, double h,
                         double i) {
        return a * (e * i - f * h) - b * (d * i - f * g) + c * (d * h - e * g);
    };
    const double det = det3(s[0], s[1], s[2], s[1], s[2], s[3], s[2], s[3], s[4]);
    if (std::abs(det) < 1e-9)
        return median;
    return det3(r[0], s[1], s[2], r[1], s[2], s[3], r[2], s[3], s[4]) / det;
}

Vec unit(Vec v)
{
    const double length = std::hypot(v.x, v.y);
    return {v.x / length, v.y / length};
}

// The picture in a format that the patch reads directly; stills already are.
QImage readable(QImage picture)
{
    switch (picture.format()) {
        case QImage::Format_Grayscale8:
        case QImage::Format_RGB888:
        case QImage::Format_RGB32:
        case QImage::Format_ARGB32:
            return picture;
        default:
            return picture.convertToFormat(QImage::Format_RGB32);
    }
}

// A profile's slopes stand out when they are this many times its typical
// slope, and never below this many grey levels per pixel.
constexpr double kProfileAboveTypical = 6.0;
constexpr double kMinProfileSlope = 10.0;

// The lower quartile; for noise about twice that is the median.
double quartile(std::vector<double> values)
{
    if (values.empty())
        return 0;
    auto at = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 4);
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

// The centroid of the slope of sign `sign` around `centre`, as the snap takes
// it, within [low, high]: there the neighbours' slopes begin.
double slopeCentroid(const std::vector<double>& d, double centre, double sign, double low, double high)
{
    const double step = EdgeSnap::kProfileStep;
    for (int pass = 0; pass < 3; ++pass) {
        const double from = std::max(low, centre - kEdgeWindow);
        const double to = std::min(high, centre + kEdgeWindow);
        double sum = 0, moment = 0;
        for (auto k = static_cast<std::size_t>(std::max(1.0, std::ceil(from / step)));
             k + 1 < d.size() && k * step <= to; ++k) {
            const double w = std::max(0.0, sign * d[k]);
            sum += w;
            moment += w * (k * step);
        }
        if (sum <= 0)
            break;
        centre = moment / sum;
    }
    return centre;
}

}  // namespace

double EdgeSnap::grey(PointD p) const
{
    if (picture_.isNull())
        return 0;
    const int w = picture_.width();
    const int h = picture_.height();
    const double fx = std::clamp(p.x - 0.5, 0.0, w - 1.0);
    const double fy = std::clamp(p.y - 0.5, 0.0, h - 1.0);
    const int i = std::min(static_cast<int>(fx), std::max(0, w - 2));
    const int j = std::min(static_cast<int>(fy), std::max(0, h - 2));
    const double ax = fx - i;
    const double ay = fy - j;
    const int i1 = std::min(i + 1, w - 1);
    const uchar* top = picture_.constScanLine(j);
    const uchar* bottom = picture_.constScanLine(std::min(j + 1, h - 1));
    const double upper = (1 - ax) * luminance(picture_, top, i) + ax * luminance(picture_, top, i1);
    const double lower = (1 - ax) * luminance(picture_, bottom, i) + ax * luminance(picture_, bottom, i1);
    return (1 - ay) * upper + ay * lower;
}

std::vector<double> EdgeSnap::profile(PointD from, PointD to, int band) const
{
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    if (picture_.isNull() || !std::isfinite(length) || length < 1.0)
        return {};
    const Vec along{(to.x - from.x) / length, (to.y - from.y) / length};
    const Vec across{-along.y, along.x};
    const int lines = std::max(1, band);
    const auto samples = static_cast<std::size_t>(length / kProfileStep) + 1;
    std::vector<double> values(samples, 0.0);
    for (int l = 0; l < lines; ++l) {
        const double offset = l - (lines - 1) / 2.0;  // a pixel apart, centred on the line
        const PointD start{from.x + offset * across.x, from.y + offset * across.y};
        for (std::size_t k = 0; k < samples; ++k) {
            const double t = k * kProfileStep;
            values[k] += grey({start.x + t * along.x, start.y + t * along.y});
        }
    }
    for (double& v : values)
        v /= lines;
    return values;
}

std::vector<EdgeSnap::ProfileEdge> EdgeSnap::edgesOf(const std::vector<double>& profile)
{
    // Slopes over one pixel find the edges; the fine slope places them.
    constexpr std::size_t half = 2;  // samples each side: half a pixel
    if (profile.size() < 4 * half + 1)
        return {};
    const std::size_t n = profile.size();
    std::vector<double> d(n, 0.0), s(n, 0.0);
    for (std::size_t k = 1; k + 1 < n; ++k)
        d[k] = (profile[k + 1] - profile[k - 1]) / (2 * kProfileStep);
    std::vector<double> magnitudes;
    for (std::size_t k = half; k + half < n; ++k) {
        s[k] = (profile[k + half] - profile[k - half]) / (2 * half * kProfileStep);
        magnitudes.push_back(std::abs(s[k]));
    }
    // The typical slope of noise, from the quieter half of the profile: on a
    // scale's ticks nearly half of it is slope.
    const double threshold = std::max(kMinProfileSlope, kProfileAboveTypical * 2 * quartile(magnitudes));

    // Local peaks of the slope, the stronger one of a pair closer than a pixel.
    std::vector<std::size_t> peaks;
    for (std::size_t k = half + 1; k + half + 1 < n; ++k) {
        const double m = std::abs(s[k]);
        if (m < threshold || m < std::abs(s[k - 1]) || m <= std::abs(s[k + 1]))
            continue;
        if (!peaks.empty() && (k - peaks.back()) * kProfileStep < 1.0 &&
            (s[k] > 0) == (s[peaks.back()] > 0)) {
            if (m > std::abs(s[peaks.back()]))
                peaks.back() = k;
            continue;
        }
        peaks.push_back(k);
    }

    std::vector<ProfileEdge> edges;
    for (std::size_t i = 0; i < peaks.size(); ++i) {
        const double at = peaks[i] * kProfileStep;
        const double low = i > 0 ? (peaks[i - 1] * kProfileStep + at) / 2 : 0.0;
        const double high =
            i + 1 < peaks.size() ? (peaks[i + 1] * kProfileStep + at) / 2 : (n - 1) * kProfileStep;
        const double sign = s[peaks[i]] > 0 ? 1.0 : -1.0;
        edges.push_back({slopeCentroid(d, at, sign, low, high), s[peaks[i]]});
    }
    return edges;
}

EdgeSnap::EdgeSnap(QImage picture) : picture_(readable(std::move(picture)))
{
}

std::optional<PointD> EdgeSnap::find(PointD click) const
{
    if (picture_.isNull() || !std::isfinite(click.x) || !std::isfinite(click.y))
        return std::nullopt;
    const Patch patch(picture_, click);

    // The strongest gradient in reach, against the patch's typical gradient.
    std::vector<double> magnitudes;
    magnitudes.reserve(kSide * kSide);
    double strongest = 0;
    PointD candidate;
    for (int j = 4; j < kSide - 4; ++j)
        for (int i = 4; i < kSide - 4; ++i) {
            const double m = patch.magnitude(i, j);
            magnitudes.push_back(m);
            const PointD centre{patch.originX() + i + 0.5, patch.originY() + j + 0.5};
            if (std::hypot(centre.x - click.x, centre.y - click.y) <= kReach && m > strongest) {
                strongest = m;
                candidate = centre;
            }
        }
    auto middle = magnitudes.begin() + static_cast<std::ptrdiff_t>(magnitudes.size() / 2);
    std::nth_element(magnitudes.begin(), middle, magnitudes.end());
    if (strongest < kMinGradient || strongest < kAboveTypical * *middle)
        return std::nullopt;

    // First across the edge at the strongest pixel; then again on the normal
    // through the click, so that the point moves across the edge only.
    Vec n = unit(patch.gradient(candidate.x, candidate.y));
    const auto first = edgeAt(patch, candidate, n);
    if (!first)
        return std::nullopt;
    const PointD onEdge{candidate.x + *first * n.x, candidate.y + *first * n.y};
    const double across = (onEdge.x - click.x) * n.x + (onEdge.y - click.y) * n.y;
    const PointD foot{click.x + across * n.x, click.y + across * n.y};
    const Vec there = patch.gradient(foot.x, foot.y);
    if (std::hypot(there.x, there.y) >= kMinGradient)
        n = unit(there);
    const auto second = edgeAt(patch, foot, n);
    if (!second)
        return std::nullopt;
    const PointD edge{foot.x + *second * n.x, foot.y + *second * n.y};
    if (std::hypot(edge.x - click.x, edge.y - click.y) > kReach + 1.0)
        return std::nullopt;
    return edge;
}

}  // namespace tavix
