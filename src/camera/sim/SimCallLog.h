#pragma once

#include <QString>
#include <QStringList>
#include <map>
#include <optional>
#include <type_traits>

namespace tavix {

// The calls made on the simulated camera as tests script and watch them:
// each is written down as text ("SetCamParameter(0,43,1)") while recording is
// on, and answered with a scripted status instead of being run when the
// fault list names it, alone ("Open") or with its parameter type
// ("SetCamParameter:7", which comes first). Not locked: the camera's mutex
// guards it.
class SimCallLog {
public:
    void setRecording(bool on) { recording_ = on; }
    QStringList calls() const { return calls_; }
    void clear() { calls_.clear(); }

    // `type` is the parameter type of a parameter call, else -1.
    template <typename... Args>
    std::optional<int> enter(const std::map<QString, int>& failWith, const char* name, int type,
                             const Args&... args)
    {
        const QString op = QString::fromLatin1(name);
        if (recording_)
            calls_.append(op + QLatin1Char('(') + text(args...) + QLatin1Char(')'));
        return scripted(failWith, op, type);
    }

private:
    static std::optional<int> scripted(const std::map<QString, int>& failWith, const QString& op, int type);

    static QString text() { return {}; }
    template <typename T, typename... Rest>
    static QString text(const T& first, const Rest&... rest)
    {
        QString s;
        if constexpr (std::is_same_v<T, QString>)
            s = first;
        else
            s = QString::number(first);
        if constexpr (sizeof...(rest) > 0)
            s += QLatin1Char(',') + text(rest...);
        return s;
    }

    bool recording_ = false;
    QStringList calls_;
};

}  // namespace tavix
