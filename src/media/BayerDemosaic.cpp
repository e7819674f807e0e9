#include "media/BayerDemosaic.h"

namespace tavix::BayerDemosaic {

namespace {

// A row and its neighbours above and below, mirrored at the picture's edges.
struct Rows {
    const uchar* up;
    const uchar* mid;
    const uchar* down;
};

// One pixel of colour Own (0 red, 1 green, 2 blue); for green, RedBeside says
// whether red lies left and right of it (else above and below).
template <int Own, bool RedBeside>
inline void pixel(const Rows& r, int x, int left, int right, uchar* out)
{
    const int v = r.mid[x];
    if constexpr (Own == 1) {
        const int beside = (r.mid[left] + r.mid[right] + 1) >> 1;
        const int across = (r.up[x] + r.down[x] + 1) >> 1;
        out[0] = static_cast<uchar>(RedBeside ? beside : across);
        out[1] = static_cast<uchar>(v);
        out[2] = static_cast<uchar>(RedBeside ? across : beside);
    } else {
        const int cross = (r.up[x] + r.down[x] + r.mid[left] + r.mid[right] + 2) >> 2;
        const int diagonal = (r.up[left] + r.up[right] + r.down[left] + r.down[right] + 2) >> 2;
        out[Own] = static_cast<uchar>(v);
        out[1] = static_cast<uchar>(cross);
        out[2 - Own] = static_cast<uchar>(diagonal);
    }
}

// One row whose even columns have colour Even and odd columns colour Odd; the
// colours are fixed per row so the inner loop has no branch on them.
template <int Even, int Odd, bool RedBeside>
void row(const Rows& r, int width, uchar* out)
{
    pixel<Even, RedBeside>(r, 0, 1, 1, out);
    int x = 1;
    for (; x + 1 < width - 1; x += 2) {
        pixel<Odd, RedBeside>(r, x, x - 1, x + 1, out + 3 * x);
        pixel<Even, RedBeside>(r, x + 1, x, x + 2, out + 3 * (x + 1));
    }
    if (x < width - 1) {
        pixel<Odd, RedBeside>(r, x, x - 1, x + 1, out + 3 * x);
        ++x;
    }
    const int last = width - 1;
    if (last & 1)
        pixel<Odd, RedBeside>(r, last, last - 1, last - 1, out + 3 * last);
    else
        pixel<Even, RedBeside>(r, last, last - 1, last - 1, out + 3 * last);
}

}  // namespace

void toRgb(const uchar* src, qsizetype srcStride, int width, int height, Pattern pattern, uchar* dst,
           qsizetype dstStride)
{
    if (width < 2 || height < 2)
        return;
    // Column and row of the red sample within the 2x2 cell.
    const bool redX = pattern == Pattern::GRBG || pattern == Pattern::BGGR;
    const int redY = (pattern == Pattern::GBRG || pattern == Pattern::BGGR) ? 1 : 0;
    for (int y = 0; y < height; ++y) {
        const int above = y == 0 ? 1 : y - 1;
        const int below = y == height - 1 ? height - 2 : y + 1;
        const Rows rows{src + above * srcStride, src + y * srcStride, src + below * srcStride};
        uchar* out = dst + y * dstStride;
        if ((y & 1) == redY)
            redX ? row<1, 0, true>(rows, width, out) : row<0, 1, true>(rows, width, out);
        else
            redX ? row<2, 1, false>(rows, width, out) : row<1, 2, false>(rows, width, out);
    }
}

}  // namespace tavix::BayerDemosaic
