#include "camera/genicam/AravisCalls.h"

#undef signals
#include <glib.h>

#include <algorithm>
#include <limits>

namespace tavix::AravisCalls {

bool failed(GError*& error, const Log& log)
{
    if (!error)
        return false;
    if (log)
        log(QStringLiteral("GenICam: ") + QString::fromUtf8(error->message));
    g_clear_error(&error);
    return true;
}

std::int32_t clampInt(double v)
{
    return static_cast<std::int32_t>(std::clamp<double>(v, std::numeric_limits<std::int32_t>::min(),
                                                        std::numeric_limits<std::int32_t>::max()));
}

}  // namespace tavix::AravisCalls
