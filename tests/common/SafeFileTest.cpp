#include "TempDir.h"
#include "common/SafeFile.h"

#include <gtest/gtest.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>
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

TEST(SafeFileWrite, Write_ReplacesTheFile_AndLeavesNothingElseInTheFolder)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("results.csv"), "old content that is longer");

    ASSERT_EQ(SafeFile::write(path, "new"), 0);

    EXPECT_EQ(dir.read(QStringLiteral("results.csv")), QByteArray("new"));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden),
              QStringList{QStringLiteral("results.csv")});
}

TEST(SafeFileWrite, Write_KeepsTheModeOfTheFileItReplaces)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("private.ini"), "old");
    // Writable by all: more than a new file gets under the usual umask.
    const auto mode = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup |
                      QFileDevice::WriteGroup | QFileDevice::ReadOther | QFileDevice::WriteOther;
    ASSERT_TRUE(QFile::setPermissions(path, mode));

    ASSERT_EQ(SafeFile::write(path, "new"), 0);

    constexpr int kOwnerGroupOther = 0x7077;  // without the bits Qt adds for the user asking
    EXPECT_EQ(QFile::permissions(path).toInt() & kOwnerGroupOther, mode.toInt());
    EXPECT_EQ(dir.read(QStringLiteral("private.ini")), QByteArray("new"));
}

TEST(SafeFileWrite, Write_ThroughALink_ReplacesTheFileItNames_AndKeepsTheLink)
{
    TempDir dir;
    const QString target = dir.write(QStringLiteral("real.txt"), "old");
    const QString link = dir.file(QStringLiteral("link.txt"));
    ASSERT_TRUE(QFile::link(target, link));

    ASSERT_EQ(SafeFile::write(link, "new"), 0);

    EXPECT_TRUE(QFileInfo(link).isSymLink());
    EXPECT_EQ(dir.read(QStringLiteral("real.txt")), QByteArray("new"));
}

TEST(SafeFileWrite, Write_Returns75AndLeavesNothing_WhenAFolderHasTheName)
{
    TempDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("taken")));

    EXPECT_EQ(SafeFile::write(dir.file(QStringLiteral("taken")), "new"), 75);

    EXPECT_TRUE(QFileInfo(dir.file(QStringLiteral("taken"))).isDir());
    EXPECT_TRUE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).isEmpty());
}

TEST(SafeFileWrite, WriteStreamed_Returns61AndKeepsTheOldFile_WhenAPieceCannotBeWritten)
{
    TempDir dir;
    const QString path = dir.write(QStringLiteral("picture.bmp"), "old");
    int calls = 0;
    // A piece the system refuses: its bytes lie outside the program's memory.
    const int result = SafeFile::writeStreamed(path, [&]() -> SafeFile::Piece {
        if (calls++ == 0)
            return {"first", 5};
        return calls == 2 ? SafeFile::Piece{reinterpret_cast<const char*>(16), 4} : SafeFile::Piece{};
    });

    EXPECT_EQ(result, 61);
    EXPECT_EQ(dir.read(QStringLiteral("picture.bmp")), QByteArray("old"));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden),
              QStringList{QStringLiteral("picture.bmp")});
}
