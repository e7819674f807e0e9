#include "common/FaultPoint.h"

#include "common/RunError.h"

#include <QHash>
#include <atomic>
#include <mutex>

namespace tavix::FaultPoint {

namespace {
struct Armed {
    int number = 0;
    int times = 0;
};

std::mutex mutex;
QHash<QString, Armed>& table()
{
    static QHash<QString, Armed> armed;
    return armed;
}
std::atomic<bool> anyArmed{false};
}  // namespace

void arm(const QString& place, int number, int times)
{
    std::lock_guard lock(mutex);
    table().insert(place, {number, times});
    anyArmed = true;
}

void disarmAll()
{
    std::lock_guard lock(mutex);
    table().clear();
    anyArmed = false;
}

void pass(const char* place)
{
    if (!anyArmed.load(std::memory_order_relaxed))
        return;
    int number = 0;
    {
        std::lock_guard lock(mutex);
        const auto it = table().find(QLatin1String(place));
        if (it == table().end() || it->times <= 0)
            return;
        number = it->number;
        --it->times;
    }
    throw RunError(number);
}

}  // namespace tavix::FaultPoint
