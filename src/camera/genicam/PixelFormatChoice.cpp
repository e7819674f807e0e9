#include "camera/genicam/PixelFormatChoice.h"

#include "camera/genicam/PixelConversion.h"

#include <algorithm>

namespace tavix::PixelFormatChoice {

namespace {
int bitsPerPixel(std::uint32_t format)
{
    return static_cast<int>((format >> 16) & 0xff);
}

// The fewest bits per pixel among the offered formats that pass `wanted`, first offered on a tie.
std::int64_t leanest(const std::vector<std::uint32_t>& offered, bool (*wanted)(std::uint32_t))
{
    std::int64_t best = -1;
    for (const std::uint32_t f : offered)
        if (wanted(f) && (best < 0 || bitsPerPixel(f) < bitsPerPixel(static_cast<std::uint32_t>(best))))
            best = f;
    return best;
}
}  // namespace

std::int64_t choose(std::uint32_t current, const std::vector<std::uint32_t>& offered)
{
    if (PixelConversion::colour(current))
        return current;
    if (const std::int64_t colour = leanest(offered, &PixelConversion::colour); colour >= 0)
        return colour;
    if (PixelConversion::known(current))
        return current;
    return leanest(offered, &PixelConversion::known);
}

}  // namespace tavix::PixelFormatChoice
