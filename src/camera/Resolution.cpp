#include "camera/Resolution.h"

#include <QHash>
#include <QMutex>
#include <QMutexLocker>
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

// Sizes webcams, USB microscopes and industrial sensors commonly offer, from
// index 12 on. Only ever append: a settings file keeps these indices.
constexpr int kCommonFirst = 12;
constexpr std::array<std::pair<int, int>, 48> kCommon = {{
    {1280, 720},  {1920, 1080}, {640, 360},   {848, 480},   {960, 540},   {1024, 576},  {1280, 800},
    {1280, 960},  {1366, 768},  {1440, 1080}, {1600, 900},  {2560, 1440}, {3840, 2160}, {4096, 2160},
    {160, 120},   {176, 144},   {320, 180},   {352, 288},   {424, 240},   {720, 480},   {720, 576},
    {960, 720},   {1024, 600},  {1296, 972},  {2048, 1080}, {2448, 2048}, {1224, 1024}, {2560, 1920},
    {3264, 2448}, {4000, 3000}, {4208, 3120}, {5472, 3648}, {2592, 1458}, {1024, 1024}, {2048, 2048},
    {1280, 1080}, {1920, 1440}, {2304, 1296}, {2304, 1536}, {3072, 2048}, {4096, 3000}, {2064, 1544},
    {800, 480},   {1152, 648},  {1440, 1024}, {2688, 1520}, {640, 512},   {2592, 2048},
}};

constexpr int kHashFirst = 1000;
constexpr int kHashCount = 31000;

// Sizes given a computed index this run, both ways.
struct Given {
    QMutex lock;
    QHash<int, QSize> byIndex;
    QHash<quint64, int> bySize;
};

Given& given()
{
    static Given g;
    return g;
}

quint64 key(QSize s)
{
    return (static_cast<quint64>(static_cast<quint32>(s.width())) << 32) | static_cast<quint32>(s.height());
}
}  // namespace

QSize size(int index)
{
    if (index >= 0 && index < static_cast<int>(kSizes.size()))
        return {kSizes[static_cast<size_t>(index)].first, kSizes[static_cast<size_t>(index)].second};
    if (index >= kCommonFirst && index < kCommonFirst + static_cast<int>(kCommon.size())) {
        const auto& c = kCommon[static_cast<size_t>(index - kCommonFirst)];
        return {c.first, c.second};
    }
    if (index >= kHashFirst && index < kHashFirst + kHashCount) {
        Given& g = given();
        const QMutexLocker locked(&g.lock);
        return g.byIndex.value(index, QSize(0, 0));
    }
    return {0, 0};
}

QString name(int index)
{
    const QSize s = size(index);
    if (s.isEmpty())
        return QStringLiteral("not supported");
    return QStringLiteral("%1x%2").arg(s.width()).arg(s.height());
}

int indexOf(QSize s)
{
    if (s.width() <= 0 || s.height() <= 0)
        return -1;
    const std::pair<int, int> wh{s.width(), s.height()};
    for (size_t i = 0; i < kSizes.size(); ++i)
        if (kSizes[i] == wh)
            return static_cast<int>(i);
    for (size_t i = 0; i < kCommon.size(); ++i)
        if (kCommon[i] == wh)
            return kCommonFirst + static_cast<int>(i);

    Given& g = given();
    const QMutexLocker locked(&g.lock);
    if (const auto found = g.bySize.constFind(key(s)); found != g.bySize.constEnd())
        return *found;
    const quint64 mixed = static_cast<quint64>(s.width()) * 4099u + static_cast<quint64>(s.height());
    int slot = static_cast<int>(mixed % kHashCount);
    while (g.byIndex.contains(kHashFirst + slot))
        slot = (slot + 1) % kHashCount;
    g.byIndex.insert(kHashFirst + slot, s);
    g.bySize.insert(key(s), kHashFirst + slot);
    return kHashFirst + slot;
}

}  // namespace tavix::Resolution
