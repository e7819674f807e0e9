#include "camera/sim/SimCallLog.h"

namespace tavix {

std::optional<int> SimCallLog::scripted(const std::map<QString, int>& failWith, const QString& op, int type)
{
    if (type >= 0) {
        const auto it = failWith.find(op + QLatin1Char(':') + QString::number(type));
        if (it != failWith.end())
            return it->second;
    }
    const auto it = failWith.find(op);
    if (it != failWith.end())
        return it->second;
    return std::nullopt;
}

}  // namespace tavix
