#include "camera/BayerDemosaic.h"

namespace tavix::BayerDemosaic {

namespace {

// A row and its neighbours above and below, mirrored at the picture's edges.
struct Rows {
    const uchar* up;
    const uchar* mid;
    const uchar* down;
};

// One pixel: its own colour `own` (0 red, 1 green, 2 blue) and, for green, whether
// red lies left and right of it (else above and below).
inline void pixel(const Rows& r, int x, int left, int right, int own, bool redBeside, uchar* out)
{
    const int v = r.mid[x];
    if (own == 1) {
        const int beside = (r.mid[left] + r.mid[right] + 1) >> 1;
        const int across = (r.up[x] + r.down[x] + 1) >> 1;
        out[0] = static_cast<uchar>(redBeside ? beside : across);
        out[1] = static_cast<uchar>(v);
        out[2] = static_cast<uchar>(redBeside ? across : beside);
        return;
    }
    const int cross = (r.up[x] + r.down[x] + r.mid[left] + r.mid[right] + 2) >> 2;
    const int diagonal = (r.up[left] + r.up[right] + r.down[left] + r.down[right] + 2) >> 2;
    out[own] = static_cast<uchar>(v);
    out[1] = static_cast<uchar>(cross);
    out[2 - own] = static_cast<uchar>(diagonal);
}

}  // namespace

void toRgb(const uchar* src, qsizetype srcStride, int width, int height, Pattern pattern, uchar* dst,
           qsizetype dstStride)
{
    if (width < 2 || height < 2)
        return;
    // Column and row of the red sample within the 2x2 cell.
    const int redX = (pattern == Pattern::GRBG || pattern == Pattern::BGGR) ? 1 : 0;
    const int redY = (pattern == Pattern::GBRG || pattern == Pattern::BGGR) ? 1 : 0;
    for (int y = 0; y < height; ++y) {
        const int above = y == 0 ? 1 : y - 1;
        const int below = y == height - 1 ? height - 2 : y + 1;
        const Rows rows{src + above * srcStride, src + y * srcStride, src + below * srcStride};
        const bool redRow = (y & 1) == redY;
        uchar* out = dst + y * dstStride;
        // Colour of the even and odd columns of this row.
        const int evenOwn = redRow ? (redX == 0 ? 0 : 1) : (redX == 0 ? 1 : 2);
        const int oddOwn = redRow ? (redX == 0 ? 1 : 0) : (redX == 0 ? 2 : 1);
        const auto one = [&](int x, int left, int right) {
            pixel(rows, x, left, right, (x & 1) ? oddOwn : evenOwn, redRow, out + 3 * x);
        };
        one(0, 1, 1);
        for (int x = 1; x < width - 1; ++x)
            one(x, x - 1, x + 1);
        one(width - 1, width - 2, width - 2);
    }
}

}  // namespace tavix::BayerDemosaic
