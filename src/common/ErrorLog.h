#pragma once

#include <QDateTime>
#include <QString>
#include <functional>

namespace tavix {

// Appends "date time message" lines to the program folder's "Error.Log".
// The file is opened and closed for every line; a failing write is dropped.
class ErrorLog {
public:
    using Clock = std::function<QDateTime()>;

    explicit ErrorLog(QString path, Clock clock = &QDateTime::currentDateTime);

    void write(const QString& message) const;
    void operator()(const QString& message) const { write(message); }

    const QString& path() const { return path_; }

    // Local short date followed by the time of day with seconds.
    static QString timestamp(const QDateTime& when);

private:
    QString path_;
    Clock clock_;
};

}  // namespace tavix
