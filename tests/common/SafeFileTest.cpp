#include "TempDir.h"
#include "common/SafeFile.h"

#include <gtest/gtest.h>
#include <QFile>
#include <cstring>

using namespace tavix;
using tavix::test::TempDir;

TEST(SafeFileScratch, WriteScratch_CreatesTheFile)
{
    TempDir dir;

    EXPECT_EQ(SafeFile::writeScratch(dir.file(QStringLiteral("temp.bmp")), "new content"), 0);

    EXPECT_EQ(dir.read(QStringLiteral("temp.bmp")), QByteArray("new content"));
}

TEST(SafeFileScratch, WriteScratch_LeavesNothingOfALongerOldFile)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("temp.bmp"), QByteArray(10000, 'o'));

    EXPECT_EQ(SafeFile::writeScratch(path, "short"), 0);

    EXPECT_EQ(dir.read(QStringLiteral("temp.bmp")), QByteArray("short"));
}

TEST(SafeFileScratch, WriteScratch_ReplacesAShorterOldFile)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("temp.bmp"), "old");
    const QByteArray content(5000, 'n');

    EXPECT_EQ(SafeFile::writeScratch(path, content), 0);

    EXPECT_EQ(dir.read(QStringLiteral("temp.bmp")), content);
}

TEST(SafeFileScratch, WriteScratch_EmptiesTheFile_ForNoContent)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("temp.bmp"), "old");

    EXPECT_EQ(SafeFile::writeScratch(path, QByteArray()), 0);

    EXPECT_TRUE(dir.read(QStringLiteral("temp.bmp")).isEmpty());
}

TEST(SafeFileScratch, WriteScratch_WritesAFileThatMayNotBeRead)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("temp.bmp"), "old content");
    QFile::setPermissions(path, QFileDevice::WriteOwner);

    const int result = SafeFile::writeScratch(path, "new");

    QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(dir.read(QStringLiteral("temp.bmp")), QByteArray("new"));
}

TEST(SafeFileScratch, WriteScratch_Returns76_WhenTheFolderIsMissing)
{
    TempDir dir;

    EXPECT_EQ(SafeFile::writeScratch(dir.file(QStringLiteral("missing/temp.bmp")), "x"), 76);

    EXPECT_FALSE(dir.exists(QStringLiteral("missing")));
}

TEST(SafeFileStreamed, WriteStreamed_WritesThePiecesInOrder)
{
    TempDir dir;
    const QString path = dir.file(QStringLiteral("streamed.bin"));
    const char* parts[] = {"abc", "", "defg"};
    int next = 0;
    ASSERT_EQ(SafeFile::writeStreamed(path,
                                      [&]() -> SafeFile::Piece {
                                          if (next == 3)
                                              return {};
                                          const char* part = parts[next++];
                                          return {part, static_cast<qsizetype>(std::strlen(part))};
                                      }),
              0);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), QByteArray("abcdefg"));
}

TEST(SafeFileStreamed, WriteStreamed_Returns76_WhenTheFolderIsMissing)
{
    TempDir dir;
    EXPECT_EQ(
        SafeFile::writeStreamed(dir.file(QStringLiteral("missing/x.bin")), [] { return SafeFile::Piece{}; }),
        76);
}
