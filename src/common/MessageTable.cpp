#include "common/MessageTable.h"

#include "common/DataFile.h"
#include "common/ErrorLog.h"
#include "common/NumberText.h"
#include "common/RunError.h"

namespace tavix {

bool MessageTable::ReadStringTableData(const QString& path, const ErrorLog& log)
{
    try {
        parse(DataFile::readText(path));
        return true;
    } catch (const RunError& e) {
        log.write(QStringLiteral("ReadStringTableData Error.(%1)").arg(e.number()));
        return false;
    }
}

void MessageTable::parse(const QString& text)
{
    std::vector<Entry> entries;
    QHash<qint32, int> firstIndex;
    for (const QString& line : DataFile::splitLines(text)) {
        const qsizetype comma = line.indexOf(QLatin1Char(','));
        if (comma < 0)
            continue;  // comments and blank lines
        if (static_cast<int>(entries.size()) >= kCapacity)
            throw RunError(err::SubscriptOutOfRange);
        Entry entry{NumberText::toInt32(line.left(comma)), line.mid(comma + 1)};
        if (!firstIndex.contains(entry.id))  // the entry nearer the top wins
            firstIndex.insert(entry.id, static_cast<int>(entries.size()));
        entries.push_back(std::move(entry));
    }
    if (entries.empty())
        throw RunError(err::SubscriptOutOfRange);
    entries_ = std::move(entries);
    firstIndex_ = std::move(firstIndex);
}

QString MessageTable::text(qint32 id, const QVariant& value) const
{
    const auto it = firstIndex_.constFind(id);
    if (it == firstIndex_.constEnd())
        return {};
    QString result = entries_[static_cast<size_t>(*it)].text;
    if (value.isValid() && result.contains(QLatin1Char('@')))
        result.replace(QLatin1Char('@'), value.toString());
    return result;
}

}  // namespace tavix
