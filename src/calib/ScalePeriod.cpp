#include "calib/ScalePeriod.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>
#include <vector>

namespace tavix {

namespace {

constexpr double kStep = 0.5;       // px between profile samples along the line
constexpr int kAcross = 2;          // samples each side across the line, 1 px apart
constexpr double kMinPeriod = 2.5;  // px: finer divisions cannot be told apart
// The period's spectral peak must stand this far above the typical spectrum.
constexpr double kPeakOverTypical = 8.0;
// Ticks whose RMS scatter exceeds this share of a division are no scale.
constexpr double kMaxSpreadShare = 0.1;
constexpr double kEndMargin = 12;  // px

double grey(const QImage& picture, double x, double y)
{
    // Bilinear, pixel centres at +0.5; outside the picture the border repeats.
    const double fx = std::clamp(x - 0.5, 0.0, picture.width() - 1.001);
    const double fy = std::clamp(y - 0.5, 0.0, picture.height() - 1.001);
    const int i = static_cast<int>(fx), j = static_cast<int>(fy);
    const double ax = fx - i, ay = fy - j;
    const auto v = [&](int di, int dj) { return static_cast<double>(qGray(picture.pixel(i + di, j + dj))); };
    return (1 - ay) * ((1 - ax) * v(0, 0) + ax * v(1, 0)) + ay * ((1 - ax) * v(0, 1) + ax * v(1, 1));
}

// Strength of the period `period` (in samples) in the windowed profile.
double spectrum(const std::vector<double>& p, double period)
{
    // A phasor turned by one step per sample instead of a cosine and sine each.
    const double w = 2 * M_PI / period;
    const double stepRe = std::cos(w), stepIm = std::sin(w);
    double re = 0, im = 0, cRe = 1, cIm = 0;
    for (double v : p) {
        re += v * cRe;
        im += v * cIm;
        const double next = cRe * stepRe - cIm * stepIm;
        cIm = cRe * stepIm + cIm * stepRe;
        cRe = next;
    }
    return std::hypot(re, im);
}

// Least squares position = a + slope * number: (a, slope).
std::pair<double, double> fitLine(const std::vector<std::pair<double, double>>& points)
{
    double sn = 0, sx = 0, sy = 0, sxx = 0, sxy = 0;
    for (const auto& [i, x] : points) {
        sn += 1;
        sx += i;
        sy += x;
        sxx += i * i;
        sxy += i * x;
    }
    const double slope = (sn * sxy - sx * sy) / (sn * sxx - sx * sx);
    return {(sy - slope * sx) / sn, slope};
}

}  // namespace

std::optional<ScalePeriod::Result> ScalePeriod::measure(const QImage& picture, PointD from, PointD to)
{
    const double drawn = std::hypot(to.x - from.x, to.y - from.y);
    if (picture.isNull() || !(drawn >= kMinDivisions * kMinPeriod))
        return std::nullopt;
    const double ux = (to.x - from.x) / drawn, uy = (to.y - from.y) / drawn;
    // The profile runs a little past the drawn ends, so that a tick at an end
    // is seen whole; only ticks between the ends count.
    from = {from.x - kEndMargin * ux, from.y - kEndMargin * uy};
    const double length = drawn + 2 * kEndMargin;
    const int n = static_cast<int>(length / kStep) + 1;
    std::vector<double> profile(static_cast<size_t>(n));
    for (int k = 0; k < n; ++k) {
        double sum = 0;
        for (int a = -kAcross; a <= kAcross; ++a)
            sum += grey(picture, from.x + k * kStep * ux - a * uy, from.y + k * kStep * uy + a * ux);
        profile[static_cast<size_t>(k)] = sum / (2 * kAcross + 1);
    }

    // Rough period: the strongest peak of the spectrum of the profile, its
    // mean removed and its ends tapered so that they add no false period.
    const double mean = std::accumulate(profile.begin(), profile.end(), 0.0) / n;
    std::vector<double> tapered(profile.size());
    for (int k = 0; k < n; ++k)
        tapered[static_cast<size_t>(k)] =
            (profile[static_cast<size_t>(k)] - mean) * (0.5 - 0.5 * std::cos(2 * M_PI * k / (n - 1)));
    const double shortest = kMinPeriod / kStep;
    const double longest = static_cast<double>(n) / kMinDivisions;
    std::vector<std::pair<double, double>> spectrumAt;  // (period in samples, strength)
    for (double f = 1.0 / longest; f <= 1.0 / shortest; f += 0.25 / n)
        spectrumAt.emplace_back(1.0 / f, spectrum(tapered, 1.0 / f));
    if (spectrumAt.size() < 8)
        return std::nullopt;
    auto best = std::max_element(spectrumAt.begin(), spectrumAt.end(),
                                 [](const auto& a, const auto& b) { return a.second < b.second; });
    std::vector<double> strengths;
    for (const auto& s : spectrumAt)
        strengths.push_back(s.second);
    std::nth_element(strengths.begin(), strengths.begin() + static_cast<std::ptrdiff_t>(strengths.size() / 2),
                     strengths.end());
    if (best->second < kPeakOverTypical * strengths[strengths.size() / 2])
        return std::nullopt;
    // The longest strong period may be a group of divisions (long ticks every
    // ten): the divisions are the shortest period that is nearly as strong.
    double period = best->first * kStep;  // px

    // Each tick's centre: the centroid of its contrast against the bright
    // background, in a window of one division around where it is expected.
    std::vector<double> sorted = profile;
    std::sort(sorted.begin(), sorted.end());
    const double bright = sorted[sorted.size() * 9 / 10];
    const double dark = sorted[sorted.size() / 10];
    const auto contrast = [&](int k) { return std::max(0.0, bright - profile[static_cast<size_t>(k)]); };
    // Start at the darkest sample of the first division.
    int start = 0;
    for (int k = 0; k * kStep < period; ++k)
        if (profile[static_cast<size_t>(k)] < profile[static_cast<size_t>(start)])
            start = k;
    std::vector<std::pair<double, double>> ticks;  // (tick number, position px)
    for (int pass = 0; pass < 2; ++pass) {
        ticks.clear();
        double expected = start * kStep;
        if (pass == 1)
            expected = std::fmod(expected, period);
        for (int i = 0; expected < length; ++i, expected += period) {
            double sum = 0, moment = 0, deepest = 0;
            for (int k = static_cast<int>(std::ceil((expected - period / 2) / kStep));
                 k * kStep < expected + period / 2; ++k) {
                if (k < 0 || k >= n)
                    continue;
                sum += contrast(k);
                moment += contrast(k) * k * kStep;
                deepest = std::max(deepest, contrast(k));
            }
            // A tick must reach half the scale's contrast, lie between the
            // drawn ends, and its window on the profile.
            if (sum > 0 && deepest > 0.5 * (bright - dark) && expected - period / 2 >= 0 &&
                expected + period / 2 <= length && moment / sum >= kEndMargin &&
                moment / sum <= kEndMargin + drawn)
                ticks.emplace_back(i, moment / sum);
        }
        if (ticks.size() < static_cast<size_t>(kMinDivisions + 1))
            return std::nullopt;
        auto [a, slope] = fitLine(ticks);
        period = slope;
        start = static_cast<int>(std::lround(a / kStep));
        if (pass == 1) {
            // A tick cut by an end of the line or marred by dirt is left out.
            std::vector<double> off;
            for (const auto& [i, x] : ticks)
                off.push_back(std::abs(x - a - period * i));
            std::vector<double> sortedOff = off;
            std::sort(sortedOff.begin(), sortedOff.end());
            const double limit = std::max(0.05, 4 * sortedOff[sortedOff.size() / 2]);
            std::vector<std::pair<double, double>> kept;
            for (size_t t = 0; t < ticks.size(); ++t)
                if (off[t] <= limit)
                    kept.push_back(ticks[t]);
            if (kept.size() < static_cast<size_t>(kMinDivisions + 1))
                return std::nullopt;
            std::tie(a, period) = fitLine(kept);
            double squares = 0;
            for (const auto& [i, x] : kept)
                squares += (x - a - period * i) * (x - a - period * i);
            Result r;
            r.periodPixels = period;
            r.divisions = static_cast<int>(kept.back().first - kept.front().first);
            r.spreadPixels = std::sqrt(squares / static_cast<double>(kept.size()));
            if (r.divisions < kMinDivisions || r.spreadPixels > kMaxSpreadShare * period)
                return std::nullopt;
            return r;
        }
    }
    return std::nullopt;
}

}  // namespace tavix
