#include "camera/Resolution.h"

#include <array>

namespace tavix::Resolution {

namespace {
// Index 9 is 3840x2748 as the camera reports it, not a 16:9 height.
constexpr std::array<std::pair<int, int>, 11> kSizes = {{{320, 240},
                                                         {640, 480},
                                                         {752, 480},
                                                         {800, 600},
                                                         {1024, 768},
                                                         {1280, 1024},
                                                         {1600, 1200},
                                                         {2048, 1536},
                                                         {2592, 1944},
                                                         {3840, 2748},
                                                         {1920, 1200}}};
}  // namespace

QSize size(int index)
{
    if (index < 0 || index >= static_cast<int>(kSizes.size()))
        return {0, 0};
    return {kSizes[static_cast<size_t>(index)].first, kSizes[static_cast<size_t>(index)].second};
}

QString name(int index)
{
    const QSize s = size(index);
    if (s.isEmpty())
        return QStringLiteral("not supported");
    return QStringLiteral("%1x%2").arg(s.width()).arg(s.height());
}

}  // namespace tavix::Resolution
