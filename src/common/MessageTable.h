#pragma once

#include <QHash>
#include <QString>
#include <QVariant>
#include <vector>

namespace tavix {

class ErrorLog;

// Every user-visible text, looked up by number from the message file, so that
// the interface can be translated by replacing that file.
class MessageTable {
public:
    static constexpr int kCapacity = 10001;  // entries 0 to 10000

    struct Entry {
        qint32 id = 0;
        QString text;
    };

    // Reads the message file; logs "ReadStringTableData Error.(n)" and returns
    // false on any error (missing file, bad id, too many entries, no entry).
    bool ReadStringTableData(const QString& path, const ErrorLog& log);

    // Parses the file's text; throws RunError. Replaces the table only on success.
    void parse(const QString& text);

    // The text of the first entry with this id, "" when there is none. With a
    // value, every "@" in the text is replaced by the value's text.
    QString text(qint32 id, const QVariant& value = QVariant()) const;
    QString operator()(qint32 id, const QVariant& value = QVariant()) const { return text(id, value); }

    int size() const { return static_cast<int>(entries_.size()); }
    const Entry& at(int index) const { return entries_.at(static_cast<size_t>(index)); }

private:
    std::vector<Entry> entries_;
    QHash<qint32, int> firstIndex_;  // id -> index of its first entry
};

}  // namespace tavix
