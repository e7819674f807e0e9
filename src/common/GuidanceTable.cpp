#include "common/GuidanceTable.h"

#include "common/DataFile.h"
#include "common/ErrorLog.h"
#include "common/FreeFieldReader.h"
#include "common/NumberText.h"
#include "common/RunError.h"

namespace tavix {

bool GuidanceTable::ReadGuidanceData(const QString& path, const ErrorLog& log)
{
    try {
        for (auto& pair : lines_)
            pair = {};
        parse(DataFile::readText(path));
        return true;
    } catch (const RunError& e) {
        log.write(QStringLiteral("ReadGuidanceData Error.(%1)").arg(e.number()));
        return false;
    }
}

void GuidanceTable::parse(const QString& text)
{
    for (auto& pair : lines_)
        pair = {};
    FreeFieldReader reader(text);
    while (!reader.atEnd()) {
        const int number = NumberText::toInt16(reader.next());
        if (number < 0 || number > kMaxNumber)
            throw RunError(err::SubscriptOutOfRange);
        QString line0 = reader.next();
        QString line1 = reader.next();
        lines_[static_cast<size_t>(number)] = {std::move(line0), std::move(line1)};
    }
}

QString GuidanceTable::line(int number, int index) const
{
    if (number < 0 || number > kMaxNumber || index < 0 || index > 1)
        return {};
    return lines_[static_cast<size_t>(number)][static_cast<size_t>(index)];
}

}  // namespace tavix
