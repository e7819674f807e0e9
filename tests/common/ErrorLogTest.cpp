#include "TempDir.h"
#include "common/ErrorLog.h"

#include <gtest/gtest.h>
#include <QLocale>
#include <QRegularExpression>

using namespace tavix;
using tavix::test::TempDir;

TEST(ErrorLog, Write_AppendsDateTimeBlankMessageAndCrLf)
{
    TempDir dir;
    const QDateTime when(QDate(2026, 3, 4), QTime(5, 6, 7));
    ErrorLog log(dir.file(QStringLiteral("Error.Log")), [when] { return when; });
    log.write(QStringLiteral("First"));
    log.write(QStringLiteral("Second"));
    const QString date = QLocale::system().toString(QDate(2026, 3, 4), QLocale::ShortFormat);
    EXPECT_EQ(QString::fromUtf8(dir.read(QStringLiteral("Error.Log"))),
              date + QStringLiteral(" 05:06:07 First\r\n") + date + QStringLiteral(" 05:06:07 Second\r\n"));
}

TEST(ErrorLog, Write_KeepsEarlierLines)
{
    TempDir dir;
    dir.write(QStringLiteral("Error.Log"), "old line\r\n");
    ErrorLog log(dir.file(QStringLiteral("Error.Log")));
    log.write(QStringLiteral("new"));
    const QString text = QString::fromUtf8(dir.read(QStringLiteral("Error.Log")));
    EXPECT_TRUE(text.startsWith(QStringLiteral("old line\r\n")));
    EXPECT_TRUE(QRegularExpression(QStringLiteral("\\d\\d:\\d\\d:\\d\\d new\\r\\n$")).match(text).hasMatch());
}

TEST(ErrorLog, Write_IsSilentlyDropped_WhenFolderMissing)
{
    TempDir dir;
    ErrorLog log(dir.file(QStringLiteral("no/such/folder/Error.Log")));
    log.write(QStringLiteral("lost"));  // must neither throw nor crash
    EXPECT_FALSE(dir.exists(QStringLiteral("no/such/folder/Error.Log")));
}
