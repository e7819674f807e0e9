// Every translated message and guidance file in data/ must keep step with the
// English ones: the same ids, the same placeholders and file patterns.
#include "TempDir.h"
#include "common/ErrorLog.h"
#include "common/GuidanceTable.h"
#include "common/MessageTable.h"

#include <gtest/gtest.h>
#include <QDir>
#include <QRegularExpression>
#include <QSet>

using namespace tavix;

namespace {

const QString kData = QStringLiteral(TAVIX_SOURCE_DATA_DIR);

// The translations beside the English file: "Message_J.txt" for "Message_*.txt".
QStringList translations(const QString& pattern, const QString& english)
{
    QStringList names = QDir(kData).entryList({pattern}, QDir::Files);
    names.removeAll(english);
    return names;
}

// A data file read by its table's reader, which must succeed.
template <typename Table>
Table readData(const QString& name, bool (Table::*reader)(const QString&, const ErrorLog&))
{
    test::TempDir logDir;
    Table table;
    EXPECT_TRUE(
        (table.*reader)(QDir(kData).filePath(name), ErrorLog(logDir.file(QStringLiteral("Error.Log")))))
        << name.toStdString();
    return table;
}

MessageTable readMessages(const QString& name)
{
    return readData(name, &MessageTable::ReadStringTableData);
}

GuidanceTable readGuidance(const QString& name)
{
    return readData(name, &GuidanceTable::ReadGuidanceData);
}

QList<qint32> ids(const MessageTable& table)
{
    QList<qint32> out;
    for (int i = 0; i < table.size(); ++i)
        out << table.at(i).id;
    return out;
}

// The file patterns of a file-dialog filter ("Name|*.bmp|Name|*.jpg"): every second field.
QStringList patterns(const QString& filter)
{
    const QStringList fields = filter.split(QLatin1Char('|'));
    QStringList out;
    for (int i = 1; i < fields.size(); i += 2)
        out << fields[i];
    return out;
}

}  // namespace

TEST(Translations, ThereIsAJapaneseMessageAndGuidanceFile)
{
    EXPECT_TRUE(translations(QStringLiteral("Message_*.txt"), QStringLiteral("Message_E.txt"))
                    .contains(QStringLiteral("Message_J.txt")));
    EXPECT_TRUE(translations(QStringLiteral("Guidance_*.txt"), QStringLiteral("Guidance_E.txt"))
                    .contains(QStringLiteral("Guidance_J.txt")));
}

TEST(Translations, EveryMessageId_IsTranslated_AndNoOtherIdAdded)
{
    const MessageTable english = readMessages(QStringLiteral("Message_E.txt"));
    for (const QString& name :
         translations(QStringLiteral("Message_*.txt"), QStringLiteral("Message_E.txt"))) {
        const MessageTable translated = readMessages(name);
        const QList<qint32> translatedIds = ids(translated);
        for (const qint32 id : ids(english)) {
            EXPECT_TRUE(translatedIds.contains(id)) << name.toStdString() << " lacks " << id;
            if (!english.text(id).isEmpty()) {
                EXPECT_FALSE(translated.text(id).isEmpty()) << name.toStdString() << " " << id;
            }
        }
        for (const qint32 id : translatedIds)
            EXPECT_TRUE(ids(english).contains(id)) << name.toStdString() << " has an unknown id " << id;
        EXPECT_EQ(QSet<qint32>(translatedIds.cbegin(), translatedIds.cend()).size(), translatedIds.size())
            << name.toStdString() << " has an id twice";
    }
}

TEST(Translations, Placeholders_AndFilePatterns_AreKept)
{
    const MessageTable english = readMessages(QStringLiteral("Message_E.txt"));
    for (const QString& name :
         translations(QStringLiteral("Message_*.txt"), QStringLiteral("Message_E.txt"))) {
        const MessageTable translated = readMessages(name);
        for (const qint32 id : ids(english)) {
            const QString e = english.text(id);
            const QString t = translated.text(id);
            EXPECT_EQ(t.count(QLatin1Char('@')), e.count(QLatin1Char('@')))
                << name.toStdString() << " " << id;
            if (e.contains(QLatin1Char('|'))) {
                EXPECT_EQ(patterns(t), patterns(e)) << name.toStdString() << " " << id;
            }
            // Captions that end in a colon stand before a field; the translation keeps it.
            EXPECT_EQ(t.endsWith(QLatin1Char(':')), e.endsWith(QLatin1Char(':')))
                << name.toStdString() << " " << id;
        }
    }
}

TEST(Translations, EveryGuidanceNumber_IsTranslated)
{
    const GuidanceTable english = readGuidance(QStringLiteral("Guidance_E.txt"));
    for (const QString& name :
         translations(QStringLiteral("Guidance_*.txt"), QStringLiteral("Guidance_E.txt"))) {
        const GuidanceTable translated = readGuidance(name);
        for (int number = 0; number <= GuidanceTable::kMaxNumber; ++number)
            for (int line = 0; line < 2; ++line)
                EXPECT_EQ(translated.line(number, line).isEmpty(), english.line(number, line).isEmpty())
                    << name.toStdString() << " " << number << "/" << line;
    }
}

TEST(Translations, JapaneseFiles_AreJapanese)
{
    const MessageTable japanese = readMessages(QStringLiteral("Message_J.txt"));
    EXPECT_EQ(japanese.text(40001), QStringLiteral("画像を開く"));
    EXPECT_EQ(readGuidance(QStringLiteral("Guidance_J.txt")).line(32, 0),
              QStringLiteral("2点間距離: 1 点目をクリックしてください。"));
}
